"""The faults that the sweep injects: which errors a system call may return, and the signals that may arrive at it."""

import collections
import re

from sweep_calls import calls_of

# What a full, broken or locked file system, a quota, a limit or a missing permission answers. A refusal that would
# only be a lie, such as a status query that finds nothing where there is a file, is no fault.
ERRORS = {
    "brk": ["retval=0"],  # The kernel answers a refused brk with the old end, never with an error.
    "close": ["error=EIO", "error=ENOSPC", "error=EDQUOT", "error=EINTR"],
    "fchmod": ["error=EPERM", "error=EIO", "error=EROFS"],
    "fsync": ["error=EIO", "error=ENOSPC", "error=EDQUOT", "error=EINTR"],
    "ftruncate": ["error=EIO", "error=EPERM", "error=EINTR"],
    "lseek": ["error=EIO", "error=EINVAL"],
    "mmap": ["error=ENOMEM"],
    "munmap": ["error=ENOMEM"],
    "newfstatat": ["error=EIO", "error=EACCES", "error=ENOMEM"],
    "openat": ["error=EMFILE", "error=ENOSPC", "error=EACCES", "error=EROFS", "error=EIO", "error=EINTR"],
    "read": ["error=EIO", "error=ENOMEM", "error=EINTR"],
    "rename": ["error=EACCES", "error=EBUSY", "error=EXDEV", "error=ENOSPC", "error=EIO"],
    "rmdir": ["error=EBUSY"],
    "unlink": ["error=EACCES", "error=EBUSY", "error=EROFS", "error=EIO"],
    "write": ["error=ENOSPC", "error=EIO", "error=EDQUOT", "error=EFBIG", "error=EINTR"],
    "exit_group": [],
}
OTHER_ERRORS = ["error=EIO", "error=ENOMEM", "error=EPERM"]
SIGNALS = ["KILL", "TERM", "HUP", "INT", "QUIT"]

# A temporary file, of which nothing may fail without the run failing, as strace shows the descriptor of one.
TEMPORARY = re.compile(r"^(write|fchmod|ftruncate|lseek|fsync|close)\(\d+<[^>]*\.\w{6}>")

# A fault strikes the calls of a name that `when` says; `signal` is the name of a signal or None for an error. Where it
# must fail the run, a whole target does not excuse success.
Fault = collections.namedtuple("Fault", "name what when signal must_fail")


def errors_of(call):
    must_fail = bool(TEMPORARY.match(call.text))
    return [Fault(call.name, what, str(call.ordinal), None, must_fail) for what in ERRORS.get(call.name, OTHER_ERRORS)]


def signals_of(call, ignored):
    names = [ignored] if ignored else SIGNALS
    return [Fault(call.name, f"signal={name}", str(call.ordinal), name, False) for name in names]


def from_then_on(fault, result):
    """The same fault at every later call too, or None where the run that it struck once had no later call.

    The message of the run that was struck once gets out: the fault ends before it. An interruption ends some day.
    """
    first = int(fault.when)
    calls = [call for call in calls_of(result.trace) if call.name == fault.name and call.ordinal > first]
    message = next((call.ordinal for call in calls if call.text.startswith("write(2, ")), None)
    if not calls or message == first + 1:
        return None
    if message is not None:
        return fault._replace(when=f"{first}..{message - 1}")
    return fault._replace(when=f"{first}..{first + 9}" if "EINTR" in fault.what else f"{first}+")
