#include "rotation/directive_writer.h"

#include <gtest/gtest.h>
#include <stdexcept>

#include "support/thrown.h"
#include "unit/rotation/captured_output.h"

namespace tavek {

namespace {

constexpr const char* kCommand = "\t\t/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*\n";

class DirectiveWriterTest : public testing::Test {
protected:
  std::string written() { return output.text(); }

  CapturedOutput output;
  DirectiveTally tally;
  DirectiveWriter writer{output.stream(), tally};
};

TEST_F(DirectiveWriterTest, CopiesAnyBytes) {
  writer.copy(std::string_view("a\0\xff\r", 4));
  EXPECT_EQ(written(), std::string("a\0\xff\r", 4));
}

TEST_F(DirectiveWriterTest, WritesAPeriodAccordingToItsType) {
  writer.write_period("by_size", "10M", "\tdaily\n");
  writer.write_period("by_time", "weekly", "\tdaily\n");
  EXPECT_EQ(written(), "\tsize=10M\n\tweekly\n");
}

TEST_F(DirectiveWriterTest, CopiesThePeriodLineIfThereIsNoType) {
  const std::string_view line("  size 1\0k \n", 12);
  writer.write_period("", "", line);
  writer.write_period("", "", "daily\n");
  EXPECT_EQ(written(), std::string(line) + "daily\n");
}

TEST_F(DirectiveWriterTest, WritesAPeriodOncePerStanza) {
  writer.write_period("by_time", "daily", "");
  writer.write_period("by_time", "daily", "");
  writer.write_period("by_time", "weekly", "");
  writer.begin_stanza("/a {\n");
  writer.write_period("by_time", "weekly", "");
  EXPECT_EQ(written(), "\tdaily\n\tweekly\n/a {\n\tweekly\n");
}

// A category run may be given a period without a type.
TEST_F(DirectiveWriterTest, CopiesOnePeriodLinePerStanzaForAPeriodWithoutAType) {
  writer.write_period("", "daily", "weekly\n");
  writer.write_period("", "daily", "monthly\n");
  EXPECT_EQ(written(), "weekly\n");
}

TEST_F(DirectiveWriterTest, WritesAnEmptyPeriodEachTime) {
  writer.write_period("by_time", "", "");
  writer.write_period("by_size", "", "");
  EXPECT_EQ(written(), "\t\n\tsize=\n");
}

TEST_F(DirectiveWriterTest, RejectsAnyOtherTypeAndWritesNothing) {
  for (const std::string type : {"by_date", "BY_TIME", "by_times", " "}) {
    EXPECT_EQ(thrown_by<std::runtime_error>([&] { writer.write_period(type, "daily", "\tdaily\n"); }),
              "Unknown rotation type: " + type);
  }
  EXPECT_EQ(written(), "");
}

TEST_F(DirectiveWriterTest, WritesANonNegativeRotationCountAndOtherwiseCopiesTheLine) {
  writer.write_rotate(0, "rotate 9\n");
  writer.write_rotate(2147483647, "rotate 9\n");
  writer.write_rotate(-1, "rotate 9\n");
  EXPECT_EQ(written(), "\trotate 0\n\trotate 2147483647\nrotate 9\n");
}

TEST_F(DirectiveWriterTest, WritesNoMailLinesForAnEmptyAddress) {
  writer.write_mail("root@example.com");
  writer.write_mail("");
  EXPECT_EQ(written(), "\tmail root@example.com\n\tmailfirst\n");
}

TEST_F(DirectiveWriterTest, WritesTheOtherDirectives) {
  writer.write_compress(true);
  writer.write_compress(false);
  writer.write_missingok();
  writer.write_copytruncate();
  EXPECT_EQ(written(), "\tcompress\n\tnocompress\n\tmissingok\n\tcopytruncate\n");
}

TEST_F(DirectiveWriterTest, WritesTheAnonymizingCommandWithOrWithoutAScriptAroundIt) {
  writer.write_anonymize(PostrotateBlock::omit);
  writer.write_anonymize_if(false, PostrotateBlock::write);
  writer.write_anonymize_if(true, PostrotateBlock::write);
  EXPECT_EQ(written(), std::string(kCommand) + "\tpostrotate\n" + kCommand + "\tendscript\n");
}

} // namespace

} // namespace tavek
