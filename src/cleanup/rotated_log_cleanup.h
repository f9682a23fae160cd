#pragma once

// Deletes rotated copies of logs beyond the number to keep. Where copies are numbered, logrotate itself only ever
// removes the one that its own rotation pushes out, so those left from a higher rotation count would stay for ever.
//
// A complaint is one line on standard error and never stops the walk. Only a rotation number outside the range of int
// ends it, as std::out_of_range.

#include <string>
#include <vector>

namespace tavek {

/// Cleans the logs of a virtual host, in its two log directories below the configured root. The name is joined as a
/// path: an absolute one stands for itself. It is part of a glob pattern.
void clean_vhost_logs(const std::string& vhost_name, int rot_count);

/// Cleans the rotated copies of each log; the paths may be glob patterns.
void clean_target_logs(const std::vector<std::string>& log_paths, int rot_count);

/// Whether the number at the end of `path`, in front of ".gz" if it ends so, is greater than the count. Complains and
/// answers false when there is no such number.
bool is_beyond_rotation_count(const std::string& path, int rot_count);

/// Removes `path` if it is beyond the count, complaining when that fails.
void remove_if_beyond_rotation_count(const std::string& path, int rot_count);

} // namespace tavek
