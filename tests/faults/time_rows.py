"""Huge files, for which the time must grow linearly with the size, and a folder with very many files."""

import os
import shutil

from lab import DAILY, LOGS, beside, expect_new, processor_seconds, reset, tool
from rows import row

GROWTH = 4
MOST = 2 * GROWTH  # If the time grew quadratically, it would be 16 times as long.
MEBI = 1 << 20

HEAD = b"/var/log/huge {\n"
CLOSED = b"\tdaily\n\trotate 5\n\tcompress\n\tmissingok\n\tcopytruncate\n}\n"

# Each function returns file contents of about `size` bytes. tools/bench has the more ordinary shapes.
SHAPES = {
    "one line in a stanza": lambda size: HEAD + b"x" * size + b"\n" + CLOSED,
    "one line of blanks in a stanza": lambda size: HEAD + b" " * size + b"x\n" + CLOSED,
    "one period line": lambda size: HEAD + b"\tdaily " + b"x" * size + b"\n" + CLOSED,
    "one line in a script": lambda size: HEAD + b"\tpostrotate\n" + b"x" * size + b"\n\tendscript\n" + CLOSED,
    "one command in a script": lambda size: HEAD + b"\tpostrotate\n\t\t/" + b"x" * size + b"\n\tendscript\n" + CLOSED,
    "one head": lambda size: b"/var/log/" + b"x" * size + b" {\n" + CLOSED,
    "short lines outside stanzas": lambda size: b"weekly\n" * (size // 7),
    "short lines in a stanza": lambda size: HEAD + b"\tcreate\n" * (size // 8) + CLOSED,
    "period lines in a stanza": lambda size: HEAD + b"\tweekly\n" * (size // 8) + CLOSED,
    "a stanza that never closes": lambda size: HEAD + b"\tcreate\n" * (size // 8),
    "comments": lambda size: b"# x {\n" * (size // 6),
    "NUL bytes": lambda size: b"\0" * size,
    "NUL bytes in a stanza": lambda size: HEAD + b"\0" * size + b"\n" + CLOSED,
    "NUL bytes in a period line": lambda size: HEAD + b"\tdaily" + b"\0" * size + b"\n" + CLOSED,
    "NUL bytes in a comment": lambda size: b"#" + b"\0" * size + b"\n",
    "period words, each with a NUL": lambda size: HEAD + b"\tdaily\0" * (size // 7) + b"\n" + CLOSED,
    "closing braces": lambda size: b"}" * size,
    "opening braces": lambda size: b"{" * size,
    "slashes with a brace far away": lambda size: b"/" * size + b"\n{x\n",
    "slashes with a head far away": lambda size: b"/" * size + b" {\n" + CLOSED,
    "lines of slashes with a brace far away": lambda size: b"/ /\n" * (size // 4) + b"{x\n",
    "slashes on the line of a brace": lambda size: b"/\n" + b"/ " * (size // 2) + b"{x\n",
    "slashes and braces": lambda size: b"/{" * (size // 2),
    "slashes and braces on lines of their own": lambda size: b"/\n{x\n" * (size // 5),
    "scripts that run the anonymizer": lambda size:
        HEAD + b"\tpostrotate\n" + b"\t\t/x/anonymize_ip y\n" * (size // 20) + b"\tendscript\n" + CLOSED,
}


def seconds_of(data):
    """The processor time of the fastest of three runs."""
    return min(one_run(data) for _ in range(3))


def one_run(data):
    reset(data)
    result, seconds = processor_seconds(lambda: tool(*DAILY, "-K", timeout=300))
    if (result.status, result.error, beside()) != (0, b"", []):
        raise AssertionError(f"{result}")
    return seconds


def register(name, shape):
    @row(f"16 MiB: {name}")
    def linear_time(row):
        small, large = seconds_of(shape(4 * MEBI)), seconds_of(shape(16 * MEBI))
        row.check(large < MOST * small + 0.05, f"{GROWTH} times the size takes {large / small:.1f} times as long")
        row.check(large < 5, f"takes {large:.1f} s")
        row.figure(f"4 MiB {small:.3f} s, 16 MiB {large:.3f} s, ratio {large / small:.1f}")


for shape_name, shape_of in SHAPES.items():
    register(shape_name, shape_of)


@row("two hundred thousand rotated copies")
def many_copies(row):
    os.makedirs(LOGS)
    for number in range(200000):
        os.close(os.open(f"{LOGS}/error_log.{number}", os.O_CREAT | os.O_WRONLY, 0o644))
    reset()
    result, seconds = processor_seconds(lambda: tool(*DAILY))
    expect_new(row, result, "rewrite")
    row.check(sorted(os.listdir(LOGS)) == [f"error_log.{number}" for number in range(6)], "wrong copies are left")
    row.check(seconds < 5, f"takes {seconds:.1f} s")
    row.figure(f"removed in {seconds:.2f} s of processor time")
    shutil.rmtree(LOGS)
