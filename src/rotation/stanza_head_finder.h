#pragma once

#include <cstddef>
#include <string_view>

namespace tavek {

/// Finds where a stanza head ends. A head starts at any '/' outside a stanza and ends at the next '{', which must be
/// the last character of its line. The finder remembers the last '{' that it found, so a million slashes before the
/// same brace cost only one search. A search from each slash would take minutes for 1 MiB of slashes.
class StanzaHeadFinder {
public:
  /// Returns the length of the head at the start of `text`, its newline included, or 0 if none starts there. `text` is
  /// the rest of the input from a '/' onwards; each call must pass a later position of the same input. The first byte
  /// is not read, because flex may have a NUL in its place.
  std::size_t head_length(std::string_view text);

private:
  const char* brace_ = nullptr; // The '{' found last, or the end of the input; null before the first search.
};

} // namespace tavek
