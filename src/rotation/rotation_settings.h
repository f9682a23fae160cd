#pragma once

// The settings that a rewrite applies. The driver fills them before the rotation file is opened; then they are
// read-only.

#include <string>
#include <vector>

#include "rotation/switch.h"

namespace tavek {

/// The settings of one run. A field that is not filled keeps its initial value.
struct RotationSettings {
  std::string period_type;         ///< "by_time" or "by_size"; if empty, periods in the file are kept.
  std::string period;              ///< "daily", "weekly" or "monthly", or the size as typed.
  int rot_count = -1;              ///< Rotated copies to keep; if negative, rotate directives in the file are kept.
  std::string email;               ///< Where rotated logs are mailed; if empty, a host's file gets no mail lines.
  bool compress = false;           ///< False for off and for keep, so keep writes nocompress too.
  Switch anonymize = Switch::keep; ///< Whether a script anonymizes IP addresses in rotated logs.
  bool system_mode = false;        ///< Whether the file is a system rotation file, in which many directives are copied.
  std::string vhost_name;          ///< The virtual host that a generated file is for.
};

/// One rewrite: the file, the settings and, for a category that selects stanzas, the logs to select.
struct RewriteJob {
  std::string config_path; ///< The rotation file to rewrite.
  RotationSettings settings;
  std::vector<std::string> target_logs; ///< Logs whose stanzas may get a new postrotate block.
  bool select_targets = false;          ///< Whether only those stanzas may get one.
};

} // namespace tavek
