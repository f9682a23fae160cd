#include "rotation/scanner_input.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "file/target_file.h"
#include "rotation/scanner_fatal_error.h"

namespace tavek {

namespace {

constexpr std::size_t kLargest = INT_MAX - 16; // flex counts the bytes of a buffer and of a token in an int.
constexpr std::size_t kFirstCapacity = 4096;   // For a file whose size is unknown.

// Handles errors as a generated scanner does: an interrupted read is repeated, and any other error is fatal.
std::size_t read_some(int fd, char* to, std::size_t room) {
  for (;;) {
    const ssize_t got = ::read(fd, to, room);
    if (got != -1) {
      return static_cast<std::size_t>(got);
    }
    if (errno != EINTR) {
      throw ScannerFatalError("input in flex scanner failed");
    }
  }
}

} // namespace

// Without O_NONBLOCK, opening would wait for a writer if a FIFO had just taken the file's place.
ScannerInput::ScannerInput(const std::string& path)
    : fd_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
  struct stat status {};
  if (!fd_.is_open() || fstat(fd_.get(), &status) == -1) {
    throw failed_to_open(path, errno);
  }
  refuse_special_file(path, status);
  file_size_ = status.st_size;
}

void ScannerInput::read() {
  // One byte more than the file has, so that reading finds the end of the file without growing the buffer.
  allocate(static_cast<std::size_t>(std::clamp<off_t>(file_size_, kFirstCapacity - 1, kLargest)) + 1);
  while (const std::size_t got = read_some(fd_.get(), data() + size_, capacity_ - size_)) {
    size_ += got;
    if (size_ == capacity_) {
      allocate(capacity_ * 2);
    }
  }
  std::memset(data() + size_, 0, kEndBytes);
}

// Moves to a larger block.
void ScannerInput::allocate(std::size_t capacity) {
  if (capacity > kLargest) {
    throw ScannerFatalError("fatal error - scanner input buffer overflow");
  }
  auto larger = std::make_unique_for_overwrite<char[]>(capacity + kEndBytes);
  std::copy_n(bytes_.get(), size_, larger.get());
  bytes_ = std::move(larger);
  capacity_ = capacity;
}

} // namespace tavek
