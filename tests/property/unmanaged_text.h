#pragma once

// The part of a rotation file that a rewrite has no business with.

#include <string>
#include <string_view>
#include <vector>

namespace tavek {

/// The lines of `text` that look like no managed directive, wherever they stand. A line is cut before each closing
/// brace, for missing directives are written there.
std::vector<std::string> unmanaged_text(std::string_view text);

/// Whether `text` holds all `pieces`, each whole, in their order.
bool holds_in_order(std::string_view text, const std::vector<std::string>& pieces);

} // namespace tavek
