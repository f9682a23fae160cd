#pragma once

// The patterns of plain_rewrite().

#include <cstddef>
#include <string_view>

namespace tavek {

/// Each measures what it matches at the beginning of `rest`, the input that is not yet used up; 0 is no match.
using PlainPattern = std::size_t (*)(std::string_view rest);

namespace plain_pattern {

std::size_t comment(std::string_view rest);
std::size_t stanza_head(std::string_view rest);
std::size_t period(std::string_view rest);
std::size_t rotate(std::string_view rest);
std::size_t compress(std::string_view rest);
std::size_t missingok(std::string_view rest);
std::size_t copytruncate(std::string_view rest);
std::size_t mail(std::string_view rest);
std::size_t mail_which(std::string_view rest);
std::size_t postrotate(std::string_view rest);
std::size_t anonymizer(std::string_view rest);
std::size_t endscript(std::string_view rest);
std::size_t closing_brace(std::string_view rest);
std::size_t any_byte(std::string_view rest);

} // namespace plain_pattern
} // namespace tavek
