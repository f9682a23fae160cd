#include "cleanup/rotated_log_cleanup.h"

#include <climits>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "unit/cleanup/cleanup_fixture.h"

namespace tavek {

namespace {

using test::complaints_of;

/// The answer for a path, and what is said about it, below.
struct Judged {
  bool beyond;
  std::string complaint;
};

Judged judge(const std::string& path, int rot_count) {
  bool beyond = false;
  const std::string complaint = complaints_of([&] { beyond = is_beyond_rotation_count(path, rot_count); });
  return {beyond, complaint};
}

struct NumberedPath {
  const char* path;
  int rot_count;
};

void expect_all(const std::vector<NumberedPath>& paths, bool beyond) {
  for (const auto& [path, rot_count] : paths) {
    const Judged judged = judge(path, rot_count);
    EXPECT_EQ(judged.beyond, beyond) << path << " with " << rot_count;
    EXPECT_EQ(judged.complaint, "") << path;
  }
}

void expect_complaint(const std::string& path, const std::string& complaint) {
  const Judged judged = judge(path, INT_MIN);
  EXPECT_FALSE(judged.beyond) << path;
  EXPECT_EQ(judged.complaint, complaint);
}

void expect_out_of_range(const std::string& path) {
  try {
    is_beyond_rotation_count(path, 3);
    ADD_FAILURE() << path << " is answered";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "stoi");
  }
}

TEST(IsBeyondRotationCount, AnswersYesForAGreaterNumber) {
  expect_all({{"error_log.4", 3},
              {"error_log.4.gz", 3},
              {"error_log.10", 3},
              {"access_log.processed.12.gz", 11},
              {"/var/log/a.log.5", 4},
              {"a.1", 0},
              {".4", 3},
              {".4.gz", 3}},
             true);
}

TEST(IsBeyondRotationCount, AnswersNoForAnEqualOrSmallerNumber) {
  expect_all({{"error_log.3", 3},
              {"error_log.3.gz", 3},
              {"error_log.1", 3},
              {"error_log.12.gz", 12},
              {"error_log.0", 0},
              {"error_log.2147483647", INT_MAX}},
             false);
}

TEST(IsBeyondRotationCount, CountsEveryNumberFromZeroBeyondMinusOne) {
  expect_all({{"a.0", -1}, {"a.1", -1}, {"a.0.gz", -1}}, true);
}

TEST(IsBeyondRotationCount, ComparesNegativeNumbers) {
  expect_all({{"a.-2", -3}, {"a.-1", INT_MIN}}, true);
  expect_all({{"a.-2", -2}, {"a.-2", -1}, {"a.-2", 5}, {"a.-2147483648", INT_MIN}}, false);
}

TEST(IsBeyondRotationCount, TakesTheNumberBehindTheLastDot) {
  expect_all({{"a.1.9", 5}, {"a.9/b.1.9", 5}}, true);
  expect_all({{"a.9.1", 5}, {"a.9.1.gz", 5}}, false);
}

TEST(IsBeyondRotationCount, ReadsDecimalNumbersWithSpaceSignAndZerosInFront) {
  expect_all({{"a. 5", 4}, {"a.\t\n5", 4}, {"a.+5", 4}, {"a.005", 4}, {"a. +010", 9}}, true);
  expect_all({{"a.010", 10}, {"a. 5", 5}}, false);
}

TEST(IsBeyondRotationCount, ReadsNumbersUpToTheEndsOfTheirRange) {
  expect_all({{"a.2147483647", 5}, {"a.2147483647.gz", INT_MAX - 1}, {"a.0000000000005", 4}}, true);
}

TEST(IsBeyondRotationCount, LeavesANumberOutOfRangeToItsCaller) {
  for (const char* path :
       {"a.2147483648", "a.-2147483649", "a.123456789012.gz", "a.99999999999999999999999", "a.123456789012x"}) {
    expect_out_of_range(path);
  }
}

TEST(IsBeyondRotationCount, ComplainsWithoutADot) {
  for (const std::string path : {"", "error_log", "5", ".gz", "/var/log/error_log", "5.gz", "error_log.gz"}) {
    expect_complaint(path, "Suffix not found in '" + path + "'\n");
  }
}

TEST(IsBeyondRotationCount, ComplainsAboutASuffixThatIsNoNumber) {
  const std::pair<std::string, std::string> paths[] = {
      {"access_log.processed.gz", "processed"},
      {"access_log.processed", "processed"},
      {"error_log.", ""},
      {"error_log..gz", ""},
      {"error_log.5.", ""},
      {".", ""},
      {"error_log.5.bz2", "bz2"},
      {"error_log.5.GZ", "GZ"},
      {"error_log.5.xz", "xz"},
      {"error_log.5.gz.gz", "gz"},
      {"error_log.gz.", ""},
      {"a.-", "-"},
      {"a.- 5", "- 5"},
      {"a.--5", "--5"},
      {"a.x5", "x5"},
      {"a. ", " "},
      {"/srv/example.com/logs/error_log.gz", "com/logs/error_log"},
      {"/srv/example.com/logs/error_log", "com/logs/error_log"},
  };
  for (const auto& [path, suffix] : paths) {
    expect_complaint(path, "Failed to parse suffix '" + suffix + "' (" + path + ")\n");
  }
}

TEST(IsBeyondRotationCount, ComplainsAboutANumberWithMoreBehindIt) {
  const std::pair<std::string, std::string> paths[] = {
      {"a.3a", "3a"},     {"a.3a.gz", "3a"}, {"a.5/", "5/"},   {"a.5 ", "5 "},
      {"a.0x10", "0x10"}, {"a.5-", "5-"},    {"a.5gz", "5gz"}, {"/srv/1.5/error_log.gz", "5/error_log"},
  };
  for (const auto& [path, suffix] : paths) {
    expect_complaint(path, "Failed to parse suffix '" + suffix + "' completely (" + path + ")\n");
  }
}

} // namespace

} // namespace tavek
