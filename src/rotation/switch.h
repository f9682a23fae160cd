#pragma once

// The tri-state value of an option: keep the current state, turn it on, turn it off.

#include <iosfwd>
#include <string_view>

namespace tavek {

enum class Switch { keep = 0, on = 1, off = 2 };

/// "keep", "on" or "off". Throws std::invalid_argument for a value outside the enumeration.
std::string_view to_text(Switch value);

/// Prints to_text(), which can be read back. "true" and "false" are accepted but never printed.
std::ostream& operator<<(std::ostream& stream, Switch value);

/// Reads one word: "on" or "true", "off" or "false", "keep", in lower case only. Any other word leaves `value`
/// unchanged and sets the stream's failbit.
std::istream& operator>>(std::istream& stream, Switch& value);

} // namespace tavek
