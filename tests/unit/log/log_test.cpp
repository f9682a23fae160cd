#include "log/log.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "unit/log/log_fixture.h"

namespace tavek {

namespace {

using test::borrowed_identity;
using test::Calls;
using test::on_both_streams;
using test::syslog_calls;
using test::Writes;
using test::written_by;

class LogAtStart : public test::LogFixture {};
class LogConsole : public test::LogFixture {};

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
  report_at(3);
  EXPECT_TRUE(syslog_calls().empty());
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
  syslog_calls().clear();
  const char* const destination = "stderr";
  log_init(destination, 4, 24, 0, "other");
  EXPECT_EQ(log_state().log_hook, log_console);
  EXPECT_EQ(log_state().log_vhook, log_vconsole);
  EXPECT_EQ(log_state().log_destination, destination);
  EXPECT_EQ(log_state().log_facility, 24);
  EXPECT_EQ(log_state().log_threshold, 4);
  EXPECT_TRUE(syslog_calls().empty());
}

TEST_F(LogConsole, LeavesOptionsAndIdentityAndTraceIdUnchanged) {
  setenv("TAVEK_LOG_TRACE_ID", "trace", 1);
  log_init("console", 6, 16, kLogTraced | 2, "tool");
  EXPECT_EQ(log_get_options(), 1);
  EXPECT_STREQ(log_state().log_ident.data(), "");
  EXPECT_STREQ(log_state().log_trace_id.data(), "");
}

class LogLevel : public test::LogFixture {};

// The threshold after log_set_level(level) with this value of TAVEK_LOG_LEVEL.
int threshold_with(const char* variable, int level) {
  setenv("TAVEK_LOG_LEVEL", variable, 1);
  log_set_level(level);
  return log_state().log_threshold;
}

TEST_F(LogLevel, KeepsTheLowThreeBits) {
  const int levels[][2] = {{0, 0}, {5, 5}, {7, 7}, {16, 0}, {16 + 3, 3}, {64 + 7, 7}};
  for (const auto& [level, threshold] : levels) {
    log_set_level(level);
    EXPECT_EQ(log_state().log_threshold, threshold) << level;
  }
}

TEST_F(LogLevel, IsRaisedByTheEnvironmentOnRequest) {
  EXPECT_EQ(threshold_with("7", 5 | kLogLevelFromEnvironment), 7);
  EXPECT_EQ(threshold_with("6", 5 | kLogLevelFromEnvironment), 6);
  EXPECT_EQ(threshold_with("1", 0 | kLogLevelFromEnvironment), 1);
}

TEST_F(LogLevel, IsNotRaisedByTheEnvironmentUnlessRequested) {
  EXPECT_EQ(threshold_with("7", 5), 5);
  EXPECT_EQ(threshold_with("7", 5 | 16), 5);
}

TEST_F(LogLevel, IsNeverLoweredByTheEnvironment) {
  EXPECT_EQ(threshold_with("3", 5 | kLogLevelFromEnvironment), 5);
  EXPECT_EQ(threshold_with("0", 7 | kLogLevelFromEnvironment), 7);
}

TEST_F(LogLevel, IgnoresAVariableThatIsNotADigitFrom0To7) {
  for (const char* variable : {"", "07", "70", "8", "9", "debug", " 7", "7 ", "-", "/", "+7"}) {
    EXPECT_EQ(threshold_with(variable, 2 | kLogLevelFromEnvironment), 2) << variable;
  }
}

TEST_F(LogLevel, IsUnchangedWithoutTheVariable) {
  log_set_level(2 | kLogLevelFromEnvironment);
  EXPECT_EQ(log_state().log_threshold, 2);
}

TEST_F(LogLevel, SetsTheSyslogMaskWithoutADestination) {
  for (int level = 0; level <= 7; ++level) {
    syslog_calls().clear();
    log_set_level(level);
    const std::string mask = std::to_string((1 << (level + 1)) - 1);
    EXPECT_EQ(syslog_calls(), Calls{"setlogmask(" + mask + ")"});
  }
}

TEST_F(LogLevel, SetsTheSyslogMaskToARaisedThreshold) {
  threshold_with("7", 3 | kLogLevelFromEnvironment);
  EXPECT_EQ(syslog_calls(), Calls{"setlogmask(255)"});
}

TEST_F(LogLevel, DoesNotSetTheSyslogMaskWithADestination) {
  log_state().log_destination = "file";
  log_set_level(5);
  EXPECT_TRUE(syslog_calls().empty());
  EXPECT_EQ(log_state().log_threshold, 5);
}

class LogSyslog : public test::LogFixture {};

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
  EXPECT_EQ(written_by([] { log_state().log_hook(3, "report"); }), Writes{});
}

TEST_F(LogSyslog, ReceivesTheArgumentsOfAVaList) {
  log_init(nullptr, 7, 16, 0, "tool");
  syslog_calls().clear();
  call_vhook(4, "%d%c", 5, 'x');
  EXPECT_EQ(syslog_calls(), Calls{"vsyslog(4, %d%c, 5x)"});
}

/// A trace id starts with the initial of the process name, "logtool".
class LogTrace : public test::LogFixture {};

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
