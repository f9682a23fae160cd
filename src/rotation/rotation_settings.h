#pragma once

// What a rewrite applies: filled by the driver before any file is opened, read-only afterwards.

#include <string>
#include <vector>

#include "rotation/switch.h"

namespace tavek {

/// The settings of one run. A field that is not filled keeps its start value.
struct RotationSettings {
  std::string period_type;         ///< "by_time" or "by_size"; empty: the file's own period is kept.
  std::string period;              ///< "daily", "weekly" or "monthly", or the size text, written unchanged.
  int rot_count = -1;              ///< Rotated copies to keep; negative: the file's own rotate directive is kept.
  std::string email;               ///< Where rotated logs are mailed to; empty: no mail directives.
  bool compress = false;           ///< Off and keep are both false, so that keep still writes nocompress.
  Switch anonymize = Switch::keep; ///< Whether rotated logs pass through the IP-anonymizing script.
  bool system_mode = false;        ///< A system rotation file is edited: no compression, mail and the like.
  std::string vhost_name;          ///< The virtual host whose file is generated.
};

/// One rewrite: the file, the settings and, for a category that selects its stanzas, the logs to select by.
struct RewriteJob {
  std::string config_path; ///< The rotation file that is rewritten.
  RotationSettings settings;
  std::vector<std::string> target_logs; ///< Log paths whose stanzas are targeted.
  bool select_targets = false;          ///< Whether `target_logs` restricts anything.
};

} // namespace tavek
