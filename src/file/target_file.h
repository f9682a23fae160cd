#pragma once

// Checks on a file that is about to be replaced.

#include <stdexcept>
#include <string>
#include <sys/stat.h>

namespace tavek {

/// Returns the exception with the message "Failed to open PATH: " and the system's text for `error`.
std::runtime_error failed_to_open(const std::string& path, int error);

/// Throws std::runtime_error if `status`, the status of `path`, is that of a FIFO, a socket or a device. Opening one
/// may block forever or have side effects, and a rename would replace the node. A directory is not refused, because
/// reading it fails.
void refuse_special_file(const std::string& path, const struct stat& status);

/// Throws std::runtime_error if the file at `path` must not or cannot be replaced: if it is a special file, a symbolic
/// link to a special file, or a file with the attribute immutable or append-only (the rename would fail, but only after
/// the cleanup). A file that is missing or cannot be examined passes.
void refuse_irreplaceable(const std::string& path);

/// Creates an empty file, mode 0644 under the umask 022, if there is none. Failures are ignored. If the file cannot be
/// read or replaced, a later step reports the reason. An existing file that is not writable can still be read and
/// replaced.
void create_if_missing(const std::string& path);

} // namespace tavek
