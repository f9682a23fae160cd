#include "file/target_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>

#include "file/file_descriptor.h"

namespace tavek {

namespace {

// Does not follow a symbolic link, because a rename replaces the link itself.
bool is_immutable(const std::string& path) {
  struct statx status {};
  return statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE, &status) == 0 &&
         (status.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
}

} // namespace

std::runtime_error failed_to_open(const std::string& path, int error) {
  return std::runtime_error("Failed to open " + path + ": " + strerror(error));
}

void refuse_special_file(const std::string& path, const struct stat& status) {
  if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
    throw std::runtime_error("Failed to open " + path + ": Not a regular file");
  }
}

void prepare_target(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) == 0) {
    refuse_special_file(path, status);
  }
  const FileDescriptor created(
      ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0644));
  if (!created.is_open() && errno == EPERM && is_immutable(path)) {
    throw failed_to_open(path, EPERM);
  }
}

} // namespace tavek
