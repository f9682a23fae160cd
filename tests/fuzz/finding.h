#pragma once

// How a fuzz target says that something is wrong.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace tavek {

/// Ends the run as a finding, with a message and the two texts that should be the same, unless they are.
inline void expect_same(std::string_view what, std::string_view expected, std::string_view actual) {
  if (expected == actual) {
    return;
  }
  const std::string message = std::string(what) + "\n--- expected\n" + std::string(expected) + "\n--- actual\n" +
                              std::string(actual) + "\n---\n";
  std::fwrite(message.data(), 1, message.size(), stderr);
  std::abort();
}

/// Ends the run as a finding unless `condition` holds.
inline void expect(bool condition, std::string_view what) {
  expect_same(what, "true", condition ? "true" : "false");
}

} // namespace tavek
