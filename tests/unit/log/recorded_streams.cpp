#include "unit/log/recorded_streams.h"

#include <cstdio>
#include <cstdlib>
#include <sys/types.h>
#include <unistd.h>

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

} // namespace tavek::test
