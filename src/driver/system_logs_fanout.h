#pragma once

// Running the tool once for each system-log category.

#include <string>

#include "driver/options.h"

namespace tavek {

/// Starts `program_path` once a category, one child after another in the categories' order, with the period and
/// rotation options forwarded. A path with a '/' is run as it is; a bare name is looked for in the current directory
/// and then in the directories of PATH. Children inherit everything else.
///
/// Throws std::runtime_error at the first child that fails, naming its command and its exit status (or the number of
/// the signal that killed it), and the process library's error for a child that cannot be made or waited for.
void run_system_logs_fanout(const std::string& program_path, const Options& options);

} // namespace tavek
