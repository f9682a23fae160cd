"""Full disks and the resource limits of the caller."""

import contextlib
import os

from lab import DAILY, HOSTS, NEW, OLD, TARGET, expect_new, expect_refusal, put, reset, shell, small_disk, tool
from rows import row

TEMPORARY = r"/opt/oru/etc/logrotate\.d/example\.com\.[A-Za-z0-9]{6}: "
OPEN = f"^Failed to open {TEMPORARY}"
WRITE = f"^Failed to write {TEMPORARY}"


@row("a full disk")
def full_disk(row):
    ballast = f"{HOSTS}/ballast"
    with small_disk("size=48k"):
        put(TARGET, OLD)
        expect_refusal(row, tool(*DAILY), "no room for a second copy", f"{WRITE}No space left on device$")
        os.unlink(TARGET)
        with contextlib.suppress(OSError):
            put(ballast, bytes(1 << 20))
        result = tool(*DAILY)
        os.unlink(ballast)
        expect_refusal(row, result, "no room at all", f"{WRITE}No space left on device$", old=(None, b""))


@row("a disk without free inodes")
def no_inodes(row):
    with small_disk("nr_inodes=2"):
        put(TARGET, OLD)
        expect_refusal(row, tool(*DAILY), "no second file", f"{OPEN}No space left on device$")
    with small_disk("nr_inodes=1"):
        expect_refusal(row, tool(*DAILY), "no file", f"^Failed to open {TARGET}: ", old=(None,))


@row("a limit on the size of files")
def file_size_limit(row):
    for limit in (0, 1, 4096, 16384, len(NEW) - 1):
        for ignore in ("", "trap '' XFSZ; "):
            reset()
            result = shell(f'{ignore}exec prlimit --fsize={limit} "$0" "$@"', *DAILY)
            expect_refusal(row, result, f"{limit} bytes, {ignore or 'default'}", f"{WRITE}File too large$")
    reset()
    expect_new(row, tool(*DAILY, under=("prlimit", f"--fsize={len(NEW)}")), "the size of the new file")


@row("a limit on the number of descriptors")
def descriptor_limit(row):
    for limit in range(0, 5):
        for before in (OLD, None):
            reset(before)
            result = tool(*DAILY, under=("prlimit", f"--nofile={limit}:{limit}"))
            what = f"{limit} descriptors, target {'present' if before else 'absent'}"
            expect_refusal(row, result, what, "^Failed to open ", old=(before,) if before else (None, b""))
    reset()
    expect_new(row, tool(*DAILY, under=("prlimit", "--nofile=5:5")), "five descriptors")


@row("a file larger than the memory limit")
def memory_limit(row):
    reset(b"")
    os.truncate(TARGET, 1 << 30)
    result = tool(*DAILY, under=("prlimit", f"--as={512 << 20}"))
    row.check(os.path.getsize(TARGET) == 1 << 30, "the target has changed")
    os.truncate(TARGET, 0)
    expect_refusal(row, result, "not enough memory", "bad_alloc", old=(b"",))


@row("a file larger than the scanner's limit")
def scanner_limit(row):
    reset(b"")
    os.truncate(TARGET, 3 << 30)
    result = tool(*DAILY)
    row.check((result.status, len(result.error.splitlines())) == (2, 1), f"{result}")
    row.check(os.path.getsize(TARGET) == 3 << 30, "the target has changed")
    reset()
