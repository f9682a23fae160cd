#include "unmanaged_text.h"

#include <algorithm>

#include "plain_pattern.h"

namespace tavek {
namespace {

bool is_managed(std::string_view line) {
  namespace pattern = plain_pattern;
  constexpr PlainPattern managed[] = {pattern::period,       pattern::rotate, pattern::compress,   pattern::missingok,
                                      pattern::copytruncate, pattern::mail,   pattern::mail_which, pattern::anonymizer};
  return std::any_of(std::begin(managed), std::end(managed),
                     [line](PlainPattern matches) { return matches(line) != 0; });
}

void add_cut_before_braces(std::string_view line, std::vector<std::string>& pieces) {
  while (!line.empty()) {
    const auto piece = line.substr(0, line.find('}', 1));
    pieces.emplace_back(piece);
    line.remove_prefix(piece.size());
  }
}

} // namespace

std::vector<std::string> unmanaged_text(std::string_view text) {
  std::vector<std::string> pieces;
  while (!text.empty()) {
    const auto line = text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
    if (!is_managed(line)) {
      add_cut_before_braces(line, pieces);
    }
    text.remove_prefix(line.size());
  }
  return pieces;
}

bool holds_in_order(std::string_view text, const std::vector<std::string>& pieces) {
  std::size_t at = 0;
  for (const auto& piece : pieces) {
    at = text.find(piece, at);
    if (at == std::string_view::npos) {
      return false;
    }
    at += piece.size();
  }
  return true;
}

} // namespace tavek
