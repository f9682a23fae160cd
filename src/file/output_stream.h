#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <sys/types.h>

#include "file/file_descriptor.h"

namespace tavek {

/// A buffered output stream that remembers its first error. Callers need not check individual writes, only error() once
/// after finish(). Only the constructor throws.
class OutputStream {
public:
  /// Throws std::bad_alloc. The stream must be opened before more than 32 KiB are written.
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

  /// Discards everything written so far, including what is already in the file.
  void restart();

  /// Flushes the buffer, syncs the file to disk and closes it.
  void finish();

  /// Records an error from a file operation performed elsewhere.
  void fail(int error);

  /// The errno of the first failure, or 0.
  int error() const { return error_; }

private:
  static constexpr std::size_t kCapacity = 32768;

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
