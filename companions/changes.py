"""What a run changed in the view."""

import os
import stat
import subprocess
import sys

from companions.command import Failure
from companions.text import printable, use_colour
from companions.view import Mount

DIFF = "/usr/bin/diff"

FILE_TYPES = {stat.S_IFLNK: "symbolic link", stat.S_IFDIR: "directory", stat.S_IFIFO: "FIFO", stat.S_IFSOCK: "socket",
              stat.S_IFCHR: "device", stat.S_IFBLK: "device"}


def changes_of(mount: Mount):
    """Returns the changes in the upper layer of the mount."""
    return [Change(mount.path.rstrip("/") + path, mount.real + path, mount.upper + path) for path in files_below(mount.upper)]


def files_below(top, folder=""):
    """Yields the path, without the prefix `top`, of everything below `top` that is not a directory."""
    for entry in os.scandir(top + folder):
        path = f"{folder}/{entry.name}"
        if entry.is_dir(follow_symlinks=False):
            yield from files_below(top, path)
        else:
            yield path


def status_of(path):
    """Returns None if there is no file. A whiteout in the upper layer means that the run removed the file."""
    try:
        status = os.lstat(path)
    except FileNotFoundError:
        return None
    return None if stat.S_ISCHR(status.st_mode) and status.st_rdev == 0 else status


class Change:
    """A change of the file `path`. Its old state is in the file `old`, its new state in the file `new`."""

    def __init__(self, path, old, new):
        self.path = path
        self.old, self.old_status = old, status_of(old)
        self.new, self.new_status = new, status_of(new)

    def exists(self):
        """Returns whether anything is different.

        A file in the upper layer may be unchanged, because the overlay copies a file that is opened for appending.
        """
        if self.old_status is None or self.new_status is None:
            return self.old_status is not self.new_status
        if attributes(self.old_status) != attributes(self.new_status):
            return True
        with open(self.old, "rb") as old, open(self.new, "rb") as new:
            return old.read() != new.read()

    def is_removal(self):
        return self.new_status is None

    def size(self):
        return self.old_status.st_size if stat.S_ISREG(self.old_status.st_mode) else 0

    def print(self):
        old, new = self.old_status, self.new_status
        name = printable(self.path)
        if old is None:
            print(f"create {name} {attributes(new)}")
        elif new is None:
            print(f"remove {name} {attributes(old)}")
        elif attributes(old) != attributes(new):
            print(f"change {name} {attributes(old)} -> {attributes(new)}")
        # If a link is removed, the file that it names is unchanged, so no diff is needed. If a link is replaced, the
        # text at its path may change, so a diff is needed.
        if new or stat.S_ISREG(old.st_mode):
            self.print_difference()

    def print_difference(self):
        sys.stdout.flush()
        result = subprocess.run([DIFF, "--unified", "--text", "--color=" + ("always" if use_colour() else "never"),
                                 "--label", printable("a" + self.path) if self.old_status else "/dev/null",
                                 "--label", printable("b" + self.path) if self.new_status else "/dev/null",
                                 self.old if os.path.isfile(self.old) else "/dev/null",
                                 self.new if self.new_status else "/dev/null"],
                                env={"LC_ALL": "C.UTF-8"}, check=False)
        if result.returncode < 0:
            # Usually SIGPIPE, because nobody reads the rest.
            os.kill(os.getpid(), -result.returncode)
        if result.returncode > 1:
            raise Failure(f"{DIFF} ends with status {result.returncode}")


def attributes(status):
    """Returns the mode and the owner as text, after the type unless the file is regular."""
    kind = FILE_TYPES.get(stat.S_IFMT(status.st_mode))
    return (f"{kind} " if kind else "") + f"{stat.S_IMODE(status.st_mode):04o} {status.st_uid}:{status.st_gid}"
