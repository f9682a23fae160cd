#include "rotation/switch.h"

#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>
#include <string>

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

TEST(Switch, HasFixedNumbers) {
  EXPECT_EQ(static_cast<int>(Switch::keep), 0);
  EXPECT_EQ(static_cast<int>(Switch::on), 1);
  EXPECT_EQ(static_cast<int>(Switch::off), 2);
}

TEST(Switch, PrintsOneNameForEachState) {
  EXPECT_EQ(printed(Switch::keep), "keep");
  EXPECT_EQ(printed(Switch::on), "on");
  EXPECT_EQ(printed(Switch::off), "off");
}

TEST(Switch, RefusesToPrintAnUnknownState) {
  for (const int number : {-1, 3}) {
    try {
      to_text(static_cast<Switch>(number));
      ADD_FAILURE() << number << " has a name";
    } catch (const std::invalid_argument& error) {
      EXPECT_STREQ(error.what(), "unknown Switch state");
    }
  }
}

TEST(Switch, ReadsEachOfItsSpellings) {
  for (const Spelling& spelling : kSpellings) {
    // Whatever is there before, the word decides.
    for (Switch value : {Switch::keep, Switch::on, Switch::off}) {
      std::istringstream stream(spelling.word);
      EXPECT_TRUE(stream >> value) << spelling.word;
      EXPECT_EQ(value, spelling.value) << spelling.word;
    }
  }
}

TEST(Switch, ReadsBackWhatItPrints) {
  for (const Switch value : {Switch::keep, Switch::on, Switch::off}) {
    Switch read = value == Switch::on ? Switch::off : Switch::on;
    std::istringstream stream(printed(value));
    EXPECT_TRUE(stream >> read);
    EXPECT_EQ(read, value);
  }
}

TEST(Switch, AnyOtherWordFailsAndChangesNothing) {
  for (const char* word : {"True", "ON",  "On",   "oN",     "yes",   "no",    "1",    "0",      "o", "of",
                           "onn",  "tru", "offf", "falsee", "keeps", "FALSE", "Keep", "on,off", "",  "   "}) {
    std::istringstream stream(word);
    Switch value = Switch::off;
    EXPECT_FALSE(stream >> value) << word;
    EXPECT_TRUE((stream.rdstate() & std::ios_base::failbit) != 0) << word;
    EXPECT_EQ(value, Switch::off) << word;
  }
}

TEST(Switch, ReadsOneWordAndLeavesTheRest) {
  std::istringstream stream(" \t on keep\n");
  Switch first = Switch::off;
  Switch second = Switch::off;
  EXPECT_TRUE(stream >> first >> second);
  EXPECT_EQ(first, Switch::on);
  EXPECT_EQ(second, Switch::keep);
}

} // namespace

} // namespace tavek
