#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "log/log.h"
#include "unit/log/fresh_log_state.h"
#include "unit/log/recorded_streams.h"
#include "unit/log/recorded_syslog.h"

namespace tavek {

namespace {

using test::borrowed_identity;
using test::syslog_calls;
using Calls = std::vector<std::string>;

/// Also gives the process the short name "logtool", whose initial begins a trace id.
class LogSyslog : public test::FreshLogState {
protected:
  LogSyslog() {
    program_invocation_short_name = short_name_;
    syslog_calls().clear();
  }
  ~LogSyslog() override { program_invocation_short_name = original_; }

  static Calls calls_of_report(int level, const char* text) {
    syslog_calls().clear();
    log_state().log_hook(level, "%s!", text);
    return syslog_calls();
  }

private:
  char* original_ = program_invocation_short_name;
  char short_name_[8] = "logtool";
};

void call_vhook(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));
void call_vhook(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  log_state().log_vhook(level, format, args);
  va_end(args);
}

std::string own_trace_id() {
  return "L" + std::to_string(getpid());
}

TEST_F(LogSyslog, IsOpenedAfreshWithIdentityOptionsFacilityAndMask) {
  log_init(nullptr, 5, 24, 2, "tool");
  EXPECT_EQ(syslog_calls(), (Calls{"closelog()", "openlog(tool, 3, 24)", "setlogmask(63)"}));
  EXPECT_EQ(log_state().log_facility, 24);
  EXPECT_EQ(log_state().log_destination, nullptr);
  EXPECT_EQ(log_state().log_hook, log_syslog);
  EXPECT_EQ(log_state().log_vhook, log_vsyslog);
}

TEST_F(LogSyslog, IsClosedAndOpenedAgainBySecondInit) {
  log_init(nullptr, 5, 16, 0, "first");
  syslog_calls().clear();
  log_init(nullptr, 2, 8, 0, "second");
  EXPECT_EQ(syslog_calls(), (Calls{"closelog()", "openlog(second, 1, 8)", "setlogmask(7)"}));
}

TEST_F(LogSyslog, TakesOverFromADestination) {
  log_init("stderr", 5, 16, 0, nullptr);
  log_init(nullptr, 5, 16, 0, "tool");
  EXPECT_EQ(calls_of_report(3, "report"), Calls{"vsyslog(3, %s!, report!)"});
}

TEST_F(LogSyslog, HandsOnlyItsThreeOptionBitsToSyslogButKeepsAll) {
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

TEST_F(LogSyslog, CutsAnIdentityToSixtyThreeCharacters) {
  log_init(nullptr, 0, 16, 0, std::string(63, 'a').c_str());
  EXPECT_EQ(log_state().log_ident.data(), std::string(63, 'a'));
  log_init(nullptr, 0, 16, 0, std::string(64, 'b').c_str());
  EXPECT_EQ(log_state().log_ident.data(), std::string(63, 'b'));
}

TEST_F(LogSyslog, KeepsTheIdentityReadableThatSyslogBorrows) {
  {
    const std::string identity = "short-lived";
    log_init(nullptr, 0, 16, 0, identity.c_str());
  }
  EXPECT_EQ(borrowed_identity(), log_state().log_ident.data());
}

TEST_F(LogSyslog, PassesReportsStraightOnWithoutTracing) {
  log_init(nullptr, 7, 16, 0, "tool");
  EXPECT_EQ(calls_of_report(3, "100%"), Calls{"vsyslog(3, %s!, 100%!)"});
}

TEST_F(LogSyslog, LeavesTheThresholdToTheSyslogMask) {
  log_init(nullptr, 3, 16, 0, "tool");
  EXPECT_EQ(calls_of_report(7, "detail"), Calls{"vsyslog(7, %s!, detail!)"});
}

TEST_F(LogSyslog, WritesNothingToTheStreams) {
  log_init(nullptr, 7, 16, 0, "tool");
  EXPECT_EQ(test::written_by([] { log_state().log_hook(3, "report"); }), test::Writes{});
}

TEST_F(LogSyslog, PassesTheArgumentsOfAVaListOn) {
  log_init(nullptr, 7, 16, 0, "tool");
  syslog_calls().clear();
  call_vhook(4, "%d%c", 5, 'x');
  EXPECT_EQ(syslog_calls(), Calls{"vsyslog(4, %d%c, 5x)"});
}

TEST_F(LogSyslog, TracesUnderTheInheritedId) {
  setenv("TAVEK_LOG_TRACE_ID", "P17", 1);
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  EXPECT_STREQ(log_state().log_trace_id.data(), "P17");
  EXPECT_STREQ(getenv("TAVEK_LOG_TRACE_ID"), "P17");
  EXPECT_EQ(calls_of_report(2, "report"), Calls{"syslog(2, %s, P17: report!)"});
}

TEST_F(LogSyslog, DoesNotHandTheTraceFlagToSyslog) {
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  EXPECT_EQ(syslog_calls(), (Calls{"closelog()", "openlog(tool, 1, 16)", "setlogmask(255)"}));
  EXPECT_EQ(log_get_options(), 65);
}

TEST_F(LogSyslog, TracesTheArgumentsOfAVaList) {
  setenv("TAVEK_LOG_TRACE_ID", "P17", 1);
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  syslog_calls().clear();
  call_vhook(4, "%d%c", 5, 'x');
  EXPECT_EQ(syslog_calls(), Calls{"syslog(4, %s, P17: 5x)"});
}

TEST_F(LogSyslog, CutsAnInheritedIdToSixtyThreeCharacters) {
  setenv("TAVEK_LOG_TRACE_ID", std::string(100, 't').c_str(), 1);
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  EXPECT_EQ(log_state().log_trace_id.data(), std::string(63, 't'));
}

TEST_F(LogSyslog, MakesAnIdOfInitialAndProcessIdAndPutsItIntoTheEnvironment) {
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  EXPECT_EQ(log_state().log_trace_id.data(), own_trace_id());
  EXPECT_EQ(getenv("TAVEK_LOG_TRACE_ID"), own_trace_id());
}

TEST_F(LogSyslog, MakesAnIdInPlaceOfAnEmptyOne) {
  setenv("TAVEK_LOG_TRACE_ID", "", 1);
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  EXPECT_EQ(getenv("TAVEK_LOG_TRACE_ID"), own_trace_id());
}

// The child has another process id, so only the environment can give it the id of its parent.
TEST_F(LogSyslog, SharesItsIdWithAChildProcess) {
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  const std::string own = own_trace_id();
  const auto log_in_child = [&own] {
    log_state() = LogState{};
    log_init(nullptr, 7, 16, kLogTraced, "child");
    _exit(own != own_trace_id() && own == log_state().log_trace_id.data() ? 0 : 1);
  };
  EXPECT_EXIT(log_in_child(), testing::ExitedWithCode(0), "");
}

TEST_F(LogSyslog, TakesNoIdWithoutTheTraceFlag) {
  setenv("TAVEK_LOG_TRACE_ID", "P17", 1);
  log_init(nullptr, 7, 16, 0, "tool");
  EXPECT_STREQ(log_state().log_trace_id.data(), "");
}

TEST_F(LogSyslog, SetsNoVariableWithoutTheTraceFlag) {
  log_init(nullptr, 7, 16, 0, "tool");
  EXPECT_EQ(getenv("TAVEK_LOG_TRACE_ID"), nullptr);
}

TEST_F(LogSyslog, StopsTracingWhenInitialisedWithoutTheFlag) {
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  log_init(nullptr, 7, 16, 0, "tool");
  EXPECT_EQ(calls_of_report(3, "report"), Calls{"vsyslog(3, %s!, report!)"});
}

TEST_F(LogSyslog, PassesReportsStraightOnWhileTheIdIsEmpty) {
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  log_state().log_trace_id[0] = '\0';
  EXPECT_EQ(calls_of_report(3, "report"), Calls{"vsyslog(3, %s!, report!)"});
}

TEST_F(LogSyslog, CutsATracedMessageToItsBuffer) {
  setenv("TAVEK_LOG_TRACE_ID", "P17", 1);
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  const std::string room(8191 - strlen("P17: !"), 'x');
  EXPECT_EQ(calls_of_report(3, room.c_str()), Calls{"syslog(3, %s, P17: " + room + "!)"});
  EXPECT_EQ(calls_of_report(3, (room + "y").c_str()), Calls{"syslog(3, %s, P17: " + room + "y)"});
  EXPECT_EQ(calls_of_report(3, (room + "yz").c_str()), Calls{"syslog(3, %s, P17: " + room + "y)"});
}

} // namespace

} // namespace tavek
