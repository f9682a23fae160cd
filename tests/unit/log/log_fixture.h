#pragma once

// The fixture of the tests of src/log. The streams, and in this test program the functions of syslog, are replaced with
// functions that only record.

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "log/log.h"

namespace tavek::test {

/// A stream, "stderr" or "stdout", and the text flushed to it. Successive texts of one stream are joined.
using Writes = std::vector<std::pair<std::string, std::string>>;

/// Runs the action with both streams replaced. Writes to the stream named by `broken` fail, as on a full disk.
Writes written_by(const std::function<void()>& action, const std::string& broken = "");

/// The same text on standard error, then on standard output.
Writes on_both_streams(const std::string& text);

/// Calls of openlog, closelog, setlogmask, syslog and vsyslog: for example "openlog(tool, 1, 16)", "setlogmask(127)" or
/// "syslog(3, %s, text)", which has both the format and the formatted text.
using Calls = std::vector<std::string>;

/// The calls since the last clear(), in order.
Calls& syslog_calls();

/// The identity last passed to openlog. The C library borrows it, so it must remain readable.
const char* borrowed_identity();

/// Each test starts with the log's state at process start, without its environment variables and without recorded
/// calls, in a process whose short name is "logtool".
class LogFixture : public testing::Test {
protected:
  LogFixture() {
    start_from_scratch();
    program_invocation_short_name = short_name_;
  }
  ~LogFixture() override {
    start_from_scratch();
    program_invocation_short_name = original_;
  }

  /// Reports through log_vhook, as a caller with a va_list does.
  __attribute__((format(printf, 2, 3))) static void call_vhook(int level, const char* format, ...) {
    va_list args;
    va_start(args, format);
    log_state().log_vhook(level, format, args);
    va_end(args);
  }

  /// The syslog calls for a report with the format "%s!".
  static Calls calls_of_report(int level, const char* text) {
    syslog_calls().clear();
    log_state().log_hook(level, "%s!", text);
    return syslog_calls();
  }

private:
  static void start_from_scratch() {
    log_state() = LogState{};
    unsetenv("TAVEK_LOG_LEVEL");
    unsetenv("TAVEK_LOG_TRACE_ID");
    syslog_calls().clear();
  }

  char* original_ = program_invocation_short_name;
  char short_name_[8] = "logtool";
};

} // namespace tavek::test
