// What is left of the target when something goes wrong in the middle of a run.

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "driver/process_state.h"
#include "support/call_fault.h"
#include "unit/driver/driver_run.h"

namespace tavek {

namespace {

using Words = std::vector<std::string>;

constexpr const char* kOld = "/a {\n\trotate 9\n}\n";
constexpr const char* kNew = "/a {\n\trotate 4\n}\n";
constexpr int kTerminationSignals[] = {SIGHUP, SIGINT, SIGTERM, SIGQUIT};

class DriverFaults : public DriverRun {
protected:
  DriverFaults() { directory.write("target", kOld); }

  Words words() const { return {"-K", "--nginx-logs", "--rot-count=4", target}; }

  // In a child: a signal arrives when the temporary file is about to be synced.
  void run_into(int signal) const {
    constexpr rlimit no_core{};
    setrlimit(RLIMIT_CORE, &no_core);
    ::signal(signal, SIG_DFL);
    const CallFault event(Call::fsync, [signal] { return raise(signal); });
    run_tool(words());
  }

  // In a child: no file may have more than ten bytes.
  void run_with_little_room() const {
    ignore_write_signals();
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{10, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const std::string message = complaint(words());
    setrlimit(RLIMIT_FSIZE, &limit);
    std::fprintf(stderr, "%s\n", message.c_str());
    std::exit(EXIT_FAILURE);
  }
};

TEST_F(DriverFaults, EveryFailureToWriteLeavesTheOldFileAndNoOther) {
  for (const Call call : {Call::fchmod, Call::write, Call::fsync}) {
    const CallFault fault(call, ENOSPC);
    EXPECT_EQ(masked(complaint(words()), target), "Failed to write " + target + ".??????: No space left on device");
    EXPECT_EQ(content_of(target), kOld);
    EXPECT_EQ(others(), Words{});
  }
}

TEST_F(DriverFaults, AFileSizeLimitIsAnError) {
  EXPECT_EXIT(run_with_little_room(), testing::ExitedWithCode(EXIT_FAILURE), "^Failed to write .*: File too large\n$");
  EXPECT_EQ(content_of(target), kOld);
  EXPECT_EQ(others(), Words{});
}

TEST_F(DriverFaults, AReadErrorLeavesTheOldFileAndNoOther) {
  const CallFault fault(Call::read, EIO);
  EXPECT_EQ(complaint(words()), "input in flex scanner failed");
  EXPECT_EQ(content_of(target), kOld);
  EXPECT_EQ(others(), Words{});
}

TEST_F(DriverFaults, AFailedRenameLeavesTheNewFileBesideTheTarget) {
  const CallFault event(Call::fsync, [this] {
    std::filesystem::remove(target);
    std::filesystem::create_directory(target);
    return 0;
  });
  EXPECT_THROW(run_tool(words()), std::filesystem::filesystem_error);
  ASSERT_EQ(others().size(), 1U);
  EXPECT_EQ(content_of(directory / others().front()), kNew);
  EXPECT_EQ(mode_of(directory / others().front()), 0644U);
}

TEST_F(DriverFaults, ATerminationSignalLeavesTheOldFileAndNoOtherAndEndsTheRun) {
  for (const int signal : kTerminationSignals) {
    EXPECT_EXIT(run_into(signal), testing::KilledBySignal(signal), "^$") << signal;
    EXPECT_EQ(content_of(target), kOld) << signal;
    EXPECT_EQ(others(), Words{}) << signal;
  }
}

TEST_F(DriverFaults, ASignalThatTheCallerIgnoresChangesNothing) {
  for (const int signal : kTerminationSignals) {
    directory.write("target", kOld);
    const sighandler_t before = ::signal(signal, SIG_IGN);
    const CallFault event(Call::fsync, [signal] { return raise(signal); });
    EXPECT_EQ(complaint(words()), "done") << signal;
    EXPECT_EQ(content_of(target), kNew) << signal;
    EXPECT_EQ(others(), Words{}) << signal;
    ::signal(signal, before);
  }
}

TEST_F(DriverFaults, ASignalThatTheCallerBlocksChangesNothing) {
  sigset_t blocked;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  sigprocmask(SIG_BLOCK, &blocked, nullptr);
  const CallFault event(Call::fsync, [] { return raise(SIGTERM); });
  EXPECT_EQ(complaint(words()), "done");
  EXPECT_EQ(content_of(target), kNew);
  constexpr timespec at_once{};
  EXPECT_EQ(sigtimedwait(&blocked, nullptr, &at_once), SIGTERM) << "it is still for the caller";
  sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
}

TEST_F(DriverFaults, ASpecialFileIsRefusedAtOnceAndStays) {
  std::filesystem::remove(target);
  ASSERT_EQ(mkfifo(target.c_str(), 0600), 0);
  EXPECT_EQ(complaint(words()), "Failed to open " + target + ": Not a regular file");
  EXPECT_EQ(complaint({target, "keep"}), "Failed to open " + target + ": Not a regular file");
  EXPECT_TRUE(std::filesystem::is_fifo(target));
  EXPECT_EQ(others(), Words{});
}

TEST_F(DriverFaults, ALinkIsReplacedByAFileAndWhatItPointedToStays) {
  std::filesystem::rename(target, directory / "pointee");
  std::filesystem::create_symlink("pointee", target);
  run_tool(words());
  EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(target)));
  EXPECT_EQ(content_of(target), kNew);
  EXPECT_EQ(content_of(directory / "pointee"), kOld);
}

} // namespace

} // namespace tavek
