#include "log/log.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>
#include <syslog.h>
#include <unistd.h>

namespace tavek {

namespace {

LogState state;

constexpr const char* kTraceVariable = "TAVEK_LOG_TRACE_ID";
constexpr const char* kLevelVariable = "TAVEK_LOG_LEVEL";
constexpr int kLevelMask = 7;
constexpr int kOpenlogOptions = LOG_PID | LOG_CONS | LOG_PERROR;

bool destination_is(const char* name) {
  return strcasecmp(state.log_destination, name) == 0;
}

__attribute__((format(printf, 2, 0))) void print_line(FILE* stream, const char* format, va_list args) {
  va_list copy;
  va_copy(copy, args);
  vfprintf(stream, format, copy);
  va_end(copy);
  fputc('\n', stream);
  fflush(stream);
}

// Copies as much of `text` as fits. `text` may be the target itself: a caller may pass `log_ident` to log_init.
template <std::size_t Size>
void copy_truncated(std::array<char, Size>& target, const char* text) {
  const std::size_t length = strnlen(text, Size - 1);
  memmove(target.data(), text, length);
  target[length] = '\0';
}

// An id from the environment takes precedence, so that child processes share the id of their parent.
void set_trace_id() {
  const char* inherited = getenv(kTraceVariable);
  if (inherited != nullptr && *inherited != '\0') {
    copy_truncated(state.log_trace_id, inherited);
    return;
  }
  const int initial = toupper(static_cast<unsigned char>(program_invocation_short_name[0]));
  snprintf(state.log_trace_id.data(), state.log_trace_id.size(), "%c%ld", initial, static_cast<long>(getpid()));
  setenv(kTraceVariable, state.log_trace_id.data(), 1);
}

void open_syslog(int options, const char* ident) {
  closelog();
  state.log_options = options | LOG_PID;
  copy_truncated(state.log_ident, ident != nullptr ? ident : program_invocation_short_name);
  if ((state.log_options & kLogTraced) != 0) {
    set_trace_id();
  }
  openlog(state.log_ident.data(), state.log_options & kOpenlogOptions, state.log_facility);
  state.log_hook = log_syslog;
  state.log_vhook = log_vsyslog;
}

int raised_by_environment(int threshold) {
  const char* text = getenv(kLevelVariable);
  if (text == nullptr || strlen(text) != 1 || text[0] < '0' || text[0] > '7') {
    return threshold;
  }
  return std::max(threshold, text[0] - '0');
}

} // namespace

LogState& log_state() {
  return state;
}

void log_console(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  log_vconsole(level, format, args);
  va_end(args);
}

void log_vconsole(int level, const char* format, va_list args) {
  if (level > state.log_threshold) {
    return;
  }
  if (state.log_destination != nullptr && !destination_is("console") && !destination_is("stderr")) {
    return;
  }
  print_line(stderr, format, args);
  if (state.log_destination != nullptr && !destination_is("console")) {
    return;
  }
  // The copy on standard output is intended; only the destination "stderr" suppresses it.
  print_line(stdout, format, args);
}

void log_syslog(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  log_vsyslog(level, format, args);
  va_end(args);
}

void log_vsyslog(int level, const char* format, va_list args) {
  if ((state.log_options & kLogTraced) != 0 && state.log_trace_id[0] != '\0') {
    log_syslog_traced(level, format, args);
  } else {
    vsyslog(level, format, args);
  }
}

void log_syslog_traced(int level, const char* format, va_list args) {
  std::array<char, 8192> message{};
  const int prefix = snprintf(message.data(), message.size(), "%s: ", state.log_trace_id.data());
  const auto used = static_cast<std::size_t>(prefix); // At most 63 + 2 characters: the trace id and ": ".
  vsnprintf(message.data() + used, message.size() - used, format, args);
  syslog(level, "%s", message.data());
}

void log_init(const char* destination, int level, int facility, int options, const char* ident) {
  state.log_facility = facility;
  state.log_destination = destination;
  if (destination != nullptr) {
    state.log_hook = log_console;
    state.log_vhook = log_vconsole;
  } else {
    open_syslog(options, ident);
  }
  log_set_level(level);
}

void log_set_level(int level) {
  int threshold = level & kLevelMask;
  if ((level & kLogLevelFromEnvironment) != 0) {
    threshold = raised_by_environment(threshold);
  }
  state.log_threshold = threshold;
  if (state.log_destination == nullptr) {
    setlogmask(LOG_UPTO(threshold));
  }
}

int log_get_options() {
  return state.log_options;
}

} // namespace tavek
