"""One worker of the fault sweep, inside the sandbox: injects faults at its share of the system calls of every job.

Prints FAILED and the problems of each case that fails, and how many cases of each job passed. Arguments: the number of
this worker, and the number of workers.
"""

import collections
import signal
import subprocess
import sys
import zlib

from lab import set_up_process
from sweep_checks import problems_of
from sweep_faults import errors_of, lasting, signals_of
from sweep_jobs import all_jobs

passed = collections.Counter()


def inject(job, fault):
    """Runs one case. Returns its result, or None if the run does not end."""
    try:
        result = job.run_with(fault)
        problems = problems_of(job, fault, result)
    except subprocess.TimeoutExpired:
        result = None
        problems = ["does not end"]
    passed[job.name] += not problems
    if problems:
        print(f"FAILED {job.name}: {fault.name} {fault.when} {fault.what}\n  " + "\n  ".join(problems), flush=True)
    return result


def sweep_call(job, call, number):
    for fault in signals_of(call, number):
        if job.caller is None or fault.signal != signal.SIGKILL:
            inject(job, fault)
    for fault in errors_of(call) if job.caller is None else []:
        result = inject(job, fault)
        repeated = lasting(fault, result) if result else None
        if repeated:
            inject(job, repeated)


def main():
    mine, workers = int(sys.argv[1]), int(sys.argv[2])
    set_up_process()
    for job in all_jobs():
        for number, call in enumerate(job.record()):
            if zlib.crc32(f"{call.name} {call.ordinal}".encode()) % workers == mine:
                sweep_call(job, call, number)
        print(f"passed {passed[job.name]} {job.name}", flush=True)


main()
