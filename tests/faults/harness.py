"""Common code of the tools that cause faults: it runs workers in sandboxes and counts the results they report."""

import argparse
import collections
import contextlib
import ctypes
import os
import pathlib
import shutil
import subprocess
import sys
import time
from collections.abc import Callable, Iterator

HERE = pathlib.Path(__file__).resolve().parent

sys.path.insert(0, str(HERE.parent))

from lib.report import Report  # noqa: E402
from lib.sandbox import Sandbox, scratch  # noqa: E402

INSIDE = "/tmp/torture"
CLONE_NEWNS = 0x20000


@contextlib.contextmanager
def torture_sandbox(program: pathlib.Path) -> Iterator[Sandbox]:
    """A sandbox whose folder INSIDE is a copy of tests/faults."""
    with scratch(program) as sandbox:
        shutil.copytree(HERE, sandbox.path(INSIDE), ignore=shutil.ignore_patterns("__pycache__"))
        yield sandbox


def start_inside(sandbox: Sandbox, script: str, *arguments: str) -> "subprocess.Popen[str]":
    """Starts a Python script of tests/faults in the sandbox."""
    return start(sandbox.command("python3", f"{INSIDE}/{script}", *arguments))


def tracing_problem(sandbox: Sandbox) -> str:
    """Returns the reason why strace cannot run in the sandbox, or an empty string if it can."""
    if shutil.which("bwrap") is None:
        return "bwrap is not installed"
    result = sandbox.run("strace", "-q", "-o", "/dev/null", "true")
    return "" if result.returncode == 0 else result.stderr.decode().strip() or f"exit status {result.returncode}"


def enter_private_mount_namespace() -> str:
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


def start(command: list[str]) -> "subprocess.Popen[str]":
    return subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True,
                            errors="backslashreplace")


class Tally(Report):
    """Adds the lines "passed COUNT NAME", "FAILED ..." and "SKIPPED ..." of workers; prints all but the first kind."""

    def __init__(self) -> None:
        super().__init__()
        self.passed_by_name: collections.Counter[str] = collections.Counter()

    def take_all(self, worker: "subprocess.Popen[str]") -> None:
        assert worker.stdout
        for line in worker.stdout:
            if line.startswith("passed "):
                _, count, name = line.rstrip("\n").split(" ", 2)
                self.passed_by_name[name] += int(count)
                self.passed += int(count)
                self.show_progress()
                continue
            self.failed += line.startswith("FAILED ")
            self.skipped += line.startswith("SKIPPED ")
            print(line, end="", flush=True)
        if worker.wait() != 0:
            self.tell("a worker", [f"ends with {worker.returncode}"])


def main(parser: argparse.ArgumentParser, work: Callable[[argparse.Namespace, Tally], None]) -> int:
    """Runs `work`, which adds to a tally, and returns the exit status. For --help, only prints the help and exits."""
    options = parser.parse_args()
    tally = Tally()
    begin = time.monotonic()
    work(options, tally)
    print(f"{time.monotonic() - begin:.1f} s")
    return tally.finish()
