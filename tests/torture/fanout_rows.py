"""The parent that runs the tool once a category: failing children, and a parent that is terminated."""

import ctypes
import os
import signal
import subprocess

from lab import SYSTEM, SYSTEM_FILES, TOOL, expect_message, get, put, stanzas, temporary_files, tool
from rows import row
from sweep_calls import calls_of
from sweep_faults import errors_of

BEFORE = stanzas(40, "daily", 9)
AFTER = stanzas(40, "weekly", 3)
PR_SET_CHILD_SUBREAPER = 36


def reset_system_files():
    for path in SYSTEM_FILES:
        put(path, BEFORE)
    for path in left_files():
        os.unlink(path)


def edited():
    """How many of the system files, from the first on, are edited; None when one is anything else or out of turn."""
    states = [get(path) for path in SYSTEM_FILES]
    count = states.count(AFTER)
    return count if states == [AFTER] * count + [BEFORE] * (len(states) - count) else None


def left_files():
    return [left for path in SYSTEM_FILES for left in temporary_files(path)]


def wait_for_orphans():
    """Waits for the children that a parent has left behind, which come to this process."""
    ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
    try:
        while True:
            os.wait()
    except ChildProcessError:
        pass


def inject(what):
    return ("strace", "-o", "/tmp/trace", "-e", f"inject={what}")


def expect_failure(row, result, count, what, message):
    row.holds(result.status == 1, f"{what}: exit status {result.status}")
    row.holds(edited() == count, f"{what}: {edited()} files edited")
    row.holds(not left_files(), f"{what}: temporary files stay")
    expect_message(row, result.error, what, message)


@row("a fork that fails")
def failing_fork(row):
    for child in (1, 2, 5):
        reset_system_files()
        result = tool(*SYSTEM, under=inject(f"clone,clone3,fork,vfork:error=EAGAIN:when={child}+"))
        expect_failure(row, result, child - 1, f"child {child}", "Resource temporarily unavailable")


@row("a pipe that fails")
def failing_pipe(row):
    for child in (1, 2, 5):
        reset_system_files()
        result = tool(*SYSTEM, under=inject(f"pipe,pipe2:error=EMFILE:when={child}+"))
        expect_failure(row, result, child - 1, f"child {child}", "Too many open files")


def put_script(path, text):
    put(path, f"#!/bin/sh\n{text}\n".encode())
    os.chmod(path, 0o755)


def start_as(name):
    """Starts the tool under another name, by which it runs itself again."""
    return subprocess.Popen([name, *SYSTEM], executable=TOOL, stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE)




@row("a terminated parent of the children")
def terminated_parent(row):
    """The signal arrives while the first child runs, which finishes its edit; no other child is started."""
    put_script("/tmp/killing", f'kill -"$SIGNAL" $PPID\nsleep 0.1\n{TOOL} "$@"')
    wait_for_orphans()
    for number in (signal.SIGHUP, signal.SIGINT, signal.SIGTERM, signal.SIGQUIT, signal.SIGKILL):
        reset_system_files()
        os.environ["SIGNAL"] = number.name[3:]
        parent = start_as("/tmp/killing")
        parent.wait()
        wait_for_orphans()
        row.holds(parent.returncode == -number, f"{number.name}: ended with {parent.returncode}")
        row.holds(edited() == 1 and not left_files(), f"{number.name}: {edited()} files edited")


@row("every system call of the parent")
def parent_sweep(row):
    """Its law is that of the single run: the exit status is 0 exactly when all five files are new."""
    reset_system_files()
    tool(*SYSTEM, under=("strace", "-o", "/tmp/trace"))
    calls = calls_of(get("/tmp/trace").decode("utf-8", "backslashreplace"))
    first = next(i for i, call in enumerate(calls) if call.name.startswith("pipe"))
    # A close that fails closes all the same, but a tracer can only leave it out, so that the reader of a pipe waits on.
    faults = [fault for call in calls[first:] if call.name != "close" for fault in errors_of(call)]
    for fault in faults:
        strike_parent(row, fault)
    row.figure(f"{len(faults)} faults at {len(calls) - first} calls")


def strike_parent(row, fault):
    reset_system_files()
    result = tool(*SYSTEM, under=inject(f"{fault.name}:{fault.what}:when={fault.when}"))
    wait_for_orphans()
    what = f"{fault.name} {fault.when} {fault.what}: exit status {result.status}, {result.error!r}"
    # A child that cannot be waited for is killed by the process library, as anybody could kill it.
    allowed = 1 if fault.name == "wait4" else 0
    row.holds(edited() is not None and len(left_files()) <= allowed, f"{what}: {edited()} edited, left {left_files()}")
    row.holds("INJECTED" in get("/tmp/trace").decode("utf-8", "backslashreplace"), f"{what}: never struck")
    row.holds(result.status in (0, 1), what)
    row.holds(result.status != 0 or edited() == 5, f"{what}: {edited()} files edited")
    row.holds(result.status == 0 or len(result.error.splitlines()) == 1, f"{what}: not one line")
