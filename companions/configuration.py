"""The configuration files of the machine, read once, before logrotate reads them."""

import contextlib
import os
import re
import stat
from typing import NamedTuple

from companions import rotation_file
from companions.command import Failure
from companions.findings import is_host_file
from companions.program import CATEGORIES, HOSTS_DIRECTORY, PANEL_FILE, SYSTEM_DIRECTORY, hosts_of_panel, run_on_new_file
from companions.program import vhosts_root, without_temporary_suffix

CATEGORY_FILES = set(CATEGORIES.values())
INCLUDE = re.compile(r"[ \t]*include[ \t=]+[\"']?(.*?)[\"']?[ \t]*")


class Include(NamedTuple):
    file: str
    line: int
    target: str


class Panel:
    """The panel's hosts on this machine: the directories in `directory`, or None if there is no such directory."""

    def __init__(self, scratch: str | None):
        self.root = vhosts_root(run_on_new_file("keep", parent=scratch))
        self.directory = self.root + "/system"
        self.hosts = hosts_of_panel(self.root)


class Configuration:
    """The files of the managed directories, and the contents of all files that logrotate may read."""

    def __init__(self, main: str, panel: Panel):
        self.panel = panel
        self.files = files_in(HOSTS_DIRECTORY) | files_in(SYSTEM_DIRECTORY)
        beside = files_in(os.path.dirname(PANEL_FILE))
        self.files |= {path: beside[path] for path in beside if path.startswith(PANEL_FILE)}
        self.temporary = {path for path in self.files if self.is_temporary(path)}
        self.texts: dict[str, str] = {}
        self.rotation: dict[str, rotation_file.RotationFile] = {}
        self.stanzas: dict[str, list[tuple[list[str], int]]] = {}
        self.too_large: list[str] = []
        self.includes: list[Include] = []
        self.seen: set[str] = set()
        for path in (HOSTS_DIRECTORY, SYSTEM_DIRECTORY, PANEL_FILE, main):
            self.read(path)

    def read(self, path: str) -> None:
        """Reads a file, or the files of a directory, and what they include. logrotate reports a file that cannot be read."""
        real = os.path.realpath(path)
        if real in self.seen:
            return
        self.seen.add(real)
        if os.path.isdir(path):
            for each in sorted(set(files_in(path)) - self.temporary):
                if not os.path.isdir(each):
                    self.read(each)
            return
        with contextlib.suppress(OSError, Failure):
            if os.path.isfile(path) and os.path.getsize(path) > rotation_file.LARGEST:
                self.too_large.append(path)
            text = rotation_file.read(path)
            self.texts[path] = text
            self.stanzas[path] = rotation_file.stanzas_for_logrotate(text)
            self.rotation[path] = rotation_file.parse(text)
            for number, line in enumerate(text.split("\n"), 1) if "include" in text else ():
                if match := INCLUDE.fullmatch(line):
                    self.includes.append(Include(path, number, os.path.join("/", match[1])))
                    self.read(self.includes[-1].target)

    def is_temporary(self, path: str) -> bool:
        """Returns whether this may be the temporary file of a run: a rotation file's path, a dot and six characters."""
        name = without_temporary_suffix(path)
        if name is None or path in self.files and not stat.S_ISREG(self.files[path].st_mode):
            return False
        if not is_host_file(path):
            return name in CATEGORY_FILES
        hosts = self.panel.hosts or ()
        return os.path.basename(path) not in hosts and (name in self.files or os.path.basename(name) in hosts)

    def host_files(self) -> set[str]:
        return {path for path in self.files if is_host_file(path) and path not in self.temporary}


def is_managed(path: str) -> bool:
    return is_host_file(path) or path.removesuffix(".disabled") in CATEGORY_FILES


def files_in(directory: str) -> dict[str, os.stat_result]:
    """Returns the paths in a directory with the status of each. A missing directory has none."""
    files = {}
    with contextlib.suppress(OSError), os.scandir(directory) as entries:
        for entry in entries:
            # A run in progress may remove its temporary file in the meantime.
            with contextlib.suppress(FileNotFoundError):
                files[f"{directory}/{entry.name}"] = entry.stat(follow_symlinks=False)
    return files


def missing_commands(rotation: rotation_file.RotationFile) -> dict[str, int]:
    """Returns the programs for mail and for anonymizing that a file needs and that do not work, each with the first line.

    logrotate notices only when it rotates a log that it cannot start a program.
    """
    commands: dict[str, int] = {}
    for stanza in rotation.stanzas:
        for line in stanza.lines:
            if line.kind in ("mail", "anonymizer"):
                commands.setdefault("/usr/bin/mail" if line.kind == "mail" else line.text.split()[0], line.number)
    return {command: number for command, number in commands.items() if not os.access(command, os.X_OK)}


def is_unknown_host(path: str, panel: Panel) -> bool:
    """Returns whether a rotation file belongs to a host that the panel does not have."""
    return is_host_file(path) and panel.hosts is not None and os.path.basename(path) not in panel.hosts
