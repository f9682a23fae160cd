"""Rows that need the real root of the machine: attributes of a disk's files, and another user.

The tool runs outside the sandbox here, with the absolute path of a scratch file and the status keep, which cleans no
logs, so that it touches nothing but the scratch folder.
"""

import contextlib
import os
import pathlib
import shutil
import stat
import subprocess
import tempfile

from rows import Skip, row

BEFORE = b"/var/log/a.log {\n\tdaily\n\trotate 5\n\tcompress\n\tmissingok\n\tcopytruncate\n}\n"
AFTER = BEFORE.replace(b"compress", b"nocompress")
DISK = "/var/tmp"


program = None


def use_program(path):
    global program
    program = path


class Scratch:
    """As a context manager, owns a folder on a disk with one rotation file in it."""

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="torture.", dir=DISK))
        self.folder.chmod(0o755)
        self.target = self.folder / "example.com"
        self.target.write_bytes(BEFORE)
        self.target.chmod(0o644)
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.folder)

    def keep(self, *under):
        return subprocess.run([*under, program, str(self.target), "keep"], stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, cwd="/", check=False)

    def left(self):
        return sorted(path for path in self.folder.iterdir() if path != self.target)


@contextlib.contextmanager
def attribute(letter, path):
    change = subprocess.run(["chattr", f"+{letter}", str(path)], capture_output=True, text=True, check=False)
    if change.returncode != 0:
        raise Skip(f"chattr +{letter}: {change.stderr.strip()}")
    try:
        yield
    finally:
        subprocess.run(["chattr", f"-{letter}", str(path)], check=True)


def require_root():
    if os.geteuid() != 0:
        raise Skip("not run by root")


def expect_failure(row, result, what, message):
    lines = result.stderr.splitlines()
    row.holds(result.returncode == 1, f"{what}: exit status {result.returncode}")
    row.holds(len(lines) == 1 and message in lines[0], f"{what}: {result.stderr!r}")


@row("an immutable file")
def immutable_file(row):
    require_root()
    with Scratch() as scratch:
        with attribute("i", scratch.target):
            message = f"Failed to open {scratch.target}: Operation not permitted"
            expect_failure(row, scratch.keep(), "chattr +i", message)
        row.holds(scratch.target.read_bytes() == BEFORE and not scratch.left(), f"left {scratch.left()}")


@row("a link to an immutable file")
def link_to_immutable_file(row):
    """It is the link that the rename replaces."""
    require_root()
    with Scratch() as scratch:
        pointee = scratch.folder / "pointee"
        scratch.target.rename(pointee)
        scratch.target.symlink_to(pointee)
        with attribute("i", pointee):
            result = scratch.keep()
        row.holds((result.returncode, result.stderr) == (0, ""), f"{result}")
        row.holds(not scratch.target.is_symlink() and scratch.target.read_bytes() == AFTER, "the target is not NEW")
        row.holds(pointee.read_bytes() == BEFORE and scratch.left() == [pointee], f"left {scratch.left()}")


@row("a file that may only grow")
def growing_file(row):
    """Only the rename is refused, so the whole new file stays."""
    require_root()
    with Scratch() as scratch:
        with attribute("a", scratch.target):
            expect_failure(row, scratch.keep(), "chattr +a", "cannot rename: Operation not permitted")
        left = scratch.left()
        row.holds(scratch.target.read_bytes() == BEFORE, "the target is not OLD")
        whole = len(left) == 1 and left[0].read_bytes() == AFTER and stat.S_IMODE(left[0].stat().st_mode) == 0o644
        row.holds(whole, f"left {left}")


@row("an immutable folder")
def immutable_folder(row):
    require_root()
    with Scratch() as scratch:
        with attribute("i", scratch.folder):
            expect_failure(row, scratch.keep(), "chattr +i", "Failed to open ")
        row.holds(scratch.target.read_bytes() == BEFORE and not scratch.left(), "the folder has changed")


@row("an unprivileged user")
def unprivileged_user(row):
    require_root()
    with Scratch() as scratch:
        result = scratch.keep("setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups")
        expect_failure(row, result, "another user", "Permission denied")
        row.holds(scratch.target.read_bytes() == BEFORE and not scratch.left(), "the folder has changed")
        scratch.target.unlink()
        result = scratch.keep("setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups")
        expect_failure(row, result, "another user, no file", "Failed to open ")
        row.holds(not any(scratch.folder.iterdir()), "something was created")
