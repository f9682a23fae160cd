#include "rotation/slash_span.h"

namespace tavek {

SlashSpan measure_slash(std::string_view text) {
  const std::size_t brace = text.find('{');
  if (brace == std::string_view::npos) {
    return {text.size(), false};
  }
  if (text.substr(brace + 1).starts_with('\n')) {
    return {brace + 2, true};
  }
  const std::size_t newline = text.rfind('\n', brace);
  return {newline != std::string_view::npos ? newline + 1 : brace + 1, false};
}

} // namespace tavek
