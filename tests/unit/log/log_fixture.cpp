#include "unit/log/log_fixture.h"

#include <array>
#include <cstdio>
#include <sys/types.h>
#include <syslog.h>
#include <unistd.h>

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

namespace {

/// Replaces one of the two streams. The replacement is fully buffered, so text arrives only when it is flushed.
class StandIn {
public:
  StandIn(FILE*& stream, std::string name, bool broken, Writes& writes)
      : stream_(stream), original_(stream), name_(std::move(name)), broken_(broken), writes_(writes) {
    cookie_io_functions_t functions{};
    functions.write = write;
    stream_ = fopencookie(this, "w", functions);
  }
  ~StandIn() {
    FILE* own = stream_;
    stream_ = original_;
    broken_ = true; // Drops text that was never flushed.
    fclose(own);
  }
  StandIn(const StandIn&) = delete;
  StandIn& operator=(const StandIn&) = delete;

private:
  static ssize_t write(void* cookie, const char* text, size_t length) {
    auto* self = static_cast<StandIn*>(cookie);
    if (self->broken_) {
      return 0;
    }
    if (self->writes_.empty() || self->writes_.back().first != self->name_) {
      self->writes_.emplace_back(self->name_, "");
    }
    self->writes_.back().second.append(text, length);
    return static_cast<ssize_t>(length);
  }

  FILE*& stream_;
  FILE* original_;
  std::string name_;
  bool broken_;
  Writes& writes_;
};

bool action_running = false;

// An action that called exit(0) would end the test program as if all tests had passed.
void refuse_exit_of_action() {
  if (action_running) {
    _exit(EXIT_FAILURE);
  }
}

} // namespace

Writes written_by(const std::function<void()>& action, const std::string& broken) {
  Writes writes;
  const StandIn error(stderr, "stderr", broken == "stderr", writes);
  const StandIn output(stdout, "stdout", broken == "stdout", writes);
  static const int registered = std::atexit(refuse_exit_of_action);
  action_running = registered == 0;
  action();
  action_running = false;
  return writes;
}

Writes on_both_streams(const std::string& text) {
  return {{"stderr", text}, {"stdout", text}};
}

Calls& syslog_calls() {
  static Calls calls;
  return calls;
}

const char* borrowed_identity() {
  return identity;
}

} // namespace tavek::test
