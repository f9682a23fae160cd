#pragma once

// What a rotation file may be on disk.

#include <stdexcept>
#include <string>
#include <sys/stat.h>

namespace tavek {

/// "Failed to open PATH: " with the system's text for `error`, to be thrown.
std::runtime_error failed_to_open(const std::string& path, int error);

/// Throws std::runtime_error when `status`, which was taken of `path`, is that of a FIFO, a socket or a device. They
/// are no rotation files: opening one may wait for ever or do something, and a rename would replace the node.
void refuse_special_file(const std::string& path, const struct stat& status);

/// Refuses a special file at `path`, then makes sure that there is a file to read: creates an empty one, mode 0644
/// under the usual file-creation mask, when there is none. Refuses an immutable file too: it could be read, but no
/// rename would replace it. Any other failure to create or open it is left to whoever reads the file or makes its
/// replacement, neither of which needs the right to write to it.
void prepare_target(const std::string& path);

} // namespace tavek
