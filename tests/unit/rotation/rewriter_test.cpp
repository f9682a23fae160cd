#include "rotation/rewriter.h"

#include <gtest/gtest.h>
#include <stdexcept>

#include "support/temporary_directory.h"
#include "support/thrown.h"

namespace tavek {

namespace {

class Rewriter : public testing::Test {
protected:
  Rewriter() {
    job.config_path = directory / "target";
    job.settings.period_type = "by_time";
    job.settings.period = "weekly";
    job.settings.rot_count = 5;
  }

  // Writes `content` to the target, rewrites it, replaces the target with the result and returns the target's content.
  std::string rewritten(const std::string& content) const {
    directory.write("target", content);
    FileReplacement replacement(job.config_path);
    rewrite(job, replacement);
    EXPECT_EQ(content_of(job.config_path), content) << "only the rename changes the target";
    replacement.complete();
    replacement.rename_over_target();
    return content_of(job.config_path);
  }

  const TemporaryDirectory directory;
  RewriteJob job;
};

// The file is longer than the output buffer, so that the first pass has written to the disk.
TEST_F(Rewriter, KeepsNothingOfTheFirstPassIfASecondIsNeeded) {
  const std::string unclosed = "/a {\n" + std::string(200000, 'x') + "\n";
  EXPECT_TRUE(rewritten(unclosed) == unclosed);
}

// The target is a directory, which can be opened but not read. The temporary file is reported, because both are opened
// before the target is read.
TEST_F(Rewriter, NamesTheTemporaryFileThatCannotBeCreated) {
  job.config_path = directory.path();
  const std::string missing = directory / "missing/target";
  FileReplacement replacement(missing);
  EXPECT_EQ(masked(thrown_by<std::runtime_error>([&] { rewrite(job, replacement); }), missing),
            "Failed to open " + missing + ".??????: No such file or directory");
}

} // namespace

} // namespace tavek
