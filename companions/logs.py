"""The logs on the machine: what stands in their place, and whether they have been rotated.

Site owners choose the names and the number of files here, so a directory is read up to a limit.
"""

import array
import bisect
import contextlib
import fcntl
import fnmatch
import itertools
import os
import re
import stat
import time
from collections.abc import Iterator
from typing import NamedTuple

from companions.findings import listed

LARGEST_DIRECTORY = 5000
FILE_TYPES = {stat.S_IFLNK: "a link", stat.S_IFDIR: "a directory", stat.S_IFIFO: "a FIFO", stat.S_IFSOCK: "a socket"}
DAY = 86400
# Timers have a tolerance, and scripts take time.
TOLERANCE = 3 * 3600

# From <linux/fs.h>.
FS_IOC_GETFLAGS, FS_IMMUTABLE_FL, FS_APPEND_FL = 0x80086601, 0x10, 0x20

COPY_SUFFIX = re.compile(r"[.-]\d[\d.-]*(\.(gz|bz2|xz|zst))?")
# The dates of the logs of Apache, nginx, PHP and others: 22/Nov/2026, 22-Nov-2026, 2026-11-22, 2026/11/22.
DATE = re.compile(r"\d\d?[/-][A-Z][a-z]{2}[/-]\d{4}|\d{4}[/-]\d\d[/-]\d\d")
# Like them: Nov 22 10:00:00.123456 2026.
LONG_DATE = re.compile(r"([A-Z][a-z]{2}) +(\d\d?) [\d:.]{8,15} (\d{4})")


class Schedule(NamedTuple):
    """When logrotate rotates the logs of a stanza: after `period` seconds, or if they have `size` bytes."""

    period: float
    size: int
    minimum: int
    has_age: bool  # that a log must reach first
    olddir: str | None
    always: bool  # makes a copy in each period, even of an empty log


class Directories:
    """The names in log directories, read once. None stands for a directory with too many."""

    def __init__(self) -> None:
        self.names: dict[str, list[str] | None] = {}
        self.statuses: dict[str, os.stat_result | None] = {}

    def read(self, folder: str) -> list[str] | None:
        if folder not in self.names:
            names: list[str] = []
            with contextlib.suppress(OSError), os.scandir(folder) as entries:
                names = sorted(entry.name for entry in itertools.islice(entries, LARGEST_DIRECTORY + 1))
            self.names[folder] = names if len(names) <= LARGEST_DIRECTORY else None
        return self.names[folder]

    def folders(self, pattern: str) -> list[str]:
        """Returns the directories of the paths that match."""
        folder = os.path.dirname(pattern)
        return self.matching(folder) if is_pattern(folder) else [folder]

    def matching(self, pattern: str) -> list[str]:
        """Returns the paths that match, like glob(3)."""
        base = os.path.basename(pattern)
        return [path for folder in self.folders(pattern) for path in self.matching_in(folder, base)]

    def matching_in(self, folder: str, base: str) -> list[str]:
        if not is_pattern(base):
            return [f"{folder}/{base}"] if os.path.lexists(f"{folder}/{base}") else []
        return [f"{folder}/{name}" for name in self.read(folder) or [] if fnmatch.fnmatchcase(name, base) and
                (name[0] != "." or base[0] == ".")]

    def copies(self, folder: str, base: str) -> Iterator[tuple[str, os.stat_result]]:
        """Yields the files with names that start with that of a log: its copies, in whatever form the stanza gives to dates."""
        names = self.read(folder) or []
        for index in range(bisect.bisect_right(names, base), len(names)):
            if not names[index].startswith(base):
                return
            if status := self.status(f"{folder}/{names[index]}"):
                yield f"{folder}/{names[index]}", status

    def status(self, path: str) -> os.stat_result | None:
        if path not in self.statuses:
            self.statuses[path] = None
            with contextlib.suppress(OSError):
                self.statuses[path] = os.lstat(path)
        return self.statuses[path]


def is_pattern(path: str) -> bool:
    return any(c in path for c in "*?[")


class Logs:
    """The logs in a directory with names that match `base`."""

    def __init__(self, folder: str, base: str, directories: Directories):
        self.folder = folder
        self.directories = directories
        self.logs = {path: status for path in directories.matching_in(folder, base) if (status := directories.status(path))}

    def obstacles(self) -> Iterator[str]:
        """Yields what cannot be rotated, or what stands in the way of a copy."""
        for kind, name in FILE_TYPES.items():
            if wrong := [path for path, status in self.logs.items() if stat.S_IFMT(status.st_mode) == kind]:
                yield f"logrotate does not rotate {name}: {listed(wrong)}"
        if fixed := [path for path, status in self.logs.items() if stat.S_ISREG(status.st_mode) and is_immutable(path)]:
            yield f"immutable or append-only, see chattr(1): {listed(fixed)}"
        copies = [copy for path in self.logs for copy, status in self.directories.copies(*os.path.split(path))
                  if stat.S_ISDIR(status.st_mode) and COPY_SUFFIX.fullmatch(copy, len(path))]
        if copies:
            yield f"a directory stands in place of a rotated copy: {listed(copies)}"

    def overdue(self, schedule: Schedule) -> list[tuple[float, str]]:
        """Returns the logs that logrotate should have rotated more than a period ago, each after the time of its first line.

        The state file cannot tell, because logrotate notes a failed rotation like any other.
        """
        now, late = time.time(), list[tuple[float, str]]()
        limit = max(2 * schedule.period, 2 * DAY) + TOLERANCE
        for path, status in self.logs.items():
            if schedule.has_age or not stat.S_ISREG(status.st_mode) or status.st_size <= max(schedule.size, schedule.minimum - 1):
                continue
            if not schedule.size and now - status.st_mtime > max(schedule.period, DAY):
                continue
            begin = date_at(path, schedule.size)
            if begin is not None and now - begin <= limit + DAY:
                continue
            folder = os.path.join(self.folder, schedule.olddir or "")
            copies = self.directories.copies(folder, os.path.basename(path))
            newest = max((copy.st_mtime for _, copy in copies), default=None)
            if begin is None:
                # The log may have been empty until now.
                begin = newest if newest and schedule.always else status.st_mtime
            if now - max(begin, newest or 0) > limit:
                late.append((begin, path))
        return late


def open_safely(path: str, flags: int) -> int:
    return os.open(path, flags | os.O_NONBLOCK | os.O_NOFOLLOW)


def is_immutable(path: str) -> bool:
    """Returns whether the file cannot be truncated, renamed or removed, or no file in the directory."""
    flags = array.array("l", [0])
    with contextlib.suppress(OSError):
        fd = open_safely(path, os.O_RDONLY)
        try:
            fcntl.ioctl(fd, FS_IOC_GETFLAGS, flags)
        finally:
            os.close(fd)
    return bool(flags[0] & (FS_IMMUTABLE_FL | FS_APPEND_FL))


def date_at(path: str, offset: int) -> float | None:
    """Returns the date of the line of a log at `offset`, or of one that soon follows, or None if they have none."""
    with contextlib.suppress(OSError, ValueError):
        with open(path, "rb", opener=open_safely) as file:
            file.seek(max(0, offset - 4096))
            before, after = file.read(min(offset, 4096)), file.read(4096)
        text = (before[before.rfind(b"\n") + 1:] + after).decode(errors="replace")
        if match := DATE.search(LONG_DATE.sub(r"\2-\1-\3", text)):
            date = match[0].replace("/", "-")
            return time.mktime(time.strptime(date, "%d-%b-%Y" if date.upper() != date else "%Y-%m-%d"))
    return None
