#include "rotation/ordinary_text.h"

#include "rotation/slash_span.h"

namespace tavek {

namespace {

constexpr OrdinaryEnds kEndsOutside{ByteSet("/"), ByteSet("#")};

} // namespace

std::size_t measure_comments(std::string_view text) {
  std::size_t length = 0;
  do {
    const std::size_t newline = text.find('\n', length + 1);
    if (newline == std::string_view::npos) {
      return text.size();
    }
    length = newline + 1;
  } while (length < text.size() && text[length] == '#');
  return length;
}

std::size_t measure_outside(std::string_view text) {
  std::size_t length = 0;
  do {
    const std::string_view rest = text.substr(length);
    if (rest.front() != '/') {
      length += measure_ordinary(rest, kEndsOutside);
    } else if (const SlashSpan span = measure_slash(rest); !span.opens_stanza) {
      length += span.length;
    } else {
      return length;
    }
  } while (length < text.size() && !(text[length - 1] == '\n' && text[length] == '#'));
  return length;
}

} // namespace tavek
