#include "rotation/directive_writer.h"

#include <gtest/gtest.h>
#include <stdexcept>

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

TEST(DirectiveTally, BeginsWithNothingSeenOrPending) {
  const DirectiveTally tally;
  for (const auto kind :
       {&DirectiveTally::stanzas, &DirectiveTally::periods, &DirectiveTally::rotates, &DirectiveTally::compresses,
        &DirectiveTally::mails, &DirectiveTally::missingoks, &DirectiveTally::anonymizers, &DirectiveTally::need_period,
        &DirectiveTally::need_rotate, &DirectiveTally::need_compress, &DirectiveTally::need_mail}) {
    EXPECT_EQ(tally.*kind, 0);
  }
  EXPECT_FALSE(tally.copytruncate_pending);
  EXPECT_EQ(tally.last_period, "");
  EXPECT_TRUE(tally.stanza_targeted);
}

TEST_F(DirectiveWriterTest, CopiesAnyBytes) {
  writer.copy(std::string_view("a\0\xff\r", 4));
  EXPECT_EQ(written(), std::string("a\0\xff\r", 4));
}

TEST_F(DirectiveWriterTest, AStanzaBeginsWithoutAPeriod) {
  writer.write_period("by_time", "daily", "");
  writer.begin_stanza("/a {\n");
  writer.write_period("by_time", "daily", "");
  EXPECT_EQ(written(), "\tdaily\n/a {\n\tdaily\n");
}

TEST_F(DirectiveWriterTest, WritesASizeBehindItsName) {
  writer.write_period("by_size", "10M", "\tdaily\n");
  EXPECT_EQ(tally.periods, 1);
  EXPECT_EQ(tally.last_period, "10M");
  EXPECT_EQ(written(), "\tsize=10M\n");
}

TEST_F(DirectiveWriterTest, WritesATimeByItself) {
  writer.write_period("by_time", "weekly", "\tdaily\n");
  EXPECT_EQ(tally.periods, 1);
  EXPECT_EQ(tally.last_period, "weekly");
  EXPECT_EQ(written(), "\tweekly\n");
}

TEST_F(DirectiveWriterTest, PassesAPeriodThroughWithoutAType) {
  const std::string_view line("  size 1\0k \n", 12);
  writer.write_period("", "", line);
  EXPECT_EQ(tally.periods, 1);
  EXPECT_EQ(tally.last_period, "");
  EXPECT_EQ(written(), line);
}

// A category run may be given a period without a type.
TEST_F(DirectiveWriterTest, RemembersAPeriodThatItPassedThrough) {
  writer.write_period("", "daily", "weekly\n");
  EXPECT_EQ(tally.last_period, "daily");
  writer.write_period("", "daily", "monthly\n");
  EXPECT_EQ(tally.periods, 1);
  EXPECT_EQ(written(), "weekly\n");
}

TEST_F(DirectiveWriterTest, DropsThePeriodThatTheStanzaHasAlready) {
  writer.write_period("by_time", "daily", "");
  writer.write_period("by_time", "daily", "");
  EXPECT_EQ(tally.periods, 1);
  EXPECT_EQ(written(), "\tdaily\n");
}

TEST_F(DirectiveWriterTest, WritesASecondPeriodThatDiffers) {
  writer.write_period("by_time", "daily", "");
  writer.write_period("by_time", "weekly", "");
  writer.write_period("by_time", "daily", "");
  EXPECT_EQ(tally.periods, 3);
  EXPECT_EQ(written(), "\tdaily\n\tweekly\n\tdaily\n");
}

TEST_F(DirectiveWriterTest, WritesAnEmptyPeriodEachTime) {
  writer.write_period("by_time", "", "");
  writer.write_period("by_size", "", "");
  EXPECT_EQ(tally.periods, 2);
  EXPECT_EQ(written(), "\t\n\tsize=\n");
}

TEST_F(DirectiveWriterTest, RefusesAnyOtherTypeAndWritesNothing) {
  for (const std::string type : {"by_date", "BY_TIME", "by_tim", "by_times", "daily", " "}) {
    try {
      writer.write_period(type, "daily", "\tdaily\n");
      ADD_FAILURE() << type << " is a type";
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), "Unknown rotation type: " + type);
    }
  }
  EXPECT_EQ(tally.periods, 0);
  EXPECT_EQ(tally.last_period, "");
  EXPECT_EQ(written(), "");
}

// The value is looked at before the type.
TEST_F(DirectiveWriterTest, AnUnknownTypePassesForAPeriodThatIsThereAlready) {
  tally.last_period = "daily";
  EXPECT_NO_THROW(writer.write_period("by_date", "daily", ""));
  EXPECT_EQ(written(), "");
}

TEST_F(DirectiveWriterTest, WritesARotationCount) {
  writer.write_rotate(0, "rotate 9\n");
  writer.write_rotate(7, "rotate 9\n");
  writer.write_rotate(2147483647, "rotate 9\n");
  EXPECT_EQ(tally.rotates, 3);
  EXPECT_EQ(written(), "\trotate 0\n\trotate 7\n\trotate 2147483647\n");
}

TEST_F(DirectiveWriterTest, PassesACountThroughForANegativeOne) {
  writer.write_rotate(-1, "rotate 9\n");
  writer.write_rotate(-2147483648, "");
  EXPECT_EQ(tally.rotates, 2);
  EXPECT_EQ(written(), "rotate 9\n");
}

TEST_F(DirectiveWriterTest, WritesCompressOrNocompress) {
  writer.write_compress(true);
  writer.write_compress(false);
  EXPECT_EQ(tally.compresses, 2);
  EXPECT_EQ(written(), "\tcompress\n\tnocompress\n");
}

TEST_F(DirectiveWriterTest, WritesAMailAddressAndWhichLogItGets) {
  writer.write_mail("root@example.com");
  EXPECT_EQ(tally.mails, 1);
  EXPECT_EQ(written(), "\tmail root@example.com\n\tmailfirst\n");
}

TEST_F(DirectiveWriterTest, CountsAnEmptyMailAddressThatItDoesNotWrite) {
  writer.write_mail("");
  EXPECT_EQ(tally.mails, 1);
  EXPECT_EQ(written(), "");
}

TEST_F(DirectiveWriterTest, WritesMissingok) {
  writer.write_missingok();
  EXPECT_EQ(tally.missingoks, 1);
  EXPECT_EQ(written(), "\tmissingok\n");
}

TEST_F(DirectiveWriterTest, NoCopytruncateIsPendingOnceItIsWritten) {
  tally.copytruncate_pending = true;
  writer.write_copytruncate();
  EXPECT_FALSE(tally.copytruncate_pending);
  EXPECT_EQ(written(), "\tcopytruncate\n");
}

TEST_F(DirectiveWriterTest, WritesTheAnonymizingCommandAlone) {
  writer.write_anonymize(PostrotateBlock::omit);
  EXPECT_EQ(tally.anonymizers, 1);
  EXPECT_EQ(written(), kCommand);
}

TEST_F(DirectiveWriterTest, WritesTheAnonymizingCommandInAScriptOfItsOwn) {
  writer.write_anonymize(PostrotateBlock::write);
  EXPECT_EQ(tally.anonymizers, 1);
  EXPECT_EQ(written(), std::string("\tpostrotate\n") + kCommand + "\tendscript\n");
}

TEST_F(DirectiveWriterTest, WritesTheAnonymizingCommandOnlyOnItsCondition) {
  writer.write_anonymize_if(false, PostrotateBlock::write);
  writer.write_anonymize_if(false, PostrotateBlock::omit);
  EXPECT_EQ(tally.anonymizers, 0);
  writer.write_anonymize_if(true, PostrotateBlock::omit);
  EXPECT_EQ(tally.anonymizers, 1);
  EXPECT_EQ(written(), kCommand);
}

TEST_F(DirectiveWriterTest, AWriterCountsOnlyItsOwnKind) {
  writer.write_rotate(1, "");
  writer.write_compress(true);
  writer.write_mail("a@b");
  writer.write_missingok();
  EXPECT_EQ(tally.periods, 0);
  EXPECT_EQ(tally.rotates, 1);
  EXPECT_EQ(tally.compresses, 1);
  EXPECT_EQ(tally.mails, 1);
  EXPECT_EQ(tally.missingoks, 1);
  EXPECT_EQ(tally.anonymizers, 0);
  EXPECT_EQ(tally.stanzas, 0);
}

} // namespace

} // namespace tavek
