"""Allocations that fail, each in turn and from each on."""

import itertools
import os
import shutil
import signal
import subprocess

from lab import DAILY, NEW, OLD, SYSTEM_FILES, TARGET, expect_refusal, get, put, reset, stanzas, temporary_files, tool
from rows import Skip, row

HERE = os.path.dirname(os.path.abspath(__file__))
DYNAMIC = f"{HERE}/dynamic"
LIBRARY = "/tmp/fail_allocation.so"
COUNT = "/tmp/allocations"
LOGS = "/var/www/vhosts/system/example.com/logs"
CLOSINGS = [closed for count in (1, 2, 3) for closed in itertools.combinations(range(3), count)]

UNCLOSED = b"}\n/var/log/unclosed {\n" + b"\tcreate 0640 root adm\n" * 6000  # Is written in two passes.


def build_library():
    if not os.path.exists(DYNAMIC):
        raise Skip("there is no dynamically linked program")
    command = ["gcc", "-shared", "-fPIC", "-O1", "-Wall", "-o", LIBRARY, f"{HERE}/fail_allocation.c"]
    if subprocess.run(command, check=False).returncode != 0:
        raise Skip("the counter of allocations does not compile")


def preloaded(arguments, closed=(), **variables):
    """A run with some standard streams closed: its status and what it printed on standard error."""
    environment = {**os.environ, "LD_PRELOAD": LIBRARY, **variables}
    done = subprocess.run([DYNAMIC, *arguments], stdin=subprocess.DEVNULL, capture_output=True, env=environment,
                          timeout=60, check=False, preexec_fn=lambda: [os.close(stream) for stream in closed])
    return done.returncode, done.stderr


class Sweep:
    failures = (1, 2)  # The second is the scanner's own.

    def __init__(self, row, arguments, target, before):
        self.row, self.arguments, self.target, self.before = row, arguments, target, before
        self.new = None
        self.succeeded = 0

    def reset(self):
        reset(None)
        if self.before is None:
            return
        put(self.target, self.before)

    def count(self):
        """Allocations of a run without a fault."""
        self.reset()
        status, error = preloaded(self.arguments, COUNT_ALLOCATIONS=COUNT)
        self.row.holds((status, error) == (0, b""), f"without a fault: {status}, {error!r}")
        self.new = get(self.target)
        self.row.holds(self.new != self.before, "changes nothing without a fault")
        return int(get(COUNT))

    def reports(self, number):
        """Whether a run in which this allocation fails says so and goes on."""
        self.reset()
        status, error = preloaded(self.arguments, FAIL_ALLOCATION=str(number))
        return status == 0 and error

    def run(self):
        count = self.count()
        for number in range(1, count + 1):
            for which in (f"{number}", f"{number}+"):
                self.fail(which)
        self.row.figure(f"{count} allocations, {2 * count} runs, {self.succeeded} of them succeeded all the same")

    def fail(self, which):
        self.reset()
        status, error = preloaded(self.arguments, FAIL_ALLOCATION=which)
        now = get(self.target)
        what = f"allocation {which}: exit status {status}, {error[:200]!r}"
        self.row.holds(not temporary_files(self.target), f"{what}: temporary files stay")
        if status == 0:
            self.succeeded += 1
            self.row.holds(now == self.new, f"{what}, but the target is not NEW")
        else:
            allowed = (self.before,) if self.before is not None else (None, b"")
            self.row.holds(status in self.failures and now in allowed, f"{what}, or the target is not OLD")
            self.row.holds(error.strip() and b"Success" not in error, f"{what}: no message")


@row("failing allocations of a rewrite")
def failing_rewrite(row):
    build_library()
    Sweep(row, (*DAILY, "-K"), TARGET, OLD).run()


@row("failing allocations of a rewrite in two passes")
def failing_two_passes(row):
    build_library()
    Sweep(row, (*DAILY, "-K"), TARGET, UNCLOSED).run()


@row("failing allocations of a new file")
def failing_generate(row):
    build_library()
    Sweep(row, (*DAILY, "-K"), TARGET, None).run()


@row("failing allocations with closed standard streams")
def failing_closed_streams(row):
    """Where a run goes on after a failure that it reports, the report must not land in the new file."""
    build_library()
    sweep = Sweep(row, (*DAILY, "-K"), TARGET, None)
    reported = [number for number in range(1, sweep.count() + 1) if sweep.reports(number)]
    for number, closed in itertools.product(reported, CLOSINGS):
        sweep.reset()
        status, _ = preloaded(sweep.arguments, closed, FAIL_ALLOCATION=str(number))
        row.holds(status == 0, f"allocation {number}, closed {closed}: exit status {status}")
        row.holds(get(TARGET) == sweep.new, f"allocation {number}, closed {closed}: the target is not NEW")
    row.figure(f"{len(reported)} failures that are reported, 7 combinations each")


@row("failing allocations of a category")
def failing_category(row):
    build_library()
    arguments = ("--apache-logs", "--period-type=by_time", "--period=weekly", "--rot-count=3")
    Sweep(row, arguments, SYSTEM_FILES[0], stanzas(40, "daily", 9)).run()


@row("failing allocations of a cleanup")
def failing_cleanup(row):
    """The C library's glob itself frees twice and aborts when memory ends while it adds the folder to its matches."""
    build_library()
    os.makedirs(LOGS, exist_ok=True)
    for number in range(3):
        put(f"{LOGS}/error_log.{number}", b"")
    sweep = Sweep(row, DAILY, TARGET, OLD)
    sweep.failures = (1, 2, -signal.SIGABRT)
    sweep.run()
    shutil.rmtree(LOGS)


@row("a file larger than the memory")
def larger_than_memory(row):
    reset(b"")
    os.truncate(TARGET, 1 << 30)
    result = tool(*DAILY, under=("prlimit", f"--as={512 << 20}"))
    row.holds(os.path.getsize(TARGET) == 1 << 30, "the target has changed")
    os.truncate(TARGET, 0)
    expect_refusal(row, result, "no memory", "bad_alloc", old=(b"",))


@row("a file larger than a scanner can take")
def larger_than_the_scanner(row):
    reset(b"")
    os.truncate(TARGET, 3 << 30)
    result = tool(*DAILY)
    row.holds((result.status, len(result.error.splitlines())) == (2, 1), f"{result}")
    row.holds(os.path.getsize(TARGET) == 3 << 30 and not temporary_files(), "the target has changed")
    reset(NEW)
