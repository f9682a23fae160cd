"""Finds out what the next rotation of logs will delete: logrotate really rotates files with the same names.

It finds them in directories in memory. Each contains a few bytes, and no name, link or special file of a site owner leads out of
these directories. The programs that logrotate starts do nothing.
"""

import fnmatch
import glob
import os
import re
import stat
from collections.abc import Iterator
from typing import NamedTuple

from companions import rotation_file
from companions.command import Failure
from companions.program import HOSTS_DIRECTORY, SYSTEM_DIRECTORY
from companions.text import printable
from companions.view import AT_RECURSIVE, CLONE_NEWNET, CLONE_NEWNS, MS_BIND, MS_PRIVATE, MS_REC
from companions.view import make_read_only, mount, system_call
from companions.worker import run

LOGROTATE = "/usr/sbin/logrotate"
MAIN_FILE = "/etc/logrotate.conf"
SECONDS = 60
# A site owner may make any number of files. A directory with more is not examined.
LARGEST_DIRECTORY = 10_000
KEY_SIZE = 20

SCRATCH = "/sys"
TRUE, CAT = "/bin/true", "/bin/cat"
# logrotate needs what is here.
NEEDED = ("/bin/", "/dev/", "/etc/", "/lib/", "/lib64/", "/proc/", "/sbin/", "/sys/", "/usr/")
# What logrotate starts unless the configuration names other programs. An option could make CAT fail.
COMPRESSOR, OTHER_PROGRAMS = "/bin/gzip", ("/bin/sh", "/bin/gunzip")
COMPRESSOR_LINE = re.compile(r"^[ \t]*compresscmd[ \t=]+(\S+)", re.MULTILINE)
LEFT_OUT_LINE = re.compile(r"^[ \t]*(?:include|compressoptions)[ \t=].*$", re.MULTILINE)
SCRIPTS = {"prerotate", "postrotate", "firstaction", "lastaction", "preremove"}
OLD_DIRECTORY_LINE = re.compile(r"^[ \t]*olddir[ \t=]+(\S+)", re.MULTILINE)


class Deletion(NamedTuple):
    """A file that a rotation deletes, and the rotation file that says so."""

    path: str
    size: int
    by: str


class RotationFile(NamedTuple):
    """A rotation file with the directories of its logs, and those to which it moves their copies."""

    text: str
    patterns: list[str]
    directories: set[str]
    moves: set[tuple[str, str]]


class NextRotation:
    """The next rotation of the logs of some rotation files. It ruins the view of this process."""

    def __init__(self, paths: list[str], part: int, parts: int):
        self.notes: list[str] = []
        self.files: dict[str, RotationFile] = {}
        # For each directory of logs or copies, the rotation files.
        self.users: dict[str, list[str]] = {}
        # For each of these directories, that in memory.
        self.mirrors: dict[str, str] = {}
        # For each key, the path and the size of the file that it stands for.
        self.copied: dict[bytes, tuple[str, int]] = {}
        settings = global_settings()
        for path in paths:
            try:
                self.files[path] = read(path, settings)
            except (OSError, Failure) as error:
                self.notes.append(f"the next rotation for {printable(path)} is not known: {error}")
        mine = groups(self.files)[part::parts]
        self.files = {path: self.files[path] for group in mine for path in group}
        for path, file in self.files.items():
            for directory in file.directories:
                self.users.setdefault(directory, []).append(path)
        self.enter()
        self.cover_directories()
        self.cover_programs([settings, *(file.text for file in self.files.values())])
        self.write_configuration(settings)

    def write_configuration(self, settings: str) -> None:
        """Writes copies of the rotation files, and a main file that includes them in the usual order."""
        folders = sorted({os.path.dirname(path) for path in self.files},
                         key=lambda folder: (folder != SYSTEM_DIRECTORY, folder != HOSTS_DIRECTORY, folder))
        copies = {folder: f"{SCRATCH}/files/{number}" for number, folder in enumerate(folders)}
        for folder in copies.values():
            os.mkdir(folder)
            settings += f"\ninclude {folder}\n"
        write(f"{SCRATCH}/main", os.fsencode(settings))
        for path, file in self.files.items():
            copy = f"{copies[os.path.dirname(path)]}/{os.path.basename(path)}"
            write(copy, os.fsencode(LEFT_OUT_LINE.sub("", file.text)))
            take_over(copy, os.stat(path))

    @staticmethod
    def enter() -> None:
        system_call("unshare", CLONE_NEWNS | CLONE_NEWNET)
        mount("none", "/", flags=MS_REC | MS_PRIVATE)
        make_read_only("/", AT_RECURSIVE)
        mount("none", SCRATCH, "tmpfs", data="nr_inodes=0,mode=0755")
        os.umask(0o022)
        for folder in "logs", "links", "files":
            os.mkdir(f"{SCRATCH}/{folder}")

    def cover_directories(self) -> None:
        """Mounts directories in memory over those of logs and copies."""
        # A file can only be moved within one mount.
        tops = self.users.keys() | {os.path.commonpath(pair) for file in self.files.values() for pair in file.moves}
        for unsafe in sorted(top for top in tops if (top + "/").startswith(NEEDED) or top == "/"):
            self.notes.append(f"the next rotation in {printable(unsafe)} is not known")
            tops.discard(unsafe)
        outermost: dict[str, str] = {}
        for path in sorted(tops, key=lambda path: path + "/"):
            if not any(path.startswith(outer + "/") for outer in outermost):
                outermost[path] = f"{SCRATCH}/logs/{len(outermost)}"
        for directory in sorted(self.users):
            outer = next((outer for outer in parents(directory) if outer in outermost), None)
            if outer is not None:
                self.copy_directory(directory, outer, outermost[outer])
        for path, top in outermost.items():
            mount(top, path, flags=MS_BIND)

    def copy_directory(self, directory: str, outer: str, top: str) -> None:
        with os.scandir(directory) as entries:
            found = [entry for entry, _ in zip(entries, range(LARGEST_DIRECTORY + 1))]
        for each in reversed(list(parents(directory))):
            copy = top + each[len(outer):]
            if each.startswith(outer) and not os.path.isdir(copy):
                os.mkdir(copy)
                take_over(copy, os.stat(each))
        if len(found) > LARGEST_DIRECTORY:
            self.notes.append(f"the next rotation in {printable(directory)} is not known: more than {LARGEST_DIRECTORY} files")
            return
        self.mirrors[directory] = top + directory[len(outer):]
        for entry in found:
            self.copy_file(entry, f"{self.mirrors[directory]}/{entry.name}")

    def copy_file(self, entry: os.DirEntry[str], path: str) -> None:
        """Makes a file like the entry. A regular file contains its key, which a compressed or other copy keeps."""
        status = entry.stat(follow_symlinks=False)
        if stat.S_ISDIR(status.st_mode):
            if not os.path.isdir(path):
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

    @staticmethod
    def cover_programs(texts: list[str]) -> None:
        covers = {command: TRUE for command in OTHER_PROGRAMS}
        covers |= {command: CAT for text in texts for command in [COMPRESSOR, *COMPRESSOR_LINE.findall(text)]}
        for command in {os.path.realpath(command): command for command in covers if os.path.isfile(command)}.values():
            mount(covers[command], os.path.realpath(command), flags=MS_BIND)

    def deletions(self) -> list[Deletion]:
        """Rotates, and returns what is no longer there."""
        # Where the mail program is missing, a rotation keeps one copy more, but only until it is installed.
        run([LOGROTATE, "--force", "--mail", TRUE, "--state", "/dev/null", f"{SCRATCH}/main"], SECONDS)
        left = {key_of(entry.path) for copy in self.mirrors.values() for entry in os.scandir(copy)}
        return [Deletion(path, size, self.origin(path)) for key, (path, size) in self.copied.items() if key not in left]

    def origin(self, path: str) -> str:
        """Returns the rotation file of a log or copy: the one with a log of which it may be a copy, or the first one."""
        directory, name = os.path.split(path)
        files = self.users[directory]
        return next((each for each in files if len(files) > 1 for pattern in self.files[each].patterns
                     if fnmatch.fnmatchcase(name, os.path.basename(pattern) + "*")), files[0])


def next_rotation(paths: list[str], part: int, parts: int) -> tuple[list[Deletion], list[str]]:
    """Returns what the next rotation of the logs of these rotation files deletes, and notes about what is not known.

    Processes that share the work get the same paths. The files are divided into so many parts.
    """
    rotation = NextRotation(paths, part, parts)
    try:
        return rotation.deletions(), rotation.notes
    except FileNotFoundError:
        return [], ["logrotate is not installed: the next rotation is not known."]
    except TimeoutError:
        return [], [f"logrotate does not end within {SECONDS} s: the next rotation is not known."]


def groups(files: dict[str, RotationFile]) -> list[list[str]]:
    """Returns the files in groups that have no directory in common, so that their rotations are independent."""
    found: dict[str, list[str]] = {}
    for path, file in files.items():
        shared = {id(found[directory]): found[directory] for directory in file.directories if directory in found}
        group = [*(each for other in shared.values() for each in other), path]
        for directory in (directory for each in group for directory in files[each].directories):
            found[directory] = group
    return list({id(group): group for group in found.values()}.values())


def global_settings() -> str:
    """Returns what the main configuration file sets before it includes a directory of rotation files."""
    try:
        text = rotation_file.read(MAIN_FILE)
    except (OSError, Failure):
        return ""
    directories = {os.path.realpath(path) for path in (HOSTS_DIRECTORY, SYSTEM_DIRECTORY)}
    settings: list[str] = []
    in_stanza = in_script = False
    for line in text.split("\n"):
        words = line.split() or [""]
        if in_script:
            in_script = words[0] != "endscript"
        elif in_stanza:
            in_script, in_stanza = words[0] in SCRIPTS, "}" not in line
        elif words[0].startswith(("/", "'", '"', "{")):
            in_stanza = "{" in line and "}" not in line
        elif words[0] == "include" and os.path.realpath(words[-1].strip("\"'")) in directories:
            break
        else:
            settings.append(line)
    return LEFT_OUT_LINE.sub("", "\n".join(settings))


def read(path: str, settings: str) -> RotationFile:
    text = rotation_file.read(path)
    patterns = [pattern for stanza in rotation_file.parse(text).stanzas for pattern in stanza.logs()]
    folders = {os.path.dirname(pattern) for pattern in patterns}
    folders = {each for folder in folders for each in (glob.glob(folder) if glob.has_magic(folder) else [folder])}
    real = {folder: os.path.realpath(folder) for folder in folders if os.path.isdir(folder)}
    moves = {(real[folder], os.path.realpath(os.path.join(folder, old)))
             for old in OLD_DIRECTORY_LINE.findall(f"{settings}\n{text}") for folder in real}
    return RotationFile(text, patterns, {*real.values(), *(old for _, old in moves if os.path.isdir(old))}, moves)


def parents(path: str) -> Iterator[str]:
    """Yields the path and the directories above it."""
    while path != "/":
        yield path
        path = os.path.dirname(path)


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
