"""What runs changed in the view."""

import os
import stat
from collections.abc import Callable, Iterable, Iterator

from companions.command import Failure
from companions.text import printable
from companions.worker import run

DIFF = "/usr/bin/diff"
PIECE = 1 << 16

FILE_TYPES = {stat.S_IFLNK: "symbolic link", stat.S_IFDIR: "directory", stat.S_IFIFO: "FIFO", stat.S_IFSOCK: "socket",
              stat.S_IFCHR: "device", stat.S_IFBLK: "device"}


def files_below(top: str) -> Iterator[str]:
    """Yields the path of everything below `top` that is not a directory."""
    with os.scandir(top) as entries:
        for entry in entries:
            if entry.is_dir(follow_symlinks=False):
                yield from files_below(entry.path)
            else:
                yield entry.path


def status_of(path: str) -> os.stat_result | None:
    """Returns None if there is no file. A whiteout in the upper layer means that the run removed the file."""
    try:
        status = os.lstat(path)
    except (FileNotFoundError, NotADirectoryError):
        return None
    return None if stat.S_ISCHR(status.st_mode) and status.st_rdev == 0 else status


class Change:
    """A change of the file `path`. Its old state is in the file `old`, its new state in the file `new`."""

    def __init__(self, path: str, old: str, new: str):
        self.path = path
        self.old, self.old_status = old, status_of(old)
        self.new, self.new_status = new, status_of(new)
        self.old_text = old

    def exists(self) -> bool:
        """Returns whether anything is different.

        A file in the upper layer may be unchanged, because the overlay copies a file that is opened for appending.
        """
        if self.old_status is None or self.new_status is None:
            return self.old_status is not self.new_status
        if attributes(self.old_status) != attributes(self.new_status) or self.old_status.st_size != self.new_status.st_size:
            return True
        if not stat.S_ISREG(self.new_status.st_mode):
            return False
        with open(self.old, "rb") as old, open(self.new, "rb") as new:
            while (piece := old.read(PIECE)) == new.read(PIECE):
                if not piece:
                    return False
        return True

    def is_removal(self) -> bool:
        return self.new_status is None

    def size(self) -> int:
        return self.old_status.st_size if self.old_status and stat.S_ISREG(self.old_status.st_mode) else 0

    def text(self, colour: bool) -> str:
        """Returns the change as a diff, after a line that shows a different mode or owner."""
        old, new = self.old_status, self.new_status
        name = printable(self.path)
        head = ""
        if old is None and new is not None:
            head = f"create {name} {attributes(new)}\n"
        elif new is None and old is not None:
            head = f"remove {name} {attributes(old)}\n"
        elif old is not None and new is not None and attributes(old) != attributes(new):
            head = f"change {name} {attributes(old)} -> {attributes(new)}\n"
        # If a link is removed, the file that it names is unchanged, so no diff is needed. If a link is replaced, the
        # text at its path may change, so a diff is needed.
        if new or old and stat.S_ISREG(old.st_mode):
            head += self.difference(colour)
        return head

    def difference(self, colour: bool) -> str:
        result = run([DIFF, "--unified", "--text", "--color=" + ("always" if colour else "never"),
                      "--label", printable("a" + self.path) if self.old_status else "/dev/null",
                      "--label", printable("b" + self.path) if self.new_status else "/dev/null",
                      self.old_text if os.path.isfile(self.old_text) else "/dev/null",
                      self.new if self.new_status else "/dev/null"], environment={"LC_ALL": "C.UTF-8"})
        if result.status > 1:
            raise Failure(f"{DIFF} ends with status {result.status}: {os.fsdecode(result.error).strip()}")
        return os.fsdecode(result.output)


def attributes(status: os.stat_result) -> str:
    """Returns the mode and the owner as text, after the type unless the file is regular."""
    kind = FILE_TYPES.get(stat.S_IFMT(status.st_mode))
    return (f"{kind} " if kind else "") + f"{stat.S_IMODE(status.st_mode):04o} {status.st_uid}:{status.st_gid}"


class Changes:
    """The changed files, and the removed copies with their sizes. There may be very many copies."""

    def __init__(self, changes: Iterable[Change], is_rotation_file: Callable[[str], bool]) -> None:
        self.files: list[Change] = []
        self.copies: list[tuple[str, int]] = []
        for each in changes:
            if each.exists() and each.is_removal() and not is_rotation_file(each.path):
                self.copies.append((each.path, each.size()))
            elif each.exists():
                self.files.append(each)
        self.files.sort(key=lambda change: change.path)
        self.copies.sort()
