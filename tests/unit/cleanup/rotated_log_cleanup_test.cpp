#include "cleanup/rotated_log_cleanup.h"

#include <gtest/gtest.h>

#include "support/temporary_directory.h"

namespace tavek {

namespace {

// No case can show this, because a run lists the copies before it removes the first one.
TEST(RotatedLogCleanup, IsSilentIfTheCopyIsAlreadyGone) {
  const TemporaryDirectory folder;
  testing::internal::CaptureStderr();
  remove_if_beyond_rotation_count(folder / "error_log.4", 3);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace

} // namespace tavek
