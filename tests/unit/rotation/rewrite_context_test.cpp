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

// A rewrite of a host's file, with a value for every setting except anonymization.
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

  // A rewrite of a category's file that sets only period and count.
  void set_system_mode() {
    job.settings.system_mode = true;
    job.settings.compress = false;
    job.settings.email.clear();
  }

  std::string written() { return output.text(); }

  // The whole output for one stanza without directives.
  std::string rewritten_stanza(std::string_view head) const {
    CapturedOutput own_output;
    RewriteContext own_context(job, own_output.stream());
    own_context.stanza_head(head);
    own_context.stanza_close("}");
    return own_output.text();
  }

  RewriteJob job;
  CapturedOutput output;
  RewriteContext context{job, output.stream()};
};

TEST_F(RewriteContextTest, CopiesAnyBytes) {
  context.copy(std::string_view("a\0\xff\r", 4));
  EXPECT_EQ(written(), std::string("a\0\xff\r", 4));
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

TEST_F(RewriteContextTest, AddsEveryMissingDirectiveBeforeTheBraceInAFixedOrder) {
  job.settings.anonymize = Switch::on;
  EXPECT_EQ(rewritten_stanza(kHead),
            std::string("/a {\n\tweekly\n\trotate 5\n\tcompress\n\tmail a@b\n\tmailfirst\n\tmissingok\n"
                        "\tcopytruncate\n") +
                kBlock + "}");
}

// The counters are not reset, so a surplus directive of the first stanza counts for the second.
TEST_F(RewriteContextTest, CountsDirectivesOverAllStanzas) {
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

TEST_F(RewriteContextTest, DropsARepeatedPeriodOnlyWithinAStanza) {
  context.stanza_head("/a {\n");
  context.period_line("daily\n");
  context.period_line("monthly\n");
  context.stanza_head("/b {\n");
  context.period_line("daily\n");
  EXPECT_EQ(written(), "/a {\n\tweekly\n/b {\n\tweekly\n");
}

TEST_F(RewriteContextTest, CopiesPeriodAndCountLinesIfNeitherIsSet) {
  job.settings.period_type.clear();
  job.settings.period.clear();
  job.settings.rot_count = -1;
  context.stanza_head(kHead);
  context.period_line("  size 1M\n");
  context.rotate_line("rotate\t9 \n");
  context.period_line("daily\n");
  EXPECT_EQ(written(), "/a {\n  size 1M\nrotate\t9 \ndaily\n");
}

TEST_F(RewriteContextTest, CopiesHostOnlyDirectivesInSystemMode) {
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

TEST_F(RewriteContextTest, RejectsAnUnknownPeriodTypeWhenItWritesAPeriod) {
  job.settings.period_type = "by_moon";
  context.stanza_head(kHead);
  EXPECT_THROW(context.period_line("daily\n"), std::runtime_error);
  EXPECT_THROW(context.stanza_close("}"), std::runtime_error);
}

TEST_F(RewriteContextTest, AddsTheScriptInSystemModeOnlyToStanzasWhoseFirstPathIsATarget) {
  set_system_mode();
  job.settings.anonymize = Switch::on;
  job.select_targets = true;
  job.target_logs = {"/x", "/a"};
  const std::string directives = "\tweekly\n\trotate 5\n";
  for (const std::string head : {"/a {\n", "/a\n{\n", "/a\t/b {\n", "/x\r{\n", "/x\v{\n", "/x\f {\n"}) {
    EXPECT_EQ(rewritten_stanza(head), head + directives + kBlock + "}");
  }
  for (const std::string head : {"/b /a {\n", "/a{\n", "/aa {\n", "/ {\n", "/a/ {\n", "/A {\n", "/a\" {\n"}) {
    EXPECT_EQ(rewritten_stanza(head), head + directives + "}");
  }
}

TEST_F(RewriteContextTest, AddsTheScriptToEveryStanzaIfThereIsNoSelectionOrNoSystemMode) {
  job.settings.anonymize = Switch::on;
  job.target_logs = {"/x"};
  job.select_targets = true;
  EXPECT_TRUE(rewritten_stanza(kHead).ends_with(std::string(kBlock) + "}"));
  job.select_targets = false;
  set_system_mode();
  EXPECT_TRUE(rewritten_stanza(kHead).ends_with(std::string(kBlock) + "}"));
}

TEST_F(RewriteContextTest, ReplacesAnAnonymizingCommandOfAnyProductRoot) {
  job.settings.anonymize = Switch::on;
  context.stanza_head(kHead);
  context.script_command(" /usr/local/old/admin/sbin/anonymize_ip --all $1\n");
  context.endscript_line("endscript\n");
  EXPECT_EQ(written(), std::string("/a {\n") + kCommand + "endscript\n");
}

TEST_F(RewriteContextTest, AddsTheCommandOnceAtTheEndOfAScriptWithoutIt) {
  job.settings.anonymize = Switch::on;
  context.stanza_head(kHead);
  context.script_command("\t/usr/sbin/service reload\n");
  context.endscript_line("\tendscript\n");
  context.endscript_line("\tendscript\n");
  EXPECT_EQ(written(), std::string("/a {\n\t/usr/sbin/service reload\n") + kCommand + "\tendscript\n\tendscript\n");
}

TEST_F(RewriteContextTest, DropsTheCommandIfAnonymizationIsOff) {
  job.settings.anonymize = Switch::off;
  context.stanza_head(kHead);
  context.script_command("\t/x/anonymize_ip $*\n");
  context.endscript_line("\tendscript\n");
  EXPECT_EQ(written(), "/a {\n\tendscript\n");
}

TEST_F(RewriteContextTest, CopiesTheCommandIfAnonymizationIsNotSet) {
  context.stanza_head(kHead);
  context.script_command("/x/anonymize_ip $*\n");
  context.endscript_line("endscript\n");
  context.stanza_close("}");
  EXPECT_EQ(written(),
            "/a {\n/x/anonymize_ip $*\nendscript\n\tweekly\n\trotate 5\n\tcompress\n\tmail a@b\n\tmailfirst\n"
            "\tmissingok\n\tcopytruncate\n}");
}

// The command is a path of at least two components, followed by a blank.
TEST_F(RewriteContextTest, CopiesLinesThatOnlyResembleTheCommand) {
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

TEST_F(RewriteContextTest, AppendsTheDefaultFileToAnInputWithoutAStanza) {
  context.copy("# mine\n");
  EXPECT_FALSE(context.end_of_input());
  const std::string text = written();
  EXPECT_TRUE(text.starts_with("# mine\n#ATTENTION!\n")) << text;
  EXPECT_NE(text.find("/system/example.com/logs/php-fpm_error.log {\n\tweekly\n"), std::string::npos) << text;
}

TEST_F(RewriteContextTest, AppendsNothingAndNeedsNoSecondPassInSystemMode) {
  set_system_mode();
  EXPECT_FALSE(context.end_of_input());
  context.stanza_head(kHead);
  EXPECT_FALSE(context.end_of_input());
  context.stanza_head(kHead);
  EXPECT_EQ(written(), std::string(kHead).append(kHead));
}

TEST_F(RewriteContextTest, NeedsNoSecondPassAfterAClosedStanza) {
  context.stanza_head(kHead);
  context.stanza_close("}");
  EXPECT_FALSE(context.end_of_input());
  output.stream().restart();
  context.stanza_head(kHead);
  EXPECT_EQ(written(), kHead);
}

TEST_F(RewriteContextTest, AddsDirectivesAfterEachHeadInASecondPassIfTheFirstNeverWroteThem) {
  context.stanza_head("/a {\n");
  EXPECT_TRUE(context.end_of_input());
  output.stream().restart();
  context.stanza_head("/b {\n");
  context.stanza_head("/c {\n");
  const std::string missing = "\tweekly\n\trotate 5\n\tcompress\n\tmail a@b\n\tmailfirst\n";
  EXPECT_EQ(written(), "/b {\n" + missing + "/c {\n" + missing);
}

// A missing missingok or copytruncate does not cause a second pass.
TEST_F(RewriteContextTest, NeedsASecondPassForEachOfFourDirectives) {
  struct Directive {
    void (RewriteContext::*line)(std::string_view);
    const char* inserted;
  };
  constexpr Directive directives[] = {{&RewriteContext::period_line, "\tweekly\n"},
                                      {&RewriteContext::rotate_line, "\trotate 5\n"},
                                      {&RewriteContext::compress_line, "\tcompress\n"},
                                      {&RewriteContext::mail_line, "\tmail a@b\n\tmailfirst\n"}};
  for (const Directive& missing : directives) {
    CapturedOutput own_output;
    RewriteContext own_context(job, own_output.stream());
    own_context.stanza_head("/a {\n");
    for (const Directive& directive : directives) {
      if (&directive != &missing) {
        (own_context.*directive.line)("a line\n");
      }
    }
    EXPECT_TRUE(own_context.end_of_input()) << missing.inserted;
    own_output.stream().restart();
    own_context.stanza_head("/b {\n");
    EXPECT_EQ(own_output.text(), std::string("/b {\n") + missing.inserted);
  }
  context.stanza_head(kHead);
  for (const Directive& directive : directives) {
    (context.*directive.line)("a line\n");
  }
  EXPECT_FALSE(context.end_of_input());
}

} // namespace

} // namespace tavek
