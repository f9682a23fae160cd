#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "log/log.h"
#include "unit/log/syslog_fixture.h"

namespace tavek {

namespace {

using test::Calls;
using test::syslog_calls;

/// A trace id starts with the initial of the process name, "logtool".
class LogTrace : public test::SyslogFixture {};

std::string own_trace_id() {
  return "L" + std::to_string(getpid());
}

TEST_F(LogTrace, TracesUnderTheInheritedId) {
  setenv("TAVEK_LOG_TRACE_ID", "P17", 1);
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  EXPECT_STREQ(log_state().log_trace_id.data(), "P17");
  EXPECT_STREQ(getenv("TAVEK_LOG_TRACE_ID"), "P17");
  EXPECT_EQ(calls_of_report(2, "report"), Calls{"syslog(2, %s, P17: report!)"});
}

TEST_F(LogTrace, DoesNotPassTheTraceFlagToSyslog) {
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  EXPECT_EQ(syslog_calls(), (Calls{"closelog()", "openlog(tool, 1, 16)", "setlogmask(255)"}));
  EXPECT_EQ(log_get_options(), 65);
}

TEST_F(LogTrace, TracesTheArgumentsOfAVaList) {
  setenv("TAVEK_LOG_TRACE_ID", "P17", 1);
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  syslog_calls().clear();
  call_vhook(4, "%d%c", 5, 'x');
  EXPECT_EQ(syslog_calls(), Calls{"syslog(4, %s, P17: 5x)"});
}

TEST_F(LogTrace, TruncatesAnInheritedIdTo63Characters) {
  setenv("TAVEK_LOG_TRACE_ID", std::string(100, 't').c_str(), 1);
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  EXPECT_EQ(log_state().log_trace_id.data(), std::string(63, 't'));
}

TEST_F(LogTrace, ExportsAnIdMadeOfInitialAndProcessId) {
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  EXPECT_EQ(log_state().log_trace_id.data(), own_trace_id());
  EXPECT_EQ(getenv("TAVEK_LOG_TRACE_ID"), own_trace_id());
}

TEST_F(LogTrace, ReplacesAnEmptyId) {
  setenv("TAVEK_LOG_TRACE_ID", "", 1);
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  EXPECT_EQ(getenv("TAVEK_LOG_TRACE_ID"), own_trace_id());
}

// The child has another process id, so only the environment can tell it the trace id of its parent.
TEST_F(LogTrace, SharesItsIdWithAChildProcess) {
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  const std::string own = own_trace_id();
  const auto log_in_child = [&own] {
    log_state() = LogState{};
    log_init(nullptr, 7, 16, kLogTraced, "child");
    _exit(own != own_trace_id() && own == log_state().log_trace_id.data() ? 0 : 1);
  };
  EXPECT_EXIT(log_in_child(), testing::ExitedWithCode(0), "");
}

TEST_F(LogTrace, NeitherReadsNorExportsAnIdWithoutTheTraceFlag) {
  log_init(nullptr, 7, 16, 0, "tool");
  EXPECT_EQ(getenv("TAVEK_LOG_TRACE_ID"), nullptr);
  setenv("TAVEK_LOG_TRACE_ID", "P17", 1);
  log_init(nullptr, 7, 16, 0, "tool");
  EXPECT_STREQ(log_state().log_trace_id.data(), "");
}

TEST_F(LogTrace, StopsAfterAnInitialisationWithoutTheTraceFlag) {
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  log_init(nullptr, 7, 16, 0, "tool");
  EXPECT_EQ(calls_of_report(3, "report"), Calls{"vsyslog(3, %s!, report!)"});
}

TEST_F(LogTrace, DoesNotTraceReportsIfTheIdIsEmpty) {
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  log_state().log_trace_id[0] = '\0';
  EXPECT_EQ(calls_of_report(3, "report"), Calls{"vsyslog(3, %s!, report!)"});
}

TEST_F(LogTrace, TruncatesATracedMessageTo8191Characters) {
  setenv("TAVEK_LOG_TRACE_ID", "P17", 1);
  log_init(nullptr, 7, 16, kLogTraced, "tool");
  const std::string room(8191 - strlen("P17: !"), 'x');
  EXPECT_EQ(calls_of_report(3, room.c_str()), Calls{"syslog(3, %s, P17: " + room + "!)"});
  EXPECT_EQ(calls_of_report(3, (room + "y").c_str()), Calls{"syslog(3, %s, P17: " + room + "y)"});
  EXPECT_EQ(calls_of_report(3, (room + "yz").c_str()), Calls{"syslog(3, %s, P17: " + room + "y)"});
}

} // namespace

} // namespace tavek
