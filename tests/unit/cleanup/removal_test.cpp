#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>

#include "cleanup/rotated_log_cleanup.h"
#include "support/call_fault.h"
#include "unit/cleanup/cleanup_fixture.h"

namespace tavek {

namespace {

using test::complaints_of;
using Names = std::set<std::string>;

class RemoveIfBeyondRotationCount : public test::CleanupFixture {
protected:
  std::string complaints_about(const std::string& name, int rot_count) const {
    return complaints_of([&] { remove_if_beyond_rotation_count(path_of(name), rot_count); });
  }
};

TEST_F(RemoveIfBeyondRotationCount, RemovesACopyBeyondTheCount) {
  given({"error_log.4", "error_log.5"});
  EXPECT_EQ(complaints_about("error_log.4", 3), "");
  EXPECT_EQ(remaining(), Names{"error_log.5"});
}

TEST_F(RemoveIfBeyondRotationCount, KeepsACopyWhoseNumberEqualsTheCount) {
  given({"error_log.4"});
  EXPECT_EQ(complaints_about("error_log.4", 4), "");
  EXPECT_EQ(remaining(), Names{"error_log.4"});
}

TEST_F(RemoveIfBeyondRotationCount, KeepsAFileWithoutANumber) {
  given({"error_log.old"});
  EXPECT_EQ(complaints_about("error_log.old", -1), not_a_number("old", "error_log.old"));
  EXPECT_EQ(remaining(), Names{"error_log.old"});
}

TEST_F(RemoveIfBeyondRotationCount, MindsNoFileThatIsGone) {
  EXPECT_EQ(complaints_about("error_log.4", 3), "");
}

TEST_F(RemoveIfBeyondRotationCount, ComplainsWhenTheSystemRefuses) {
  given({"error_log.4"});
  const CallFault refused(Call::remove, EACCES);
  EXPECT_EQ(complaints_about("error_log.4", 3),
            "Failed to remove '" + path_of("error_log.4") + "': Permission denied. Continue.\n");
  EXPECT_EQ(remaining(), Names{"error_log.4"});
}

TEST_F(RemoveIfBeyondRotationCount, KeepsADirectoryThatHoldsSomething) {
  given({"error_log.4/file"});
  EXPECT_EQ(complaints_about("error_log.4", 3),
            "Failed to remove '" + path_of("error_log.4") + "': Directory not empty. Continue.\n");
  EXPECT_EQ(remaining(), Names{"error_log.4/file"});
}

TEST_F(RemoveIfBeyondRotationCount, RemovesALinkAndNotWhatItPointsTo) {
  given({"precious"});
  std::filesystem::create_symlink(path_of("precious"), path_of("error_log.4"));
  std::filesystem::create_hard_link(path_of("precious"), path_of("error_log.5"));
  EXPECT_EQ(complaints_about("error_log.4", 3), "");
  EXPECT_EQ(complaints_about("error_log.5", 3), "");
  EXPECT_EQ(remaining(), Names{"precious"});
}

} // namespace

} // namespace tavek
