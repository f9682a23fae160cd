#pragma once

#include <string>
#include <utility>
#include <vector>

#include "driver/options.h"

namespace tavek {

/// A command line in the form that main() receives. The first word is the program's name.
class CommandLine {
public:
  explicit CommandLine(std::vector<std::string> words) : words_(std::move(words)) {
    for (const std::string& word : words_) {
      pointers_.push_back(word.c_str());
    }
    pointers_.push_back(nullptr);
  }

  int argc() const { return static_cast<int>(words_.size()); }
  const char* const* argv() const { return pointers_.data(); }

private:
  const std::vector<std::string> words_;
  std::vector<const char*> pointers_;
};

/// The options of a command line with these words after the program's name.
inline Options options_of(std::vector<std::string> words) {
  words.insert(words.begin(), "/opt/oru/admin/sbin/tavek-logrotate");
  const CommandLine line(std::move(words));
  return parse_options(line.argc(), line.argv()).value();
}

} // namespace tavek
