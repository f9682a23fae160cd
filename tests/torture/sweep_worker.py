"""One worker of the fault sweep, inside the sandbox: takes its share of the calls of every job.

Prints FAILED and what is wrong for a case that fails, and at the end how many passed. Arguments: which worker this is,
how many there are.
"""

import collections
import subprocess
import sys
import zlib

from sweep_calls import record, run, run_with, take_default_signals
from sweep_faults import errors_of, from_then_on, signals_of
from sweep_jobs import all_jobs
from sweep_judge import Judge


class Worker:
    """Runs cases and counts, for each job, those that passed."""

    def __init__(self):
        self.passed = collections.Counter()

    def report(self, job, fault, problems):
        if problems:
            print(f"FAILED {job.name}: {fault.name} {fault.when} {fault.what}\n  " + "\n  ".join(problems), flush=True)
        else:
            self.passed[job.name] += 1

    def strike(self, job, judge, fault):
        """Runs one case. Returns the result, or None for a run that did not end."""
        job.reset()
        try:
            result = run_with(job, fault)
        except subprocess.TimeoutExpired:
            self.report(job, fault, ["did not end"])
            return None
        self.report(job, fault, judge.problems(fault, result))
        return result

    def sweep_call(self, job, judge, call):
        for fault in signals_of(call, job.ignored):
            self.strike(job, judge, fault)
        for fault in errors_of(call) if job.ignored is None else []:
            result = self.strike(job, judge, fault)
            lasting = from_then_on(fault, result) if result else None
            if lasting:
                self.strike(job, judge, lasting)


def recorded(job):
    """The judge of a job and its calls, from a run without a fault."""
    job.reset()
    result, calls = record(job)
    if result.status != 0 or result.error or job.beside():
        sys.exit(f"{job.name}: a run without a fault ends with {result.status}, {result.error!r}, {job.beside()}")
    if job.before is not None and job.now() == job.before:
        sys.exit(f"{job.name}: a run without a fault changes nothing, so nothing can be told from the bytes")
    new = job.now()
    run(job.command)
    return Judge(job, new, job.now()), calls


def main():
    mine, workers = int(sys.argv[1]), int(sys.argv[2])
    take_default_signals()
    worker = Worker()
    for job in all_jobs():
        judge, calls = recorded(job)
        for call in calls:
            if zlib.crc32(f"{call.name} {call.ordinal}".encode()) % workers == mine:
                worker.sweep_call(job, judge, call)
    for name, count in worker.passed.items():
        print(f"passed {count} {name}")


main()
