"""A view of the machine for logrotate, in which log directories contain only names from the configuration.

No name that a site owner chose reaches logrotate, and no number of files delays it.
"""

import contextlib
import os
import re
import stat
from collections.abc import Iterator

from companions.configuration import Configuration
from companions.logs import Directories, is_pattern
from companions.view import CLONE_NEWNS, MS_BIND, SCRATCH, enter_private_namespace, mount, system_call

OLD_DIRECTORY = re.compile(r"^[ \t]*olddir[ \t=]+[\"']?([^\s\"']+)", re.MULTILINE)


@contextlib.contextmanager
def namespace_kept() -> Iterator[None]:
    """Afterwards the process is in its mount namespace again."""
    namespace = os.open("/proc/self/ns/mnt", os.O_RDONLY | os.O_CLOEXEC)
    try:
        yield
    finally:
        system_call("setns", namespace, CLONE_NEWNS)
        os.close(namespace)


def enter() -> str | None:
    """Mounts a private file system in memory at `SCRATCH`, or returns why this is not possible."""
    try:
        with namespace_kept():
            pass
        enter_private_namespace()
        mount("none", SCRATCH, "tmpfs", data="nr_inodes=0,mode=0755")
    except OSError as error:
        return error.strerror
    return None


def sample(pattern: str) -> str:
    """Returns a path that matches the pattern."""
    return re.sub(r"\[(?:[!^].*?|(.).*?)\]", lambda match: match[1] or "_", pattern).replace("*", "x").replace("?", "x")


class LogView:
    """Log directories like those of the machine, with an empty file for each pattern that matches a log."""

    def __init__(self, root: str, configuration: Configuration, directories: Directories):
        self.top = SCRATCH + "/logs"
        self.root = root
        self.folders: dict[str, str] = {}  # each with its path without links
        self.patterns: dict[str, str] = {}  # of the files in the view
        common = {old for rotation in configuration.rotation.values() for old in OLD_DIRECTORY.findall(rotation.outside)}
        for path, stanzas in configuration.stanzas.items():
            old = common.union(OLD_DIRECTORY.findall(configuration.texts[path]))
            for pattern in (pattern for logs, _ in stanzas for pattern in logs):
                for folder in filter(os.path.isdir, directories.folders(pattern)):
                    # No name that logrotate would print on two lines.
                    if folder.isprintable():
                        self.add(folder, pattern, directories)
                        self.add_old(folder, old)
        self.add_folder(root)
        files = (os.path.realpath(path) for path in configuration.texts)
        self.covered = self.outermost({"/usr/sbin/logrotate", os.devnull, *files})

    def add(self, folder: str, pattern: str, directories: Directories) -> None:
        place, base = self.add_folder(folder), os.path.basename(pattern)
        paths = directories.matching_in(folder, base)
        if paths and is_pattern(base) and folder.startswith(self.root + "/"):
            paths = [f"{folder}/{sample(base)}"]
        for path in filter(str.isprintable, paths):
            self.patterns[path] = pattern
            with contextlib.suppress(FileExistsError):
                os.mknod(f"{place}/{os.path.basename(path)}")

    def add_old(self, folder: str, names: set[str]) -> None:
        for old in (os.path.join(folder, name) for name in names):
            # logrotate refuses a directory on another file system.
            if os.path.isdir(old) and os.stat(old).st_dev == os.stat(folder).st_dev:
                self.add_folder(old)

    def add_folder(self, folder: str) -> str:
        """Returns the place of the directory in the view."""
        if folder not in self.folders and os.path.isdir(folder):
            status, real = os.stat(folder), os.path.realpath(folder)
            os.makedirs(self.top + real, exist_ok=True)
            os.chown(self.top + real, status.st_uid, status.st_gid)
            os.chmod(self.top + real, stat.S_IMODE(status.st_mode))
            if real != folder:
                self.add_links(folder)
            self.folders[folder] = real
        return self.top + self.folders.get(folder, "")

    def add_links(self, folder: str) -> None:
        """Adds the links on the way to the directory, which may be below a directory that is covered."""
        for link in (folder[:end] for end in range(2, len(folder) + 1) if folder[end:end + 1] in ("", "/")):
            if os.path.islink(link):
                parent, name = os.path.split(link)
                place = self.top + os.path.realpath(parent)
                os.makedirs(place, exist_ok=True)
                with contextlib.suppress(FileExistsError):
                    os.symlink(os.readlink(link), f"{place}/{name}")
                    self.add_links(os.path.join(parent, os.readlink(link)))

    def outermost(self, kept: set[str]) -> list[str]:
        """Returns the directories to cover, but none above a file of `kept` and none with programs and libraries."""
        covered: list[str] = []
        for folder in sorted(set(self.folders.values())):
            inside = folder.startswith((*(each + "/" for each in covered), "/usr/"))
            if not inside and not any(path.startswith(folder.rstrip("/") + "/") for path in kept):
                covered.append(folder)
        return covered

    @contextlib.contextmanager
    def shown(self) -> Iterator[None]:
        """Shows the view to the processes that are started meanwhile."""
        with namespace_kept():
            enter_private_namespace()
            for folder in self.covered:
                mount(self.top + folder, folder, flags=MS_BIND)
            yield
