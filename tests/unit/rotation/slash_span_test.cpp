#include "rotation/slash_span.h"

#include <gtest/gtest.h>

namespace tavek {

namespace {

// The text from a '/' on, cut where its span ends.
struct Row {
  std::string_view span;
  std::string_view behind;
};

std::string text_of(const Row& row) {
  return std::string(row.span).append(row.behind);
}

// A head runs up to and over the brace and its newline.
constexpr Row kHeads[] = {
    {"/a {\n", ""},
    {"/a{\n", "\tdaily\n}\n"},
    {"/{\n", "}\n"},
    {"/a /b \"/c d\" {\n", "/e {\n"},
    {"/a\n/b\n{\n", "}\n"},
    {"/a\n# a comment with a / and a }\n{\n", "}\n"},
    {"/a # {\n", "}\n"},
    {"/a\n\n\n{\n", "{\n"},
    {std::string_view("/a\0b {\n", 7), std::string_view("\0", 1)},
};

// Where the brace does not end its line, nothing before it opens a stanza; the line of the brace is looked at anew.
constexpr Row kOrdinaryUpToTheLineOfABrace[] = {
    {"/a\n", "{ \n"},        {"/a\n", "# { comment\n/b {\n"}, {"/a\n/b\n", "# {x\n"}, {"/a\n", "{"},
    {"/a\n", "{\r\n/b {\n"}, {"/a\n", "x { /b {\n"},          {"/a\n\n", "{{\n"},
};

// On the brace's own line the span takes the brace, so that it is not found again and again.
constexpr Row kOrdinaryOverABraceOnItsLine[] = {
    {"/a {", " \n/b {\n"}, {"/a {", ""},    {"/a {", " # comment\n"},
    {"/a {", "\r\n"},      {"/a {", "{\n"}, {"/a {", std::string_view("\0\n", 2)},
};

constexpr Row kAllThatIsLeft[] = {
    {"/", ""},
    {"/a", ""},
    {"/a\n/b\n}\n", ""},
    {std::string_view("/\0/\n", 4), ""},
};

template <std::size_t size>
void expect_spans(const Row (&rows)[size], bool opens_stanza) {
  for (const Row& row : rows) {
    const std::string text = text_of(row);
    const SlashSpan span = measure_slash(text);
    EXPECT_EQ(text.substr(0, span.length), row.span);
    EXPECT_EQ(span.opens_stanza, opens_stanza) << text;
  }
}

TEST(SlashSpan, AHeadEndsWithABraceThatEndsItsLine) {
  expect_spans(kHeads, true);
}

TEST(SlashSpan, TextBeforeALineWithAnotherBraceIsOrdinary) {
  expect_spans(kOrdinaryUpToTheLineOfABrace, false);
}

TEST(SlashSpan, ABraceWithinTheLineOfTheSlashIsOrdinaryToo) {
  expect_spans(kOrdinaryOverABraceOnItsLine, false);
}

TEST(SlashSpan, EverythingIsOrdinaryWithoutABrace) {
  expect_spans(kAllThatIsLeft, false);
}

} // namespace

} // namespace tavek
