#include "log/strbuf.h"

#include <cerrno>
#include <cstdint>
#include <gtest/gtest.h>

#include "support/call_fault.h"
#include "unit/log/strbuf_fixture.h"

namespace tavek {

namespace {

using test::repeated;

class Strbuf : public test::StrbufFixture {};

TEST_F(Strbuf, StartsEmptyWithRoomFor79Characters) {
  EXPECT_EQ(strbuf_init(&text, &room), text);
  expect("", 79);
  fill_room();
}

TEST_F(Strbuf, IsInitialisedOnlyOnce) {
  append("text");
  char* const before = text;
  EXPECT_EQ(strbuf_init(&text, &room), before);
  expect("text", 75);
}

TEST_F(Strbuf, RemainsNullIfItCannotBeAllocated) {
  const CallFault first(Call::allocation, ENOMEM);
  errno = 0;
  EXPECT_EQ(strbuf_init(&text, &room), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(room, 80U);
}

TEST_F(Strbuf, AllocatesNothingIfItHasEnoughRoom) {
  init();
  char* const before = text;
  const CallFault counted(Call::allocation, ENOMEM);
  EXPECT_EQ(strbuf_reserve(&text, &room, 79), before);
  expect("", 79);
  EXPECT_FALSE(counted.happened());
}

TEST_F(Strbuf, GrowsBy80Characters) {
  append("0123456789");
  EXPECT_EQ(strbuf_reserve(&text, &room, 70), text);
  expect("0123456789", 69 + 80);
  fill_room();
}

TEST_F(Strbuf, GrowsByTheShortfallIfThatIsMore) {
  append("0123456789");
  EXPECT_EQ(strbuf_reserve(&text, &room, 69 + 81), text);
  expect("0123456789", 69 + 81);
  fill_room();
}

TEST_F(Strbuf, KeepsTextAndRoomIfItCannotGrow) {
  append("text");
  const CallFault first(Call::allocation, ENOMEM);
  errno = 0;
  EXPECT_EQ(strbuf_reserve(&text, &room, 500), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  expect("text", 75);
}

TEST_F(Strbuf, RejectsASizeThatOverflows) {
  append("text");
  const CallFault counted(Call::allocation, ENOMEM);
  // The block would have 4 + 1 + SIZE_MAX bytes.
  errno = 0;
  EXPECT_EQ(strbuf_reserve(&text, &room, SIZE_MAX), nullptr);
  EXPECT_EQ(errno, ERANGE);
  // Here the block would have one byte more than SIZE_MAX.
  errno = 0;
  EXPECT_EQ(strbuf_reserve(&text, &room, SIZE_MAX - 4), nullptr);
  EXPECT_EQ(errno, ERANGE);
  EXPECT_FALSE(counted.happened());
  expect("text", 75);
}

TEST_F(Strbuf, RequestsTheLargestSizeThatDoesNotOverflow) {
  append("text");
  const CallFault first(Call::allocation, ENOMEM);
  errno = 0;
  EXPECT_EQ(strbuf_reserve(&text, &room, SIZE_MAX - 5), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_TRUE(first.happened());
}

TEST_F(Strbuf, RejectsRoomThatOverflows) {
  append("text");
  room = SIZE_MAX - 1;
  errno = 0;
  EXPECT_EQ(strbuf_reserve(&text, &room, SIZE_MAX), nullptr);
  EXPECT_EQ(errno, ERANGE);
  expect("text", SIZE_MAX - 1);
}

TEST_F(Strbuf, ReducesTheRoomWithEachAppend) {
  append("one");
  expect("one", 76);
  append("");
  expect("one", 76);
  append(", two");
  expect("one, two", 71);
}

TEST_F(Strbuf, GrowsOnlyIfAnAppendedStringDoesNotFit) {
  {
    const CallFault second(Call::allocation, ENOMEM, 2);
    append(repeated(79));
    expect(repeated(79), 0);
  }
  append("r");
  expect(repeated(80), 79);
  fill_room();
}

TEST_F(Strbuf, AppendsALongString) {
  append("r");
  append(repeated(1000));
  expect(repeated(1001), 0);
}

TEST_F(Strbuf, KeepsTheTextIfItCannotGrowForAnAppendedString) {
  append("text");
  const CallFault first(Call::allocation, ENOMEM);
  errno = 0;
  EXPECT_EQ(strbuf_append(&text, &room, repeated(76).c_str()), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  expect("text", 75);
}

TEST_F(Strbuf, AppendsNothingIfItCannotBeAllocated) {
  const CallFault first(Call::allocation, ENOMEM);
  errno = 0;
  EXPECT_EQ(strbuf_append(&text, &room, "text"), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(text, nullptr);
}

} // namespace

} // namespace tavek
