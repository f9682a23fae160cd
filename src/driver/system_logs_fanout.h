#pragma once

// Runs the tool once per system-log category.

#include <string>
#include <vector>

#include "driver/options.h"

namespace tavek {

/// Starts one child per category, one after another in the order of the categories, with the period, rotation-count and
/// anonymization options forwarded. Children inherit the environment, working directory and standard streams.
class SystemLogsFanout {
public:
  /// `program_path` is argv[0] of this process. A path with a '/' is run unchanged; a bare name is searched for in the
  /// current directory and then in the directories of PATH.
  SystemLogsFanout(const std::string& program_path, const Options& options);

  /// Runs all children. The first failure ends the run. If a child fails, throws std::runtime_error with its command
  /// and its exit status (or the number of the signal that killed it). If a child cannot be started or waited for,
  /// throws std::system_error; a child that cannot be waited for has been killed.
  void run() const;

private:
  std::string program_path_;
  std::string program_;
  std::vector<std::string> forwarded_;
};

} // namespace tavek
