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
    has_copies: bool  # beside the logs
    has_age: bool  # that a log must reach first


class Directories:
    """The names in log directories, read once. None stands for a directory with too many."""

    def __init__(self) -> None:
        self.names: dict[str, list[str] | None] = {}

    def read(self, folder: str) -> list[str] | None:
        if folder not in self.names:
            names: list[str] = []
            with contextlib.suppress(OSError), os.scandir(folder) as entries:
                names = sorted(entry.name for entry in itertools.islice(entries, LARGEST_DIRECTORY + 1))
            self.names[folder] = names if len(names) <= LARGEST_DIRECTORY else None
        return self.names[folder]

    def matching(self, pattern: str) -> list[str]:
        """Returns the paths that match, like glob(3)."""
        if not is_pattern(pattern):
            return [pattern] if os.path.lexists(pattern) else []
        folder, base = os.path.split(pattern)
        paths = []
        for each in self.matching(folder) if is_pattern(folder) else [folder]:
            if is_pattern(base):
                paths += [f"{each}/{name}" for name in self.read(each) or [] if fnmatch.fnmatchcase(name, base) and
                          (name[0] != "." or base[0] == ".")]
            else:
                paths += self.matching(f"{each}/{base}")
        return paths

    def copies_of(self, log: str) -> Iterator[tuple[str, os.stat_result]]:
        folder, base = os.path.split(log)
        names = self.read(folder) or []
        for index in range(bisect.bisect_right(names, base), len(names)):
            if not names[index].startswith(base):
                return
            if COPY_SUFFIX.fullmatch(names[index], len(base)):
                with contextlib.suppress(OSError):
                    yield f"{folder}/{names[index]}", os.lstat(f"{folder}/{names[index]}")


def is_pattern(path: str) -> bool:
    return any(c in path for c in "*?[")


class Logs:
    """The logs of one pattern of a stanza."""

    def __init__(self, pattern: str, directories: Directories):
        self.logs: dict[str, os.stat_result] = {}
        self.copies: dict[str, list[tuple[str, os.stat_result]]] = {}
        for path in directories.matching(pattern):
            with contextlib.suppress(OSError):
                self.logs[path] = os.lstat(path)
                self.copies[path] = list(directories.copies_of(path))

    def are_old(self) -> bool:
        """Returns whether there is a log or a copy that logrotate must have seen if it runs every day."""
        found = [status for status in self.logs.values() if status.st_size]
        found += [status for copies in self.copies.values() for _, status in copies]
        return any(time.time() - status.st_mtime > 2 * DAY for status in found)

    def obstacles(self) -> Iterator[str]:
        """Yields what cannot be rotated, or what stands in the way of a copy."""
        for kind, name in FILE_TYPES.items():
            if wrong := [path for path, status in self.logs.items() if stat.S_IFMT(status.st_mode) == kind]:
                yield f"logrotate does not rotate {name}: {listed(wrong)}"
        if fixed := [path for path, status in self.logs.items() if stat.S_ISREG(status.st_mode) and is_immutable(path)]:
            yield f"immutable or append-only, see chattr(1): {listed(fixed)}"
        copies = [path for copies in self.copies.values() for path, status in copies if stat.S_ISDIR(status.st_mode)]
        if copies:
            yield f"a directory stands in place of a rotated copy: {listed(copies)}"

    def overdue(self, schedule: Schedule, dates: dict[str, float]) -> list[tuple[float, str]]:
        """Returns the logs that logrotate should have rotated more than a period ago, each after its last rotation.

        `dates` is what the state file says. Copies count more, because logrotate notes a failed rotation like any other.
        """
        now, late = time.time(), list[tuple[float, str]]()
        limit = max(2 * schedule.period, 2 * DAY) + TOLERANCE
        for path, status in self.logs.items():
            if schedule.has_age or not stat.S_ISREG(status.st_mode) or status.st_size <= max(schedule.size, schedule.minimum - 1):
                continue
            if not schedule.size and now - status.st_mtime > max(schedule.period, DAY):
                continue
            copies = [copy.st_mtime for _, copy in self.copies[path]] if schedule.has_copies else []
            last = max(copies, default=dates.get(path))
            if last is not None and now - last > limit:
                # A log that was empty at the last run, or small, has become due since.
                begin = date_at(path, schedule.size)
                if begin is None or now - begin > limit:
                    late.append((last, path))
        return late


def open_safely(path: str, flags: int) -> int:
    return os.open(path, flags | os.O_NONBLOCK | os.O_NOFOLLOW)


def is_immutable(path: str) -> bool:
    """Returns whether the file cannot be truncated, renamed or removed."""
    flags = array.array("l", [0])
    with contextlib.suppress(OSError):
        with open(path, "rb", 0, opener=open_safely) as file:
            fcntl.ioctl(file, FS_IOC_GETFLAGS, flags)
    return bool(flags[0] & (FS_IMMUTABLE_FL | FS_APPEND_FL))


def date_at(path: str, offset: int) -> float | None:
    """Returns the date of the first line of a log after `offset` that has one, or None if there is none nearby."""
    with contextlib.suppress(OSError, ValueError):
        with open(path, "rb", opener=open_safely) as file:
            file.seek(offset)
            match = DATE.search(LONG_DATE.sub(r"\2-\1-\3", file.read(4096).decode(errors="replace")))
        if match:
            date = match[0].replace("/", "-")
            return time.mktime(time.strptime(date, "%d-%b-%Y" if date.upper() != date else "%Y-%m-%d")) + DAY
    return None
