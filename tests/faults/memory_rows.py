"""Failing allocations: each allocation fails in turn, first alone and then together with all later ones."""

import os
import shutil
import signal

from lab import APACHE, DAILY, LOGS, OLD, SYSTEM_FILES, TARGET, UNCLOSED, beside, get, put, reset, run, stanzas
from rows import Skip, row

HERE = os.path.dirname(os.path.abspath(__file__))
DYNAMIC = f"{HERE}/dynamic"
LIBRARY = "/tmp/fail_allocation.so"
COUNT = "/tmp/allocations"
RUN = (*DAILY, "-K")


class Sweep:
    """All runs of one command line that start from the same state of the target."""

    def __init__(self, row, arguments, before, target=TARGET, failures=(1, 2)):
        self.row, self.arguments, self.before, self.target, self.failures = row, arguments, before, target, failures
        self.succeeded = 0
        if not os.path.exists(DYNAMIC):
            raise Skip("there is no dynamically linked program")
        built = run(["gcc", "-shared", "-fPIC", "-O1", "-Wall", "-o", LIBRARY, f"{HERE}/fail_allocation.c"])
        if built.status != 0:
            raise Skip(f"the allocation counter does not compile: {built.error!r}")
        result = self.run(COUNT_ALLOCATIONS=COUNT)
        self.new = get(target)
        row.check((result.status, result.error) == (0, b"") and self.new != before, f"a run without a fault: {result}")
        self.count = int(get(COUNT))

    def run(self, **variables):
        reset(self.before, self.target)
        return run([DYNAMIC, *self.arguments], env={**os.environ, "LD_PRELOAD": LIBRARY, **variables})

    def fail_each(self):
        for number in range(1, self.count + 1):
            self.fail(f"{number}")
            self.fail(f"{number}+")
        self.row.figure(f"{self.count} allocations, {2 * self.count} runs, {self.succeeded} of them succeeded")

    def fail(self, which):
        result = self.run(FAIL_ALLOCATION=which)
        now, left = get(self.target), beside(self.target)
        what = f"allocation {which}: exit status {result.status}, {result.error[:200]!r}, left {left}"
        self.row.check(not left, what)
        if result.status == 0:
            self.succeeded += 1
            self.row.check(now == self.new, f"{what}, but the target is not NEW")
        else:
            allowed = (None, b"") if self.before is None else (self.before,)
            self.row.check(result.status in self.failures and now in allowed,
                           f"{what}: the exit status is wrong or the target is not OLD")
            self.row.check(result.error.strip() and b"Success" not in result.error, f"{what}: no message")


@row("failing allocations in a rewrite")
def rewrite(row):
    Sweep(row, RUN, OLD).fail_each()


@row("failing allocations in a rewrite with two scans")
def rewrite_with_two_scans(row):
    Sweep(row, RUN, UNCLOSED).fail_each()


@row("failing allocations for a new file")
def new_file(row):
    Sweep(row, RUN, None).fail_each()


@row("failing allocations in a category run")
def category(row):
    Sweep(row, APACHE, stanzas(40, "daily", 9), target=SYSTEM_FILES[0]).fail_each()


@row("failing allocations in a cleanup")
def cleanup(row):
    """glob() of the C library frees a block twice and aborts if it has no memory to add a folder to its matches."""
    os.makedirs(LOGS)
    for number in range(3):
        put(f"{LOGS}/error_log.{number}", b"")
    Sweep(row, DAILY, OLD, failures=(1, 2, -signal.SIGABRT)).fail_each()
    shutil.rmtree(LOGS)
