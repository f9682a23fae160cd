#pragma once

#include <iosfwd>
#include <string>

namespace tavek {

/// What a rewrite of a text comes to: the new text and the number of passes it took or, when `error` is not empty, the
/// message it fails with and nothing else.
struct RewriteResult {
  std::string text;
  std::string error;
  int passes = 0;

  bool operator==(const RewriteResult&) const = default;
};

/// Prints the text escaped, in a line of its own.
std::ostream& operator<<(std::ostream& out, const RewriteResult& result);

} // namespace tavek
