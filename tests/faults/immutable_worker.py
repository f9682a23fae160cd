"""Runs the tool on immutable and append-only files, outside the sandbox: only the machine's root user can set these attributes.

The files are on an ext4 image that is mounted only for this process and its children. Arguments: the program, and the
words that select rows.
"""

import contextlib
import subprocess
import sys

from harness import enter_private_mount_namespace, torture_sandbox
from lab import DAILY, HOSTS, LOGS, NEW, OLD, TARGET, TOOL, is_one_line, run
from rows import Skip, row, run_rows

PROGRAM = sys.argv[1]


@contextlib.contextmanager
def ext4_on(folder, image):
    """Mounts a new ext4 image on a folder."""
    image.write_bytes(bytes(8 << 20))
    for command in (["mkfs.ext4", "-q", image], ["mount", "-o", "loop", image, folder]):
        result = run(command)
        if result.status != 0:
            raise Skip(f"{command[0]}: {result.error.decode().strip()}")
    try:
        yield
    finally:
        subprocess.run(["umount", folder], check=True)


@contextlib.contextmanager
def attribute(letter, path):
    subprocess.run(["chattr", f"+{letter}", path], check=True)
    try:
        yield
    finally:
        subprocess.run(["chattr", f"-{letter}", path], check=True)


@row("an immutable or append-only file")
def immutable_file(row):
    problem = enter_private_mount_namespace()
    if problem:
        raise Skip(problem)
    with torture_sandbox(PROGRAM) as sandbox:
        with ext4_on(sandbox.path(HOSTS), sandbox.root / "disk"):
            as_target(row, sandbox)
            behind_link(row, sandbox)


def as_target(row, sandbox):
    target, surplus = sandbox.path(TARGET), sandbox.path(f"{LOGS}/error_log.9")
    target.write_bytes(OLD)
    surplus.parent.mkdir(parents=True, exist_ok=True)
    surplus.touch()
    for letter in "ia":
        with attribute(letter, target):
            result = run(sandbox.command(TOOL, *DAILY))
        expected = is_one_line(result.error, f"^Failed to open {TARGET}: Operation not permitted$")
        row.check(result.status == 1 and expected, f"{letter} as target: {result}")
        unchanged = target.read_bytes() == OLD and not list(target.parent.glob("example.com.*"))
        row.check(unchanged, f"{letter} as target: wrong files")
        row.check(surplus.exists(), f"{letter} as target: a rotated copy was deleted")


def behind_link(row, sandbox):
    """The tool must replace the link, which is not immutable itself."""
    target, pointee = sandbox.path(TARGET), sandbox.path(f"{HOSTS}/pointee")
    target.rename(pointee)
    target.symlink_to("pointee")
    with attribute("i", pointee):
        result = run(sandbox.command(TOOL, *DAILY))
    row.check((result.status, result.error) == (0, b""), f"through a link: {result}")
    row.check(not target.is_symlink() and target.read_bytes() == NEW, "through a link: the target is not NEW")
    row.check(pointee.read_bytes() == OLD, "through a link: the immutable file has changed")


run_rows(sys.argv[2:])
