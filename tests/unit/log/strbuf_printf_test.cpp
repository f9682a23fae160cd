#include <cerrno>
#include <gtest/gtest.h>
#include <wchar.h>

#include "log/strbuf.h"
#include "support/call_fault.h"
#include "unit/log/strbuf_fixture.h"

namespace tavek {

namespace {

using test::repeated;

class StrbufPrintf : public test::StrbufFixture {};

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
