#include "rotation/rewriter.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>

#include "rotation/scanner_fatal_error.h"
#include "support/call_fault.h"
#include "support/temporary_directory.h"

namespace tavek {

namespace {

class Rewriter : public testing::Test {
protected:
  Rewriter() {
    job.config_path = directory / "target";
    job.settings.period_type = "by_time";
    job.settings.period = "weekly";
    job.settings.rot_count = 5;
    job.settings.compress = true;
    job.settings.vhost_name = "example.com";
  }

  void set_target(const std::string& content) { directory.write("target", content); }

  // The target after a whole replacement.
  std::string rewritten(const std::string& content) {
    set_target(content);
    FileReplacement replacement(job.config_path);
    rewrite(job, replacement);
    EXPECT_EQ(content_of(job.config_path), content);
    replacement.complete();
    replacement.rename_over_target();
    return content_of(job.config_path);
  }

  template <typename Error>
  std::string complaint() {
    FileReplacement replacement(job.config_path);
    try {
      rewrite(job, replacement);
    } catch (const Error& error) {
      return error.what();
    }
    return "rewritten";
  }

  const TemporaryDirectory directory;
  RewriteJob job;
};

TEST_F(Rewriter, ReplacesAndAddsDirectivesAndKeepsTheRest) {
  EXPECT_EQ(
      rewritten(
          "# mine\nsu root adm\n/a /b {\n\tdaily\n\tnotifempty\n\tmail x@y\n\tmaillast\n}\n\n/c\n{\nrotate 1\n}\n"),
      "# mine\nsu root adm\n/a /b {\n\tweekly\n\tnotifempty\n\trotate 5\n\tcompress\n\tmissingok\n"
      "\tcopytruncate\n}\n\n/c\n{\n\trotate 5\n\tweekly\n\tcompress\n\tmissingok\n\tcopytruncate\n}\n");
}

TEST_F(Rewriter, ASecondRunChangesNothing) {
  const std::string once = rewritten("/a {\n\tdaily\n\trotate 1\n\tsharedscripts\n}\n/b {\n}\n");
  EXPECT_EQ(rewritten(once), once);
}

TEST_F(Rewriter, AnEmptyFileGetsTheDefaultStanzas) {
  const std::string generated = rewritten("");
  EXPECT_TRUE(generated.starts_with("#ATTENTION!\n")) << generated;
  EXPECT_TRUE(generated.ends_with("/system/example.com/logs/php-fpm_error.log {\n\tweekly\n\trotate 5\n\tcompress\n"
                                  "\tmissingok\n\tcopytruncate\n}\n"))
      << generated;
}

TEST_F(Rewriter, AFileWithoutAStanzaKeepsItsTextInFrontOfTheDefaultStanzas) {
  const std::string generated = rewritten("");
  EXPECT_EQ(rewritten("# /a {\n\n"), "# /a {\n\n" + generated);
  EXPECT_EQ(rewritten("no newline"), "no newline" + generated);
}

// Neither where the scanner is nor its counters start anew: the second pass begins within the stanza that did not
// close, in which a head is ordinary text.
TEST_F(Rewriter, AStanzaThatNeverClosesIsCopied) {
  EXPECT_EQ(rewritten("/a {\n"), "/a {\n");
  EXPECT_EQ(rewritten("/a {\n\tnotifempty\n"), "/a {\n\tnotifempty\n");
  EXPECT_EQ(rewritten("/a {\n\tpostrotate\n"), "/a {\n\tpostrotate\n");
}

// A brace in front of it, ordinary in the first pass, closes that stanza in the second: it gets what lacks, and the
// head behind it what the first pass never wrote.
TEST_F(Rewriter, ASecondPassInsertsMissingKindsAtTheHeads) {
  job.settings.email = "a@b";
  EXPECT_EQ(rewritten("}\n/a {\n\tnotifempty\n"),
            "\tweekly\n\trotate 5\n\tcompress\n\tmail a@b\n\tmailfirst\n\tmissingok\n\tcopytruncate\n}\n"
            "/a {\n\tweekly\n\trotate 5\n\tcompress\n\tmail a@b\n\tmailfirst\n\tnotifempty\n");
}

// The first pass counted its one rotate line, so neither the brace nor the head of the second brings another.
TEST_F(Rewriter, ASecondPassInsertsNoKindThatTheFirstWrote) {
  EXPECT_EQ(rewritten("}\n/a {\n\trotate 9\n"),
            "\tweekly\n\tcompress\n\tmissingok\n\tcopytruncate\n}\n/a {\n\tweekly\n\tcompress\n\trotate 5\n");
}

TEST_F(Rewriter, ASecondPassLeavesNothingOfTheFirst) {
  const std::string filler(200000, 'x');
  const std::string input = "/a {\n" + filler + "\n";
  EXPECT_TRUE(rewritten(input) == input);
}

TEST_F(Rewriter, ASecondPassOpensTheTargetAgain) {
  set_target("/a {\n");
  const CallFault removal(Call::read, [&] {
    std::filesystem::remove(job.config_path);
    return 0;
  });
  EXPECT_EQ(complaint<std::runtime_error>(), "Failed to open " + job.config_path + ": No such file or directory");
}

TEST_F(Rewriter, OnePassIsEnoughForClosedStanzas) {
  set_target("/a {\n}\n");
  const CallFault removal(Call::read, [&] {
    std::filesystem::remove(job.config_path);
    return 0;
  });
  EXPECT_EQ(complaint<std::runtime_error>(), "rewritten");
}

TEST_F(Rewriter, SystemModeAppendsNothing) {
  job.settings.system_mode = true;
  EXPECT_EQ(rewritten(""), "");
  EXPECT_EQ(rewritten("# nothing\n"), "# nothing\n");
  EXPECT_EQ(rewritten("/a {\n"), "/a {\n");
}

TEST_F(Rewriter, ATargetThatCannotBeOpenedIsReported) {
  EXPECT_EQ(complaint<std::runtime_error>(), "Failed to open " + job.config_path + ": No such file or directory");
  EXPECT_TRUE(directory.names().empty());
}

TEST_F(Rewriter, ADirectoryEndsTheScanner) {
  std::filesystem::create_directory(job.config_path);
  EXPECT_EQ(complaint<ScannerFatalError>(), "input in flex scanner failed");
  EXPECT_EQ(directory.names(), std::vector<std::string>{"target"});
}

TEST_F(Rewriter, AReadErrorLeavesTheTargetAndNothingElse) {
  set_target("/a {\n}\n");
  const CallFault fault(Call::read, EIO);
  EXPECT_EQ(complaint<ScannerFatalError>(), "input in flex scanner failed");
  EXPECT_EQ(directory.names(), std::vector<std::string>{"target"});
  EXPECT_EQ(content_of(job.config_path), "/a {\n}\n");
}

TEST_F(Rewriter, ATemporaryFileThatCannotBeCreatedIsReported) {
  set_target("/a {\n}\n");
  const std::string missing = directory / "missing/target";
  const FileReplacement replacement(missing);
  try {
    open_scanner_streams(job, replacement);
    ADD_FAILURE() << "there is nothing to write to";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(masked(error.what(), missing), "Failed to open " + missing + ".??????: No such file or directory");
  }
}

// Both are missing; the target is what the administrator named.
TEST_F(Rewriter, TheTargetIsComplainedOfBeforeTheTemporaryFile) {
  job.config_path = directory / "missing/target";
  EXPECT_EQ(complaint<std::runtime_error>(), "Failed to open " + job.config_path + ": No such file or directory");
}

TEST_F(Rewriter, AnUnknownPeriodTypeIsReportedOnlyWhereAPeriodIsWritten) {
  job.settings.system_mode = true;
  job.settings.period_type = "by_moon";
  EXPECT_EQ(rewritten("# no stanza\n"), "# no stanza\n");
  set_target("/a {\n}\n");
  EXPECT_EQ(complaint<std::runtime_error>(), "Unknown rotation type: by_moon");
  EXPECT_EQ(content_of(job.config_path), "/a {\n}\n");
}

} // namespace

} // namespace tavek
