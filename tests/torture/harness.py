"""Common code of the tools that cause faults: it runs workers in sandboxes and counts the results they report."""

import collections
import contextlib
import ctypes
import os
import pathlib
import shutil
import subprocess
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))

from lib.sandbox import TOP, arguments, scratch  # noqa: E402

INSIDE = "/tmp/torture"
CLONE_NEWNS = 0x20000


@contextlib.contextmanager
def torture_sandbox(program):
    """A sandbox whose folder INSIDE is a copy of tests/torture."""
    with scratch(program) as sandbox:
        shutil.copytree(HERE, sandbox.path(INSIDE), ignore=shutil.ignore_patterns("__pycache__"))
        yield sandbox


def start_inside(sandbox, script, *arguments):
    """Starts a Python script of tests/torture in the sandbox."""
    return start(sandbox.command("python3", f"{INSIDE}/{script}", *arguments))


def tracing_problem(sandbox):
    """Returns the reason why strace cannot run in the sandbox, or an empty string if it can."""
    if shutil.which("bwrap") is None:
        return "bwrap is not installed"
    result = sandbox.run("strace", "-q", "-o", "/dev/null", "true")
    return "" if result.returncode == 0 else result.stderr.decode().strip() or f"exit status {result.returncode}"


def enter_private_mount_namespace():
    """After this call, mounts made by this process and its children are invisible to all other processes.

    Returns an empty string, or the reason if this is not possible.
    """
    if os.geteuid() != 0:
        return "not run by root"
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.unshare(CLONE_NEWNS) != 0:
        return f"no private mount namespace: {os.strerror(ctypes.get_errno())}"
    subprocess.run(["mount", "--make-rprivate", "/"], check=True)
    return ""


def start(command):
    return subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True,
                            errors="backslashreplace")


class Tally:
    """Counts the lines "passed COUNT NAME", "FAILED ..." and "SKIPPED ..."; prints all but the first kind."""

    def __init__(self):
        self.passed = collections.Counter()
        self.failed = self.skipped = 0

    def take_all(self, worker):
        for line in worker.stdout:
            if line.startswith("passed "):
                _, count, name = line.rstrip("\n").split(" ", 2)
                self.passed[name] += int(count)
                continue
            self.failed += line.startswith("FAILED ")
            self.skipped += line.startswith("SKIPPED ")
            print(line, end="", flush=True)
        if worker.wait() != 0:
            self.failed += 1
            print(f"FAILED a worker ended with {worker.returncode}")

    def skip(self, what, reason):
        self.skipped += 1
        print(f"SKIPPED {what}: {reason}")

    def finish(self, expected_skips):
        """Prints the totals and returns the exit status."""
        print(f"{self.passed.total()} passed, {self.failed} failed, {self.skipped} skipped")
        if self.skipped != expected_skips:
            print(f"!!! {self.skipped} skipped, but {expected_skips} expected")
        return 0 if self.failed == 0 and self.skipped == expected_skips else 1


def argument_parser(description):
    parser = arguments(description)
    parser.add_argument("--expect-skips", type=int, default=0)
    return parser


def main(parser, work):
    """Runs `work`, which adds to a tally, and returns the exit status. For --help, only prints the help and exits."""
    options = parser.parse_args()
    subprocess.run([TOP / "tools" / "install-packages", "tests"], check=True)
    tally = Tally()
    begin = time.monotonic()
    work(options, tally)
    print(f"{time.monotonic() - begin:.1f} s")
    return tally.finish(options.expect_skips)
