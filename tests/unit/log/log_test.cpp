#include "log/log.h"

#include <cstdlib>
#include <gtest/gtest.h>

#include "unit/log/fresh_log_state.h"
#include "unit/log/recorded_streams.h"
#include "unit/log/recorded_syslog.h"

namespace tavek {

namespace {

using test::on_both_streams;
using test::Writes;
using test::written_by;

class LogAtStart : public test::FreshLogState {};
class LogConsole : public test::FreshLogState {};

// The output of a report at a level.
Writes report_at(int level) {
  return written_by([level] { log_state().log_hook(level, "report"); });
}

TEST_F(LogAtStart, HasTheDocumentedState) {
  EXPECT_EQ(log_state().log_hook, log_console);
  EXPECT_EQ(log_state().log_vhook, log_vconsole);
  EXPECT_EQ(log_state().log_threshold, 6);
  EXPECT_EQ(log_state().log_destination, nullptr);
  EXPECT_EQ(log_get_options(), 1);
  EXPECT_EQ(log_state().log_facility, 16);
  EXPECT_STREQ(log_state().log_ident.data(), "");
  EXPECT_STREQ(log_state().log_trace_id.data(), "");
  EXPECT_EQ(log_state().program_path, nullptr);
}

TEST_F(LogAtStart, WritesReportsUpToTheThresholdToBothStreams) {
  EXPECT_EQ(report_at(0), on_both_streams("report\n"));
  EXPECT_EQ(report_at(6), on_both_streams("report\n"));
}

TEST_F(LogAtStart, WritesNoReportAboveTheThreshold) {
  EXPECT_EQ(report_at(7), Writes{});
  EXPECT_EQ(report_at(12), Writes{});
}

TEST_F(LogAtStart, DoesNotUseSyslog) {
  test::syslog_calls().clear();
  report_at(3);
  EXPECT_TRUE(test::syslog_calls().empty());
}

TEST_F(LogConsole, FormatsTheReportOnEachStream) {
  const auto action = [] { log_console(3, "%s has %d of %.1f %c", "it", 7, 9.5, '%'); };
  EXPECT_EQ(written_by(action), on_both_streams("it has 7 of 9.5 %\n"));
}

TEST_F(LogConsole, FormatsTheArgumentsOfAVaListOnEachStream) {
  EXPECT_EQ(written_by([] { call_vhook(3, "%s: %d", "number", 12); }), on_both_streams("number: 12\n"));
}

TEST_F(LogConsole, AddsANewlineEvenAfterANewline) {
  EXPECT_EQ(written_by([] { log_console(3, "line\n"); }), on_both_streams("line\n\n"));
}

TEST_F(LogConsole, AppliesTheThresholdToLevelsAboveThoseOfSyslogToo) {
  log_state().log_threshold = 11;
  EXPECT_EQ(report_at(12), Writes{});
  log_state().log_threshold = 12;
  EXPECT_EQ(report_at(12), on_both_streams("report\n"));
}

TEST_F(LogConsole, WritesToBothStreamsForTheDestinationConsole) {
  for (const char* destination : {"console", "CONSOLE", "cOnsolE"}) {
    log_init(destination, 6, 16, 0, nullptr);
    EXPECT_EQ(report_at(3), on_both_streams("report\n")) << destination;
  }
}

TEST_F(LogConsole, WritesOnlyToStandardErrorForTheDestinationStderr) {
  for (const char* destination : {"stderr", "STDERR", "StdErr"}) {
    log_init(destination, 6, 16, 0, nullptr);
    EXPECT_EQ(report_at(3), (Writes{{"stderr", "report\n"}})) << destination;
  }
}

TEST_F(LogConsole, IsSilentForAnyOtherDestination) {
  for (const char* destination : {"file", "", "stderr ", "stdout", "consol", "consoles"}) {
    log_init(destination, 7, 16, 0, nullptr);
    EXPECT_EQ(report_at(0), Writes{}) << destination;
  }
}

TEST_F(LogConsole, IgnoresAFailedStream) {
  const auto action = [] { log_console(3, "report"); };
  EXPECT_EQ(written_by(action, "stderr"), (Writes{{"stdout", "report\n"}}));
  EXPECT_EQ(written_by(action, "stdout"), (Writes{{"stderr", "report\n"}}));
}

TEST_F(LogConsole, ReplacesSyslogIfThereIsADestination) {
  log_init(nullptr, 6, 16, 0, "tool");
  test::syslog_calls().clear();
  const char* const destination = "stderr";
  log_init(destination, 4, 24, 0, "other");
  EXPECT_EQ(log_state().log_hook, log_console);
  EXPECT_EQ(log_state().log_vhook, log_vconsole);
  EXPECT_EQ(log_state().log_destination, destination);
  EXPECT_EQ(log_state().log_facility, 24);
  EXPECT_EQ(log_state().log_threshold, 4);
  EXPECT_TRUE(test::syslog_calls().empty());
}

TEST_F(LogConsole, LeavesOptionsAndIdentityAndTraceIdUnchanged) {
  setenv("TAVEK_LOG_TRACE_ID", "trace", 1);
  log_init("console", 6, 16, kLogTraced | 2, "tool");
  EXPECT_EQ(log_get_options(), 1);
  EXPECT_STREQ(log_state().log_ident.data(), "");
  EXPECT_STREQ(log_state().log_trace_id.data(), "");
}

} // namespace

} // namespace tavek
