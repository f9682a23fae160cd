#pragma once

// The five families of system logs whose rotation files are edited in place.

#include <span>

#include "driver/options.h"

namespace tavek {

/// A family of system logs. All texts are compiled in.
struct SystemLogCategory {
  const char* option;                     ///< The switch that selects it, without its hyphens.
  const char* rotation_file;              ///< The file that is rewritten.
  std::span<const char* const> log_paths; ///< Its logs, as patterns for the cleanup.
  bool select_stanzas;                    ///< Whether only the stanzas of those logs are targeted.
};

/// The rows in the order in which they are tested and in which a run for all system logs takes them.
std::span<const SystemLogCategory> system_log_categories();

/// The first row whose switch is set, or null.
const SystemLogCategory* selected_category(const Options& options);

} // namespace tavek
