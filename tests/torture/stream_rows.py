"""Standard streams that are closed, broken or full, and the caller's file-creation mask."""

import itertools
import os
import re

from lab import (DAILY, NEW, OLD, SYSTEM, SYSTEM_FILES, TARGET, get, mode_of, put, reset,
                 shell, stanzas, temporary_files, tool)
from rows import row

COPY = "/var/www/vhosts/system/example.com/logs/error_log.old"
CLOSINGS = [" ".join(closed) for count in range(4) for closed in itertools.combinations(("<&-", ">&-", "2>&-"), count)]
KEEP = ("example.com", "keep")
CATEGORY = ("--nginx-logs", f"--vhost-name={TARGET}", "-K")
CREATING_JOBS = [(DAILY, OLD), (DAILY, None), (KEEP, OLD), (KEEP, None), (CATEGORY, OLD)]


@row("closed standard streams")
def closed_streams(row):
    """With a complaint of the cleanup, a failure to write and five children: no message lands in a file."""
    os.makedirs(os.path.dirname(COPY), exist_ok=True)
    put(COPY, b"copy\n")
    for closing in CLOSINGS:
        closed_rewrite(row, closing)
        closed_failure(row, closing)
        closed_fanout(row, closing)
    os.unlink(COPY)
    row.figure(f"{len(CLOSINGS)} of 8 combinations, 3 jobs each")


def closed_rewrite(row, closing):
    reset()
    result = shell(f'exec "$TOOL" "$@" {closing}', *DAILY)
    what = f"rewrite {closing or 'with open streams'}"
    row.holds((result.status, get(TARGET), temporary_files()) == (0, NEW, []), what)
    complaint = f"Failed to parse suffix 'old' ({COPY})\n".encode()
    row.holds(result.error == (b"" if "2>" in closing else complaint), f"{what}: {result.error!r}")
    row.holds(get(COPY) == b"copy\n", f"{what}: the copy")


def closed_failure(row, closing):
    reset()
    result = shell(f'exec prlimit --fsize=100 "$TOOL" "$@" {closing}', *DAILY, "-K")
    what = f"failure {closing or 'with open streams'}"
    row.holds((result.status, get(TARGET), temporary_files()) == (1, OLD, []), what)
    row.holds(bool(result.error) == ("2>" not in closing), f"{what}: {result.error!r}")


def closed_fanout(row, closing):
    for path in SYSTEM_FILES:
        put(path, stanzas(3, "daily", 9))
    result = shell(f'exec "$TOOL" "$@" {closing}', *SYSTEM)
    what = f"all system logs {closing or 'with open streams'}"
    row.holds(result.status == 0, f"{what}: exit status {result.status}")
    row.holds(all(get(path) == stanzas(3, "weekly", 3) for path in SYSTEM_FILES), what)


@row("standard error is a closed pipe")
def closed_pipe(row):
    for ignored in (False, True):
        reset()
        reading, writing = os.pipe()
        os.close(reading)
        under = ("strace", "-o", "/tmp/trace", "prlimit", "--fsize=100")
        result = tool(*DAILY, under=under, stderr=writing, restore_signals=not ignored)
        os.close(writing)
        what = f"SIGPIPE {'ignored' if ignored else 'default'}"
        row.holds((result.status, get(TARGET), temporary_files()) == (1, OLD, []), f"{what}: {result}")
        trace = get("/tmp/trace").decode()
        row.holds(re.search(r"^unlink\(.*^write\(2, .*EPIPE", trace, re.DOTALL | re.MULTILINE),
                  f"{what}: the message comes before the temporary file is gone")



@row("the caller's file-creation mask")
def creation_mask(row):
    for mask, (job, before) in itertools.product(("0", "022", "077", "0777"), CREATING_JOBS):
        reset(before)
        result = shell(f'umask {mask}; exec strace -o /tmp/trace -e trace=openat,umask "$TOOL" "$@"', *job)
        row.holds(result.status == 0, f"umask {mask}: exit status {result.status}")
        row.holds(mode_of(TARGET) == 0o644, f"umask {mask}: mode {mode_of(TARGET):o}")
        never_open_to_others(row, f"umask {mask}", get("/tmp/trace").decode())


def never_open_to_others(row, what, trace):
    created = [line for line in trace.splitlines() if "O_CREAT" in line]
    row.holds(created, f"{what}: nothing was created")
    row.holds("umask(022)" in trace[:trace.find("O_CREAT")], f"{what}: the mask is not set first")
    for line in created:
        mode = int(re.search(r", (0\d+)\) = ", line)[1], 8)
        row.holds(mode & 0o022 == 0, f"{what}: {line}")
