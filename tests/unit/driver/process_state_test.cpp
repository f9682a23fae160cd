#include "driver/process_state.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string_view>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "file/file_descriptor.h"
#include "support/temporary_directory.h"

namespace tavek {

namespace {

constexpr int kTerminationSignals[] = {SIGHUP, SIGINT, SIGTERM, SIGQUIT};

sigset_t set_of(int signal) {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, signal);
  return set;
}

// Whether a signal waited; it is taken away.
bool take_waiting(int signal) {
  const sigset_t set = set_of(signal);
  constexpr timespec at_once{};
  return sigtimedwait(&set, nullptr, &at_once) == signal;
}

bool is_blocked(int signal) {
  sigset_t mask;
  sigprocmask(SIG_SETMASK, nullptr, &mask);
  return sigismember(&mask, signal) == 1;
}

// A signal's disposition, for as long as this lives.
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

// In a child: closes the streams of a set of bits and ends well when just these are on the null device afterwards.
[[noreturn]] void open_what_is_missing(unsigned closed, const char* other) {
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

TEST(OpenMissingStandardStreams, PutsTheNullDeviceInPlaceOfTheClosedOnes) {
  const TemporaryDirectory directory;
  const std::string other = directory.write("other", "");
  for (unsigned closed = 0; closed < 8; ++closed) {
    EXPECT_EXIT(open_what_is_missing(closed, other.c_str()), testing::ExitedWithCode(EXIT_SUCCESS), "") << closed;
  }
}

TEST(OpenMissingStandardStreams, OpensNothingWhenNothingIsMissing) {
  const FileDescriptor before(open("/dev/null", O_RDONLY | O_CLOEXEC));
  open_missing_standard_streams();
  const FileDescriptor after(open("/dev/null", O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(after.get(), before.get() + 1);
}

// In a child: writes ten bytes to a file that may have five.
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

TEST(TakeWriteErrors, AWriteBeyondTheFileSizeLimitFailsInsteadOfKilling) {
  const TemporaryDirectory directory;
  const Disposition deadly(SIGXFSZ, SIG_DFL);
  EXPECT_EXIT(write_beyond_the_limit(directory / "file"), testing::KilledBySignal(SIGXFSZ), "");
  ignore_write_signals();
  EXPECT_EXIT(write_beyond_the_limit(directory / "other"), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST(TakeWriteErrors, AWriteToAClosedPipeFailsInsteadOfKilling) {
  const Disposition deadly(SIGPIPE, SIG_DFL);
  EXPECT_EXIT(write_to_a_closed_pipe(), testing::KilledBySignal(SIGPIPE), "");
  ignore_write_signals();
  EXPECT_EXIT(write_to_a_closed_pipe(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST(TakeChildStatuses, AStatusCanBeWaitedForThoughTheCallerIgnoresChildren) {
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

// In a child: the message shows that the signal did not strike before the hold ended.
void receive_under_hold(int signal) {
  constexpr rlimit no_core{};
  setrlimit(RLIMIT_CORE, &no_core);
  ::signal(signal, SIG_DFL);
  const TerminationHold hold;
  raise(signal);
  std::fputs("still here", stderr);
}

TEST(TerminationHold, DeliversASignalWhenItEnds) {
  for (const int signal : kTerminationSignals) {
    EXPECT_EXIT(receive_under_hold(signal), testing::KilledBySignal(signal), "^still here$") << signal;
  }
}

TEST(TerminationHold, HoldsNoOtherSignalBack) {
  EXPECT_EXIT(receive_under_hold(SIGUSR1), testing::KilledBySignal(SIGUSR1), "^$");
}

TEST(TerminationHold, TellsWhetherASignalWaits) {
  for (const int signal : kTerminationSignals) {
    const Disposition ends(signal, SIG_DFL); // Whoever starts the tests may have it ignored.
    const TerminationHold hold;
    EXPECT_FALSE(hold.termination_pending()) << signal;
    raise(signal);
    EXPECT_TRUE(hold.termination_pending()) << signal;
    EXPECT_TRUE(take_waiting(signal)) << signal;
    EXPECT_FALSE(hold.termination_pending()) << signal;
  }
}

// A blocked signal waits even where it is ignored, but it will not end the process.
TEST(TerminationHold, DoesNotTakeAnIgnoredSignalForATermination) {
  for (const int signal : kTerminationSignals) {
    const Disposition ignored(signal, SIG_IGN);
    const TerminationHold hold;
    raise(signal);
    EXPECT_FALSE(hold.termination_pending()) << signal;
  }
}

TEST(TerminationHold, AnIgnoredSignalDoesNotHideAnother) {
  const Disposition ignored(SIGHUP, SIG_IGN);
  const TerminationHold hold;
  raise(SIGHUP);
  raise(SIGTERM);
  EXPECT_TRUE(hold.termination_pending());
  EXPECT_TRUE(take_waiting(SIGTERM));
}

TEST(TerminationHold, LeavesASignalThatTheCallerBlocksToTheCaller) {
  const sigset_t blocked = set_of(SIGTERM);
  sigprocmask(SIG_BLOCK, &blocked, nullptr);
  {
    const TerminationHold hold;
    raise(SIGTERM);
    EXPECT_FALSE(hold.termination_pending());
  }
  EXPECT_TRUE(is_blocked(SIGTERM));
  EXPECT_TRUE(take_waiting(SIGTERM));
  sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
}

// Leaves bytes that are not zero where the next function has its variables.
void soil_stack() {
  volatile unsigned char soil[4096];
  for (volatile unsigned char& byte : soil) {
    byte = 0xff;
  }
}

TEST(TerminationHold, HoldsNoOtherSignal) {
  soil_stack();
  const TerminationHold hold;
  for (const int signal : {SIGUSR1, SIGALRM, SIGCHLD, SIGPIPE, SIGXFSZ}) {
    EXPECT_FALSE(is_blocked(signal)) << signal;
  }
}

TEST(TerminationHold, LeavesTheMaskAsItWas) {
  {
    const TerminationHold hold;
    for (const int signal : kTerminationSignals) {
      EXPECT_TRUE(is_blocked(signal)) << signal;
    }
  }
  for (const int signal : kTerminationSignals) {
    EXPECT_FALSE(is_blocked(signal)) << signal;
  }
}

} // namespace

} // namespace tavek
