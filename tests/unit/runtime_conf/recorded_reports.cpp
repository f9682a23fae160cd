#include "unit/runtime_conf/recorded_reports.h"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include "log/log.h"

namespace tavek::test {

namespace {

Reports& reports() {
  static Reports all;
  return all;
}

__attribute__((format(printf, 2, 3))) void keep(int level, const char* format, ...) {
  std::array<char, 4096> text{};
  va_list args;
  va_start(args, format);
  vsnprintf(text.data(), text.size(), format, args);
  va_end(args);
  reports().emplace_back(level, text.data());
  errno = EBADF;
}

} // namespace

RecordedReports::RecordedReports() {
  log_state() = LogState{};
  log_state().log_hook = keep;
  reports().clear();
}

RecordedReports::~RecordedReports() {
  log_state() = LogState{};
}

Reports RecordedReports::take_reports() {
  return std::exchange(reports(), {});
}

} // namespace tavek::test
