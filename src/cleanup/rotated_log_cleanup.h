#pragma once

// Deletes rotated copies of logs beyond the number to keep. logrotate removes only the copy that its own rotation
// pushes out, so copies left over from a higher rotation count would remain forever.
//
// Each problem with a copy is reported as one line on standard error, and the cleanup continues. Only a rotation number
// that does not fit in an int ends the cleanup: std::out_of_range is thrown.

#include <string>
#include <vector>

namespace tavek {

/// Deletes surplus copies of a virtual host's logs in its two log directories below the configured root. The name is
/// joined as a path: an absolute name replaces the root. Glob characters in it are expanded.
void clean_vhost_logs(const std::string& vhost_name, int rot_count);

/// Deletes surplus copies of each log. The paths may be glob patterns.
void clean_target_logs(const std::vector<std::string>& log_paths, int rot_count);

/// Whether the rotation number of `path` is greater than the count. The number is the text after the last dot, ignoring
/// a final ".gz". If that is not a number, reports it and returns false.
bool is_beyond_rotation_count(const std::string& path, int rot_count);

/// Removes `path` if its rotation number is greater than the count. Reports a failure.
void remove_if_beyond_rotation_count(const std::string& path, int rot_count);

} // namespace tavek
