"""The runs of the tool in which the fault sweep injects faults."""

from lab import APACHE, SYSTEM_FILES, TARGET, TOOL, UNCLOSED, beside, calls_of, get, reset, run, stanzas, traced
from sweep_faults import injection_of

COMMENTS = b"# The rotation of this host is not set up yet.\n"
LARGE = stanzas(1300)  # Larger than every buffer, so it is written in several parts.

TIME = ["example.com", "on", "by_time", "daily", "5", "true", "admin@example.com", "--anonymize-ip=true"]
SIZE = ["example.com", "on", "by_size", "10485760", "7", "false"]
OFF = ["example.com", "off"]
CATEGORY = [*APACHE, "--anonymize-ip=true"]


class Job:
    """A command line and the content of its target before the run.

    `caller` is "ignore" if the caller ignores all signals, "block" if it blocks them, and otherwise None.
    """

    def __init__(self, name, target, before, arguments, caller=None):
        self.name, self.target, self.before, self.caller = name, target, before, caller
        self.command = [*(["env", f"--{caller}-signal"] if caller else []), TOOL, *arguments]
        self.new = self.again = None  # The content after one and after two runs without a fault.

    def reset(self):
        reset(self.before, self.target)

    def record(self):
        """Runs without a fault. Returns the system calls of the run from the first one that names the target."""
        self.reset()
        result = traced(self.command, "-y")
        self.new = get(self.target)
        if (result.status, result.error, beside(self.target)) != (0, b"", []):
            raise RuntimeError(f"{self.name}: a run without a fault fails: {result}")
        if self.before is not None and self.new == self.before:
            raise RuntimeError(f"{self.name}: a run without a fault changes nothing")
        run(self.command)
        self.again = get(self.target)
        calls = calls_of(result.trace)
        first = next(i for i, call in enumerate(calls) if f'"{self.target}"' in call.text)
        # The C library may call getrandom again, depending on the bytes it got, so these calls differ between runs.
        return [call for call in calls[first:] if call.name != "getrandom"]

    def run_with(self, fault):
        self.reset()
        return traced(self.command, "-e", f"trace={fault.name}", "-e", injection_of(fault), timeout=30)


def all_jobs():
    runs = [
        ("new host", TARGET, COMMENTS, TIME),
        ("rewrite", TARGET, LARGE, SIZE),
        ("off", TARGET, LARGE, OFF),
        ("category", SYSTEM_FILES[0], stanzas(3), CATEGORY),
    ]
    jobs = [Job(f"{name}, target {state}", target, before if state == "present" else None, arguments)
            for name, target, before, arguments in runs for state in ("present", "absent")]
    jobs.append(Job("rewrite with two scans", TARGET, UNCLOSED, SIZE))
    return jobs + [Job(f"rewrite, caller {does}s signals", TARGET, LARGE, SIZE, does) for does in ("ignore", "block")]
