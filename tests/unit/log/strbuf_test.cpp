#include "log/strbuf.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <wchar.h>

#include "unit/log/failing_allocation.h"

namespace tavek {

namespace {

using test::FailingAllocation;

/// A growable string as its callers hold it. Each operation checks that the text is returned and its room exact.
class Strbuf : public testing::Test {
protected:
  ~Strbuf() override { free(text); }

  void init() { ASSERT_NE(strbuf_init(&text, &room), nullptr); }
  void append(const std::string& string) {
    const char* result = strbuf_append(&text, &room, string.c_str());
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result, text);
  }
  // Every byte of the room is usable; the address sanitizer objects otherwise.
  void fill_room() { memset(text + strlen(text), 'f', room + 1); }

  void expect(const std::string& expected_text, std::size_t expected_room) {
    EXPECT_STREQ(text, expected_text.c_str());
    EXPECT_EQ(room, expected_room);
  }

  char* text = nullptr;
  std::size_t room = 0;
};

std::string repeated(std::size_t length) {
  return std::string(length, 'r');
}

TEST_F(Strbuf, BeginsEmptyWithRoomFor79) {
  EXPECT_EQ(strbuf_init(&text, &room), text);
  expect("", 79);
  fill_room();
}

TEST_F(Strbuf, IsNotInitialisedTwice) {
  append("text");
  char* const before = text;
  EXPECT_EQ(strbuf_init(&text, &room), before);
  expect("text", 75);
}

TEST_F(Strbuf, StaysNullWhenThereIsNoMemoryToBegin) {
  const FailingAllocation first(1);
  errno = 0;
  EXPECT_EQ(strbuf_init(&text, &room), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(text, nullptr);
}

TEST_F(Strbuf, ReservesNothingThatItHas) {
  init();
  char* const before = text;
  const FailingAllocation counted(0);
  EXPECT_EQ(strbuf_reserve(&text, &room, 79), before);
  expect("", 79);
  EXPECT_EQ(counted.calls(), 0);
}

TEST_F(Strbuf, GrowsByEightyWhenLessIsMissing) {
  append("0123456789");
  EXPECT_EQ(strbuf_reserve(&text, &room, 70), text);
  expect("0123456789", 69 + 80);
  fill_room();
}

TEST_F(Strbuf, GrowsByEightyWhenJustThatIsMissing) {
  init();
  EXPECT_EQ(strbuf_reserve(&text, &room, 79 + 80), text);
  expect("", 79 + 80);
}

TEST_F(Strbuf, GrowsByWhatIsMissingWhenThatIsMore) {
  append("0123456789");
  EXPECT_EQ(strbuf_reserve(&text, &room, 69 + 81), text);
  expect("0123456789", 69 + 81);
  fill_room();
}

TEST_F(Strbuf, KeepsTextAndRoomWhenItCannotGrow) {
  append("text");
  const FailingAllocation first(1);
  errno = 0;
  EXPECT_EQ(strbuf_reserve(&text, &room, 500), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  expect("text", 75);
}

TEST_F(Strbuf, RefusesASizeThatDoesNotFit) {
  append("text");
  const FailingAllocation counted(0);
  // The block would have 4 + 1 + SIZE_MAX bytes.
  errno = 0;
  EXPECT_EQ(strbuf_reserve(&text, &room, SIZE_MAX), nullptr);
  EXPECT_EQ(errno, ERANGE);
  // And here one byte more than SIZE_MAX.
  errno = 0;
  EXPECT_EQ(strbuf_reserve(&text, &room, SIZE_MAX - 4), nullptr);
  EXPECT_EQ(errno, ERANGE);
  EXPECT_EQ(counted.calls(), 0);
  expect("text", 75);
}

TEST_F(Strbuf, AsksTheAllocatorForTheLargestSizeThatFits) {
  append("text");
  const FailingAllocation first(1);
  errno = 0;
  EXPECT_EQ(strbuf_reserve(&text, &room, SIZE_MAX - 5), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(first.calls(), 1);
}

TEST_F(Strbuf, RefusesARoomThatDoesNotFit) {
  append("text");
  room = SIZE_MAX - 1;
  errno = 0;
  EXPECT_EQ(strbuf_reserve(&text, &room, SIZE_MAX), nullptr);
  EXPECT_EQ(errno, ERANGE);
  expect("text", SIZE_MAX - 1);
}

TEST_F(Strbuf, AppendsAndCountsTheRoomDown) {
  append("one");
  expect("one", 76);
  append("");
  expect("one", 76);
  append(", two");
  expect("one, two", 71);
}

TEST_F(Strbuf, AppendsWithoutGrowingUntilTheRoomIsUsedUp) {
  const FailingAllocation second(2);
  append(repeated(79));
  expect(repeated(79), 0);
}

TEST_F(Strbuf, GrowsForOneCharacterTooMany) {
  append(repeated(79));
  append("r");
  expect(repeated(80), 79);
  fill_room();
}

TEST_F(Strbuf, AppendsALongStringExactly) {
  append("r");
  append(repeated(1000));
  expect(repeated(1001), 0);
}

TEST_F(Strbuf, KeepsTheTextWhenAnAppendedOneFindsNoMemory) {
  append("text");
  const FailingAllocation first(1);
  errno = 0;
  EXPECT_EQ(strbuf_append(&text, &room, repeated(76).c_str()), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  expect("text", 75);
}

TEST_F(Strbuf, AppendsNothingWhenThereIsNoMemoryToBegin) {
  const FailingAllocation first(1);
  errno = 0;
  EXPECT_EQ(strbuf_append(&text, &room, "text"), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(text, nullptr);
}

/// The formatted additions.
class StrbufPrintf : public Strbuf {};

TEST_F(StrbufPrintf, MakesATemplateForTheNameOfATemporaryFile) {
  const std::string path = "/" + repeated(99);
  EXPECT_EQ(strbuf_printf(&text, &room, "%s.XXXXXX", path.c_str()), text);
  expect(path + ".XXXXXX", 52);
}

TEST_F(StrbufPrintf, AddsAtTheEnd) {
  append("number ");
  EXPECT_EQ(strbuf_printf(&text, &room, "%d of %s", 5, "seven"), text);
  expect("number 5 of seven", 79 - 17);
}

TEST_F(StrbufPrintf, AddsNothing) {
  EXPECT_EQ(strbuf_printf(&text, &room, "%s", ""), text);
  expect("", 79);
}

TEST_F(StrbufPrintf, UsesTheWholeRoomWithoutGrowing) {
  const FailingAllocation second(2);
  EXPECT_NE(strbuf_printf(&text, &room, "%s", repeated(79).c_str()), nullptr);
  expect(repeated(79), 0);
}

TEST_F(StrbufPrintf, GrowsForOneCharacterTooMany) {
  EXPECT_NE(strbuf_printf(&text, &room, "%s", repeated(80).c_str()), nullptr);
  expect(repeated(80), 79);
  fill_room();
}

TEST_F(StrbufPrintf, FormatsTheSameArgumentsAgainAfterGrowing) {
  append("r");
  EXPECT_NE(strbuf_printf(&text, &room, "%s%d%s", repeated(300).c_str(), 5, "six"), nullptr);
  expect("r" + repeated(300) + "5six", 0);
}

TEST_F(StrbufPrintf, KeepsTextAndRoomWhenItCannotGrow) {
  append("text");
  const FailingAllocation first(1);
  errno = 0;
  EXPECT_EQ(strbuf_printf(&text, &room, "%s", repeated(76).c_str()), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  expect("text", 75);
}

TEST_F(StrbufPrintf, StaysNullWhenThereIsNoMemoryToBegin) {
  const FailingAllocation first(1);
  errno = 0;
  EXPECT_EQ(strbuf_printf(&text, &room, "%d", 5), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(text, nullptr);
}

// The wide character has no form in the C locale.
TEST_F(StrbufPrintf, KeepsTheTextWhenTheFormatCannotBeCarriedOut) {
  append("text");
  EXPECT_EQ(strbuf_printf(&text, &room, "more %lc", static_cast<wint_t>(0x3b1)), nullptr);
  expect("text", 75);
}

// The first pass overwrites the end of its own argument with the count of characters, which makes the second longer.
TEST_F(StrbufPrintf, RefusesATextThatGrewPastTheRoomMeanwhile) {
  std::string argument = repeated(300);
  argument[100] = '\0';
  auto* end = reinterpret_cast<signed char*>(&argument[100]);
  append("text");
  EXPECT_EQ(strbuf_printf(&text, &room, "%s%hhn", argument.c_str(), end), nullptr);
  expect("text", 155);
}

} // namespace

} // namespace tavek
