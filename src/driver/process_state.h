#pragma once

// The process state the program relies on, whatever the caller left:
//
// - Descriptors 0 to 2 are open. Otherwise the next file opened would get a free one, and a message would land in a
//   rotation file.
// - A write beyond the file-size limit (SIGXFSZ) or to a closed pipe (SIGPIPE) fails with an error instead of killing
// the
//   process, so the error is reported and the temporary file is removed.
// - A signal that ends the run, such as HUP, TERM or ALRM, is blocked while the temporary file exists. A pending one is
//   noticed before the rename and delivered afterwards. A signal that the caller ignores or blocks remains ignored or
//   blocked. Only SIGKILL and the signals that a bug raises (SIGSEGV, SIGABRT...) are not blocked.
// - Exit statuses of children are available. The kernel discards them if the caller ignores SIGCHLD.

#include <csignal>

namespace tavek {

/// Opens each closed standard stream on the null device. Must be called before any file is opened.
void open_missing_standard_streams();

/// Ignores SIGXFSZ and SIGPIPE, so that the write fails with an error instead.
void ignore_write_signals();

/// Resets SIGCHLD to its default, so that children can be waited for.
void restore_child_signal();

/// Blocks the termination signals during its lifetime. The destructor delivers a pending one.
class TerminationHold {
public:
  TerminationHold();
  ~TerminationHold();
  TerminationHold(const TerminationHold&) = delete;
  TerminationHold& operator=(const TerminationHold&) = delete;

  /// Whether a pending signal will end the process on release.
  bool termination_pending() const;

private:
  sigset_t before_{};
};

} // namespace tavek
