"""The faults that the sweep injects: the errors a system call may return, and signals."""

import collections
import re

from lab import calls_of

# What a full, broken or locked file system, a quota, a limit or a missing permission returns. An error that could not
# occur, such as a status query that does not find an existing file, is not a fault.
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
SIGNALS = ["KILL", "TERM", "HUP", "INT", "QUIT"]

# A call on the temporary file, as strace shows it. If one fails, the run must fail even if the target is NEW.
TEMPORARY = re.compile(r"^(write|fchmod|ftruncate|lseek|fsync|close)\(\d+<[^>]*\.\w{6}>")

# `when` selects among the calls of this name, as strace counts them; `signal` is None for an error.
Fault = collections.namedtuple("Fault", "name what when signal must_fail")


def errors_of(call):
    must_fail = bool(TEMPORARY.match(call.text))
    return [Fault(call.name, what, str(call.ordinal), None, must_fail) for what in ERRORS.get(call.name, OTHER_ERRORS)]


def signals_of(call, names=SIGNALS):
    return [Fault(call.name, f"signal={name}", str(call.ordinal), name, False) for name in names]


def injection_of(fault):
    return f"inject={fault.name}:{fault.what}:when={fault.when}"


def lasting(fault, result):
    """The same fault at all later calls too, or None if the run with the single fault had no later call.

    The message of that run is still written, so the fault ends before it. Interruptions end after ten calls.
    """
    first = int(fault.when)
    calls = [call for call in calls_of(result.trace) if call.name == fault.name and call.ordinal > first]
    message = next((call.ordinal for call in calls if call.text.startswith("write(2, ")), None)
    if not calls or message == first + 1:
        return None
    if message is not None:
        return fault._replace(when=f"{first}..{message - 1}")
    return fault._replace(when=f"{first}..{first + 9}" if "EINTR" in fault.what else f"{first}+")
