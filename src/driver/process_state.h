#pragma once

// What the program asks of the process it is started in, whoever started it and however. The rules:
//
// - Descriptors 0 to 2 are open. A closed one would be given to the next file opened, and a message printed on it would
//   land in a rotation file.
// - A write beyond the file-size limit (SIGXFSZ) or to a closed pipe (SIGPIPE) fails with its error instead of killing
//   the run, so that the error is reported and the temporary file removed.
// - HUP, INT, TERM and QUIT end the run, but not between the creation of the temporary file and its removal or rename.
//   They are held back while it exists, looked at before the rename, and delivered when it is gone. A signal that the
//   caller ignores or blocks stays so.
// - A caller that ignores SIGCHLD makes the kernel throw away the exit statuses of children, so a run that has children
//   sets it back.

#include <csignal>

namespace tavek {

/// Opens the missing ones of the standard streams on the null device. To be called before anything is opened.
void open_missing_standard_streams();

/// Makes SIGXFSZ and SIGPIPE errors of the write.
void take_write_errors();

/// Lets the exit statuses of children be waited for.
void take_child_statuses();

/// Holds the termination signals back as long as it lives; the destructor delivers one that has arrived.
class TerminationHold {
public:
  TerminationHold();
  ~TerminationHold();
  TerminationHold(const TerminationHold&) = delete;
  TerminationHold& operator=(const TerminationHold&) = delete;

  /// Whether a signal waits that will end the process when the hold ends.
  bool termination_waits() const;

private:
  sigset_t before_{};
};

} // namespace tavek
