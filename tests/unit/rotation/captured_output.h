#pragma once

#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

#include "file/output_stream.h"

namespace tavek {

/// An open output stream to a file in memory.
class CapturedOutput {
public:
  CapturedOutput() : file_(memfd_create("output", MFD_CLOEXEC)) { stream_.open(FileDescriptor(dup(file_.get()))); }

  OutputStream& stream() { return stream_; }

  /// Finishes the stream and returns its whole content.
  std::string text() {
    stream_.finish();
    EXPECT_EQ(stream_.error(), 0);
    std::string text(static_cast<std::size_t>(lseek(file_.get(), 0, SEEK_END)), '\0');
    EXPECT_EQ(pread(file_.get(), text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    return text;
  }

private:
  FileDescriptor file_;
  OutputStream stream_;
};

} // namespace tavek
