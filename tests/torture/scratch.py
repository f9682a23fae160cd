"""A sandbox on a scratch folder, with the files of this folder in its /tmp/torture, and a count of what it reports."""

import collections
import os
import pathlib
import shutil
import subprocess
import tempfile

TOP = pathlib.Path(__file__).resolve().parent.parent.parent
HERE = pathlib.Path(__file__).resolve().parent
SANDBOX = str(TOP / "tools" / "sandbox")
INSIDE = "/tmp/torture"


def memory_or_default():
    """Where scratch folders are made: in memory where that is possible, so that thousands of syncs cost nothing."""
    return "/dev/shm" if os.access("/dev/shm", os.W_OK) else None


class Sandbox:
    """As a context manager, owns the scratch folder."""

    def __init__(self, program):
        self.program = os.path.abspath(program)
        self.root = None

    def __enter__(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="torture.", dir=memory_or_default()))
        self.root.chmod(0o755)
        shutil.copytree(HERE, self.root / INSIDE.lstrip("/"), ignore=shutil.ignore_patterns("__pycache__"))
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.root)

    def add(self, file, name):
        """Copies a file of the machine beside the scripts."""
        shutil.copy(file, self.root / INSIDE.lstrip("/") / name)

    def start(self, *command):
        """Starts a command inside. What it prints on standard output is read from the process that is returned."""
        return subprocess.Popen([SANDBOX, "--program", self.program, str(self.root), *command],
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True, errors="backslashreplace")

    def can_run(self, *command):
        """Why a command does not run inside; empty when it does."""
        if shutil.which("bwrap") is None:
            return "there is no bwrap"
        result = subprocess.run([SANDBOX, str(self.root), *command],
                                stdin=subprocess.DEVNULL, capture_output=True, text=True)
        return "" if result.returncode == 0 else result.stderr.strip() or f"exit status {result.returncode}"


class Tally:
    """Counts what workers report, line by line, and repeats what a person should see."""

    def __init__(self):
        self.rows = collections.Counter()  # What passed, by the name of its row.
        self.failed = self.skipped = 0

    def take_all(self, worker):
        for line in worker.stdout:
            self.take(line)
        if worker.wait() != 0:
            self.failed += 1
            print(f"FAILED a worker ended with {worker.returncode}")

    def take(self, line):
        if line.startswith("passed "):
            _, count, name = line.rstrip("\n").split(" ", 2)
            self.rows[name] += int(count)
            return
        self.failed += line.startswith("FAILED ")
        self.skipped += line.startswith("SKIPPED ")
        print(line, end="", flush=True)

    def close(self, expected_skips):
        """Prints the last line and returns the exit status."""
        if self.skipped != expected_skips:
            print(f"!!! {self.skipped} skipped, but {expected_skips} expected: this run does not show what it should")
        print(f"{self.rows.total()} passed, {self.failed} failed, {self.skipped} skipped")
        return 0 if self.failed == 0 and self.skipped == expected_skips else 1
