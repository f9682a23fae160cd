"""Common code of the tools that cause faults: it runs workers in sandboxes and counts the results they report."""

import argparse
import collections
import ctypes
import os
import pathlib
import shutil
import subprocess
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
TOP = HERE.parent.parent
INSIDE = "/tmp/torture"
CLONE_NEWNS = 0x20000


class Sandbox:
    """A context manager that owns the scratch folder of a sandbox. Its folder INSIDE is a copy of tests/torture."""

    def __init__(self, program):
        self.program = os.path.abspath(program)
        self.root = None

    def __enter__(self):
        # In memory if possible, where fsync takes no time.
        memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="torture.", dir=memory))
        self.root.chmod(0o755)
        shutil.copytree(HERE, self.path(INSIDE), ignore=shutil.ignore_patterns("__pycache__"))
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.root)

    def path(self, inside):
        """Converts a path inside the sandbox to the path of the same file outside."""
        return self.root / inside.lstrip("/")

    def command(self, *command):
        return [str(TOP / "tools" / "sandbox"), "--program", self.program, str(self.root), *command]

    def start(self, script, *arguments):
        """Starts a Python script of tests/torture in the sandbox."""
        return start(self.command("python3", f"{INSIDE}/{script}", *arguments))

    def tracing_problem(self):
        """Returns the reason why strace cannot run in the sandbox, or an empty string if it can."""
        if shutil.which("bwrap") is None:
            return "bwrap is not installed"
        result = subprocess.run(self.command("strace", "-q", "-o", "/dev/null", "true"),
                                stdin=subprocess.DEVNULL, capture_output=True, text=True)
        return "" if result.returncode == 0 else result.stderr.strip() or f"exit status {result.returncode}"


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
    parser = argparse.ArgumentParser(description=description, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", default=str(TOP / "build" / "release" / "src" / "tavek-logrotate"))
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
