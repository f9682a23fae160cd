"""Recording the system calls of a run, and running it again with a fault at one of them."""

import collections
import re
import resource
import signal
import subprocess

TRACE = "/tmp/trace"
SECONDS = 30

Call = collections.namedtuple("Call", "name ordinal text")  # The ordinal counts the calls of that name from 1.
Result = collections.namedtuple("Result", "status output error trace")


def take_default_signals():
    """A shell starts what it does in the background with signals ignored, which would be handed on to every run."""
    for number in (signal.SIGHUP, signal.SIGINT, signal.SIGTERM, signal.SIGQUIT):
        signal.signal(number, signal.SIG_DFL)


def run(command):
    """Runs a command to its end. The status is negative for a death by a signal."""
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, timeout=SECONDS,
                          preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CORE, (0, 0)))
    return done.returncode, done.stdout, done.stderr


def traced(command, *options):
    status, output, error = run(["strace", "-q", "-s", "128", "-o", TRACE, *options, *command])
    with open(TRACE, encoding="utf-8", errors="backslashreplace") as file:
        return Result(status, output, error, file.read())


def calls_of(trace):
    counts = collections.Counter()
    calls = []
    for line in trace.splitlines():
        match = re.match(r"(\w+)\(", line)
        if match:
            counts[match[1]] += 1
            calls.append(Call(match[1], counts[match[1]], line))
    return calls


def record(job):
    """A run without a fault: its result and its calls from the first mention of the target on, descriptors with paths.

    Whether the C library asks for random bytes once more depends on those that it got.
    """
    result = traced(job.command, "-y")
    calls = calls_of(result.trace)
    first = next(i for i, call in enumerate(calls) if f'"{job.target}"' in call.text)
    return result, [call for call in calls[first:] if call.name != "getrandom"]


def run_with(job, fault):
    injection = f"inject={fault.name}:{fault.what}:when={fault.when}"
    return traced(job.command, "-e", f"trace={fault.name}", "-e", injection)
