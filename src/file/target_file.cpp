#include "file/target_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>

#include "file/file_descriptor.h"

namespace tavek {

std::runtime_error failed_to_open(const std::string& path, int error) {
  return std::runtime_error("Failed to open " + path + ": " + strerror(error));
}

void refuse_special_file(const std::string& path, const struct stat& status) {
  if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
    throw std::runtime_error("Failed to open " + path + ": Not a regular file");
  }
}

void refuse_irreplaceable(const std::string& path) {
  // If the target is a symbolic link, a rename replaces the link itself, but reading follows the link.
  struct statx entry {};
  if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE, &entry) != 0) {
    return;
  }
  struct stat status {};
  status.st_mode = entry.stx_mode;
  if (S_ISLNK(entry.stx_mode) && stat(path.c_str(), &status) != 0) {
    return;
  }
  refuse_special_file(path, status);
  if (S_ISREG(entry.stx_mode) && (entry.stx_attributes & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) != 0) {
    throw failed_to_open(path, EPERM);
  }
}

void create_if_missing(const std::string& path) {
  const FileDescriptor ignored(
      ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0644));
}

} // namespace tavek
