#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "cleanup/rotated_log_cleanup.h"
#include "support/call_fault.h"
#include "unit/cleanup/cleanup_fixture.h"

namespace tavek {

namespace {

using test::complaints_of;
using Names = std::set<std::string>;

std::string in_system_logs(const std::string& name) {
  return "system/example.com/logs/" + name;
}
std::string in_own_logs(const std::string& name) {
  return "example.com/logs/" + name;
}

class CleanVhostLogs : public test::CleanupFixture {
protected:
  static std::string complaints(const std::string& vhost_name, int rot_count) {
    return complaints_of([&] { clean_vhost_logs(vhost_name, rot_count); });
  }
};

TEST_F(CleanVhostLogs, RemovesCopiesBeyondTheCountInBothDirectories) {
  for (const std::string& logs : {in_system_logs(""), in_own_logs("")}) {
    for (const std::string log : {"access_log.processed", "a_b.processed", "error_log", "proxy_error_log"}) {
      given({logs + log, logs + log + ".1", logs + log + ".3.gz", logs + log + ".4.gz", logs + log + ".10"});
    }
  }
  EXPECT_EQ(complaints("example.com", 3), "");
  Names kept;
  for (const std::string& logs : {in_system_logs(""), in_own_logs("")}) {
    for (const std::string log : {"access_log.processed", "a_b.processed", "error_log", "proxy_error_log"}) {
      kept.merge(Names{logs + log, logs + log + ".1", logs + log + ".3.gz"});
    }
  }
  EXPECT_EQ(remaining(), kept);
}

TEST_F(CleanVhostLogs, RemovesEveryNumberedCopyWithoutACount) {
  given({in_own_logs("error_log"), in_own_logs("error_log.0"), in_own_logs("error_log.1.gz"),
         in_own_logs("error_log.-1")});
  EXPECT_EQ(complaints("example.com", -1), "");
  EXPECT_EQ(remaining(), (Names{in_own_logs("error_log"), in_own_logs("error_log.-1")}));
}

TEST_F(CleanVhostLogs, LeavesOtherLogsAlone) {
  const Names others = {in_own_logs("access_log.9"),
                        in_own_logs("my_error_log.9"),
                        in_own_logs("error_log9"),
                        in_own_logs(".hidden.processed.9"),
                        in_own_logs("xferlog_processed.9"),
                        in_own_logs("deeper/error_log.9"),
                        "example.com/error_log.9",
                        "other.com/logs/error_log.9",
                        "system/other.com/logs/error_log.9",
                        "logs/error_log.9",
                        "system/logs/error_log.9"};
  given(others);
  EXPECT_EQ(complaints("example.com", 3), "");
  EXPECT_EQ(remaining(), others);
}

// Complaints show the order: the system directory first, in each one pattern after the other, each in sorted order.
TEST_F(CleanVhostLogs, WalksDirectoriesAndPatternsInTheirOrder) {
  const std::vector<std::string> in_order = {"z.processed.x", "error_log.x", "error_log.y", "proxy_error_log.x"};
  std::string expected;
  for (const std::string& logs : {in_system_logs(""), in_own_logs("")}) {
    for (const std::string& name : in_order) {
      given({logs + name});
      expected += not_a_number(name.substr(name.size() - 1), logs + name);
    }
  }
  EXPECT_EQ(complaints("example.com", 3), expected);
}

TEST_F(CleanVhostLogs, MindsNoMissingDirectory) {
  EXPECT_EQ(complaints("example.com", 3), "");
  given({in_own_logs("error_log.9")});
  EXPECT_EQ(complaints("example.com", 3), "");
  EXPECT_EQ(remaining(), Names{});
}

TEST_F(CleanVhostLogs, ReadsOnIntoTheHostNameForACompressedFileWithoutANumber) {
  given({in_own_logs("error_log.gz")});
  EXPECT_EQ(complaints("example.com", -1), not_a_number("com/logs/error_log", in_own_logs("error_log.gz")));
  EXPECT_EQ(remaining(), Names{in_own_logs("error_log.gz")});
}

TEST_F(CleanVhostLogs, KeepsACompressedLogWithoutANumber) {
  given({in_own_logs("access_log.processed.gz")});
  EXPECT_EQ(complaints("example.com", -1), not_a_number("processed", in_own_logs("access_log.processed.gz")));
  EXPECT_EQ(remaining(), Names{in_own_logs("access_log.processed.gz")});
}

TEST_F(CleanVhostLogs, ReportsADirectoryAndKeepsItThoughItIsEmpty) {
  std::filesystem::create_directories(path_of(in_own_logs("error_log.9")));
  EXPECT_EQ(complaints("example.com", 3), not_only_a_number("9/", in_own_logs("error_log.9/")));
  EXPECT_TRUE(std::filesystem::is_directory(path_of(in_own_logs("error_log.9"))));
}

TEST_F(CleanVhostLogs, ReportsALinkToADirectoryAndKeepsBoth) {
  given({in_own_logs("error_log"), "elsewhere/file"});
  std::filesystem::create_directory_symlink(path_of("elsewhere"), path_of(in_own_logs("error_log.9")));
  EXPECT_EQ(complaints("example.com", 3), not_only_a_number("9/", in_own_logs("error_log.9/")));
  EXPECT_EQ(remaining(), (Names{in_own_logs("error_log"), in_own_logs("error_log.9"), "elsewhere/file"}));
}

TEST_F(CleanVhostLogs, RemovesALinkThatPointsNowhere) {
  given({in_own_logs("error_log")});
  std::filesystem::create_symlink("nowhere", path_of(in_own_logs("error_log.9")));
  EXPECT_EQ(complaints("example.com", 3), "");
  EXPECT_EQ(remaining(), Names{in_own_logs("error_log")});
}

TEST_F(CleanVhostLogs, GoesOnWhenTheSystemRefusesARemoval) {
  given({in_own_logs("error_log.5"), in_own_logs("error_log.6"), in_own_logs("error_log.7")});
  const std::string refused = path_of(in_own_logs("error_log.6"));
  const CallFault refusal(Call::remove, EACCES, 2);
  EXPECT_EQ(complaints("example.com", 3), "Failed to remove '" + refused + "': Permission denied. Continue.\n");
  EXPECT_EQ(remaining(), Names{in_own_logs("error_log.6")});
}

TEST_F(CleanVhostLogs, StopsAtANumberOutOfRange) {
  given({in_system_logs("error_log.10"), in_system_logs("error_log.123456789012"), in_system_logs("error_log.20"),
         in_own_logs("error_log.10")});
  EXPECT_THROW(clean_vhost_logs("example.com", 3), std::out_of_range);
  EXPECT_EQ(remaining(), (Names{in_system_logs("error_log.123456789012"), in_system_logs("error_log.20"),
                                in_own_logs("error_log.10")}));
}

TEST_F(CleanVhostLogs, TakesTheHostNameAsPartOfAPattern) {
  given({"a.com/logs/error_log.9", "b.com/logs/error_log.9", "ab.com/logs/error_log.9"});
  EXPECT_EQ(complaints("?.com", 3), "");
  EXPECT_EQ(remaining(), Names{"ab.com/logs/error_log.9"});
}

TEST_F(CleanVhostLogs, TakesAnAbsoluteHostNameForItself) {
  const TemporaryDirectory elsewhere;
  std::filesystem::create_directory(elsewhere / "logs");
  const std::string copy = elsewhere.write("logs/error_log.9", "");
  EXPECT_EQ(complaints(elsewhere.path(), 3), "");
  EXPECT_FALSE(std::filesystem::exists(copy));
}

} // namespace

} // namespace tavek
