#include "driver/process_state.h"

#include <fcntl.h>
#include <unistd.h>

namespace tavek {

namespace {

constexpr int kTerminationSignals[] = {SIGHUP, SIGINT, SIGTERM, SIGQUIT};

bool is_ignored(int signal) {
  struct sigaction action {};
  sigaction(signal, nullptr, &action);
  return action.sa_handler == SIG_IGN;
}

} // namespace

void open_missing_standard_streams() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (fcntl(fd, F_GETFD) == -1) {
      // The lowest free descriptor is the one that is missing.
      static_cast<void>(open("/dev/null", O_RDWR));
    }
  }
}

void take_write_errors() {
  signal(SIGXFSZ, SIG_IGN);
  signal(SIGPIPE, SIG_IGN);
}

void take_child_statuses() {
  signal(SIGCHLD, SIG_DFL);
}

TerminationHold::TerminationHold() {
  sigset_t held;
  sigemptyset(&held);
  for (const int signal : kTerminationSignals) {
    sigaddset(&held, signal);
  }
  sigprocmask(SIG_BLOCK, &held, &before_);
}

TerminationHold::~TerminationHold() {
  sigprocmask(SIG_SETMASK, &before_, nullptr);
}

bool TerminationHold::termination_waits() const {
  sigset_t waiting;
  sigemptyset(&waiting);
  sigpending(&waiting);
  for (const int signal : kTerminationSignals) {
    // While it is blocked even an ignored signal waits; it is dropped when the hold ends. One that the caller had
    // blocked goes on waiting.
    if (sigismember(&waiting, signal) == 1 && sigismember(&before_, signal) == 0 && !is_ignored(signal)) {
      return true;
    }
  }
  return false;
}

} // namespace tavek
