#pragma once

#include <unistd.h>
#include <utility>

namespace tavek {

/// Owns an open file descriptor, or nothing.
class FileDescriptor {
public:
  explicit FileDescriptor(int fd = -1) : fd_(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept : fd_(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~FileDescriptor() { close(); }

  int get() const { return fd_; }
  bool is_open() const { return fd_ != -1; }
  int release() { return std::exchange(fd_, -1); }

  /// Closes the descriptor if it is open. Returns 0, or -1 with errno set.
  int close() { return is_open() ? ::close(release()) : 0; }

private:
  int fd_;
};

} // namespace tavek
