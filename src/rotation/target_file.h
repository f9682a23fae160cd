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
/// under the usual file-creation mask, when there is none. A failure to create is not reported here, for a file that
/// can be read can be replaced; one that cannot be read is reported by whoever opens it next.
void prepare_target(const std::string& path);

} // namespace tavek
