#pragma once

// The files of one test.

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <vector>

namespace tavek {

/// The bytes of a file; empty if it cannot be read.
inline std::string content_of(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The permission bits of the file at `path`, or 0 if there is no file. Links are followed.
inline mode_t mode_of(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

/// Returns `text` with "??????" in place of the six random characters in the name of a temporary file for `target`.
inline std::string masked(std::string text, const std::string& target) {
  const std::size_t name = text.find(target + ".");
  return name == std::string::npos ? text : text.replace(name + target.size() + 1, 6, "??????");
}

/// A new, empty directory. The destructor removes it with everything in it.
class TemporaryDirectory {
public:
  TemporaryDirectory() : path_(testing::TempDir() + "tavek.XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) {
      throw std::system_error(errno, std::generic_category(), path_);
    }
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::string& path() const { return path_; }

  /// The path of `name` in the directory. No such file need exist.
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

  /// Writes a file, with mode 0644 under the usual mask, and creates its missing parent directories. Returns its path.
  std::string write(const std::string& name, const std::string& content) const {
    std::filesystem::create_directories(std::filesystem::path(*this / name).parent_path());
    std::ofstream(*this / name, std::ios::binary) << content;
    return *this / name;
  }

  /// The names in the directory, sorted.
  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

private:
  std::string path_;
};

} // namespace tavek
