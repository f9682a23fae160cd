#pragma once

// Makes changes to a directory survive a power loss. POSIX does not guarantee that fsync on a file also syncs the
// directory entry that names it.

#include <string>

#include "file/file_descriptor.h"

namespace tavek {

/// The directory that contains a file. Open it before its entries are changed, so that after the change only the sync
/// itself can fail.
class DirectorySync {
public:
  /// Opens the parent directory of `path`. Throws std::runtime_error "Failed to open ...". Does not throw if the
  /// directory may not be read or cannot be found: sync() then does nothing. If it cannot be found, the caller's rename
  /// or removal then fails.
  explicit DirectorySync(const std::string& path);

  /// Syncs the directory to disk. `change` is the part of the message that says what has happened to the file, such as
  /// "is removed". Throws std::runtime_error if an error means that the change may be lost. A file system that does not
  /// sync directories is not an error. A successful sync allocates no memory, so nothing else can fail after the
  /// change.
  void sync(const char* change) const;

private:
  const std::string path_;
  FileDescriptor directory_;
};

} // namespace tavek
