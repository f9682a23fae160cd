#include "cleanup/rotated_log_cleanup.h"

#include <cerrno>
#include <climits>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/call_fault.h"
#include "support/configured_file.h"
#include "support/temporary_directory.h"

namespace tavek {

namespace {

using Names = std::set<std::string>;

// What `action` prints on standard error.
template <typename Action>
std::string complaints_of(const Action& action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

struct NumberedPath {
  const char* path;
  int rot_count;
};

// Expects the same answer for all paths, without a complaint.
void expect_answer(bool beyond, const std::vector<NumberedPath>& paths) {
  for (const NumberedPath& row : paths) {
    const auto check = [&] { EXPECT_EQ(is_beyond_rotation_count(row.path, row.rot_count), beyond) << row.path; };
    EXPECT_EQ(complaints_of(check), "") << row.path;
  }
}

// Expects a complaint, and the answer false even for the smallest count.
void expect_complaint(const std::string& path, const std::string& complaint) {
  EXPECT_EQ(complaints_of([&] { EXPECT_FALSE(is_beyond_rotation_count(path, INT_MIN)) << path; }), complaint);
}

TEST(IsBeyondRotationCount, IsTrueForAGreaterNumber) {
  expect_answer(true, {{"error_log.4", 3}, {"error_log.10", 3}, {"access_log.processed.12.gz", 11}, {".4.gz", 3}});
}

TEST(IsBeyondRotationCount, IsFalseForAnEqualOrSmallerNumber) {
  expect_answer(false, {{"error_log.3", 3}, {"error_log.1", 3}, {"error_log.12.gz", 12}, {"a.2147483647", INT_MAX}});
}

TEST(IsBeyondRotationCount, ComparesNegativeNumbersAndCounts) {
  expect_answer(true, {{"a.0", -1}, {"a.-2", -3}, {"a.-1", INT_MIN}});
  expect_answer(false, {{"a.-2", -2}, {"a.-2", 5}, {"a.-2147483648", INT_MIN}});
}

TEST(IsBeyondRotationCount, ReadsTheNumberAfterTheLastDot) {
  expect_answer(true, {{"a.1.9", 5}, {"a.9/b.1.9", 5}});
  expect_answer(false, {{"a.9.1", 5}, {"a.9.1.gz", 5}});
}

TEST(IsBeyondRotationCount, AcceptsLeadingZerosAndWhiteSpaceAndASign) {
  expect_answer(true, {{"a.\t\n5", 4}, {"a.+5", 4}, {"a. +010", 9}, {"a.0000000000005", 4}});
  expect_answer(false, {{"a.010", 10}});
}

TEST(IsBeyondRotationCount, ThrowsForANumberThatDoesNotFitInAnInt) {
  for (const char* path : {"a.2147483648", "a.-2147483649", "a.123456789012.gz", "a.123456789012x"}) {
    EXPECT_THROW(is_beyond_rotation_count(path, 3), std::out_of_range) << path;
  }
}

TEST(IsBeyondRotationCount, ComplainsAboutAPathWithoutADot) {
  for (const std::string path : {"", "error_log", "5", ".gz", "5.gz"}) {
    expect_complaint(path, "Suffix not found in '" + path + "'\n");
  }
}

TEST(IsBeyondRotationCount, ComplainsAboutASuffixThatIsNotANumber) {
  const std::pair<std::string, std::string> paths[] = {
      {"access_log.processed.gz", "processed"},
      {"error_log.", ""},
      {"error_log.5.bz2", "bz2"},
      {"error_log.5.GZ", "GZ"},
      {"error_log.5.gz.gz", "gz"},
      {"a.- 5", "- 5"},
      {"a.x5", "x5"},
      {"/srv/example.com/logs/error_log.gz", "com/logs/error_log"},
  };
  for (const auto& [path, suffix] : paths) {
    expect_complaint(path, "Failed to parse suffix '" + suffix + "' (" + path + ")\n");
  }
}

TEST(IsBeyondRotationCount, ComplainsAboutASuffixThatOnlyStartsWithANumber) {
  const std::pair<std::string, std::string> paths[] = {
      {"a.3a", "3a"}, {"a.3a.gz", "3a"}, {"a.5/", "5/"}, {"a.0x10", "0x10"}, {"/srv/1.5/error_log.gz", "5/error_log"},
  };
  for (const auto& [path, suffix] : paths) {
    expect_complaint(path, "Failed to parse suffix '" + suffix + "' completely (" + path + ")\n");
  }
}

// A directory with logs that is also the configured root of the virtual hosts.
class RotatedLogCleanup : public testing::Test {
protected:
  void create(const Names& names) const {
    for (const std::string& name : names) {
      root.write(name, "");
    }
  }

  Names remaining() const {
    Names names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root.path())) {
      if (!entry.is_directory()) {
        names.insert(entry.path().lexically_relative(root.path()));
      }
    }
    return names;
  }

  const TemporaryDirectory root;

private:
  const TemporaryDirectory elsewhere_;
  const ConfiguredFile configuration_{elsewhere_.write("oru.conf", "HTTPD_VHOSTS_D " + root.path() + "\n")};
};

TEST_F(RotatedLogCleanup, RemovesACopyBeyondTheCount) {
  create({"error_log.4", "error_log.5"});
  EXPECT_EQ(complaints_of([&] { remove_if_beyond_rotation_count(root / "error_log.4", 3); }), "");
  EXPECT_EQ(remaining(), Names{"error_log.5"});
}

TEST_F(RotatedLogCleanup, KeepsACopyWhoseNumberEqualsTheCount) {
  create({"error_log.4"});
  remove_if_beyond_rotation_count(root / "error_log.4", 4);
  EXPECT_EQ(remaining(), Names{"error_log.4"});
}

TEST_F(RotatedLogCleanup, IsSilentIfTheCopyIsAlreadyGone) {
  EXPECT_EQ(complaints_of([&] { remove_if_beyond_rotation_count(root / "error_log.4", 3); }), "");
}

TEST_F(RotatedLogCleanup, ContinuesAfterACopyThatCannotBeRemoved) {
  create({"a.8", "a.9", "b.9"});
  const CallFault refusal(Call::remove, EACCES);
  EXPECT_EQ(complaints_of([&] {
              clean_target_logs({root / "a", root / "b"}, 3);
            }),
            "Failed to remove '" + root / "a.8" + "': Permission denied. Continue.\n");
  EXPECT_EQ(remaining(), Names{"a.8"});
}

TEST_F(RotatedLogCleanup, RemovesSurplusCopiesOfTheLogsOfAHostInBothDirectories) {
  Names kept;
  for (const std::string logs : {"system/example.com/logs/", "example.com/logs/"}) {
    for (const std::string log : {"access_log.processed", "a_b.processed", "error_log", "proxy_error_log"}) {
      const Names copies{logs + log, logs + log + ".1", logs + log + ".3.gz"};
      create(copies);
      create({logs + log + ".4.gz", logs + log + ".10"});
      kept.insert(copies.begin(), copies.end());
    }
  }
  EXPECT_EQ(complaints_of([] { clean_vhost_logs("example.com", 3); }), "");
  EXPECT_EQ(remaining(), kept);
}

TEST_F(RotatedLogCleanup, RemovesSurplusCopiesOfEveryLogThatMatchesAPattern) {
  create({"a.log", "a.log.3", "a.log.4.gz", "b.log.4", "b.txt.9", "c/d.9"});
  EXPECT_EQ(complaints_of([&] { clean_target_logs({root / "*.log", root / "missing", root / "c/d"}, 3); }), "");
  EXPECT_EQ(remaining(), (Names{"a.log", "a.log.3", "b.txt.9"}));
}

} // namespace

} // namespace tavek
