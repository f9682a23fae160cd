#pragma once

// A file in memory, as the scanner wants it.

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tavek {

/// The scanner cannot go on: its input cannot be read or is too large. It ends the program as a generated scanner's
/// fatal error does, with the message on standard error and exit status 2.
class ScannerFatalError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
  static constexpr int kExitStatus = 2;
};

/// The bytes of a file, followed by the two NUL bytes that flex wants at the end of a buffer it scans in place.
class InputText {
public:
  /// Reads the file at `path`. Throws std::runtime_error when it cannot be opened or is neither a regular file nor a
  /// directory, ScannerFatalError when it cannot be read (a directory, an I/O error) or is too large, std::bad_alloc.
  static InputText of_file(const std::string& path);

  /// A copy of `text`.
  static InputText of(std::string_view text);

  char* data() { return bytes_.get(); }
  std::size_t size() const { return size_; }

  /// The size with the two bytes at the end.
  std::size_t buffer_size() const { return size_ + kEndBytes; }

private:
  static constexpr std::size_t kEndBytes = 2;

  explicit InputText(std::size_t capacity);
  void read_all(int fd);
  void grow();
  void terminate();

  std::unique_ptr<char[]> bytes_;
  std::size_t capacity_; // Without the end bytes.
  std::size_t size_ = 0;
};

} // namespace tavek
