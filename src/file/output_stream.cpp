#include "file/output_stream.h"

#include <cerrno>
#include <unistd.h>

namespace tavek {

OutputStream::OutputStream() : buffer_(std::make_unique_for_overwrite<char[]>(kCapacity)) {}

void OutputStream::restart() {
  used_ = 0;
  check(ftruncate(fd_.get(), 0));
  check(lseek(fd_.get(), 0, SEEK_SET));
}

void OutputStream::finish() {
  flush();
  if (error_ == 0) {
    check(fsync(fd_.get()));
  }
  check(fd_.close());
}

void OutputStream::fail(int error) {
  if (error_ == 0) {
    error_ = error;
  }
}

// For text that does not fit into the rest of the buffer. Text longer than the buffer is not copied into it.
void OutputStream::write_through(std::string_view text) {
  flush();
  if (text.size() < kCapacity) {
    write(text);
  } else {
    write_out(text);
  }
}

void OutputStream::flush() {
  write_out({buffer_.get(), used_});
  used_ = 0;
}

// Writes nothing after the first failure, because the file will be discarded. EINTR is a failure too: the process has
// no signal handler that could interrupt a write.
void OutputStream::write_out(std::string_view text) {
  while (!text.empty() && error_ == 0) {
    const ssize_t written = ::write(fd_.get(), text.data(), text.size());
    if (written == -1) {
      fail(errno);
    } else {
      text.remove_prefix(static_cast<std::size_t>(written));
    }
  }
}

void OutputStream::check(off_t result) {
  if (result == -1) {
    fail(errno);
  }
}

} // namespace tavek
