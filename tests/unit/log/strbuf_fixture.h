#pragma once

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

#include "log/strbuf.h"

namespace tavek::test {

inline std::string repeated(std::size_t length) {
  return std::string(length, 'r');
}

/// A growable string: the pointer and the room that a caller keeps. The destructor frees the string.
class StrbufFixture : public testing::Test {
protected:
  ~StrbufFixture() override { free(text); }

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

} // namespace tavek::test
