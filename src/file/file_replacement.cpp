#include "file/file_replacement.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "file/target_file.h"
#include "log/strbuf.h"

namespace tavek {

namespace {

constexpr mode_t kMode = 0644;

} // namespace

FileReplacement::FileReplacement(const std::string& target) : target_(target), temp_path_(temporary_name(target)) {
  output_.open(create());
  create_error_ = errno;
  remove_ = output_.is_open();
}

FileReplacement::~FileReplacement() {
  if (remove_) {
    unlink(temp_path_.get());
  }
}

FileReplacement::HeapText FileReplacement::temporary_name(const std::string& target) {
  char* text = nullptr;
  std::size_t room = 0;
  if (strbuf_printf(&text, &room, "%s.XXXXXX", target.c_str()) == nullptr) {
    std::free(text);
    throw std::bad_alloc();
  }
  return HeapText(text);
}

// On failure the descriptor is not open and errno is set.
FileDescriptor FileReplacement::create() {
  FileDescriptor fd(mkostemp(temp_path_.get(), O_CLOEXEC));
  if (!fd.is_open()) {
    // The name stands even where mkstemp gave up; whoever may create it by name still gets a file.
    return FileDescriptor(::open(temp_path_.get(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, kMode));
  }
  if (fchmod(fd.get(), kMode) == -1) { // mkstemp's own mode would hide the file from the log service's users.
    output_.fail(errno);
  }
  return fd;
}

void FileReplacement::require_open() const {
  if (!output_.is_open()) {
    throw failed_to_open(temp_path_.get(), create_error_);
  }
}

void FileReplacement::complete() {
  output_.finish();
  if (output_.error() != 0) {
    throw std::runtime_error(std::string("Failed to write ") + temp_path_.get() + ": " + strerror(output_.error()));
  }
}

void FileReplacement::rename_over_target() {
  remove_ = false;
  if (::rename(temp_path_.get(), target_.c_str()) == -1) {
    throw std::filesystem::filesystem_error("cannot rename", temp_path_.get(), target_,
                                            std::error_code(errno, std::generic_category()));
  }
}

} // namespace tavek
