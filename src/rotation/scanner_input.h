#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <sys/types.h>

#include "file/file_descriptor.h"

namespace tavek {

/// An open file and, after read(), its bytes in memory, followed by the two NUL bytes that flex needs at the end of a
/// buffer it scans in place.
class ScannerInput {
public:
  /// Opens the file at `path`. Throws std::runtime_error if it cannot be opened or is neither a regular file nor a
  /// directory.
  explicit ScannerInput(const std::string& path);

  /// Reads the whole file; call it once. Throws ScannerFatalError if the file cannot be read (a directory, an I/O
  /// error) or is larger than about 2 GiB. Throws std::bad_alloc.
  void read();

  char* data() { return bytes_.get(); }
  std::size_t size() const { return size_; }

  /// The size including the two bytes at the end.
  std::size_t buffer_size() const { return size_ + kEndBytes; }

private:
  static constexpr std::size_t kEndBytes = 2;

  void allocate(std::size_t capacity);

  FileDescriptor fd_;
  off_t file_size_ = 0; // When the file was opened; it may have changed since.
  std::unique_ptr<char[]> bytes_;
  std::size_t capacity_ = 0; // Without the end bytes.
  std::size_t size_ = 0;
};

} // namespace tavek
