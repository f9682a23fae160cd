// What each rule matches is tested in tests/property, where the scanner is compared with a plain implementation of its
// rules.

#include "rotation/rotation_scanner.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <new>
#include <stdexcept>

#include "support/call_fault.h"
#include "support/temporary_directory.h"
#include "unit/rotation/captured_output.h"

namespace tavek {

namespace {

constexpr const char* kOthers = "\trotate 5\n\tcompress\n\tmail a@b\n\tmailfirst\n\tmissingok\n\tcopytruncate\n";

class RotationScannerTest : public testing::Test {
protected:
  RotationScannerTest() {
    job.settings.period_type = "by_time";
    job.settings.period = "weekly";
    job.settings.rot_count = 5;
    job.settings.compress = true;
    job.settings.email = "a@b";
  }

  // The output for several inputs of one scanner.
  std::string scanned(const std::vector<std::string>& texts) const {
    CapturedOutput output;
    RewriteContext context(job, output.stream());
    RotationScanner scanner(context);
    const TemporaryDirectory directory;
    for (const std::string& text : texts) {
      ScannerInput input(directory.write("input", text));
      input.read();
      scanner.scan(input);
    }
    return output.text();
  }

  RewriteJob job;
};

TEST_F(RotationScannerTest, ReportsEveryConstructToTheContext) {
  job.settings.anonymize = Switch::off;
  EXPECT_EQ(scanned({"# /a {\n/a {\ncopytruncate\n missingok\nmail x\nmailfirst\nnocompress\nrotate 1\ndaily\nsu x y\n"
                     "postrotate\n/x/anonymize_ip a\nendscript\n}\n"}),
            "# /a {\n/a {\n\tcopytruncate\n\tmissingok\n\tmail a@b\n\tmailfirst\n\tcompress\n\trotate 5\n\tweekly\n"
            "su x y\npostrotate\nendscript\n}\n");
}

TEST_F(RotationScannerTest, CopiesAManagedLineWithoutANewlineAtTheEndOfTheInput) {
  for (const std::string text : {"/a {\ndaily", "/a {\nrotate 5", "/a {\nmail x", "/a {\npostrotate\n/",
                                 "/a {\npostrotate\n/x/anonymize_ip a"}) {
    EXPECT_EQ(scanned({text}), text);
  }
}

TEST_F(RotationScannerTest, KeepsItsStartConditionForTheNextInput) {
  EXPECT_EQ(scanned({"/a {\n", "daily\n}\n"}), std::string("/a {\n\tweekly\n") + kOthers + "}\n");
  EXPECT_EQ(scanned({"/a {\npostrotate\n", "daily\n}\nendscript\n}"}),
            std::string("/a {\npostrotate\ndaily\n}\nendscript\n\tweekly\n") + kOthers + "}");
}

TEST_F(RotationScannerTest, StartsEveryInputAtTheBeginningOfALine) {
  EXPECT_EQ(scanned({"/a {\nx", "daily\n}"}), std::string("/a {\nx\tweekly\n") + kOthers + "}");
  EXPECT_EQ(scanned({"x", "#/a {\n}"}), "x#/a {\n}");
}

TEST_F(RotationScannerTest, DoesNotCatchExceptionsOfTheContext) {
  job.settings.period_type = "by_moon";
  EXPECT_THROW(scanned({"/a {\ndaily\n}\n"}), std::runtime_error);
}

TEST_F(RotationScannerTest, ThrowsIfItCannotBeAllocated) {
  CapturedOutput output;
  RewriteContext context(job, output.stream());
  const CallFault fault(Call::allocation, ENOMEM);
  EXPECT_THROW(RotationScanner{context}, std::bad_alloc);
}

} // namespace

} // namespace tavek
