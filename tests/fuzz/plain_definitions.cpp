#include "plain_definitions.h"

#include <algorithm>

namespace tavek {

namespace {

constexpr std::string_view kSpace = " \t\n\v\f\r";
constexpr std::string_view kNameCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";

std::string_view without_leading_space(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(kSpace), text.size()));
}

// Nothing left to read: the end of the line or a comment.
bool is_empty(std::string_view text) {
  return text.empty() || text.front() == '#';
}

// A trailing run of white space, the newline counted, loses one character when its length is odd and none otherwise.
std::string_view value_of(std::string_view text) {
  text = text.substr(0, text.find('#'));
  const std::size_t trailing = text.size() - 1 - text.find_last_not_of(kSpace);
  return text.substr(0, text.size() - trailing % 2);
}

void read_line(std::string_view line, PlainDefinitions& definitions) {
  const std::string_view definition = without_leading_space(line);
  if (is_empty(definition)) {
    return;
  }
  const std::string_view name = definition.substr(0, definition.find_first_not_of(kNameCharacters));
  const std::string_view behind = definition.substr(name.size());
  const std::string_view value = without_leading_space(behind);
  const std::string invalid = "Invalid variable definition " + std::string(definition);
  if (name.empty() || value.size() == behind.size()) {
    definitions.reports.push_back(invalid + "\nExpected a space after variable name\n");
  } else if (is_empty(value)) {
    definitions.reports.push_back(invalid + "\nExpected a value");
  } else {
    definitions.values[std::string(name)] = value_of(value);
  }
}

} // namespace

PlainDefinitions plain_definitions(std::string_view file) {
  PlainDefinitions definitions;
  while (!file.empty()) {
    const std::size_t length = std::min(file.find('\n'), file.size() - 1) + 1;
    const std::string_view line = file.substr(0, length);
    read_line(line.substr(0, line.find('\0')), definitions); // A line is a C string.
    file.remove_prefix(length);
  }
  return definitions;
}

} // namespace tavek
