"""Copies the files that runs and the next rotation would change or delete."""

import collections
import contextlib
import ctypes
import errno
import os
import shutil
import stat
from collections.abc import Iterator

from companions.changes import FILE_TYPES, Changes
from companions.command import Failure
from companions.machine import Machine
from companions.next_rotation import Deletion
from companions.program import HOSTS_DIRECTORY, SYSTEM_DIRECTORY
from companions.text import human, printable, shell_quoted
from companions.view import libc, system_call

PIECE = 1 << 20
OVERHEAD = 1 << 13  # For each file and its directories.

# From <asm-generic/unistd.h> and <linux/openat2.h>.
SYS_OPENAT2 = 437
RESOLVE_NO_SYMLINKS = 4


def new_directory(path: str) -> str:
    """Returns the path of the directory without links. Raises Failure if it cannot be made."""
    path = path.rstrip("/")
    if os.path.lexists(path or "/"):
        raise Failure(f"{printable(path or '/')} exists; a backup needs a new directory")
    parent = os.path.realpath(os.path.dirname(path) or ".")
    if not os.path.isdir(parent) or (parent + "/").startswith(("/proc/", "/sys/")):
        raise Failure(f"{printable(path)} cannot be made")
    return os.path.join(parent, os.path.basename(path))


def back_up(machine: Machine, changes: Changes, deletions: list[Deletion], directory: str) -> list[str]:
    """Makes the backup. Returns lines about it. If it fails, nothing is left of it."""
    old = [change.path for change in changes.files if change.old_status]
    sources, notes = [], []
    for path in old + [path for path, _ in changes.copies] + [deletion.path for deletion in deletions]:
        status = os.lstat(machine.real(path))
        if stat.S_ISLNK(status.st_mode) and path in old:
            # An administrator made this link. The run replaces it with a file that has the text to which it leads.
            with contextlib.suppress(OSError):
                status = os.stat(machine.real(path))
        if stat.S_ISREG(status.st_mode):
            sources.append((path, status))
        else:
            notes.append(f"not in the backup: {printable(path)} ({FILE_TYPES[stat.S_IFMT(status.st_mode)]})")
    if not sources:
        return [*notes, "There is nothing to back up."]
    size = sum(status.st_blocks * 512 + OVERHEAD for _, status in sources)
    space = os.statvfs(os.path.dirname(directory))
    if size > space.f_bavail * space.f_frsize:
        raise Failure(f"the backup needs {human(size)}, and {human(space.f_bavail * space.f_frsize)} are free")
    os.umask(0o077)
    # Whatever ends this process, an incomplete backup does not look like a complete one.
    partial = directory + ".partial"
    os.mkdir(partial)
    try:
        for path, _ in sources:
            copy(machine, path, path in old, partial + path)
        sync(partial)
        os.rename(partial, directory)
    except BaseException:
        shutil.rmtree(partial)
        raise
    count = "1 file" if len(sources) == 1 else f"{len(sources)} files"
    notes.append(f"backup: {count} ({human(sum(status.st_size for _, status in sources))}) in {printable(directory)}")
    return notes + list(instructions(changes, bool(changes.copies or deletions), directory))


def instructions(changes: Changes, copies: bool, directory: str) -> Iterator[str]:
    """Yields how to undo the changes."""
    folders = collections.defaultdict(list)
    for change in changes.files:
        if change.old_status:
            folders[os.path.dirname(change.path)].append(change.path)
    for folder, paths in folders.items():
        if folder in (HOSTS_DIRECTORY, SYSTEM_DIRECTORY) and (len(paths) > 1 or not paths[0].isprintable()):
            yield f"To put the rotation files back: cp -a {shell_quoted(directory + folder)}/* {folder}/"
        else:
            yield from (f"To put a rotation file back: cp -a {shell_quoted(directory + path)} {shell_quoted(path)}" for path in paths)
    for change in [change for change in changes.files if not change.old_status and change.path.isprintable()][:1]:
        name = change.path.removeprefix(HOSTS_DIRECTORY + "/")
        yield f"To undo a new rotation file, for example: tavek-logrotate {shell_quoted(name)} off"
    if copies:
        yield "A rotation renumbers copies, so do not put them back under their old numbers after one."


def copy(machine: Machine, path: str, is_rotation_file: bool, target: str) -> None:
    """Copies a file with its owner, mode and times. Holes remain holes."""
    os.makedirs(os.path.dirname(target), exist_ok=True)
    with contextlib.ExitStack() as files:
        source = os.open(machine.real(path), os.O_RDONLY | os.O_CLOEXEC) if is_rotation_file else open_safely(machine, path)
        files.callback(os.close, source)
        copied = os.open(target, os.O_WRONLY | os.O_CREAT | os.O_EXCL | os.O_CLOEXEC, 0o600)
        files.callback(os.close, copied)
        status = os.fstat(source)
        if not stat.S_ISREG(status.st_mode):
            raise Failure(f"{printable(path)} was replaced in the meantime")
        copy_data(source, copied)
        os.ftruncate(copied, status.st_size)
        os.fchown(copied, status.st_uid, status.st_gid)
        os.fchmod(copied, stat.S_IMODE(status.st_mode))
        os.utime(copied, ns=(status.st_atime_ns, status.st_mtime_ns))


def copy_data(source: int, target: int) -> None:
    """Copies the data of a file in pieces, to the same places. Holes remain holes."""
    place = 0
    while True:
        try:
            place = os.lseek(source, place, os.SEEK_DATA)
        except OSError as error:
            if error.errno == errno.ENXIO:  # There is only a hole behind this place.
                return
            raise
        os.lseek(target, place, os.SEEK_SET)
        size = os.lseek(source, place, os.SEEK_HOLE) - place
        while size > 0 and (sent := os.sendfile(target, source, place, min(size, PIECE))) > 0:
            place, size = place + sent, size - sent


def open_safely(machine: Machine, path: str) -> int:
    """Opens a file of a site owner, who may replace it or a directory above it with a link at any time."""
    mount = machine.mount_of(path)
    how = (ctypes.c_uint64 * 3)(os.O_RDONLY | os.O_CLOEXEC | os.O_NONBLOCK | os.O_NOCTTY, 0, RESOLVE_NO_SYMLINKS)
    name = os.path.relpath(path, mount.path)
    fd: int = libc.syscall(SYS_OPENAT2, mount.fd, os.fsencode(name), how, ctypes.c_size_t(ctypes.sizeof(how)))
    if fd < 0:
        number = ctypes.get_errno()
        raise OSError(number, os.strerror(number), path)
    return fd


def sync(directory: str) -> None:
    """Waits until the backup is on the disk, because the runs may follow at once."""
    fd = os.open(directory, os.O_RDONLY | os.O_DIRECTORY)
    try:
        system_call("syncfs", fd)
    finally:
        os.close(fd)
