#pragma once

// What descriptors this process has.

#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <system_error>

namespace tavek {

inline std::ptrdiff_t open_descriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return std::distance(begin(descriptors), end(descriptors));
}

/// The flags of the descriptor of a file; nothing when the file is not open.
inline std::optional<int> descriptor_flags(const std::string& path) {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone; // The descriptor by which the directory is read.
    if (std::filesystem::read_symlink(entry.path(), gone) == path) {
      return fcntl(std::stoi(entry.path().filename()), F_GETFD);
    }
  }
  return std::nullopt;
}

} // namespace tavek
