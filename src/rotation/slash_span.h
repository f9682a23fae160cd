#pragma once

#include <cstddef>
#include <string_view>

namespace tavek {

/// The text that a '/' outside any stanza starts.
struct SlashSpan {
  std::size_t length;
  bool opens_stanza;
};

/// Measures from the '/' that `text`, the rest of the input, begins with. A stanza head runs from the '/' over anything
/// but braces, newlines and comments included, to a '{' that ends its line. Where the next '{' does not end its line,
/// no '/' before it can open a stanza, so the span is ordinary text up to the start of that brace's line, which may be
/// a comment, or over the brace when it stands on the line of the '/'. Without any '{' it is all that is left. So a
/// byte is looked at a few times at most, however many slashes there are.
SlashSpan measure_slash(std::string_view text);

} // namespace tavek
