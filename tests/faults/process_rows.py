"""The streams, file-creation mask and signals that a run gets from its caller, and the order of its system calls."""

import itertools
import os
import random
import re
import signal
import subprocess
import time

from lab import (DAILY, ENDING_SIGNALS, HOSTS, NAMED_SIGNALS, NEW, OLD, SYSTEM, SYSTEM_FILES, TARGET, TOOL, UNCLOSED,
                 beside, get, put, reset, shell, signal_name, stanzas, traced)
from rows import row

CLOSED = [" ".join(closed) for count in range(4) for closed in itertools.combinations(("<&-", ">&-", "2>&-"), count)]
KEEP = ("example.com", "keep")
CATEGORY = ("--nginx-logs", f"--vhost-name={TARGET}", "-K")
CREATING_RUNS = [(DAILY, OLD), (DAILY, None), (KEEP, OLD), (KEEP, None), (CATEGORY, OLD)]


@row("closed standard streams")
def closed_streams(row):
    """No message may be written to a file whose descriptor has the number of a closed stream."""
    for closed in CLOSED:
        reset()
        result = shell(f'exec prlimit --fsize=100 "$0" "$@" {closed}', *DAILY)
        row.check((result.status, get(TARGET), beside()) == (1, OLD, []), f"failed write, {closed}: {result}")
        row.check(bool(result.error) == ("2>" not in closed), f"failed write, {closed}: {result.error!r}")
        for path in SYSTEM_FILES:
            put(path, stanzas(3, "daily", 9))
        result = shell(f'exec "$0" "$@" {closed}', *SYSTEM)
        row.check(result.status == 0, f"all system logs, {closed}: {result}")
        row.check(all(get(path) == stanzas(3, "weekly", 3) for path in SYSTEM_FILES), f"all system logs, {closed}")


@row("a closed pipe as standard error")
def closed_pipe(row):
    """The temporary file must be removed before the message is written."""
    for ignored in (False, True):
        reset()
        reading, writing = os.pipe()
        os.close(reading)
        result = traced(["prlimit", "--fsize=100", TOOL, *DAILY], stderr=writing, restore_signals=not ignored)
        os.close(writing)
        what = f"SIGPIPE {'ignored' if ignored else 'default'}"
        row.check((result.status, get(TARGET), beside()) == (1, OLD, []), f"{what}: {result.status}")
        removed_first = re.search(r"^unlink\(.*^write\(2, .*EPIPE", result.trace, re.DOTALL | re.MULTILINE)
        row.check(removed_first, f"{what}: the message is written before the temporary file is removed")


@row("the file-creation mask")
def creation_mask(row):
    """Other users must never be able to write to a file that the run creates."""
    for mask, (arguments, before) in itertools.product((0, 0o22, 0o77, 0o777), CREATING_RUNS):
        reset(before)
        result = traced([TOOL, *arguments], "-e", "trace=openat,umask", umask=mask)
        what = f"umask {mask:o}, {arguments}"
        row.check(result.status == 0 and os.stat(TARGET).st_mode == 0o100644, f"{what}: {result}")
        row.check("umask(022)" in result.trace[:result.trace.find("O_CREAT")], f"{what}: the mask is not set first")
        modes = re.findall(r"O_CREAT.*, 0(\d+)\) = ", result.trace)
        row.check(modes and not any(int(mode, 8) & 0o022 for mode in modes), f"{what}: created with {modes}")


@row("the order of the system calls")
def call_order(row):
    """The order decides what is left after a power loss."""
    for before in (OLD, OLD * 20, UNCLOSED, None):
        reset(before)
        result = traced([TOOL, *DAILY], "-y")
        row.check(result.status == 0, f"exit status {result.status}")
        check_order(row, result.trace.splitlines())
    reset()
    result = traced([TOOL, "example.com", "off"], "-y")
    in_order = re.search(rf"^unlink\(.* = 0\n(.*\n)*fsync\(\d+<{HOSTS}>.* = 0$", result.trace, re.MULTILINE)
    row.check(in_order, "off: not in the order unlink, fsync of the directory")


def check_order(row, calls):
    def places(pattern):
        return [i for i, call in enumerate(calls) if re.match(pattern, call)]
    temporary = rf"\d+<{re.escape(TARGET)}\.\w{{6}}>"
    writes = places(rf"(write|ftruncate|lseek|fchmod)\({temporary}")
    last = places(rf"fsync\({temporary}.* = 0") + places(rf"close\({temporary}.* = 0")
    last += places(rf'rename\("{re.escape(TARGET)}\.\w{{6}}"') + places(rf"fsync\(\d+<{HOSTS}>.* = 0")
    in_order = writes and len(last) == 4 and [max(writes), *last] == sorted([max(writes), *last])
    row.check(in_order, f"not in the order write, fsync, close, rename, fsync of the directory: {writes}, {last}")
    row.check(not places(rf"write\(\d+<{re.escape(TARGET)}>"), "writes to the target itself")
    row.check(all("O_CLOEXEC" in calls[i] for i in places("openat")), "opens a descriptor that is not close-on-exec")


@row("a signal to the first process of a container")
def first_process(row):
    """A signal with the default action does not kill the first process, so the run itself must report failure."""
    for number, call in itertools.product(NAMED_SIGNALS, ("fchmod", "fsync", "rt_sigpending", "rename")):
        reset()
        injection = f"inject={call}:signal={signal_name(number)}:when=1"
        result = traced(["unshare", "--pid", "--fork", TOOL, *DAILY], "-f", "-e", injection)
        what = f"{signal_name(number)} at {call}: exit status {result.status}, {result.error!r}"
        row.check(f"--- {signal_name(number)} " in result.trace, f"{what}: not injected")
        state = (get(TARGET) == NEW, beside())
        row.check(state == (result.status == 0, []) and (state[0] or get(TARGET) == OLD), f"{what}: wrong files")
        row.check(bool(result.error) == (result.status != 0), what)


@row("signals at random times")
def random_signals(row):
    """strace is not used here: if a process is traced, the kernel keeps signals that it would otherwise discard."""
    dice = random.Random(1)
    runs = [(dice.choice(ENDING_SIGNALS), number % 3 == 0, dice.uniform(0, 0.006)) for number in range(600)]
    new = sum(signalled_run(row, *run) for run in runs)
    row.figure(f"{new} of {len(runs)} runs completed")


@row("an alarm that the caller has set")
def inherited_alarm(row):
    dice = random.Random(2)
    runs = [(number % 3 == 0, dice.uniform(0.001, 0.008)) for number in range(300)]
    new = sum(signalled_run(row, signal.SIGALRM, *run, alarm=True) for run in runs)
    row.figure(f"{new} of {len(runs)} runs completed")


def signalled_run(row, number, ignored, delay, alarm=False):
    """Makes one run that receives the signal after a delay: from an alarm set before its exec, or from this process."""
    def prepare():
        signal.signal(number, signal.SIG_IGN if ignored else signal.SIG_DFL)
        signal.setitimer(signal.ITIMER_REAL, delay if alarm else 0)
    reset(OLD * 10)
    run = subprocess.Popen([TOOL, *DAILY], stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, preexec_fn=prepare)
    if not alarm:
        time.sleep(delay)
        run.send_signal(number)
    _, error = run.communicate()
    new = get(TARGET) == NEW * 10
    name = f"{signal_name(number)}{' ignored' if ignored else ''}"
    what = f"{name} after {delay * 1000:.2f} ms: {run.returncode}, {error!r}"
    row.check((new or get(TARGET) == OLD * 10) and not beside(), f"{what}: wrong files")
    row.check((run.returncode == 0 and new) or (run.returncode == -number and not ignored), what)
    row.check(error == b"", what)
    return new
