#pragma once

// The panel's message sink: the one place in a process where the reports of its C-style libraries go.
//
// The program uses only `program_path` and `log_hook`, the latter in its initial state. The rest of this header is for
// the panel's other tools.
//
// Each report has a level: a syslog priority from 0 (emergency) to 7 (debug), or a larger number. The console sink
// prints a report above level 7 only if `log_threshold` has been set that high. All state is process-wide and not
// thread-safe. Write errors are ignored. Nothing here throws.

#include <array>
#include <cstdarg>

namespace tavek {

/// A sink. It receives a level and a printf format with its arguments.
using LogHook __attribute__((format(printf, 2, 3))) = void (*)(int level, const char* format, ...);
/// The same for callers that have a va_list.
using LogVHook __attribute__((format(printf, 2, 0))) = void (*)(int level, const char* format, va_list args);

/// The console sink: prints a report and a newline on standard error, and again on standard output, if its level is at
/// most the threshold. The destination "stderr" suppresses the second copy; any other destination except "console"
/// suppresses both.
void log_console(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));
void log_vconsole(int level, const char* format, va_list args) __attribute__((format(printf, 2, 0)));

/// The syslog sink. Here the syslog mask decides which reports are dropped; the threshold has no effect. It adds the
/// trace id if kLogTraced is set and there is an id.
void log_syslog(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));
void log_vsyslog(int level, const char* format, va_list args) __attribute__((format(printf, 2, 0)));

/// Sends a report to syslog, prefixed with the trace id and ": ". The prefix and the report together are truncated to
/// 8191 bytes.
void log_syslog_traced(int level, const char* format, va_list args) __attribute__((format(printf, 2, 0)));

/// Flag in `log_options`, in addition to syslog's bits: prefix each syslog message with the trace id.
inline constexpr int kLogTraced = 64;
/// Flag in a level argument: TAVEK_LOG_LEVEL may raise the threshold.
inline constexpr int kLogLevelFromEnvironment = 8;

/// The logging state, with its values at process start.
struct LogState {
  LogHook log_hook = log_console;        ///< The sink for every report.
  LogVHook log_vhook = log_vconsole;     ///< The same, for callers that have a va_list.
  int log_threshold = 6;                 ///< The console sink drops reports with a higher level.
  const char* log_destination = nullptr; ///< Borrowed: "console", "stderr", any other text (silence), or null.
  int log_options = 1;                   ///< syslog's option bits (LOG_PID) and kLogTraced.
  int log_facility = 16;                 ///< syslog's facility (LOG_MAIL).
  std::array<char, 64> log_ident{};      ///< The identity handed to openlog.
  std::array<char, 64> log_trace_id{};   ///< The prefix of traced syslog messages.
  const char* program_path = nullptr;    ///< Borrowed: argv[0], for the prefix of fatal messages.
};

/// The state of this process.
LogState& log_state();

/// Configures logging. With a `destination`, which is borrowed and must remain valid, reports go to the console
/// sink. With a null destination they go to syslog under `ident` or, if that is null, under the program's short
/// invocation name; LOG_PID is always on. With kLogTraced in `options` the trace id is read from TAVEK_LOG_TRACE_ID, or
/// created and stored there so that child processes share it. Finally calls log_set_level(level). May be called again.
void log_init(const char* destination, int level, int facility, int options, const char* ident);

/// Sets the threshold to the low three bits of `level`. With kLogLevelFromEnvironment, TAVEK_LOG_LEVEL can raise the
/// threshold but not lower it; it must be exactly one character from 0 to 7. Without a destination the syslog mask is
/// set to match.
void log_set_level(int level);

/// Returns the current option bits.
int log_get_options();

} // namespace tavek
