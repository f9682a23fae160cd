#pragma once

#include <cstring>

namespace tavek {

/// Returns the part of `path` after its last '/', or all of it if it has none. The result points into `path`.
inline const char* base_name(const char* path) {
  const char* slash = strrchr(path, '/');
  return slash != nullptr ? slash + 1 : path;
}

} // namespace tavek
