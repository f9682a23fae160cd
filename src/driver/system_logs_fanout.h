#pragma once

// Running the tool once for each system-log category.

#include <string>
#include <vector>

#include "driver/options.h"

namespace tavek {

/// Starts the tool again once a category, one child after another in the categories' order, with the period and
/// rotation options forwarded. Children inherit everything else: environment, working directory, standard streams.
class SystemLogsFanout {
public:
  /// `program_path` is what this process was started as. With a '/' it is run as it is; a bare name is looked for in
  /// the current directory and then in the directories of PATH.
  SystemLogsFanout(const std::string& program_path, const Options& options);

  /// Runs all children. Throws std::runtime_error at the first one that fails, naming its command and its exit status
  /// (or the number of the signal that killed it), and the process library's error for one that cannot be made or
  /// waited for.
  void run() const;

private:
  std::string program_path_;
  std::string program_;
  std::vector<std::string> forwarded_;
};

} // namespace tavek
