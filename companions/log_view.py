"""A view of the machine for logrotate, in which log directories contain only names from the configuration.

No name that a site owner chose reaches logrotate, and no number of files delays it.
"""

import contextlib
import os
import re
import stat

from companions.logs import Directories, is_pattern
from companions.rotation_file import RotationFile
from companions.view import MS_BIND, SCRATCH, enter_private_namespace, mount

OLD_DIRECTORY = re.compile(r"^[ \t]*olddir[ \t=]+(\S+)", re.MULTILINE)


def enter() -> str | None:
    """Mounts a private file system in memory at `SCRATCH`, or returns why this is not possible."""
    try:
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

    def __init__(self) -> None:
        self.top = SCRATCH + "/logs"
        self.folders: set[str] = set()
        self.outermost: list[str] = []
        self.patterns: dict[str, str] = {}  # of the files in the view

    def add_folder(self, folder: str) -> None:
        if folder not in self.folders and os.path.isdir(folder):
            self.folders.add(folder)
            status = os.stat(folder)
            os.makedirs(self.top + folder, exist_ok=True)
            os.chown(self.top + folder, status.st_uid, status.st_gid)
            os.chmod(self.top + folder, stat.S_IMODE(status.st_mode))

    def add(self, rotation: RotationFile, text: str, directories: Directories) -> None:
        for pattern in (pattern for stanza in rotation.stanzas for pattern in stanza.logs()):
            folder, name = os.path.split(pattern)
            matching = directories.matching(pattern)
            if is_pattern(folder):
                os.makedirs(self.top + sample(folder), exist_ok=True)
                self.folders.update(os.path.dirname(path) for path in [sample(pattern), *matching])
            else:
                self.add_folder(folder)
            with contextlib.suppress(FileExistsError, FileNotFoundError):
                if matching:
                    self.patterns[sample(pattern)] = pattern
                    os.mknod(self.top + sample(pattern))
            for match in OLD_DIRECTORY.finditer(text) if "olddir" in text else ():
                old = os.path.join(folder, match[1])
                # logrotate refuses a directory on another file system.
                if os.path.isdir(old) and os.stat(old).st_dev == os.stat(folder).st_dev:
                    self.add_folder(old)

    def finish(self, root: str, kept: set[str]) -> None:
        """Decides what is covered: the outermost directories, but none above a file of `kept`."""
        for folder in [root, *sorted(self.folders)]:
            if not (folder + "/").startswith(tuple(each + "/" for each in self.outermost)) and os.path.isdir(folder):
                if not any((path + "/").startswith(folder.rstrip("/") + "/") for path in kept):
                    self.outermost.append(folder)
                    os.makedirs(self.top + folder, exist_ok=True)

    def show(self) -> None:
        """Shows the view to this process, which must have been started for that."""
        enter_private_namespace()
        for folder in self.outermost:
            mount(self.top + folder, folder, flags=MS_BIND)
