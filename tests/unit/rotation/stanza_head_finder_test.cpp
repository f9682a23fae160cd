#include "rotation/stanza_head_finder.h"

#include <gtest/gtest.h>

namespace tavek {

namespace {

using namespace std::string_view_literals;

std::size_t head_length(std::string_view text) {
  return StanzaHeadFinder().head_length(text);
}

TEST(StanzaHeadFinder, EndsAHeadAtABraceThatEndsItsLine) {
  for (const std::string_view head :
       {"/a {\n"sv, "/a{\n"sv, "/{\n"sv, "/a /b \"/c d\" {\n"sv, "/a\n/b\n{\n"sv,
        "/a\n# a comment with a / and a }\n{\n"sv, "/a # {\n"sv, "/a\n\n\n{\n"sv, "/a\0b {\n"sv}) {
    for (const std::string_view rest : {""sv, "{\n"sv, "\tdaily\n}\n"sv, "\0"sv}) {
      EXPECT_EQ(head_length(std::string(head).append(rest)), head.size()) << head;
    }
  }
}

TEST(StanzaHeadFinder, FindsNoHeadIfTheNextBraceDoesNotEndItsLine) {
  for (const std::string_view text : {"/a { \n/b {\n"sv, "/a {"sv, "/a { # comment\n"sv, "/a {\r\n"sv, "/a {{\n"sv,
                                      "/a {\0\n"sv, "/a\n# {x\n/b {\n"sv}) {
    EXPECT_EQ(head_length(text), 0U) << text;
  }
}

TEST(StanzaHeadFinder, FindsNoHeadWithoutABrace) {
  for (const std::string_view text : {"/"sv, "/a"sv, "/a\n/b\n}\n"sv, "/\0/\n"sv}) {
    EXPECT_EQ(head_length(text), 0U) << text;
  }
}

// The scanner calls the finder at each '/' that may start a head, from the start of the input to its end.
TEST(StanzaHeadFinder, FindsEveryHeadOfAnInput) {
  constexpr std::string_view input = "/a/b { x /c\n/d {\n} /e {\n} /f";
  StanzaHeadFinder heads;
  const auto length_from = [&](std::string_view start) { return heads.head_length(input.substr(input.find(start))); };
  EXPECT_EQ(length_from("/a"), 0U);
  EXPECT_EQ(length_from("/b"), 0U);
  EXPECT_EQ(length_from("/c"), "/c\n/d {\n"sv.size());
  EXPECT_EQ(length_from("/d"), "/d {\n"sv.size());
  EXPECT_EQ(length_from("/e"), "/e {\n"sv.size());
  EXPECT_EQ(length_from("/f"), 0U);
}

} // namespace

} // namespace tavek
