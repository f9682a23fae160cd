#include "unit/log/recorded_syslog.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <syslog.h>

namespace {

const char* identity = nullptr;

__attribute__((format(printf, 3, 0))) void note_message(const char* function, int level, const char* format,
                                                        va_list args) {
  std::array<char, 16384> text{};
  vsnprintf(text.data(), text.size(), format, args);
  tavek::test::syslog_calls().push_back(std::string(function) + "(" + std::to_string(level) + ", " + format + ", " +
                                        text.data() + ")");
}

} // namespace

extern "C" {

void openlog(const char* ident, int options, int facility) {
  identity = ident;
  tavek::test::syslog_calls().push_back(std::string("openlog(") + ident + ", " + std::to_string(options) + ", " +
                                        std::to_string(facility) + ")");
}

void closelog() {
  tavek::test::syslog_calls().emplace_back("closelog()");
}

int setlogmask(int mask) noexcept {
  tavek::test::syslog_calls().push_back("setlogmask(" + std::to_string(mask) + ")");
  return 0;
}

void syslog(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  note_message("syslog", level, format, args);
  va_end(args);
}

void vsyslog(int level, const char* format, va_list args) {
  note_message("vsyslog", level, format, args);
}

// With _FORTIFY_SOURCE the C library's header calls these functions instead. The flag argument does not change the
// message.
// NOLINTBEGIN(bugprone-reserved-identifier)
void __syslog_chk(int level, int, const char* format, ...) {
  va_list args;
  va_start(args, format);
  note_message("syslog", level, format, args);
  va_end(args);
}

void __vsyslog_chk(int level, int, const char* format, va_list args) {
  note_message("vsyslog", level, format, args);
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace tavek::test {

std::vector<std::string>& syslog_calls() {
  static std::vector<std::string> calls;
  return calls;
}

const char* borrowed_identity() {
  return identity;
}

} // namespace tavek::test
