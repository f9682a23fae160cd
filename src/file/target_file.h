#pragma once

// Checks on a file that is about to be replaced.

#include <stdexcept>
#include <string>
#include <sys/stat.h>

namespace tavek {

/// The exception for "Failed to open PATH: " followed by the system's text for `error`.
std::runtime_error failed_to_open(const std::string& path, int error);

/// Throws std::runtime_error if `status`, the status of `path`, is that of a FIFO, a socket or a device. Opening one
/// may block forever or have side effects, and a rename would replace the node. A directory is not refused, because
/// reading it fails.
void refuse_special_file(const std::string& path, const struct stat& status);

/// Prepares `path` to be read and replaced. Creates an empty file, mode 0644 under the umask 022, if there is none.
/// Throws std::runtime_error for a special file, and for an immutable file, which a rename cannot replace. Ignores
/// every other failure to open the file for writing: reading or replacing it, which does not need that permission,
/// reports what is wrong.
void prepare_target(const std::string& path);

} // namespace tavek
