#pragma once

// The syntax of a runtime configuration file said a second time, as plainly as it can be, for the fuzzer to compare
// with.

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tavek {

/// What a file says: its definitions, the last of each name, and the reports about its malformed lines, in their order.
struct PlainDefinitions {
  std::map<std::string, std::string> values;
  std::vector<std::string> reports;
};

PlainDefinitions plain_definitions(std::string_view file);

} // namespace tavek
