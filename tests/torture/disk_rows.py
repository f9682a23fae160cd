"""File systems that are full or limited."""

import os

from lab import DAILY, HOSTS, NEW, OLD, TARGET, expect_new, expect_refusal, mounted, put, reset, shell, tool
from rows import row

TEMPORARY = r"Failed to open /opt/oru/etc/logrotate\.d/example\.com\.[A-Za-z0-9]{6}: "
WRITE = r"^Failed to write /opt/oru/etc/logrotate\.d/example\.com\.[A-Za-z0-9]{6}: "


@row("a full disk")
def full_disk(row):
    with mounted(HOSTS, "-t", "tmpfs", "-o", "size=48k,mode=755", "tmpfs"):
        put(TARGET, OLD)
        expect_refusal(row, tool(*DAILY), "no room for the new file", WRITE + "No space left on device$")
        os.unlink(TARGET)
        fill_up(f"{HOSTS}/ballast")
        expect_refusal(row, tool(*DAILY), "no room at all", WRITE + "No space left on device$", old=(None, b""))


def fill_up(path):
    try:
        put(path, bytes(1 << 20))
    except OSError:
        pass


@row("no inodes left")
def no_inodes(row):
    with mounted(HOSTS, "-t", "tmpfs", "-o", "nr_inodes=2,mode=755", "tmpfs"):
        put(TARGET, OLD)
        expect_refusal(row, tool(*DAILY), "no second file", "^" + TEMPORARY + "No space left on device$")
    with mounted(HOSTS, "-t", "tmpfs", "-o", "nr_inodes=1,mode=755", "tmpfs"):
        expect_refusal(row, tool(*DAILY), "no file at all", f"^Failed to open {TARGET}: ", old=(None,))


@row("a file-size limit")
def file_size_limit(row):
    for limit in (0, 1, 4096, 16384, len(NEW) - 1):
        for ignore in ("", "trap '' XFSZ; "):
            reset()
            result = shell(ignore + 'exec prlimit --fsize="$0" "$TOOL" "$@"'.replace("$0", str(limit)), *DAILY)
            expect_refusal(row, result, f"{limit} bytes, {ignore or 'default'}", WRITE + "File too large$")
    reset()
    expect_new(row, tool(*DAILY, under=("prlimit", f"--fsize={len(NEW)}")), "just enough")


@row("no descriptors left")
def no_descriptors(row):
    for limit in range(0, 5):
        for before in (OLD, None):
            reset(before)
            result = tool(*DAILY, under=("prlimit", f"--nofile={limit}:{limit}"))
            what = f"{limit} descriptors, target {'present' if before else 'absent'}"
            expect_refusal(row, result, what, "^Failed to open ", old=(OLD,) if before else (None, b""))
    reset()
    expect_new(row, tool(*DAILY, under=("prlimit", "--nofile=5:5")), "five descriptors are enough")
