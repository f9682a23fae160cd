#include "rotation/ordinary_text.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

namespace tavek {

namespace {

// Text, cut where what is measured ends.
struct Row {
  std::string_view taken;
  std::string_view behind;
};

template <typename Measure>
void expect_lengths(std::initializer_list<Row> rows, Measure measure) {
  for (const Row& row : rows) {
    const std::string text = std::string(row.taken).append(row.behind);
    EXPECT_EQ(text.substr(0, measure(text)), row.taken) << text;
  }
}

TEST(ByteSet, HasTheBytesItWasGiven) {
  constexpr ByteSet set("a\n\xff");
  EXPECT_TRUE(set.has('a') && set.has('\n') && set.has('\xff'));
  EXPECT_FALSE(set.has('b') || set.has('\0') || set.has('\x7f'));
}

TEST(OrdinaryText, GoesUpToAByteThatMayEndIt) {
  static constexpr OrdinaryEnds kEnds{ByteSet("}"), ByteSet("s")};
  const std::initializer_list<Row> rows = {
      {"a", ""},       {"abc\nabc\n", ""}, {"abc", "}abc"},
      {"}abc", "}"},   // The first byte is taken whatever it is.
      {"xsx\n", "sx"}, // An s ends it only at the start of a line.
      {"s\n\n", "s"},  {"\n", "s"},        {std::string_view("\0\0", 2), "}"},
  };
  expect_lengths(rows, [](std::string_view text) { return measure_ordinary(text, kEnds); });
}

TEST(OrdinaryText, CommentLinesAreTakenTogether) {
  const std::initializer_list<Row> rows = {
      {"#", ""},      {"# a", ""},     {"# a\n", ""},    {"# a\n", "b # c\n# d\n"}, {"#\n#\n# a { / }\n", "\n# b\n"},
      {"# a\n#", ""}, {"# a\n", " #"}, {"# a\n# b", ""}, {"#\n", "/a {\n"},
  };
  expect_lengths(rows, measure_comments);
}

TEST(OrdinaryText, OutsideAStanzaItGoesUpToACommentOrAHead) {
  const std::initializer_list<Row> rows = {
      {"a", ""},
      {"weekly\nrotate 4\n", ""},
      {"weekly\n\n", "# comment\n"},
      {"weekly # no comment\n", "#"},
      {"weekly\n", "/a {\n"},
      {"weekly ", "/a {\n"},         // A head may begin within a line.
      {"/a\n/b\n}\n", ""},           // No '{' follows: no slash opens anything.
      {"/a {x\nweekly\n", "/b {\n"}, // The '{' does not end its line.
      {"a\n/b\n", "# { x\n"},        // The line of the brace is a comment.
      {"a\n/b\n{ \nweekly\n/c {x\n", "#"},
  };
  expect_lengths(rows, measure_outside);
}

} // namespace

} // namespace tavek
