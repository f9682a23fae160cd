#pragma once

// The five categories of system logs whose rotation files are edited in place.

#include <span>

#include "driver/options.h"

namespace tavek {

/// A category of system logs. All strings are compiled in.
struct SystemLogCategory {
  const char* option;                     ///< The option that selects it, without the hyphens.
  const char* rotation_file;              ///< The file to rewrite.
  std::span<const char* const> log_paths; ///< Its logs, as glob patterns for the cleanup.
  bool select_stanzas;                    ///< Whether only stanzas of these logs may get a new script.
};

/// The categories in the order in which their options are tested and in which --system-logs runs them.
std::span<const SystemLogCategory> system_log_categories();

/// The first category whose option is set, or null.
const SystemLogCategory* selected_category(const Options& options);

} // namespace tavek
