"""What a loss of power leaves is decided by the order of the system calls."""

import re

from lab import DAILY, OLD, TARGET, get, reset, tool
from rows import row

UNCLOSED = b"}\n/var/log/unclosed {\n" + b"\tcreate 0640 root adm\n" * 6000  # Is written in two passes.


def traced_calls():
    result = tool(*DAILY, under=("strace", "-y", "-s", "0", "-o", "/tmp/trace"))
    return result, get("/tmp/trace").decode().splitlines()


def places(calls, pattern):
    return [i for i, call in enumerate(calls) if re.match(pattern, call)]


@row("the order of the system calls")
def order(row):
    for before in (OLD, OLD * 20, UNCLOSED, None):
        reset(before)
        result, calls = traced_calls()
        row.holds(result.status == 0, f"exit status {result.status}")
        written_synced_closed_renamed(row, calls)
        close_on_exec(row, calls)


def written_synced_closed_renamed(row, calls):
    temporary = rf"\d+<{re.escape(TARGET)}\.\w{{6}}>"
    writes = places(calls, rf"(write|ftruncate|lseek|fchmod)\({temporary}")
    syncs = places(calls, rf"fsync\({temporary}.* = 0")
    closes = places(calls, rf"close\({temporary}.* = 0")
    renames = places(calls, rf'rename\("{re.escape(TARGET)}\.\w{{6}}"')
    row.holds(len(syncs) == len(closes) == len(renames) == 1, f"{len(syncs)}, {len(closes)}, {len(renames)} calls")
    row.holds(writes and max(writes) < syncs[0] < closes[0] < renames[0], "not written, synced, closed and renamed")
    row.holds(not places(calls, rf"write\(\d+<{re.escape(TARGET)}>"), "the target itself was written to")


def close_on_exec(row, calls):
    opened = [call for call in calls if call.startswith("openat(")]
    row.holds(all("O_CLOEXEC" in call for call in opened), "a descriptor is not close-on-exec")
