#include <gtest/gtest.h>
#include <string>

#include "log/log.h"
#include "unit/log/recorded_streams.h"
#include "unit/log/syslog_fixture.h"

namespace tavek {

namespace {

using test::borrowed_identity;
using test::Calls;
using test::syslog_calls;

class LogSyslog : public test::SyslogFixture {};

TEST_F(LogSyslog, IsOpenedWithIdentityAndOptionsAndFacilityAndMask) {
  log_init(nullptr, 5, 24, 2, "tool");
  EXPECT_EQ(syslog_calls(), (Calls{"closelog()", "openlog(tool, 3, 24)", "setlogmask(63)"}));
  EXPECT_EQ(log_state().log_facility, 24);
  EXPECT_EQ(log_state().log_destination, nullptr);
  EXPECT_EQ(log_state().log_hook, log_syslog);
  EXPECT_EQ(log_state().log_vhook, log_vsyslog);
}

TEST_F(LogSyslog, IsUsedAgainOnceThereIsNoDestination) {
  log_init("stderr", 5, 16, 0, nullptr);
  log_init(nullptr, 5, 16, 0, "tool");
  EXPECT_EQ(calls_of_report(3, "report"), Calls{"vsyslog(3, %s!, report!)"});
}

TEST_F(LogSyslog, ReceivesTheArgumentsOfEveryReport) {
  log_init(nullptr, 5, 16, 0, "tool");
  for (const char* word : {"first", "second", "third"}) {
    syslog_calls().clear();
    log_syslog(4, "%s of %d, %s", word, 3, "all");
    EXPECT_EQ(syslog_calls(), Calls{std::string("vsyslog(4, %s of %d, %s, ") + word + " of 3, all)"});
  }
}

TEST_F(LogSyslog, KeepsAllOptionBitsButPassesOnlyThoseOfSyslogToOpenlog) {
  log_init(nullptr, 0, 16, 0xff & ~kLogTraced, "tool");
  EXPECT_EQ(syslog_calls()[1], "openlog(tool, 35, 16)");
  EXPECT_EQ(log_get_options(), 0xff & ~kLogTraced);
}

TEST_F(LogSyslog, AlwaysLogsTheProcessId) {
  log_init(nullptr, 0, 16, 0, "tool");
  EXPECT_EQ(log_get_options(), 1);
}

TEST_F(LogSyslog, UsesTheShortInvocationNameWithoutAnIdentity) {
  log_init(nullptr, 0, 16, 0, nullptr);
  EXPECT_STREQ(log_state().log_ident.data(), "logtool");
  EXPECT_EQ(syslog_calls()[1], "openlog(logtool, 1, 16)");
}

TEST_F(LogSyslog, TruncatesAnIdentityTo63Characters) {
  log_init(nullptr, 0, 16, 0, std::string(63, 'a').c_str());
  EXPECT_EQ(log_state().log_ident.data(), std::string(63, 'a'));
  log_init(nullptr, 0, 16, 0, std::string(64, 'b').c_str());
  EXPECT_EQ(log_state().log_ident.data(), std::string(63, 'b'));
}

TEST_F(LogSyslog, ReplacesALongerIdentity) {
  log_init(nullptr, 0, 16, 0, "logrotate");
  log_init(nullptr, 0, 16, 0, "panel");
  EXPECT_STREQ(log_state().log_ident.data(), "panel");
}

TEST_F(LogSyslog, AcceptsItsOwnIdentityBufferAsTheIdentity) {
  log_init(nullptr, 0, 16, 0, "panel");
  log_init(nullptr, 0, 16, 0, log_state().log_ident.data());
  EXPECT_STREQ(log_state().log_ident.data(), "panel");
}

TEST_F(LogSyslog, KeepsTheIdentityThatSyslogBorrows) {
  {
    const std::string identity = "short-lived";
    log_init(nullptr, 0, 16, 0, identity.c_str());
  }
  EXPECT_EQ(borrowed_identity(), log_state().log_ident.data());
}

TEST_F(LogSyslog, PassesOnReportsAboveTheThreshold) {
  log_init(nullptr, 3, 16, 0, "tool");
  EXPECT_EQ(calls_of_report(7, "detail"), Calls{"vsyslog(7, %s!, detail!)"});
}

TEST_F(LogSyslog, WritesNothingToTheStandardStreams) {
  log_init(nullptr, 7, 16, 0, "tool");
  EXPECT_EQ(test::written_by([] { log_state().log_hook(3, "report"); }), test::Writes{});
}

TEST_F(LogSyslog, ReceivesTheArgumentsOfAVaList) {
  log_init(nullptr, 7, 16, 0, "tool");
  syslog_calls().clear();
  call_vhook(4, "%d%c", 5, 'x');
  EXPECT_EQ(syslog_calls(), Calls{"vsyslog(4, %d%c, 5x)"});
}

} // namespace

} // namespace tavek
