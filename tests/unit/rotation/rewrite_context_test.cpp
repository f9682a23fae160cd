#include "rotation/rewrite_context.h"

#include <gtest/gtest.h>
#include <stdexcept>

#include "unit/rotation/captured_output.h"

namespace tavek {

namespace {

constexpr std::string_view kHead = "/a {\n";
constexpr const char* kCommand = "\t\t/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*\n";
constexpr const char* kBlock = "\tpostrotate\n"
                               "\t\t/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*\n"
                               "\tendscript\n";

// A rewrite of a host's file with every setting filled.
class RewriteContextTest : public testing::Test {
protected:
  RewriteContextTest() {
    job.settings.period_type = "by_time";
    job.settings.period = "weekly";
    job.settings.rot_count = 5;
    job.settings.compress = true;
    job.settings.email = "a@b";
    job.settings.vhost_name = "example.com";
  }

  // A category's rewrite of nothing but period and count.
  void set_system_mode() {
    job.settings.system_mode = true;
    job.settings.compress = false;
    job.settings.email.clear();
  }

  const DirectiveTally& tally() const { return context.tally(); }
  std::string written() { return output.text(); }

  RewriteJob job;
  CapturedOutput output;
  RewriteContext context{job, output.stream()};
};

TEST_F(RewriteContextTest, CopiesAnyBytes) {
  context.copy(std::string_view("a\0\xff\r", 4));
  EXPECT_EQ(written(), std::string("a\0\xff\r", 4));
}

TEST_F(RewriteContextTest, AHeadStartsAStanzaThatLacksEverything) {
  context.stanza_head(kHead);
  EXPECT_EQ(tally().stanzas, 1);
  EXPECT_TRUE(tally().copytruncate_pending);
  EXPECT_TRUE(tally().stanza_targeted);
  EXPECT_EQ(written(), kHead);
}

TEST_F(RewriteContextTest, ReplacesEachManagedLine) {
  context.stanza_head(kHead);
  context.copytruncate_line(" copytruncate\n");
  context.missingok_line("nomissingok\n");
  context.mail_line("mail x@y\n");
  context.compress_line("nocompress\n");
  context.rotate_line("rotate 99\n");
  context.period_line("daily\n");
  context.stanza_close("}");
  EXPECT_EQ(written(),
            "/a {\n\tcopytruncate\n\tmissingok\n\tmail a@b\n\tmailfirst\n\tcompress\n\trotate 5\n\tweekly\n}");
}

TEST_F(RewriteContextTest, AddsAllThatLacksBeforeTheBraceInAFixedOrder) {
  job.settings.anonymize = Switch::on;
  context.stanza_head(kHead);
  context.stanza_close("}");
  EXPECT_EQ(written(), std::string("/a {\n\tweekly\n\trotate 5\n\tcompress\n\tmail a@b\n\tmailfirst\n\tmissingok\n"
                                   "\tcopytruncate\n") +
                           kBlock + "}");
}

// The counters run on, so a kind that the first stanza has twice counts as there in the second.
TEST_F(RewriteContextTest, CountsKindsOverAllStanzas) {
  job.settings.email.clear();
  context.stanza_head("/a {\n");
  context.rotate_line("rotate 1\n");
  context.rotate_line("rotate 2\n");
  context.stanza_close("}");
  context.stanza_head("/b {\n");
  context.stanza_close("}");
  EXPECT_EQ(written(), "/a {\n\trotate 5\n\trotate 5\n\tweekly\n\tcompress\n\tmissingok\n\tcopytruncate\n}"
                       "/b {\n\tweekly\n\tcompress\n\tmissingok\n\tcopytruncate\n}");
}

TEST_F(RewriteContextTest, DropsARepeatedPeriodWithinAStanzaOnly) {
  context.stanza_head("/a {\n");
  context.period_line("daily\n");
  context.period_line("monthly\n");
  context.stanza_head("/b {\n");
  context.period_line("daily\n");
  EXPECT_EQ(written(), "/a {\n\tweekly\n/b {\n\tweekly\n");
}

TEST_F(RewriteContextTest, KeepsPeriodAndCountThatAreNotSet) {
  job.settings.period_type.clear();
  job.settings.period.clear();
  job.settings.rot_count = -1;
  context.stanza_head(kHead);
  context.period_line("  size 1M\n");
  context.rotate_line("rotate\t9 \n");
  context.period_line("daily\n");
  EXPECT_EQ(written(), "/a {\n  size 1M\nrotate\t9 \ndaily\n");
}

TEST_F(RewriteContextTest, SystemModeCopiesTheKindsOfHostsOnly) {
  set_system_mode();
  context.stanza_head(kHead);
  context.compress_line(" nocompress\n");
  context.missingok_line(" missingok \n");
  context.copytruncate_line("copytruncate\n");
  context.mail_line("mail x@y\n");
  context.period_line("daily\n");
  context.rotate_line("rotate 1\n");
  context.stanza_close("}");
  EXPECT_EQ(written(), "/a {\n nocompress\n missingok \ncopytruncate\nmail x@y\n\tweekly\n\trotate 5\n}");
}

TEST_F(RewriteContextTest, SystemModeAddsNothingButPeriodAndCount) {
  set_system_mode();
  context.stanza_head(kHead);
  context.stanza_close("}");
  EXPECT_EQ(written(), "/a {\n\tweekly\n\trotate 5\n}");
}

TEST_F(RewriteContextTest, RefusesAnUnknownPeriodTypeWhereAPeriodIsWritten) {
  job.settings.period_type = "by_moon";
  context.stanza_head(kHead);
  EXPECT_THROW(context.period_line("daily\n"), std::runtime_error);
  EXPECT_THROW(context.stanza_close("}"), std::runtime_error);
}

TEST_F(RewriteContextTest, NothingIsTargetedMoreThanTheRestWithoutASelection) {
  job.target_logs = {"/x"};
  context.stanza_head(kHead);
  EXPECT_TRUE(tally().stanza_targeted);
}

TEST_F(RewriteContextTest, TargetsStanzasWhoseFirstPathIsSelected) {
  set_system_mode();
  job.select_targets = true;
  job.target_logs = {"/x", "/a"};
  for (const std::string_view head : {"/a {\n", "/a\n{\n", "/a\t/b {\n", "/x\r{\n", "/x\v{\n", "/x\f {\n"}) {
    context.stanza_head(head);
    EXPECT_TRUE(tally().stanza_targeted) << head;
  }
  for (const std::string_view head : {"/b /a {\n", "/a{\n", "/aa {\n", "/ {\n", "/a/ {\n", "/A {\n", "/a\" {\n"}) {
    context.stanza_head(head);
    EXPECT_FALSE(tally().stanza_targeted) << head;
  }
}

TEST_F(RewriteContextTest, SystemModeAddsTheScriptToTargetedStanzasOnly) {
  set_system_mode();
  job.settings.anonymize = Switch::on;
  job.select_targets = true;
  job.target_logs = {"/a"};
  context.stanza_head("/a {\n");
  context.stanza_close("}");
  context.stanza_head("/b {\n");
  context.stanza_close("}");
  EXPECT_EQ(written(), std::string("/a {\n\tweekly\n\trotate 5\n") + kBlock + "}/b {\n\tweekly\n\trotate 5\n}");
}

TEST_F(RewriteContextTest, OutsideSystemModeEveryStanzaGetsTheScript) {
  job.settings.anonymize = Switch::on;
  job.select_targets = true;
  context.stanza_head("/b {\n");
  context.stanza_close("}");
  EXPECT_TRUE(tally().stanza_targeted);
  EXPECT_EQ(tally().anonymizers, 1);
}

TEST_F(RewriteContextTest, RewritesAnAnonymizingCommandOfAnyRoot) {
  job.settings.anonymize = Switch::on;
  context.stanza_head(kHead);
  context.script_command(" /usr/local/old/admin/sbin/anonymize_ip --all $1\n");
  context.endscript_line("endscript\n");
  EXPECT_EQ(tally().anonymizers, 1);
  EXPECT_EQ(written(), std::string("/a {\n") + kCommand + "endscript\n");
}

TEST_F(RewriteContextTest, AddsTheCommandToAScriptThatLacksIt) {
  job.settings.anonymize = Switch::on;
  context.stanza_head(kHead);
  context.script_command("\t/usr/sbin/service reload\n");
  context.endscript_line("\tendscript\n");
  context.endscript_line("\tendscript\n");
  EXPECT_EQ(written(), std::string("/a {\n\t/usr/sbin/service reload\n") + kCommand + "\tendscript\n\tendscript\n");
}

TEST_F(RewriteContextTest, OffDropsTheCommandAndAddsNone) {
  job.settings.anonymize = Switch::off;
  context.stanza_head(kHead);
  context.script_command("\t/x/anonymize_ip $*\n");
  context.endscript_line("\tendscript\n");
  EXPECT_EQ(tally().anonymizers, 0);
  EXPECT_EQ(written(), "/a {\n\tendscript\n");
}

TEST_F(RewriteContextTest, KeepKeepsTheCommandAndAddsNone) {
  context.stanza_head(kHead);
  context.script_command("/x/anonymize_ip $*\n");
  context.endscript_line("endscript\n");
  context.stanza_close("}");
  EXPECT_EQ(tally().anonymizers, 0);
  EXPECT_EQ(written(),
            "/a {\n/x/anonymize_ip $*\nendscript\n\tweekly\n\trotate 5\n\tcompress\n\tmail a@b\n\tmailfirst\n"
            "\tmissingok\n\tcopytruncate\n}");
}

// The command is a path of two components at least, with something behind it.
TEST_F(RewriteContextTest, OnlyTheCommandItselfIsDropped) {
  job.settings.anonymize = Switch::off;
  constexpr const char* near_misses[] = {"/anonymize_ip $*\n",     "//anonymize_ip $*\n",    "/x/anonymize_ip\n",
                                         "/x/anonymize_ips $*\n",  "/x/anonymize_ip/y z\n",  "/env /x/anonymize_ip a\n",
                                         "/x/deanonymize_ip $*\n", "/x/anonymize_ip;true\n", "/x/anonymize_ip\r\n",
                                         "/x/anonymize_IP $*\n"};
  std::string expected;
  for (const char* line : near_misses) {
    context.script_command(line);
    expected += line;
  }
  for (const char* line : {"/x/anonymize_ip \n", "\t /x//anonymize_ip\t-a\n", "/x/anonymize_ip \r\n"}) {
    context.script_command(line);
  }
  EXPECT_EQ(written(), expected);
}

TEST_F(RewriteContextTest, AFileWithoutAStanzaGetsTheDefaultOne) {
  context.copy("# mine\n");
  EXPECT_FALSE(context.end_of_input());
  const std::string text = written();
  EXPECT_TRUE(text.starts_with("# mine\n#ATTENTION!\n")) << text;
  EXPECT_NE(text.find("/system/example.com/logs/php-fpm_error.log {\n\tweekly\n"), std::string::npos) << text;
}

TEST_F(RewriteContextTest, SystemModeGeneratesNothingAndNeedsNoSecondPass) {
  set_system_mode();
  EXPECT_FALSE(context.end_of_input());
  context.stanza_head(kHead);
  EXPECT_FALSE(context.end_of_input());
  EXPECT_EQ(tally().need_period, 0);
  EXPECT_EQ(written(), kHead);
}

TEST_F(RewriteContextTest, OnePassIsEnoughForClosedStanzas) {
  context.stanza_head(kHead);
  context.stanza_close("}");
  EXPECT_FALSE(context.end_of_input());
  EXPECT_EQ(tally().need_period + tally().need_rotate + tally().need_compress + tally().need_mail, 0);
}

TEST_F(RewriteContextTest, ASecondPassWritesAtTheHeadsWhatTheFirstNeverWrote) {
  context.stanza_head("/a {\n");
  EXPECT_TRUE(context.end_of_input());
  output.stream().restart();
  context.stanza_head("/b {\n");
  EXPECT_EQ(written(), "/b {\n\tweekly\n\trotate 5\n\tcompress\n\tmail a@b\n\tmailfirst\n");
}

// One row a kind: all the others are there in the first pass.
TEST_F(RewriteContextTest, EachMissingKindAloneMakesASecondPass) {
  struct Row {
    int DirectiveTally::*need;
    const char* inserted;
  };
  constexpr Row rows[] = {{&DirectiveTally::need_period, "\tweekly\n"},
                          {&DirectiveTally::need_rotate, "\trotate 5\n"},
                          {&DirectiveTally::need_compress, "\tcompress\n"},
                          {&DirectiveTally::need_mail, "\tmail a@b\n\tmailfirst\n"}};
  for (const Row& row : rows) {
    CapturedOutput output;
    RewriteContext context(job, output.stream());
    context.stanza_head("/a {\n");
    if (row.need != &DirectiveTally::need_period) {
      context.period_line("daily\n");
    }
    if (row.need != &DirectiveTally::need_rotate) {
      context.rotate_line("rotate 1\n");
    }
    if (row.need != &DirectiveTally::need_compress) {
      context.compress_line("compress\n");
    }
    if (row.need != &DirectiveTally::need_mail) {
      context.mail_line("mail x\n");
    }
    EXPECT_TRUE(context.end_of_input()) << row.inserted;
    EXPECT_EQ(context.tally().*row.need, 1) << row.inserted;
    output.stream().restart();
    context.stanza_head("/b {\n");
    EXPECT_EQ(output.text(), std::string("/b {\n") + row.inserted);
  }
}

TEST_F(RewriteContextTest, AStanzaThatNeverClosesMayHaveAllThatASecondPassWouldBring) {
  context.stanza_head(kHead);
  context.period_line("daily\n");
  context.rotate_line("rotate 1\n");
  context.compress_line("compress\n");
  context.mail_line("mail x\n");
  EXPECT_FALSE(context.end_of_input()) << "neither missingok nor copytruncate asks for another pass";
}

} // namespace

} // namespace tavek
