#pragma once

// The panel's message sink: one process-wide place that every report of its C-style libraries goes to.
//
// A report carries a syslog priority, 0 (emergency) to 7 (debug); a caller may pass a larger number for a report that
// is shown only where the threshold has been lifted out of the usual range. All state is process-wide and unguarded:
// the facility is for single-threaded tools. Write errors are ignored, nothing here throws.

#include <array>
#include <cstdarg>

namespace tavek {

/// A sink: a level and a printf format with its arguments.
using LogHook __attribute__((format(printf, 2, 3))) = void (*)(int level, const char* format, ...);
/// The same for callers that hold a va_list.
using LogVHook __attribute__((format(printf, 2, 0))) = void (*)(int level, const char* format, va_list args);

void log_console(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));
void log_vconsole(int level, const char* format, va_list args) __attribute__((format(printf, 2, 0)));
void log_syslog(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));
void log_vsyslog(int level, const char* format, va_list args) __attribute__((format(printf, 2, 0)));
void log_syslog_traced(int level, const char* format, va_list args) __attribute__((format(printf, 2, 0)));

/// Flag of `log_options`, beside syslog's own bits: put the trace id in front of each syslog message.
inline constexpr int kLogTraced = 64;
/// Flag of a level argument: let TAVEK_LOG_LEVEL raise the threshold.
inline constexpr int kLogLevelFromEnvironment = 8;

/// The state of the facility, with its values at process start.
struct LogState {
  LogHook log_hook = log_console;        ///< Where every report goes.
  LogVHook log_vhook = log_vconsole;     ///< The same, for callers that hold a va_list.
  int log_threshold = 6;                 ///< A report is emitted only when its level is at most this.
  const char* log_destination = nullptr; ///< Borrowed: "console", "stderr", any other text (silence), or null.
  int log_options = 1;                   ///< syslog's option bits (LOG_PID) and kLogTraced.
  int log_facility = 16;                 ///< syslog's facility (LOG_MAIL).
  std::array<char, 64> log_ident{};      ///< The identity handed to openlog.
  std::array<char, 64> log_trace_id{};   ///< Put in front of traced syslog messages.
  const char* program_path = nullptr;    ///< Borrowed: argv[0], from which fatal messages take their prefix.
};

/// The one state of the process.
LogState& log_state();

/// Configures the facility. A `destination` sends reports to the console sink; it is borrowed and must outlive the
/// process's logging. A null one sends them to syslog under `ident` (the program's short invocation name when null),
/// with LOG_PID always on. With kLogTraced in `options` the trace id is taken from TAVEK_LOG_TRACE_ID, or made and
/// put there, so that child processes log under the same id. Ends with log_set_level(level). May be called again.
void log_init(const char* destination, int level, int facility, int options, const char* ident);

/// Sets the threshold to the low three bits of `level`. With kLogLevelFromEnvironment, TAVEK_LOG_LEVEL may raise it,
/// never lower it, when it is exactly one character from 0 to 7. Without a destination the syslog mask follows.
void log_set_level(int level);

/// The current option bits.
int log_get_options();

} // namespace tavek
