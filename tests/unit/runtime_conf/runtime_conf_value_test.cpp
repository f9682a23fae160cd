// Where the value of a definition begins and ends.

#include <gtest/gtest.h>
#include <string>
#include <utility>

#include "unit/runtime_conf/conf_file_fixture.h"

namespace tavek {

namespace {

class RuntimeConfValue : public test::ConfFileFixture {};

TEST_F(RuntimeConfValue, SeparatesNameAndValueByAnyWhiteSpace) {
  for (const char* line : {"KEY v\n", "  KEY v\n", "\t\v\f\rKEY v\n", "KEY\tv\n", "KEY \t \v\f\r v\n", "KEY v"}) {
    EXPECT_EQ(value_of(line), "v") << line;
  }
}

TEST_F(RuntimeConfValue, EndsAValueAtAComment) {
  const std::pair<const char*, const char*> lines[] = {
      {"KEY /srv/a b#c\n", "/srv/a b"},
      {"KEY value # note\n", "value"},
      {"KEY v#\n", "v"},
      {"KEY v # a # b\n", "v"},
      {"KEY v##\n", "v"},
      {"KEY v #", "v"},
  };
  for (const auto& [line, value] : lines) {
    EXPECT_EQ(value_of(line), value) << line;
  }
}

TEST_F(RuntimeConfValue, KeepsWhiteSpaceInsideAValue) {
  EXPECT_EQ(value_of("KEY a b  c\td   e\n"), "a b  c\td   e");
}

TEST_F(RuntimeConfValue, KnowsNoQuotesOrEscapes) {
  EXPECT_EQ(value_of("KEY \"a b\\\n"), "\"a b\\");
  EXPECT_EQ(value_of("KEY 'a#b'\n"), "'a");
  EXPECT_EQ(value_of("KEY =b\n"), "=b");
}

// The newline counts: a run of odd length loses one character, one of even length none.
TEST_F(RuntimeConfValue, CutsOneCharacterFromAnOddRunOfTrailingWhiteSpace) {
  for (std::size_t blanks = 0; blanks <= 6; ++blanks) {
    const std::string run = std::string(blanks, ' ') + "\n";
    const std::string kept = run.size() % 2 == 1 ? run.substr(0, run.size() - 1) : run;
    EXPECT_EQ(value_of("KEY value" + run), "value" + kept) << blanks;
    EXPECT_EQ(value_of("KEY v" + run), "v" + kept) << blanks;
  }
}

TEST_F(RuntimeConfValue, CutsOneCharacterFromAnOddRunBeforeACommentOrTheEnd) {
  for (const char* end : {"", "# note\n"}) {
    EXPECT_EQ(value_of(std::string("KEY value ") + end), "value") << end;
    EXPECT_EQ(value_of(std::string("KEY value  ") + end), "value  ") << end;
    EXPECT_EQ(value_of(std::string("KEY value \t ") + end), "value \t") << end;
  }
}

TEST_F(RuntimeConfValue, KeepsTheLineEndOfTwoCharacters) {
  EXPECT_EQ(value_of("KEY value\r\n"), "value\r\n");
}

TEST_F(RuntimeConfValue, StartsEachRunOfWhiteSpaceAnew) {
  EXPECT_EQ(value_of("KEY a  b\n"), "a  b");
  EXPECT_EQ(value_of("KEY a b \n"), "a b \n");
}

TEST_F(RuntimeConfValue, ReadsALineOfAnyLength) {
  const std::string value(100000, 'v');
  EXPECT_EQ(value_of("KEY " + value + "\n"), value);
}

} // namespace

} // namespace tavek
