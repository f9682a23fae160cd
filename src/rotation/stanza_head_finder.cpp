#include "rotation/stanza_head_finder.h"

namespace tavek {

std::size_t StanzaHeadFinder::head_length(std::string_view text) {
  if (brace_ == nullptr || brace_ < text.data()) {
    const std::size_t brace = text.find('{', 1);
    brace_ = text.data() + (brace != std::string_view::npos ? brace : text.size());
  }
  const auto length = static_cast<std::size_t>(brace_ - text.data()) + 1;
  return length < text.size() && text[length] == '\n' ? length + 1 : 0;
}

} // namespace tavek
