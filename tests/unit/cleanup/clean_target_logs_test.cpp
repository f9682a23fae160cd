#include <cerrno>
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

class CleanTargetLogs : public test::CleanupFixture {
protected:
  std::string complaints(const std::vector<std::string>& names, int rot_count) const {
    std::vector<std::string> paths;
    for (const std::string& name : names) {
      paths.push_back(path_of(name));
    }
    return complaints_of([&] { clean_target_logs(paths, rot_count); });
  }
};

TEST_F(CleanTargetLogs, RemovesCopiesBeyondTheCountOfEachLog) {
  given({"a.log", "a.log.3", "a.log.4.gz", "b/b.log.4", "b/b.log.2.gz", "c.log.9"});
  EXPECT_EQ(complaints({"a.log", "b/b.log"}, 3), "");
  EXPECT_EQ(remaining(), (Names{"a.log", "a.log.3", "b/b.log.2.gz", "c.log.9"}));
}

TEST_F(CleanTargetLogs, TakesALogAsAPattern) {
  given({"a.log.9", "b.log.9", "c.txt.9"});
  EXPECT_EQ(complaints({"*.log"}, 3), "");
  EXPECT_EQ(remaining(), Names{"c.txt.9"});
}

TEST_F(CleanTargetLogs, WalksTheListInItsOrder) {
  given({"a.x", "b.2", "b.x", "b.y"});
  EXPECT_EQ(complaints({"b", "missing", "a"}, 3),
            not_a_number("x", "b.x") + not_a_number("y", "b.y") + not_a_number("x", "a.x"));
}

TEST_F(CleanTargetLogs, DoesNothingForAnEmptyList) {
  given({"a.9"});
  EXPECT_EQ(complaints({}, 3), "");
  EXPECT_EQ(remaining(), Names{"a.9"});
}

TEST_F(CleanTargetLogs, ComplainsAboutANameThatEndsInADot) {
  given({"a."});
  EXPECT_EQ(complaints({"a"}, -1), not_a_number("", "a."));
}

TEST_F(CleanTargetLogs, GoesOnWhenTheSystemRefusesARemoval) {
  given({"a.9", "b.9"});
  const CallFault refusal(Call::remove, EACCES);
  EXPECT_EQ(complaints({"a", "b"}, 3), "Failed to remove '" + path_of("a.9") + "': Permission denied. Continue.\n");
  EXPECT_EQ(remaining(), Names{"a.9"});
}

TEST_F(CleanTargetLogs, StopsAtANumberOutOfRange) {
  given({"a.9", "b.123456789012", "c.9"});
  EXPECT_THROW(clean_target_logs({path_of("a"), path_of("b"), path_of("c")}, 3), std::out_of_range);
  EXPECT_EQ(remaining(), (Names{"b.123456789012", "c.9"}));
}

} // namespace

} // namespace tavek
