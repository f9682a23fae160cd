#pragma once

// How far text goes that the scanner's rules leave as it is. The rules would take it byte by byte, each byte after a
// look at every rule; here it is taken in one go, however many lines it has.

#include <array>
#include <cstddef>
#include <string_view>

namespace tavek {

/// A set of bytes, to be asked for many.
class ByteSet {
public:
  constexpr explicit ByteSet(std::string_view bytes) {
    for (const char byte : bytes) {
      has_[static_cast<unsigned char>(byte)] = true;
    }
  }
  bool has(char byte) const { return has_[static_cast<unsigned char>(byte)]; }

private:
  std::array<bool, 256> has_{};
};

/// The bytes by which ordinary text may end, because what a rule is about may begin with them.
struct OrdinaryEnds {
  ByteSet anywhere;
  ByteSet at_line_start;
};

/// Measures the ordinary text that `text` begins with: its first byte, whatever that is, and all up to an end.
inline std::size_t measure_ordinary(std::string_view text, const OrdinaryEnds& ends) {
  std::size_t length = 1;
  while (length < text.size() && !ends.anywhere.has(text[length]) &&
         !(text[length - 1] == '\n' && ends.at_line_start.has(text[length]))) {
    ++length;
  }
  return length;
}

/// Measures the comment lines that `text` begins with.
std::size_t measure_comments(std::string_view text);

/// Measures the text outside any stanza that `text` begins with: its first byte, unless that opens a stanza, and all up
/// to a comment in the first column or to the '/' of a stanza head. A byte is looked at a few times at most.
std::size_t measure_outside(std::string_view text);

} // namespace tavek
