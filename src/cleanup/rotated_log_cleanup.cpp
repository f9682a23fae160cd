#include "cleanup/rotated_log_cleanup.h"

#include <cstdio>
#include <filesystem>
#include <glob.h>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "runtime_conf/runtime_conf.h"

namespace tavek {

namespace {

// Copies of php-fpm_error.log, the fourth log of a host, are deliberately left alone.
constexpr const char* kVhostLogPatterns[] = {"*.processed", "error_log", "proxy_error_log"};
constexpr std::string_view kCompressed = ".gz";

// Owns the paths that match a pattern: sorted, directories marked with a final '/'.
class GlobResult {
public:
  // The result is empty if nothing matches or a directory cannot be read.
  explicit GlobResult(const std::string& pattern) { ::glob(pattern.c_str(), GLOB_MARK, nullptr, &result_); }
  ~GlobResult() { globfree(&result_); }
  GlobResult(const GlobResult&) = delete;
  GlobResult& operator=(const GlobResult&) = delete;

  char** begin() const { return result_.gl_pathv; }
  char** end() const { return result_.gl_pathv + result_.gl_pathc; }

private:
  glob_t result_{};
};

// Joins like std::filesystem::path: an absolute name replaces the directory. A path object re-parses itself on every
// operation, which would take a tenth of the time of a run.
std::string join(std::string directory, std::string_view name) {
  if (name.starts_with('/')) {
    return std::string(name);
  }
  if (!directory.empty() && !directory.ends_with('/')) {
    directory += '/';
  }
  return directory.append(name);
}

// Standard error is unbuffered, so each report is one write.
void report(const std::string& line) {
  std::fputs(line.c_str(), stderr);
}

void clean_copies_of(const std::string& log, int rot_count) {
  for (const char* path : GlobResult(log + ".*")) {
    remove_if_beyond_rotation_count(path, rot_count);
  }
}

// The text after the last dot, ignoring a final ".gz", or nothing if there is no dot. The search for the dot may run
// into the directory part of the path.
std::optional<std::string> suffix_of(std::string_view path) {
  if (path.ends_with(kCompressed)) {
    path.remove_suffix(kCompressed.size());
  }
  const std::size_t dot = path.rfind('.');
  if (dot == std::string_view::npos) {
    return std::nullopt;
  }
  return std::string(path.substr(dot + 1));
}

// Returns the suffix as a number. If it is not a number, reports it and returns nothing. std::out_of_range is
// deliberately not caught: no rotation produces a number this large, so a person should look before more is deleted.
std::optional<int> parse_number(const std::string& suffix, const std::string& path) {
  try {
    std::size_t parsed = 0;
    const int number = std::stoi(suffix, &parsed);
    if (parsed == suffix.size()) {
      return number;
    }
    report("Failed to parse suffix '" + suffix + "' completely (" + path + ")\n");
  } catch (const std::invalid_argument&) {
    report("Failed to parse suffix '" + suffix + "' (" + path + ")\n");
  }
  return std::nullopt;
}

} // namespace

void clean_vhost_logs(const std::string& vhost_name, int rot_count) {
  const std::string vhosts = runtime_conf_get(HTTPD_VHOSTS_D);
  for (const std::string& parent : {join(vhosts, "system"), vhosts}) {
    const std::string directory = join(join(parent, vhost_name), "logs");
    for (const char* pattern : kVhostLogPatterns) {
      clean_copies_of(join(directory, pattern), rot_count);
    }
  }
}

void clean_target_logs(const std::vector<std::string>& log_paths, int rot_count) {
  for (const std::string& log : log_paths) {
    clean_copies_of(log, rot_count);
  }
}

bool is_beyond_rotation_count(const std::string& path, int rot_count) {
  const std::optional<std::string> suffix = suffix_of(path);
  if (!suffix) {
    report("Suffix not found in '" + path + "'\n");
    return false;
  }
  const std::optional<int> number = parse_number(*suffix, path);
  return number && rot_count < *number;
}

void remove_if_beyond_rotation_count(const std::string& path, int rot_count) {
  if (!is_beyond_rotation_count(path, rot_count)) {
    return;
  }
  std::error_code error;
  std::filesystem::remove(path, error);
  if (error) {
    report("Failed to remove '" + path + "': " + error.message() + ". Continue.\n");
  }
}

} // namespace tavek
