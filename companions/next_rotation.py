"""Finds out what the next rotation of logs will delete: logrotate really rotates files with the same names.

It finds them in directories in memory. Each contains a few bytes, and no name, link or special file of a site owner leads out of
these directories. The programs that logrotate starts do nothing.
"""

import fnmatch
import glob
import os
import re
import stat
from typing import NamedTuple

from companions import rotation_file
from companions.command import Failure
from companions.log_service import LOGROTATE, LOGROTATE_SECONDS
from companions.program import HOSTS_DIRECTORY, SYSTEM_DIRECTORY
from companions.text import printable
from companions.view import AT_RECURSIVE, CLONE_NEWNET, CLONE_NEWNS, MS_BIND, MS_PRIVATE, MS_REC, SCRATCH
from companions.view import make_read_only, mount, system_call
from companions.worker import run

MAIN_FILE = "/etc/logrotate.conf"
# A site owner may make any number of files. A directory with more is not examined.
LARGEST_DIRECTORY = 1_000
KEY_SIZE = 20

TRUE, CAT = "/bin/true", "/bin/cat"
# logrotate needs what is here.
NEEDED = ("/bin/", "/dev/", "/etc/", "/lib/", "/lib64/", "/proc/", "/sbin/", "/sys/", "/usr/")
# What logrotate starts. Files with settings that would make it start other programs, or move copies elsewhere, are not examined.
COVERS = {"/bin/gzip": CAT, "/bin/sh": TRUE, "/bin/gunzip": TRUE}
UNKNOWN = re.compile(r"^(?![ \t]*#).*\b(include|(?:un)?compresscmd|compressoptions|(?:create)?olddir|taboo(?:ext|pat))\b", re.MULTILINE)
INCLUDE_LINE = re.compile(r"^[ \t]*include[ \t=]+[\"']?(.*?)[\"']?[ \t]*$", re.MULTILINE)


class Deletion(NamedTuple):
    """A file that a rotation deletes, and the rotation file that says so."""

    path: str
    size: int
    by: str


class RotationFile(NamedTuple):
    """A rotation file with the patterns and the directories of its logs."""

    text: str
    patterns: list[str]
    directories: set[str]


class NextRotation:
    """The next rotation of the logs of some rotation files. It ruins the view of this process."""

    def __init__(self, paths: list[str]):
        self.notes: list[str] = []
        self.files: dict[str, RotationFile] = {}
        # For each directory of logs, the rotation files.
        self.users: dict[str, list[str]] = {}
        # The directories in memory.
        self.mirrors: list[str] = []
        # For each key, the path and the size of the file that it stands for.
        self.copied: dict[bytes, tuple[str, int]] = {}
        settings = global_settings()
        for path in paths:
            try:
                self.files[path] = read(path, settings)
            except (OSError, Failure) as error:
                self.notes.append(f"the next rotation for {printable(path)} is not known: {error}")
        for path, file in self.files.items():
            for directory in file.directories:
                self.users.setdefault(directory, []).append(path)
        enter()
        self.cover_directories()
        for command, cover in COVERS.items():
            if os.path.isfile(command):
                mount(cover, os.path.realpath(command), flags=MS_BIND)
        self.write_configuration(settings)

    def write_configuration(self, settings: str) -> None:
        """Writes copies of the rotation files, and a main file that includes them in the usual order."""
        folders = sorted({os.path.dirname(path) for path in self.files},
                         key=lambda folder: (folder != SYSTEM_DIRECTORY, folder != HOSTS_DIRECTORY, folder))
        for number, folder in enumerate(folders):
            copies = f"{SCRATCH}/files/{number}"
            os.mkdir(copies)
            settings += f"\ninclude {copies}\n"
            for path, file in self.files.items():
                if os.path.dirname(path) == folder:
                    copy = f"{copies}/{os.path.basename(path)}"
                    write(copy, os.fsencode(file.text))
                    take_over(copy, os.stat(path))
        write(f"{SCRATCH}/main", os.fsencode(settings))

    def cover_directories(self) -> None:
        """Mounts directories in memory over those of logs."""
        mirrors: dict[str, str] = {}
        for directory in sorted(self.users):
            if (directory + "/").startswith(NEEDED) or directory == "/":
                self.notes.append(f"the next rotation in {printable(directory)} is not known")
            else:
                mirrors[directory] = f"{SCRATCH}/logs/{len(mirrors)}"
                self.copy_directory(directory, mirrors[directory])
        for directory, mirror in mirrors.items():
            os.makedirs(directory, exist_ok=True)  # It is empty in memory if it is below another one.
            mount(mirror, directory, flags=MS_BIND)

    def copy_directory(self, directory: str, mirror: str) -> None:
        os.mkdir(mirror)
        take_over(mirror, os.stat(directory))
        with os.scandir(directory) as entries:
            found = [entry for entry, _ in zip(entries, range(LARGEST_DIRECTORY + 1))]
        if len(found) > LARGEST_DIRECTORY:
            self.notes.append(f"the next rotation in {printable(directory)} is not known: more than {LARGEST_DIRECTORY} files")
            return
        self.mirrors.append(mirror)
        for entry in found:
            self.copy_file(entry, f"{mirror}/{entry.name}")

    def copy_file(self, entry: os.DirEntry[str], path: str) -> None:
        """Makes a file like the entry. A regular file contains its key, which a compressed or other copy keeps."""
        status = entry.stat(follow_symlinks=False)
        if stat.S_ISDIR(status.st_mode):
            os.mkdir(path)
            take_over(path, status)
            return
        key = str(len(self.copied)).encode()
        if stat.S_ISREG(status.st_mode):
            write(path, key)
            take_over(path, status)
            os.utime(path, ns=(status.st_atime_ns, status.st_mtime_ns))
            if status.st_nlink > 1:
                os.link(path, f"{SCRATCH}/links/{len(self.copied)}")
        else:
            # Opening a FIFO or a device could block, or do something.
            if stat.S_ISLNK(status.st_mode):
                os.symlink(os.readlink(entry.path), path)
            else:
                os.mknod(path, stat.S_IFSOCK)
            key = key_of(path)
        self.copied[key] = entry.path, status.st_size if stat.S_ISREG(status.st_mode) else 0

    def deletions(self) -> list[Deletion]:
        """Rotates, and returns what is no longer there."""
        # Where the mail program is missing, a rotation keeps one copy more, but only until it is installed.
        run([LOGROTATE, "--force", "--mail", TRUE, "--state", "/dev/null", f"{SCRATCH}/main"], LOGROTATE_SECONDS)
        left = {key_of(entry.path) for mirror in self.mirrors for entry in os.scandir(mirror)}
        return [Deletion(path, size, self.origin(path)) for key, (path, size) in self.copied.items() if key not in left]

    def origin(self, path: str) -> str:
        """Returns the rotation file of a log or copy: the one with a log of which it may be a copy, or the first one."""
        directory, name = os.path.split(path)
        files = self.users[directory]
        return next((each for each in files if len(files) > 1 for pattern in self.files[each].patterns
                     if fnmatch.fnmatchcase(name, os.path.basename(pattern) + "*")), files[0])


def next_rotation(paths: list[str]) -> tuple[list[Deletion], list[str]]:
    """Returns what the next rotation of the logs of these rotation files deletes, and notes about what is not known."""
    rotation = NextRotation(paths)
    try:
        return sorted(rotation.deletions()), rotation.notes
    except FileNotFoundError:
        return [], ["logrotate is not installed: the next rotation is not known."]
    except TimeoutError:
        return [], [f"logrotate does not end within {LOGROTATE_SECONDS} s: the next rotation is not known."]


def enter() -> None:
    system_call("unshare", CLONE_NEWNS | CLONE_NEWNET)
    mount("none", "/", flags=MS_REC | MS_PRIVATE)
    make_read_only("/", AT_RECURSIVE)
    mount("none", SCRATCH, "tmpfs", data="nr_inodes=0,mode=0755")
    os.umask(0o022)
    for folder in "logs", "links", "files":
        os.mkdir(f"{SCRATCH}/{folder}")


def global_settings() -> str:
    """Returns what the main configuration file sets before it includes a directory of rotation files."""
    try:
        text = rotation_file.read(MAIN_FILE)
    except (OSError, Failure):
        return ""
    directories = {os.path.realpath(path) for path in (HOSTS_DIRECTORY, SYSTEM_DIRECTORY)}
    end = next((match.start() for match in INCLUDE_LINE.finditer(text) if os.path.realpath(match[1]) in directories), len(text))
    return rotation_file.parse(text[:end]).outside


def read(path: str, settings: str) -> RotationFile:
    text = rotation_file.read(path)
    if setting := UNKNOWN.search(f"{settings}\n{text}"):
        raise Failure(f"{setting[1]} is set")
    patterns = [pattern for stanza in rotation_file.parse(text).stanzas for pattern in stanza.logs()]
    folders = {os.path.dirname(pattern) for pattern in patterns}
    folders = {each for folder in folders for each in (glob.glob(folder) if glob.has_magic(folder) else [folder])}
    return RotationFile(text, patterns, {os.path.realpath(folder) for folder in folders if os.path.isdir(folder)})


def write(path: str, data: bytes) -> None:
    with open(path, "xb", buffering=0) as file:
        file.write(data)


def key_of(path: str) -> bytes:
    """Returns what identifies a file in memory, wherever it is moved."""
    status = os.lstat(path)
    if not stat.S_ISREG(status.st_mode):
        return b"inode %d" % status.st_ino
    with open(path, "rb", buffering=0) as file:
        return file.read(KEY_SIZE)


def take_over(path: str, status: os.stat_result) -> None:
    """Gives the file the owner and the mode of another."""
    os.chown(path, status.st_uid, status.st_gid)
    os.chmod(path, stat.S_IMODE(status.st_mode))
