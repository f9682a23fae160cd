#include "file/directory_sync.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

#include "file/target_file.h"

namespace tavek {

namespace {

std::string parent_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

bool nothing_to_open(int error) {
  return error == EACCES || error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG;
}

// File systems that do not sync directories return EINVAL or EROFS. Network and FUSE file systems return EOPNOTSUPP or
// ENOSYS.
bool nothing_to_sync(int error) {
  return error == EINVAL || error == EROFS || error == EOPNOTSUPP || error == ENOSYS;
}

} // namespace

DirectorySync::DirectorySync(const std::string& path) : path_(path) {
  const std::string parent = parent_of(path);
  directory_ = FileDescriptor(::open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory_.is_open() && !nothing_to_open(errno)) {
    throw failed_to_open(parent, errno);
  }
}

void DirectorySync::sync(const char* change) const {
  if (directory_.is_open() && fsync(directory_.get()) == -1 && !nothing_to_sync(errno)) {
    throw std::runtime_error(path_ + " " + change + ", but this may not survive a power loss: " + strerror(errno));
  }
}

} // namespace tavek
