"""The faults that the sweep injects: the errors a system call may return, and signals."""

import collections
import re
import signal

from lab import NAMED_SIGNALS, REAL_TIME_SIGNALS, calls_of, signal_name

# The errors that a full, broken or locked file system, a quota, a limit or a missing permission can cause. An error
# that could not occur, such as stat() failing to find an existing file, is not a fault.
ERRORS = {
    "brk": ["retval=0"],  # If the kernel refuses, brk returns the old end and no error.
    "clone": ["error=EAGAIN", "error=ENOMEM"],
    "close": ["error=EIO", "error=ENOSPC", "error=EDQUOT", "error=EINTR"],
    "fchmod": ["error=EPERM", "error=EIO", "error=EROFS"],
    "fsync": ["error=EIO", "error=ENOSPC", "error=EDQUOT", "error=EINTR"],
    "ftruncate": ["error=EIO", "error=EPERM", "error=EINTR"],
    "lseek": ["error=EIO", "error=EINVAL"],
    "mmap": ["error=ENOMEM"],
    "munmap": ["error=ENOMEM"],
    "newfstatat": ["error=EIO", "error=EACCES", "error=ENOMEM"],
    "openat": ["error=EMFILE", "error=ENOSPC", "error=EACCES", "error=EROFS", "error=EIO", "error=EINTR"],
    "pipe2": ["error=EMFILE", "error=ENFILE"],
    "read": ["error=EIO", "error=ENOMEM", "error=EINTR"],
    "rename": ["error=EACCES", "error=EBUSY", "error=EXDEV", "error=ENOSPC", "error=EIO"],
    "rmdir": ["error=EBUSY"],
    "unlink": ["error=EACCES", "error=EBUSY", "error=EROFS", "error=EIO"],
    "write": ["error=ENOSPC", "error=EIO", "error=EDQUOT", "error=EFBIG", "error=EINTR"],
    "exit_group": [],
}
OTHER_ERRORS = ["error=EIO", "error=ENOMEM", "error=EPERM"]

# A call on the temporary file, as strace shows it. If such a call fails, the run must fail even if the target is NEW.
TEMPORARY = re.compile(r"^(write|fchmod|ftruncate|lseek|fsync|close)\(\d+<[^>]*\.\w{6}>")

# `when` selects among the calls of this name, as strace counts them; `signal` is a number, or None for an error.
# `too_late`: the target is already NEW when the run fails.
Fault = collections.namedtuple("Fault", "name what when signal must_fail too_late")


def errors_of(call):
    on_temporary = bool(TEMPORARY.match(call.text))
    on_directory = call.name == "fsync" and not on_temporary
    return [Fault(call.name, what, str(call.ordinal), None, on_temporary or on_directory, on_directory)
            for what in ERRORS.get(call.name, OTHER_ERRORS)]


def signals_of(call, number):
    """KILL, every other named signal and two real-time signals. The number of the call in its run selects the real-time signals."""
    real_time = [REAL_TIME_SIGNALS[i % len(REAL_TIME_SIGNALS)] for i in (2 * number, 2 * number + 1)]
    return [Fault(call.name, f"signal={signal_name(one)}", str(call.ordinal), one, False, False)
            for one in [signal.SIGKILL, *NAMED_SIGNALS, *real_time]]


def injection_of(fault):
    return f"inject={fault.name}:{fault.what}:when={fault.when}"


def lasting(fault, result):
    """The same fault at all later calls too, or None if the run with the single fault had no later call.

    The run must still be able to write its message, so the repeated fault ends before the call that writes it. A
    repeated EINTR ends after ten calls.
    """
    first = int(fault.when)
    calls = [call for call in calls_of(result.trace) if call.name == fault.name and call.ordinal > first]
    message = next((call.ordinal for call in calls if call.text.startswith("write(2, ")), None)
    if not calls or message == first + 1:
        return None
    if message is not None:
        return fault._replace(when=f"{first}..{message - 1}")
    return fault._replace(when=f"{first}..{first + 9}" if "EINTR" in fault.what else f"{first}+")
