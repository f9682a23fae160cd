#include "driver/process_state.h"

#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

namespace tavek {

namespace {

// The signals that end a process by default. Three kinds are left out: SIGKILL, the signals that a bug raises, and the
// two that are ignored (SIGPIPE and SIGXFSZ).
sigset_t termination_signals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGUSR1, SIGUSR2, SIGALRM, SIGTERM, SIGSTKFLT, SIGXCPU, SIGVTALRM,
                           SIGPROF, SIGIO, SIGPWR}) {
    sigaddset(&signals, signal);
  }
  for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) {
    sigaddset(&signals, signal);
  }
  return signals;
}

bool is_ignored(int signal) {
  struct sigaction action {};
  sigaction(signal, nullptr, &action);
  return action.sa_handler == SIG_IGN;
}

} // namespace

void open_missing_standard_streams() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (fcntl(fd, F_GETFD) == -1) {
      // open() returns the lowest free descriptor, which is this one.
      static_cast<void>(open("/dev/null", O_RDWR));
    }
  }
}

void ignore_write_signals() {
  signal(SIGXFSZ, SIG_IGN);
  signal(SIGPIPE, SIG_IGN);
}

void restore_child_signal() {
  signal(SIGCHLD, SIG_DFL);
}

TerminationHold::TerminationHold() {
  const sigset_t blocked = termination_signals();
  sigprocmask(SIG_BLOCK, &blocked, &before_);
}

TerminationHold::~TerminationHold() {
  sigprocmask(SIG_SETMASK, &before_, nullptr);
}

bool TerminationHold::termination_pending() const {
  sigset_t pending{};
  sigpending(&pending);
  const sigset_t ending = termination_signals();
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    // An ignored signal that is blocked can be pending too, but it is discarded when it is unblocked. A signal that the
    // caller had blocked remains pending.
    if (sigismember(&ending, signal) == 1 && sigismember(&pending, signal) == 1 && sigismember(&before_, signal) == 0 &&
        !is_ignored(signal)) {
      return true;
    }
  }
  return false;
}

} // namespace tavek
