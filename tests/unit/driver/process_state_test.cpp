#include "driver/process_state.h"

#include <csignal>
#include <gtest/gtest.h>
#include <set>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace tavek {

namespace {

// Every signal that ends a process by default, except signals that cannot be blocked, signals that a bug raises and
// signals that the program ignores. The C library reserves the numbers 32 and 33.
std::vector<int> termination_signals() {
  std::vector<int> signals;
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    const std::set<int> others{SIGKILL, SIGSTOP, SIGSEGV, SIGBUS,   SIGFPE,  SIGILL,  SIGTRAP,
                               SIGSYS,  SIGABRT, SIGPIPE, SIGXFSZ,  SIGCHLD, SIGCONT, SIGTSTP,
                               SIGTTIN, SIGTTOU, SIGURG,  SIGWINCH, 32,      33};
    if (others.count(signal) == 0) {
      signals.push_back(signal);
    }
  }
  return signals;
}

sigset_t set_of(int signal) {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, signal);
  return set;
}

// Returns whether the signal was pending, and consumes it if it was.
bool take_pending(int signal) {
  const sigset_t set = set_of(signal);
  constexpr timespec immediately{};
  return sigtimedwait(&set, nullptr, &immediately) == signal;
}

bool is_blocked(int signal) {
  sigset_t mask;
  sigprocmask(SIG_SETMASK, nullptr, &mask);
  return sigismember(&mask, signal) == 1;
}

// Sets the disposition of a signal; the destructor restores the old one.
class Disposition {
public:
  Disposition(int signal, sighandler_t handler) : signal_(signal), before_(::signal(signal, handler)) {}
  ~Disposition() { ::signal(signal_, before_); }
  Disposition(const Disposition&) = delete;
  Disposition& operator=(const Disposition&) = delete;

private:
  const int signal_;
  const sighandler_t before_;
};

// Runs in a child. The message shows that the signal did not arrive before the hold ended.
void raise_under_hold(int signal) {
  constexpr rlimit no_core{};
  setrlimit(RLIMIT_CORE, &no_core);
  ::signal(signal, SIG_DFL);
  const TerminationHold hold;
  raise(signal);
  std::fputs("still here", stderr);
}

TEST(TerminationHold, DeliversATerminationSignalAtItsEnd) {
  for (const int signal : termination_signals()) {
    EXPECT_EXIT(raise_under_hold(signal), testing::KilledBySignal(signal), "^still here$") << signal;
  }
}

TEST(TerminationHold, ReportsAPendingTerminationSignal) {
  for (const int signal : termination_signals()) {
    const Disposition ends(signal, SIG_DFL); // The caller of the tests may have ignored it.
    const TerminationHold hold;
    EXPECT_FALSE(hold.termination_pending()) << signal;
    raise(signal);
    EXPECT_TRUE(hold.termination_pending()) << signal;
    EXPECT_TRUE(take_pending(signal)) << signal;
  }
}

// A signal that is both blocked and ignored can be pending, but it will not end the process.
TEST(TerminationHold, ReportsNoIgnoredSignal) {
  for (const int signal : termination_signals()) {
    const Disposition ignored(signal, SIG_IGN);
    const TerminationHold hold;
    raise(signal);
    EXPECT_FALSE(hold.termination_pending()) << signal;
  }
}

TEST(TerminationHold, ReportsAPendingSignalBesideAnIgnoredOne) {
  const Disposition ignored(SIGHUP, SIG_IGN);
  const TerminationHold hold;
  raise(SIGHUP);
  raise(SIGTERM);
  EXPECT_TRUE(hold.termination_pending());
  EXPECT_TRUE(take_pending(SIGTERM));
}

TEST(TerminationHold, NeitherReportsNorDeliversASignalThatTheCallerBlocks) {
  const sigset_t blocked = set_of(SIGTERM);
  sigprocmask(SIG_BLOCK, &blocked, nullptr);
  {
    const TerminationHold hold;
    raise(SIGTERM);
    EXPECT_FALSE(hold.termination_pending());
  }
  EXPECT_TRUE(is_blocked(SIGTERM));
  EXPECT_TRUE(take_pending(SIGTERM));
  sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
}

// Fills the stack with ones. A signal set that the next function forgets to clear then contains every signal.
void fill_stack() {
  volatile unsigned char filler[4096];
  for (volatile unsigned char& byte : filler) {
    byte = 0xff;
  }
}

TEST(TerminationHold, BlocksNoOtherSignal) {
  fill_stack();
  const TerminationHold hold;
  for (const int signal : {SIGSEGV, SIGABRT, SIGTSTP, SIGCHLD, SIGPIPE, SIGXFSZ}) {
    EXPECT_FALSE(is_blocked(signal)) << signal;
  }
}

TEST(TerminationHold, RestoresTheSignalMask) {
  { const TerminationHold hold; }
  for (const int signal : termination_signals()) {
    EXPECT_FALSE(is_blocked(signal)) << signal;
  }
}

} // namespace

} // namespace tavek
