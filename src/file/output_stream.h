#pragma once

// The stream that a rewrite writes to.

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <sys/types.h>

#include "file/file_descriptor.h"

namespace tavek {

/// A buffered stream on a descriptor that remembers its first error, so that whoever writes need not look: the state
/// is judged once, before the file counts as written. Nothing here throws but the constructor.
class OutputStream {
public:
  /// Throws std::bad_alloc. What is written before the stream is open is buffered.
  OutputStream();

  void open(FileDescriptor fd) { fd_ = std::move(fd); }

  void write(std::string_view text) {
    if (text.size() <= kCapacity - used_) {
      std::copy(text.begin(), text.end(), buffer_.get() + used_);
      used_ += text.size();
    } else {
      write_through(text);
    }
  }

  /// Drops everything written so far, on disk too.
  void restart();

  /// Writes out what is buffered, syncs the file to the disk and closes it.
  void finish();

  /// Notes an error of an operation on the file that was made elsewhere.
  void fail(int error);

  bool is_open() const { return fd_.is_open(); }

  /// The errno of the first failure, or 0.
  int error() const { return error_; }

private:
  static constexpr std::size_t kCapacity = 65536;

  void write_through(std::string_view text);
  void flush();
  void write_out(std::string_view text);
  void check(off_t result);

  FileDescriptor fd_;
  std::unique_ptr<char[]> buffer_;
  std::size_t used_ = 0;
  int error_ = 0;
};

} // namespace tavek
