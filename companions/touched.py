"""Tells what each run changed, without a search through everything that earlier runs changed."""

import os
import stat
import struct
from collections.abc import Callable

from companions.changes import Change, Changes, files_below
from companions.command import Failure
from companions.view import SCRATCH, Mount, libc

# From <sys/inotify.h>.
IN_NONBLOCK = 0o4000
IN_ARRIVALS = 0x80 | 0x100  # IN_MOVED_TO, IN_CREATE
IN_CHANGES = IN_ARRIVALS | 0x4 | 0x40 | 0x200  # IN_ATTRIB, IN_MOVED_FROM, IN_DELETE
IN_ONLYDIR, IN_Q_OVERFLOW, IN_ISDIR = 0x1000000, 0x4000, 0x40000000
EVENT = struct.Struct("iIII")
BUFFER = 1 << 16

STATES = f"{SCRATCH}/states"


class Touched:
    """Compares each file that a run touches in the upper layers with its state before that run."""

    def __init__(self, mounts: list[Mount], mount_of: Callable[[str], Mount], is_rotation_file: Callable[[str], bool]):
        self.mounts = {each.upper: each for each in mounts if each.covered}
        self.mount_of = mount_of
        self.is_rotation_file = is_rotation_file
        os.mkdir(STATES)
        self.states = 0
        # For each path that a run has touched, the file that holds its state after the latest of these runs.
        self.known: dict[str, str] = {}
        # Whether events were lost, or there are more directories than the kernel may watch. Then everything is compared.
        self.blind = False
        self.fd = libc.inotify_init1(IN_NONBLOCK)
        self.watched: dict[int, str] = {}
        for top in self.mounts:
            self.watch(top)

    def watch(self, folder: str) -> set[str]:
        """Watches the directory and those below. Returns the files that are already there."""
        number = libc.inotify_add_watch(self.fd, os.fsencode(folder), IN_CHANGES | IN_ONLYDIR)
        self.blind = self.blind or number < 0
        self.watched[number] = folder
        files = set()
        with os.scandir(folder) as entries:
            for entry in entries:
                if entry.is_dir(follow_symlinks=False):
                    files |= self.watch(entry.path)
                else:
                    files.add(entry.path)
        return files

    def touched(self) -> set[str]:
        """Returns the paths that were touched since the last call, and all others if that is not known."""
        paths: set[str] = set()
        for number, mask, name in self.events():
            path = f"{self.watched.get(number)}/{name}"
            self.blind = self.blind or mask & IN_Q_OVERFLOW != 0
            if not mask & IN_ISDIR:
                paths.add(path)
            elif mask & IN_ARRIVALS and os.path.isdir(path):
                paths |= self.watch(path)
        if self.blind:
            paths = {path for top in self.mounts for path in files_below(top)} | self.known.keys()
        return paths

    def events(self) -> list[tuple[int, int, str]]:
        found: list[tuple[int, int, str]] = []
        while True:
            try:
                data = os.read(self.fd, BUFFER)
            except BlockingIOError:
                return found
            place = 0
            while place < len(data):
                number, mask, _, size = EVENT.unpack_from(data, place)
                place += EVENT.size + size
                found.append((number, mask, os.fsdecode(data[place - size:place].rstrip(b"\0"))))

    def changes(self) -> Changes:
        """Returns what was changed since the last call."""
        changes = Changes()
        for path in self.touched():
            place = next((each for top, each in self.mounts.items() if path.startswith(top + "/")), None)
            if place:
                rest = path[len(place.upper):]
                lower = place.real + rest
                new = path if os.path.lexists(path) else lower
                change = Change(place.path.rstrip("/") + rest, self.known.get(path, lower), new)
                change.old_text = self.text_of(change)
                if change.exists():
                    changes.add(change, not self.is_rotation_file(change.path))
                # A later run may change the file, and the differences are shown after all runs.
                self.known[path] = change.new = self.keep(change)
        changes.sort()
        return changes

    def text_of(self, change: Change) -> str:
        """Returns the file with the old text. A link may lead to a file that an earlier run changed."""
        if change.old_status is None or not stat.S_ISLNK(change.old_status.st_mode):
            return change.old
        target = os.path.realpath(os.path.join(os.path.dirname(change.path), os.readlink(change.old)))
        place = self.mount_of(target)
        rest = target[len(place.path.rstrip("/")):]
        return self.known.get(place.upper + rest, place.real + rest)

    def keep(self, change: Change) -> str:
        """Keeps the new state of a file. Returns the path of the state, where nothing is if there is no file."""
        if change.new_status is not None and not change.new.startswith(SCRATCH + "/"):
            return change.new
        self.states += 1
        state = f"{STATES}/{self.states}"
        if change.new_status is not None:
            os.link(change.new, state, follow_symlinks=False)
        return state

    def check(self) -> None:
        """Raises Failure if a file was touched and nobody said so."""
        for top in self.mounts:
            for path in files_below(top):
                if path not in self.known:
                    raise Failure(f"cannot tell which run touched {path.removeprefix(top)}")
