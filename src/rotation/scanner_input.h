#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace tavek {

/// A file's bytes in memory, followed by the two NUL bytes that flex needs at the end of a buffer it scans in place.
class ScannerInput {
public:
  /// Reads the file at `path`. Throws std::runtime_error if it cannot be opened or is neither a regular file nor a
  /// directory. Throws ScannerFatalError if it cannot be read (a directory, an I/O error) or is larger than about
  /// 2 GiB. Throws std::bad_alloc.
  explicit ScannerInput(const std::string& path);

  char* data() { return bytes_.get(); }
  std::size_t size() const { return size_; }

  /// The size including the two bytes at the end.
  std::size_t buffer_size() const { return size_ + kEndBytes; }

private:
  static constexpr std::size_t kEndBytes = 2;

  void allocate(std::size_t capacity);
  void read_all(int fd);

  std::unique_ptr<char[]> bytes_;
  std::size_t capacity_ = 0; // Without the end bytes.
  std::size_t size_ = 0;
};

} // namespace tavek
