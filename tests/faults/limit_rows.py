"""The resource limits of the caller and of the scanner."""

import os

from lab import DAILY, OLD, TARGET, expect_new, expect_refusal, reset, tool
from rows import row


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
