#include "rotation/switch.h"

#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>
#include <string>

#include "support/thrown.h"

namespace tavek {

namespace {

struct Spelling {
  const char* word;
  Switch value;
};

constexpr Spelling kSpellings[] = {
    {"on", Switch::on}, {"true", Switch::on}, {"off", Switch::off}, {"false", Switch::off}, {"keep", Switch::keep},
};

std::string printed(Switch value) {
  std::ostringstream stream;
  stream << value;
  return stream.str();
}

TEST(Switch, PrintsOneNameForEachState) {
  EXPECT_EQ(printed(Switch::keep), "keep");
  EXPECT_EQ(printed(Switch::on), "on");
  EXPECT_EQ(printed(Switch::off), "off");
}

TEST(Switch, ThrowsForAnUnknownState) {
  EXPECT_EQ(thrown_by<std::invalid_argument>([] { to_text(static_cast<Switch>(3)); }), "unknown Switch state");
}

TEST(Switch, ReadsEverySpelling) {
  for (const Spelling& spelling : kSpellings) {
    Switch value = spelling.value == Switch::on ? Switch::off : Switch::on;
    std::istringstream stream(spelling.word);
    EXPECT_TRUE(stream >> value) << spelling.word;
    EXPECT_EQ(value, spelling.value) << spelling.word;
  }
}

TEST(Switch, RejectsAnyOtherWordAndKeepsItsValue) {
  for (const char* word : {"True", "ON", "yes", "1", "o", "onn", "falsee", "Keep", "on,off", "", "   "}) {
    std::istringstream stream(word);
    Switch value = Switch::off;
    EXPECT_FALSE(stream >> value) << word;
    EXPECT_EQ(value, Switch::off) << word;
  }
}

TEST(Switch, ReadsOneWordAtATime) {
  std::istringstream stream(" \t on keep\n");
  Switch first = Switch::off;
  Switch second = Switch::off;
  EXPECT_TRUE(stream >> first >> second);
  EXPECT_EQ(first, Switch::on);
  EXPECT_EQ(second, Switch::keep);
}

} // namespace

} // namespace tavek
