"""Signals that a tracer would hide: those of untraced runs and of the first process of a container."""

import random
import signal
import subprocess
import time

from lab import DAILY, NEW, OLD, TARGET, TOOL, get, reset, temporary_files, tool
from rows import row

TERMINATION = (signal.SIGHUP, signal.SIGINT, signal.SIGTERM, signal.SIGQUIT)
RUNS = 600


@row("the first process of a container")
def first_process(row):
    """The kernel does not end it by a signal with the default action, so the run must not count as done."""
    for number in TERMINATION:
        for call in ("fchmod", "fsync", "rt_sigpending", "rename"):
            reset()
            injection = f"inject={call}:signal={number.name}:when=1"
            under = ("strace", "-f", "-o", "/tmp/trace", "-e", injection, "unshare", "--pid", "--fork")
            result = tool(*DAILY, under=under)
            row.holds(f"--- {number.name} ".encode() in get("/tmp/trace"), f"{number.name} at {call}: never struck")
            judge_first_process(row, result, f"{number.name} at {call}")


def judge_first_process(row, result, what):
    done = get(TARGET) == NEW
    state = "NEW" if done else "not NEW"
    row.holds((result.status == 0) == done, f"{what}: exit status {result.status}, target {state}")
    row.holds(get(TARGET) in (OLD, NEW) and not temporary_files(), f"{what}: a mix or temporary files")
    row.holds(bool(result.error) != done, f"{what}: {result.error!r}")


@row("signals at any moment")
def random_signals(row):
    """Without a tracer, for the kernel keeps ignored signals of a traced process that it would drop otherwise."""
    dice = random.Random(1)
    new = 0
    for number in range(RUNS):
        new += terminated_run(row, TERMINATION[number % 4], number % 3 == 0, dice.uniform(0, 0.006))
    row.figure(f"{new} of {RUNS} runs ended with the new content")


def start_with(number, action):
    return subprocess.Popen([TOOL, *DAILY], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                            preexec_fn=lambda: signal.signal(number, action))


def terminated_run(row, number, ignored, delay):
    reset(OLD * 10)
    run = start_with(number, signal.SIG_IGN if ignored else signal.SIG_DFL)
    time.sleep(delay)
    run.send_signal(number)
    _, error = run.communicate()
    new = get(TARGET) == NEW * 10
    what = f"{number.name}{' ignored' if ignored else ''} after {delay * 1000:.2f} ms: {run.returncode}, {error!r}"
    row.holds((new or get(TARGET) == OLD * 10) and not temporary_files(), f"{what}: a mix or temporary files")
    row.holds(run.returncode == 0 or (run.returncode == -number and not ignored), what)
    row.holds(run.returncode != 0 or new, f"{what}, but the target is OLD")
    row.holds(error == b"", what)
    return new
