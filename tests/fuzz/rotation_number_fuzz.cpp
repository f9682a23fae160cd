// Compares the parser of the rotation number in a path with a model that reads the path byte by byte from its end.
//
// An input starts with a digit that selects the rotation count. The path follows.

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include "cleanup/rotated_log_cleanup.h"
#include "finding.h"

namespace tavek {

namespace {

constexpr int kCounts[] = {0, 1, 2, 3, -1, -3, INT_MAX, INT_MIN};

/// "yes", "no" or "out of range", after the line printed on standard error, if any.
using Answer = std::string;

Answer plain_answer(const std::string& path, int count) {
  const bool compressed = path.size() >= 3 && path.compare(path.size() - 3, 3, ".gz") == 0;
  const int end = static_cast<int>(path.size()) - (compressed ? 4 : 1);
  int dot = end;
  while (dot >= 0 && path[static_cast<std::size_t>(dot)] != '.') {
    --dot;
  }
  if (dot < 0) {
    return "Suffix not found in '" + path + "'\nno";
  }
  const std::string suffix = path.substr(static_cast<std::size_t>(dot) + 1, static_cast<std::size_t>(end - dot));
  char* rest = nullptr;
  const long long number = std::strtoll(suffix.c_str(), &rest, 10); // Saturates far outside the range of int.
  if (rest == suffix.c_str()) {
    return "Failed to parse suffix '" + suffix + "' (" + path + ")\nno";
  }
  if (number < INT_MIN || number > INT_MAX) {
    return "out of range";
  }
  if (*rest != '\0') {
    return "Failed to parse suffix '" + suffix + "' completely (" + path + ")\nno";
  }
  return count < number ? "yes" : "no";
}

Answer actual_answer(const std::string& path, int count) {
  char* complaint = nullptr;
  std::size_t size = 0;
  FILE* const before = stderr;
  stderr = open_memstream(&complaint, &size); // The GNU C library allows assignments to stderr.
  Answer answer;
  try {
    answer = is_beyond_rotation_count(path, count) ? "yes" : "no";
  } catch (const std::out_of_range&) {
    answer = "out of range";
  }
  std::fclose(stderr);
  stderr = before;
  answer.insert(0, complaint, size);
  std::free(complaint);
  return answer;
}

} // namespace

} // namespace tavek

// NOLINTNEXTLINE(*-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return -1;
  }
  const int count = tavek::kCounts[data[0] % std::size(tavek::kCounts)];
  const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::string path = input.substr(0, input.find('\0')); // A path contains no NUL.
  tavek::expect_same("whether the number is beyond the count", tavek::plain_answer(path, count),
                     tavek::actual_answer(path, count));
  return 0;
}
