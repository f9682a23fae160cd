"""How a companion starts and ends, whatever its standard streams are."""

import contextlib
import os
import signal
import sys
import tempfile
from collections.abc import Callable
from typing import NoReturn

from companions import VERSION
from companions.text import escaped, printable


class Failure(Exception):
    """The command cannot do its job. The text is the message for the user."""


def run(usage: str | None, failure: int, main: Callable[[list[str]], int]) -> NoReturn:
    """Calls `main` with the arguments of the process and ends the process with the status that it returns.

    Prints `usage` or the version instead if the first argument asks for it. If `main` raises an exception or its output
    cannot be written, prints one line on standard error and ends the process with the status `failure`. SIGINT and
    SIGPIPE end the process.
    """
    open_standard_streams()
    name = os.path.basename(sys.argv[0])
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)
    try:
        if sys.argv[1:2] in (["--help"], ["-h"]):
            print((usage or "").strip())
            status = 0
        elif sys.argv[1:2] == ["--version"]:
            print(f"{name} {VERSION}")
            status = 0
        else:
            status = main(sys.argv[1:])
        sys.stdout.flush()
    except Exception as error:  # pylint: disable=broad-exception-caught
        status = failure
        with contextlib.suppress(OSError):
            print(f"{name}: {escaped(message(error))}", file=sys.stderr)
    with contextlib.suppress(OSError):
        sys.stdout.flush()
    # A normal exit flushes again; a failed flush would change the status.
    os._exit(status)


def message(error: Exception) -> str:
    """Returns the text of an expected error, and also the type of any other."""
    if isinstance(error, Failure):
        return str(error)
    if isinstance(error, OSError) and error.strerror:
        return (f"{printable(os.fsdecode(error.filename))}: " if error.filename else "") + error.strerror
    return f"{type(error).__name__}: {error}"


def open_standard_streams() -> None:
    """Opens /dev/null in place of each standard stream that the caller closed."""
    while (fd := os.open(os.devnull, os.O_RDWR)) <= 2:
        os.set_inheritable(fd, True)
    os.close(fd)
    sys.stdout = sys.stdout or open(1, "w", closefd=False)
    sys.stderr = sys.stderr or open(2, "w", closefd=False)


def memory() -> str:
    """Returns a directory for temporary files, in memory if possible."""
    return "/dev/shm" if os.access("/dev/shm", os.W_OK | os.X_OK) else tempfile.gettempdir()


def private_directory() -> tempfile.TemporaryDirectory[str]:
    """Returns a new directory that only this user can enter, for a `with` statement.

    From now on the signals that end the process first remove the directory. Only SIGKILL leaves it behind.
    """
    for number in (signal.SIGHUP, signal.SIGINT, signal.SIGTERM):
        if signal.getsignal(number) == signal.SIG_DFL:
            signal.signal(number, lambda number, _: sys.exit(128 + number))
    return tempfile.TemporaryDirectory(prefix="tavek-logrotate.", dir=memory())
