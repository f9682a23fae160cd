"""The machine as the runs of a preview see it and change it."""

import contextlib
import errno
import functools
import glob
import itertools
import os
import stat
from collections.abc import Iterator
from typing import NamedTuple

from companions.changes import Change, Changes, files_below
from companions.command import Failure
from companions.next_rotation import next_rotation
from companions.program import HOSTS_DIRECTORY, PROGRAM, SYSTEM_DIRECTORY, log_directories_of, targets_of, vhosts_root
from companions.text import printable
from companions.view import SCRATCH, Mount, build_view
from companions.worker import Result, Worker, current_directory, run

# logrotate reads no larger file.
LARGEST_FILE = 0xFFFFFF

STATES = f"{SCRATCH}/states"


class Places(NamedTuple):
    """Where a run may read and write: the paths of rotation files, of their directories, and of those of logs."""

    targets: list[str]
    directories: list[str]
    logs: list[str]


class Outcome(NamedTuple):
    """How a run ended in the view, and what this run alone changed."""

    result: Result
    changes: Changes


@functools.cache
def real_directory(path: str, must_exist: bool) -> str | None:
    """Returns the path of a directory without links. Runs neither make nor replace directories."""
    return os.path.realpath(path) if os.path.isdir(path) or not must_exist else None


def find_places(arguments: list[str], root: str, must_exist: bool) -> Places:
    """Finds the places of a run in the view. Raises Failure if a target is too large for a view in memory."""
    targets = [path for path in targets_of(arguments) if os.path.basename(path)]
    # A run may create the file that a link names.
    targets += [os.path.realpath(path) for path in targets if os.path.islink(path)]
    directories = {os.path.dirname(path) for path in targets}
    for path in targets:
        if os.path.isfile(path) and os.stat(path).st_size > LARGEST_FILE:
            raise Failure(f"{printable(path)} is larger than 16 MiB, so logrotate does not read it")
    logs = {each for path in log_directories_of(arguments, root) for each in (glob.glob(path) if glob.has_magic(path) else [path])}
    # A run replaces a link at the path of a target, so only links in its directory are followed.
    real = [(real_directory(os.path.dirname(path), must_exist), os.path.basename(path)) for path in targets]
    return Places([os.path.join(directory, name) for directory, name in real if directory],
                  *(sorted(filter(None, {real_directory(path, must_exist) for path in paths})) for paths in (directories, logs)))


def find_root() -> str:
    """Returns the root directory of the virtual hosts, or an empty path if no run succeeds anyway."""
    with contextlib.suppress(Failure, OSError):
        return vhosts_root()
    return ""


class Machine:
    """A view of the machine, in which runs follow one another. The machine itself is not changed."""

    def __init__(self) -> None:
        self.directory = current_directory()
        self.mounts, self.silent = build_view()
        self.mounts.sort(key=lambda each: len(each.path), reverse=True)
        self.worker = Worker(self.mounts, self.directory)
        self.root = self.worker.call(find_root)
        self.targets: set[str] = set()
        self.searched: set[str] = set()
        # For each path that a run has changed, the file that holds its state after the latest of these runs.
        self.known: dict[str, str] = {}
        self.numbers = itertools.count()
        os.mkdir(STATES)
        self.configuration = tuple(f"{self.worker.call(real_directory, path, False)}/"
                                   for path in (HOSTS_DIRECTORY, SYSTEM_DIRECTORY))

    def mount_of(self, path: str) -> Mount:
        """Returns the mount of a path without links."""
        return next(each for each in self.mounts if each.contains(path))

    def real(self, path: str) -> str:
        """Returns a path outside the view for a path without links."""
        mount = self.mount_of(path)
        return mount.real + path[len(mount.path.rstrip("/")):]

    def upper(self, path: str) -> str:
        """Returns where a changed file is, for a path without links."""
        mount = self.mount_of(path)
        return mount.upper + path[len(mount.path.rstrip("/")):]

    def run(self, arguments: list[str]) -> Outcome:
        """Runs the program in the view. Raises Failure if the run on the machine might do something else."""
        places = self.worker.call(find_places, arguments, self.root, not self.silent)
        self.targets.update(places.targets)
        directories = {*places.directories, *places.logs}
        for directory in sorted(directories):
            self.search(directory)
        try:
            result = self.worker.call(run, [PROGRAM, *arguments])
        except OSError as error:
            raise Failure(f"cannot start {PROGRAM}: {error.strerror}") from error
        changes = Changes(self.changes_in(places), self.is_rotation_file)
        if os.strerror(errno.EROFS).encode() in result.error:
            for each in map(self.mount_of, directories):
                if each.needs_overlay() and not each.covered:
                    raise Failure(f"{printable(each.path)} ({each.kind}) accepts no overlay, and the run may need to write there")
        return Outcome(result, changes)

    def changes_in(self, places: Places) -> Iterator[Change]:
        """Yields the files that were changed since the last run, and others. Runs create no file among the logs."""
        paths = set(places.targets)
        for directory in places.logs:
            with contextlib.suppress(FileNotFoundError, NotADirectoryError):
                paths.update(f"{directory}/{name}" for name in os.listdir(self.upper(directory)))
        for path in paths:
            upper = self.upper(path)
            if path in self.known or os.path.lexists(upper) and not stat.S_ISDIR(os.lstat(upper).st_mode):
                new = upper if os.path.lexists(upper) else self.real(path)
                change = Change(path, self.known.get(path, self.real(path)), new)
                if change.old_status and stat.S_ISLNK(change.old_status.st_mode):
                    # It may lead to a file that an earlier run changed.
                    target = os.path.realpath(os.path.join(os.path.dirname(path), os.readlink(change.old)))
                    change.old_text = self.known.get(target, self.real(target))
                # A later run may change the file, and the differences are shown after all runs.
                self.known[path] = change.new = self.keep(change)
                yield change

    def keep(self, change: Change) -> str:
        """Keeps the new state of a file. Returns the path of the state, where nothing is if there is no file."""
        if change.new_status and not change.new.startswith(SCRATCH + "/"):
            return change.new
        state = f"{STATES}/{next(self.numbers)}"
        if change.new_status:
            os.link(change.new, state, follow_symlinks=False)
        return state

    def search(self, directory: str) -> None:
        """Raises Failure if the view of the directory is not complete."""
        if directory in self.searched:
            return
        for each in self.silent:
            if each.contains(directory) or os.path.dirname(each.path) == directory:
                raise Failure(f"{printable(each.path)} ({each.kind}) does not answer, and the run may need it")
        covered = self.mount_of(directory).covered
        try:
            with os.scandir(self.real(directory)) as entries:
                for entry in entries:
                    if not (entry.is_file(follow_symlinks=False) or entry.is_dir(follow_symlinks=False) or entry.is_symlink()):
                        status = entry.stat(follow_symlinks=False)
                        if covered and stat.S_ISCHR(status.st_mode) and status.st_rdev == 0:
                            path = printable(f"{directory}/{entry.name}")
                            raise Failure(f"{path} is the device 0,0, which a view cannot contain")
        except (FileNotFoundError, NotADirectoryError):
            pass
        self.searched.add(directory)

    def is_rotation_file(self, path: str) -> bool:
        """Returns whether the path is in a configuration directory or is a target of a run."""
        return path.startswith(self.configuration) or path in self.targets

    def changes(self) -> Changes:
        """Returns what all runs changed together. Raises Failure if it is more than each of them changed."""
        changes = Changes((Change(path, self.real(path), upper) for each in self.mounts if each.covered
                           for upper in files_below(each.upper) for path in [each.path.rstrip("/") + upper[len(each.upper):]]),
                          self.is_rotation_file)
        for path in [each.path for each in changes.files] + [path for path, _ in changes.copies]:
            if path not in self.known:
                raise Failure(f"cannot tell which run changed {printable(path)}")
        return changes

    def start_next_rotation(self, files: list[str]) -> Worker:
        """Starts the next rotation of the logs of these rotation files. The worker receives what next_rotation() returns."""
        worker = Worker(self.mounts, self.directory)
        worker.start(next_rotation, files)
        return worker
