"""Targets that are no regular files, or that cannot be renamed over."""

import contextlib
import os
import socket
import stat
import time

from lab import (DAILY, HOSTS, NEW, OLD, TARGET, expect_message, expect_new, get, mode_of, mounted, put,
                 reset, temporary_files, tool)
from rows import row

REFUSAL = f"^Failed to open {TARGET}: Not a regular file$"
CATEGORY = ("--apache-logs", "--rot-count=5", TARGET)
AT_ONCE = 2.0


def node_of(path):
    status = os.lstat(path)
    return stat.S_IFMT(status.st_mode), status.st_ino, status.st_rdev, status.st_mode


def expect_untouched_node(row, what):
    """A host's run and a category's run both end at once, and the node is the one it was."""
    before = node_of(TARGET)
    for arguments in (DAILY, ("example.com", "keep"), CATEGORY):
        start = time.monotonic()
        result = tool(*arguments, timeout=20)
        row.holds(time.monotonic() - start < AT_ONCE, f"{what}: waits")
        row.holds(result.status == 1, f"{what}: exit status {result.status}")
        expect_message(row, result.error, what, REFUSAL)
        row.holds(node_of(TARGET) == before, f"{what}: the node has changed")
        row.holds(not temporary_files(), f"{what}: temporary files stay")


@row("a FIFO as target")
def fifo(row):
    reset(None)
    os.mkfifo(TARGET)
    expect_untouched_node(row, "nobody reads or writes")
    reader = os.open(TARGET, os.O_RDONLY | os.O_NONBLOCK)
    expect_untouched_node(row, "somebody reads")
    row.holds(os.read(reader, 100) == b"", "something was written")
    os.close(reader)
    both = os.open(TARGET, os.O_RDWR | os.O_NONBLOCK)
    expect_untouched_node(row, "somebody writes")
    os.close(both)


@row("a socket as target")
def unix_socket(row):
    reset(None)
    with contextlib.closing(socket.socket(socket.AF_UNIX)) as server:
        server.bind(TARGET)
        server.listen()
        expect_untouched_node(row, "a socket")


@row("a device as target")
def device(row):
    for path in ("/dev/null", "/dev/full", "/dev/tty"):
        reset(b"")
        with mounted(TARGET, "--bind", path):
            expect_untouched_node(row, path)
        reset(None)
        os.symlink(path, TARGET)
        expect_untouched_node(row, f"a link to {path}")


@row("a symbolic link as target")
def symbolic_link(row):
    reset(None)
    put("/tmp/pointee", OLD)
    os.symlink("/tmp/pointee", TARGET)
    expect_new(row, tool(*DAILY), "a link")
    row.holds(not os.path.islink(TARGET), "the link is still there")
    row.holds(get("/tmp/pointee") == OLD, "what it pointed to has changed")


@row("a directory as target")
def directory(row):
    os.mkdir(f"{HOSTS}/folder")
    result = tool("folder", *DAILY[1:])
    row.holds((result.status, result.error) == (2, b"input in flex scanner failed\n"), f"{result}")
    row.holds(not temporary_files(f"{HOSTS}/folder"), "temporary files stay")
    os.rmdir(f"{HOSTS}/folder")


@row("a target that is a mount point")
def mount_point(row):
    """The rename is refused, and only then the whole new file stays beside the old one."""
    reset()
    with mounted(TARGET, "--bind", TARGET):
        result = tool(*DAILY)
        row.holds(result.status == 1, f"exit status {result.status}")
        expect_message(row, result.error, "mount point", "Device or resource busy")
        row.holds(get(TARGET) == OLD, "the target is not OLD")
        left = temporary_files()
        row.holds(len(left) == 1 and get(left[0]) == NEW and mode_of(left[0]) == 0o644, f"left: {left}")


@row("a file that cannot be read")
def read_error(row):
    reset(None)
    os.symlink("/proc/self/mem", TARGET)  # Its first page is never there to be read.
    result = tool(*DAILY)
    row.holds((result.status, result.error) == (2, b"input in flex scanner failed\n"), f"{result}")
    row.holds(os.path.islink(TARGET) and not temporary_files(), "the link has changed")
