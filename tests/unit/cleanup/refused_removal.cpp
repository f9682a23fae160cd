#include "unit/cleanup/refused_removal.h"

#include <cerrno>
#include <cstdio>
#include <dlfcn.h>

namespace {

// Empty when nothing is refused: no path is.
std::string& refused_path() {
  static std::string path;
  return path;
}

} // namespace

extern "C" int remove(const char* path) noexcept {
  if (refused_path() == path) {
    errno = EACCES;
    return -1;
  }
  using Remove = int (*)(const char*);
  static const auto real_remove = reinterpret_cast<Remove>(dlsym(RTLD_NEXT, "remove"));
  return real_remove(path);
}

namespace tavek::test {

RefusedRemoval::RefusedRemoval(const std::string& path) {
  refused_path() = path;
}

RefusedRemoval::~RefusedRemoval() {
  refused_path().clear();
}

} // namespace tavek::test
