#include "log/strbuf.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <wchar.h>

#include "support/call_fault.h"

namespace tavek {

namespace {

std::string repeated(std::size_t length) {
  return std::string(length, 'r');
}

/// A growable string: the pointer and the room that a caller keeps. The destructor frees the string.
class Strbuf : public testing::Test {
protected:
  ~Strbuf() override { free(text); }

  void init() { ASSERT_NE(strbuf_init(&text, &room), nullptr); }
  void append(const std::string& string) {
    const char* result = strbuf_append(&text, &room, string.c_str());
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result, text);
  }
  // Writes to every byte of the room, so that the address sanitizer reports a block that is too small.
  void fill_room() { memset(text + strlen(text), 'f', room + 1); }

  void expect(const std::string& expected_text, std::size_t expected_room) {
    EXPECT_STREQ(text, expected_text.c_str());
    EXPECT_EQ(room, expected_room);
  }

  char* text = nullptr;
  std::size_t room = 0;
};

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

class StrbufPrintf : public Strbuf {};

TEST_F(StrbufPrintf, FormatsTheNameOfATemporaryFile) {
  const std::string path = "/" + repeated(99);
  EXPECT_EQ(strbuf_printf(&text, &room, "%s.XXXXXX", path.c_str()), text);
  expect(path + ".XXXXXX", 52);
}

TEST_F(StrbufPrintf, AppendsTheFormattedText) {
  append("number ");
  EXPECT_EQ(strbuf_printf(&text, &room, "%d of %s", 5, "seven"), text);
  expect("number 5 of seven", 79 - 17);
}

TEST_F(StrbufPrintf, MayAppendNothing) {
  EXPECT_EQ(strbuf_printf(&text, &room, "%s", ""), text);
  expect("", 79);
}

TEST_F(StrbufPrintf, UsesAllOfItsRoomBeforeItGrows) {
  const CallFault second(Call::allocation, ENOMEM, 2);
  EXPECT_NE(strbuf_printf(&text, &room, "%s", repeated(79).c_str()), nullptr);
  expect(repeated(79), 0);
}

TEST_F(StrbufPrintf, GrowsIfOneCharacterDoesNotFit) {
  EXPECT_NE(strbuf_printf(&text, &room, "%s", repeated(80).c_str()), nullptr);
  expect(repeated(80), 79);
  fill_room();
}

TEST_F(StrbufPrintf, FormatsTheSameArgumentsAgainAfterGrowing) {
  append("r");
  EXPECT_NE(strbuf_printf(&text, &room, "%s%d%s", repeated(300).c_str(), 5, "six"), nullptr);
  expect("r" + repeated(300) + "5six", 0);
}

TEST_F(StrbufPrintf, KeepsTextAndRoomIfItCannotGrow) {
  append("text");
  const CallFault first(Call::allocation, ENOMEM);
  errno = 0;
  EXPECT_EQ(strbuf_printf(&text, &room, "%s", repeated(76).c_str()), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  expect("text", 75);
}

TEST_F(StrbufPrintf, RemainsNullIfItCannotBeAllocated) {
  const CallFault first(Call::allocation, ENOMEM);
  errno = 0;
  EXPECT_EQ(strbuf_printf(&text, &room, "%d", 5), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(text, nullptr);
}

// The C locale cannot represent the wide character.
TEST_F(StrbufPrintf, KeepsTheTextIfTheFormatFails) {
  append("text");
  EXPECT_EQ(strbuf_printf(&text, &room, "more %lc", static_cast<wint_t>(0x3b1)), nullptr);
  expect("text", 75);
}

// %hhn overwrites the NUL that ends the argument, so the second pass finds a longer text than the first.
TEST_F(StrbufPrintf, RejectsATextThatGrowsBetweenTheTwoPasses) {
  std::string argument = repeated(300);
  argument[100] = '\0';
  auto* end = reinterpret_cast<signed char*>(&argument[100]);
  append("text");
  EXPECT_EQ(strbuf_printf(&text, &room, "%s%hhn", argument.c_str(), end), nullptr);
  expect("text", 155);
}

} // namespace

} // namespace tavek
