#include "rotation/input_text.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "file/file_descriptor.h"
#include "file/target_file.h"

namespace tavek {

namespace {

constexpr std::size_t kLargest = INT_MAX - 16; // flex counts the bytes of a buffer and of a token in an int.
constexpr std::size_t kHugePage = 2097152;     // A large file takes half as long to read where the system has them.
constexpr std::size_t kFirstCapacity = 4096;   // For a file that does not tell its size.

[[noreturn]] void too_large() {
  throw ScannerFatalError("fatal error - scanner input buffer overflow");
}

// As a generated scanner reads: an interrupted read is tried again, any other error is fatal.
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

std::size_t capacity_for(off_t size) {
  // One byte more than the file has, so that its end is seen without growing.
  const std::size_t wanted = static_cast<std::size_t>(std::max<off_t>(size, 0)) + 1;
  if (wanted > kLargest) {
    too_large();
  }
  return std::max(wanted, kFirstCapacity);
}

} // namespace

InputText::InputText(std::size_t capacity)
    : bytes_(std::make_unique_for_overwrite<char[]>(capacity + kEndBytes)), capacity_(capacity) {
  void* huge_pages = bytes_.get();
  if (std::align(kHugePage, kHugePage, huge_pages, capacity) != nullptr) {
    madvise(huge_pages, capacity, MADV_HUGEPAGE);
  }
}

InputText InputText::of_file(const std::string& path) {
  // Opening must not wait for a writer in case a FIFO has just taken the file's place.
  const FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (!fd.is_open() || fstat(fd.get(), &status) == -1) {
    throw failed_to_open(path, errno);
  }
  refuse_special_file(path, status);
  InputText text(capacity_for(status.st_size));
  text.read_all(fd.get());
  return text;
}

InputText InputText::of(std::string_view text) {
  InputText copy(text.size());
  std::copy(text.begin(), text.end(), copy.data());
  copy.size_ = text.size();
  copy.terminate();
  return copy;
}

void InputText::read_all(int fd) {
  while (const std::size_t got = read_some(fd, data() + size_, capacity_ - size_)) {
    size_ += got;
    if (size_ == capacity_) {
      grow();
    }
  }
  terminate();
}

void InputText::grow() {
  if (capacity_ > kLargest / 2) {
    too_large();
  }
  InputText larger(capacity_ * 2);
  std::memcpy(larger.data(), data(), size_);
  larger.size_ = size_;
  *this = std::move(larger);
}

void InputText::terminate() {
  std::memset(data() + size_, 0, kEndBytes);
}

} // namespace tavek
