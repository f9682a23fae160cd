"""The signals that a run gets, and the order of its system calls."""

import itertools
import random
import re
import signal
import subprocess
import time

from lab import (DAILY, ENDING_SIGNALS, HOSTS, NAMED_SIGNALS, NEW, OLD, TARGET, TOOL, UNCLOSED, beside, get, reset, signal_name,
                 traced)
from rows import row


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
