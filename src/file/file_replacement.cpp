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

#include "file/directory_sync.h"
#include "file/target_file.h"
#include "log/strbuf.h"

namespace tavek {

namespace {

constexpr mode_t kMode = 0644;

} // namespace

FileReplacement::FileReplacement(const std::string& target) : target_(target), temp_path_(temporary_name(target)) {
  create_error_ = create();
  owns_temporary_file_ = create_error_ == 0;
}

FileReplacement::~FileReplacement() {
  if (owns_temporary_file_) {
    unlink(temp_path_.get());
  }
}

// mkostemp changes the name in place, so it is a C string, made by the panel's formatter.
FileReplacement::HeapText FileReplacement::temporary_name(const std::string& target) {
  char* text = nullptr;
  std::size_t room = 0;
  if (strbuf_printf(&text, &room, "%s.XXXXXX", target.c_str()) == nullptr) {
    std::free(text);
    throw std::bad_alloc();
  }
  return HeapText(text);
}

// Opens the output. Returns 0, or the errno of the failure.
int FileReplacement::create() {
  FileDescriptor fd(mkostemp(temp_path_.get(), O_CLOEXEC));
  if (fd.is_open()) {
    if (fchmod(fd.get(), kMode) == -1) { // mkostemp creates the file with mode 0600.
      output_.fail(errno);
    }
  } else {
    // The path contains either the template itself or the last name that mkostemp tried. Opening it helps if all names
    // that mkostemp tried are taken; after any other error it fails with the same error. It may overwrite a leftover
    // file, but follows no link, and whoever can create files here could replace the target as well.
    fd = FileDescriptor(::open(temp_path_.get(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, kMode));
    if (!fd.is_open()) {
      return errno;
    }
  }
  output_.open(std::move(fd));
  return 0;
}

void FileReplacement::require_open() const {
  if (create_error_ != 0) {
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
  const DirectorySync directory(target_);
  owns_temporary_file_ = false;
  if (::rename(temp_path_.get(), target_.c_str()) == -1) {
    throw std::filesystem::filesystem_error("cannot rename", temp_path_.get(), target_,
                                            std::error_code(errno, std::generic_category()));
  }
  directory.sync("is in place");
}

} // namespace tavek
