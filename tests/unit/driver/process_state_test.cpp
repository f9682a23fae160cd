#include "driver/process_state.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <set>
#include <string_view>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "support/temporary_directory.h"

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

bool is_null_device(int fd) {
  struct stat status {};
  struct stat null {};
  return fstat(fd, &status) == 0 && stat("/dev/null", &null) == 0 && status.st_rdev == null.st_rdev;
}

// Runs in a child. Closes the standard streams whose bits are set. Succeeds if exactly these are then the null device.
[[noreturn]] void reopen_closed_streams(unsigned closed, const char* other) {
  const auto is_closed = [closed](int fd) { return (closed >> fd & 1U) != 0; };
  const int source = open(other, O_RDWR | O_CLOEXEC);
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    dup2(source, fd);
  }
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (is_closed(fd)) {
      close(fd);
    }
  }
  open_missing_standard_streams();
  bool right = true;
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    right = right && fcntl(fd, F_GETFD) == 0 && is_null_device(fd) == is_closed(fd);
  }
  std::exit(right ? EXIT_SUCCESS : EXIT_FAILURE);
}

TEST(OpenMissingStandardStreams, OpensTheNullDeviceForEveryClosedStream) {
  const TemporaryDirectory directory;
  const std::string other = directory.write("other", "");
  for (unsigned closed = 0; closed < 8; ++closed) {
    EXPECT_EXIT(reopen_closed_streams(closed, other.c_str()), testing::ExitedWithCode(EXIT_SUCCESS), "") << closed;
  }
}

// Runs in a child. Writes ten bytes to a file with a limit of five.
[[noreturn]] void write_beyond_the_limit(const std::string& path) {
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit small{5, limit.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  const bool right = write(fd, "12345", 5) == 5 && write(fd, "67890", 5) == -1 && errno == EFBIG;
  setrlimit(RLIMIT_FSIZE, &limit);
  std::exit(right ? EXIT_SUCCESS : EXIT_FAILURE);
}

[[noreturn]] void write_to_a_closed_pipe() {
  int ends[2];
  const bool made = pipe2(ends, O_CLOEXEC) == 0;
  close(ends[0]);
  const bool right = made && write(ends[1], "x", 1) == -1 && errno == EPIPE;
  std::exit(right ? EXIT_SUCCESS : EXIT_FAILURE);
}

TEST(IgnoreWriteSignals, AWriteBeyondTheFileSizeLimitFailsInsteadOfKillingTheProcess) {
  const TemporaryDirectory directory;
  const Disposition deadly(SIGXFSZ, SIG_DFL);
  EXPECT_EXIT(write_beyond_the_limit(directory / "file"), testing::KilledBySignal(SIGXFSZ), "");
  ignore_write_signals();
  EXPECT_EXIT(write_beyond_the_limit(directory / "other"), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST(IgnoreWriteSignals, AWriteToAClosedPipeFailsInsteadOfKillingTheProcess) {
  const Disposition deadly(SIGPIPE, SIG_DFL);
  EXPECT_EXIT(write_to_a_closed_pipe(), testing::KilledBySignal(SIGPIPE), "");
  ignore_write_signals();
  EXPECT_EXIT(write_to_a_closed_pipe(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST(RestoreChildSignal, MakesItPossibleToWaitForAChildIfTheCallerIgnoresSigchld) {
  const Disposition ignored(SIGCHLD, SIG_IGN);
  restore_child_signal();
  const pid_t child = fork();
  if (child == 0) {
    _exit(7);
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 7);
}

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
