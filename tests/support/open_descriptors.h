#pragma once

// The open file descriptors of this process.

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

/// The flags of the descriptor of the file at `path`; nothing if it is not open.
inline std::optional<int> descriptor_flags(const std::string& path) {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code closed; // The directory iterator's own descriptor may be closed by now.
    if (std::filesystem::read_symlink(entry.path(), closed) == path) {
      return fcntl(std::stoi(entry.path().filename()), F_GETFD);
    }
  }
  return std::nullopt;
}

} // namespace tavek
