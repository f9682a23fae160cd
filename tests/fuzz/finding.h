#pragma once

// How a fuzz target reports a finding.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace tavek {

/// If the strings differ, prints a message and both strings, then aborts.
inline void expect_same(std::string_view what, std::string_view expected, std::string_view actual) {
  if (expected == actual) {
    return;
  }
  const std::string message = std::string(what) + "\n--- expected\n" + std::string(expected) + "\n--- actual\n" +
                              std::string(actual) + "\n---\n";
  std::fwrite(message.data(), 1, message.size(), stderr);
  std::abort();
}

/// If `condition` is false, prints a message and aborts.
inline void expect(bool condition, std::string_view what) {
  expect_same(what, "true", condition ? "true" : "false");
}

} // namespace tavek
