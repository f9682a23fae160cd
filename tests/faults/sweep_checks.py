"""The checks of a run in which the fault sweep injected a fault. Each returns the problems it finds."""

import fnmatch
import signal

from lab import beside, calls_of, get, is_one_line, mode_of, run, signal_name

OLD, NEW, EMPTY, OTHER = "OLD", "NEW", "EMPTY", "OTHER"
SCANNER_MESSAGE = b"input in flex scanner failed\n"


def problems_of(job, fault, result):
    left = beside(job.target)
    found = target_problems(job) + remaining(path for path in left if not fnmatch.fnmatch(path, f"{job.target}.??????"))
    found += [f"standard output: {result.output!r}"] if result.output else []
    if fault.signal == signal.SIGKILL:
        return found + kill_problems(job, result, left)
    if fault.signal is not None:
        return found + remaining(left) + signal_problems(job, fault, result)
    if "INJECTED" not in result.trace:
        return ["the fault was not injected"]
    if result.status == 0:
        return found + remaining(left) + success_problems(job, fault, result)
    return found + failure_problems(job, fault, result, left)


def state_of(job):
    now = get(job.target)
    if now == job.new:
        return NEW
    if now == job.before:
        return OLD
    return EMPTY if now == b"" and job.before is None else OTHER


def target_problems(job):
    state = state_of(job)
    if state == OTHER:
        return [f"the target is neither OLD nor NEW: {get(job.target)[:80]!r}"]
    return mode_problems(job.target) if state == NEW and job.new is not None else []


def mode_problems(path):
    return [] if mode_of(path) == 0o644 else [f"{path} has mode {mode_of(path):04o}"]


def remaining(paths):
    paths = list(paths)
    return [f"left beside the target: {paths}"] if paths else []


def kill_problems(job, result, left):
    found = remaining(left[1:])
    if result.status != -signal.SIGKILL:
        found.append(f"ended with {result.status}")
    expected = job.again if state_of(job) == NEW else job.new
    following = run(job.command)
    if (following.status, following.error, beside(job.target)) != (0, b"", left) or get(job.target) != expected:
        found.append(f"the next run: {following}, target {state_of(job)}, beside it {beside(job.target)}")
    return found


def signal_problems(job, fault, result):
    found = [f"a message: {result.error!r}"] if result.error else []
    if len(calls_of(result.trace)) < int(fault.when):
        found.append("the run has no such call")
    if fault.name != "exit_group" and job.caller != "block" and f"--- {signal_name(fault.signal)} " not in result.trace:
        found.append("the signal was not injected")
    # During exit_group a signal may be too late to end the run.
    may_succeed = job.caller is not None or fault.name == "exit_group"
    if result.status == 0 and may_succeed:
        return found + ([] if state_of(job) == NEW else [f"exit status 0, but the target is {state_of(job)}"])
    if result.status != -fault.signal or job.caller:
        found.append(f"ended with {result.status}")
    return found


def success_problems(job, fault, result):
    found = ["the error is ignored"] if fault.must_fail else []
    found += [] if state_of(job) == NEW else [f"exit status 0, but the target is {state_of(job)}"]
    return found + ([f"a message: {result.error!r}"] if result.error else [])


def failure_problems(job, fault, result, left):
    found = [] if is_one_line(result.error) else [f"the error message is not exactly one line: {result.error!r}"]
    if result.status != (2 if result.error == SCANNER_MESSAGE else 1):
        found.append(f"exit status {result.status}")
    if (fault.name, fault.what) == ("read", "error=EINTR"):
        found.append("the interrupted read is not repeated")
    if job.new != job.before and (state_of(job) == NEW) != fault.too_late:
        found.append(f"exit status {result.status}, but the target is {state_of(job)}")
    if fault.name != "rename":
        return found + remaining(left)
    # After a failed rename an administrator can still put the new file in place.
    if [get(path) for path in left] != [job.new]:
        return [*found, f"not exactly one complete temporary file: {left}"]
    return found + mode_problems(left[0])
