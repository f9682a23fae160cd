// The reader of the rotation number in a path, compared with a model that reads the path backwards by index.
//
// An input begins with a digit that picks the rotation count; the path follows.

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

constexpr int kCounts[] = {0, 1, 2, 3, -1, -3, 2147483647, -2147483647 - 1};

/// An answer, "yes", "no" or "out of range", with the complaint in front of it.
using Answer = std::string;

// A number as the C library reads it, from the start of a text: white space, a sign, digits.
struct PlainNumber {
  explicit PlainNumber(const std::string& text) {
    while (used < text.size() && std::string_view(" \t\n\v\f\r").find(text[used]) != std::string_view::npos) {
      ++used;
    }
    const bool negative = text[used] == '-';
    used += negative || text[used] == '+' ? 1 : 0;
    for (; text[used] >= '0' && text[used] <= '9'; ++used) {
      has_digits = true;
      magnitude = magnitude > kBeyond ? magnitude : magnitude * 10 + (text[used] - '0');
    }
    value = negative ? -magnitude : magnitude;
  }

  bool in_range() const { return value >= -2147483648LL && value <= 2147483647LL; }

  static constexpr long long kBeyond = 2147483648LL;
  long long magnitude = 0;
  long long value = 0;
  std::size_t used = 0;
  bool has_digits = false;
};

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
  const PlainNumber number(suffix);
  if (!number.has_digits) {
    return "Failed to parse suffix '" + suffix + "' (" + path + ")\nno";
  }
  if (!number.in_range()) {
    return "out of range";
  }
  if (number.used != suffix.size()) {
    return "Failed to parse suffix '" + suffix + "' completely (" + path + ")\nno";
  }
  return count < number.value ? "yes" : "no";
}

// Standard error is a variable: while this lives, what is printed there is collected.
class CollectedErrors {
public:
  CollectedErrors() { stderr = open_memstream(&text_, &size_); }
  ~CollectedErrors() {
    close();
    std::free(text_);
  }
  CollectedErrors(const CollectedErrors&) = delete;
  CollectedErrors& operator=(const CollectedErrors&) = delete;

  std::string text() {
    close();
    return {text_, size_};
  }

private:
  void close() {
    if (stderr != before_) {
      std::fclose(stderr);
      stderr = before_;
    }
  }

  FILE* const before_ = stderr;
  char* text_ = nullptr;
  std::size_t size_ = 0;
};

Answer actual_answer(const std::string& path, int count) {
  CollectedErrors errors;
  try {
    const bool beyond = is_beyond_rotation_count(path, count);
    return errors.text() + (beyond ? "yes" : "no");
  } catch (const std::out_of_range&) {
    return errors.text() + "out of range";
  }
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
  const std::string path = input.substr(0, input.find('\0')); // A path holds no NUL.
  tavek::expect_same("is it beyond the count", tavek::plain_answer(path, count), tavek::actual_answer(path, count));
  return 0;
}
