#pragma once

// The process state that the program relies on, whatever state the caller left:
//
// - Descriptors 0 to 2 are open. Otherwise a rotation file could get one of these numbers when it is opened, and a
//   message would be written to it.
// - A write beyond the file-size limit (SIGXFSZ) or to a closed pipe (SIGPIPE) fails with an error instead of killing
//   the process, so the error is reported and the temporary file is removed.
// - A signal that ends the run, such as HUP, TERM or ALRM, is blocked while the temporary file exists. The run checks
//   for a pending signal before the rename. The signal is delivered after the rename, or after the temporary file has
//   been removed. A signal that the caller ignores or blocks remains ignored or blocked. Only SIGKILL and the signals
//   that a bug raises (SIGSEGV, SIGABRT...) are neither blocked nor ignored.
// - Exit statuses of children are available. The kernel discards them if the caller ignores SIGCHLD.

#include <csignal>

namespace tavek {

/// Opens each closed standard stream on the null device. Must be called before any file is opened.
void open_missing_standard_streams();

/// Ignores SIGXFSZ and SIGPIPE, so that a write that would raise them fails with an error instead.
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

  /// Whether a pending signal will end the process when this object is destroyed.
  bool termination_pending() const;

private:
  sigset_t before_{};
};

} // namespace tavek
