"""The parent process that runs the tool once for each category."""

import ctypes
import errno
import glob
import os

from lab import SYSTEM, SYSTEM_FILES, TOOL, calls_of, get, is_one_line, put, stanzas, traced
from rows import row
from sweep_faults import errors_of, injection_of, signals_of

BEFORE = stanzas(40, "daily", 9)
AFTER = stanzas(40, "weekly", 3)
PR_SET_CHILD_SUBREAPER = 36


def temporary_files():
    return [path for target in SYSTEM_FILES for path in glob.glob(f"{target}.??????")]


def reset():
    for path in temporary_files():
        os.unlink(path)
    for path in SYSTEM_FILES:
        put(path, BEFORE)


def edited():
    """Returns how many of the files are NEW. Returns None unless the NEW files come first and all others are OLD."""
    states = [get(path) for path in SYSTEM_FILES]
    count = states.count(AFTER)
    return count if states == [AFTER] * count + [BEFORE] * (len(states) - count) else None


def wait_for_orphans():
    """Waits for the children of a parent that has ended: this process has adopted them."""
    try:
        while True:
            os.wait()
    except ChildProcessError:
        pass


@row("faults at each system call of the parent")
def parent_sweep(row):
    ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
    reset()
    calls = calls_of(traced([TOOL, *SYSTEM]).trace)
    first = next(i for i, call in enumerate(calls) if "SIGCHLD" in call.text)
    faults = 0
    for number, call in enumerate(calls[first:], first):
        children = sum(call.name.startswith(("clone", "fork", "vfork")) for call in calls[:number])
        for fault in errors_of(call) + signals_of(call, number):
            inject(row, fault, children)
            faults += 1
    row.figure(f"{faults} faults at {len(calls) - first} calls")


def inject(row, fault, children):
    reset()
    result = traced([TOOL, *SYSTEM], "-e", injection_of(fault))
    wait_for_orphans()
    what = (f"{fault.name} {fault.when} {fault.what}: exit status {result.status}, {result.error!r}, "
            f"{edited()} edited, left {temporary_files()}")
    # The parent kills a child that it cannot wait for.
    row.check(len(temporary_files()) <= (fault.name == "wait4" and fault.signal is None), what)
    row.check(edited() is not None and (result.status != 0 or edited() == len(SYSTEM_FILES)), what)
    if fault.signal is not None:
        row.check(result.status == -fault.signal or (fault.name == "exit_group" and result.status == 0), what)
        return
    row.check("INJECTED" in result.trace, f"{what}: not injected")
    row.check(result.status == 0 or (result.status == 1 and is_one_line(result.error)), what)
    if fault.name.startswith(("clone", "fork", "vfork")):
        message = os.strerror(getattr(errno, fault.what.removeprefix("error=")))
        row.check(result.status == 1 and is_one_line(result.error, message) and edited() == children, what)
