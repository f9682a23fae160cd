"""The state file of logrotate, which tells when it ran last and when it rotated each log."""

import contextlib
import os
import re
import stat
import subprocess
import time

from companions.log_service import run_logrotate
from companions.logs import DAY, is_immutable
from companions.text import printable, shell_quoted

LARGEST = 64 << 20
SYSTEMD = "/run/systemd/system"
SYSTEMCTL = "/usr/bin/systemctl"
# An entry that logrotate accepts.
ENTRY = re.compile(rb'^"(?:[^"\\\n]|\\.)*" (?:19[7-9]\d|20\d\d)-(?:[1-9]|1[0-2])-(?:[1-9]|[12]\d|3[01])'
                   rb'-(?:1?\d|2[0-3])(?::[1-5]?\d){2}$', re.MULTILINE)


class StateFile:
    """`age` is the time in seconds since logrotate ran, or None without a file."""

    def __init__(self) -> None:
        said = run_logrotate(["--version"]) or ""
        match = re.search(r"state file path: *(/.*)", said)
        self.path = match[1] if match else "/var/lib/logrotate/status"
        self.age: float | None = None
        self.is_regular = True
        with contextlib.suppress(OSError):
            status = os.stat(self.path)
            self.age = time.time() - status.st_mtime
            self.is_regular = stat.S_ISREG(status.st_mode)

    def problem(self, host_files_are_old: bool) -> str | None:
        """Returns the first of the problems that keep logrotate from rotating anything, in the order of their causes."""
        folder = os.path.dirname(os.path.realpath(self.path))
        if not self.is_regular:
            return "not a regular file"
        if os.path.lexists(self.path) and self.age is None:
            return "logrotate cannot replace it: it is a link to a missing file"
        if os.path.lexists(folder) and not os.path.isdir(folder):
            return f"logrotate cannot replace it: {printable(folder)} is not a directory"
        if is_immutable(self.path) or is_immutable(folder):
            return "logrotate cannot replace it: the file or its directory is immutable or append-only, see chattr(1)"
        if is_read_only(folder):
            return "logrotate cannot replace it: the file system is read-only"
        if self.age is None:
            # A machine that has just been made from an image has old files too.
            known = host_files_are_old and time.clock_gettime(time.CLOCK_BOOTTIME) > 2 * DAY
            what = "file, so logrotate has not run for days"
            if not os.path.isdir(folder):
                what = "directory, so logrotate rotates nothing"
            return f"no such {what}{reason()}" if known else None
        if match := re.search("^error: (.*)", self.read_by_logrotate(), re.MULTILINE):
            file = shell_quoted(self.path)
            return f"{match[1]}; logrotate rotates nothing any more; look at it, then: mv {file} {file}.damaged"
        if self.age > 2 * DAY:
            return f"logrotate has not run for {self.age / DAY:.0f} days" + reason()
        return None

    def read_by_logrotate(self) -> str:
        """Returns what logrotate says about the lines that are not plain entries. Site owners can make many entries."""
        with open(self.path, "rb") as file:
            data = file.read(LARGEST)
        copy = os.memfd_create("state")
        try:
            with open(copy, "wb", closefd=False) as file:
                file.write(ENTRY.sub(b"", data if len(data) < LARGEST else data[:data.rfind(b"\n") + 1]))
            path = f"/proc/{os.getpid()}/fd/{copy}"
            said = run_logrotate(["--debug", "--state", path, os.devnull]) or ""
        finally:
            os.close(copy)
        return said.replace(path, self.path)


def is_read_only(folder: str) -> bool:
    """Returns whether the file system is read-only for everybody, not only in the sandbox of a service."""
    with contextlib.suppress(OSError):
        device = os.stat(folder).st_dev
        number = f"{os.major(device)}:{os.minor(device)}"
        with open("/proc/self/mountinfo", errors="surrogateescape") as lines:
            return any(line.split()[2] == number and "ro" in line.split()[-1].split(",") for line in lines)
    return False


def reason() -> str:
    """Returns what systemd says about the log service."""
    if not os.path.isdir(SYSTEMD):
        return ""
    with contextlib.suppress(OSError, KeyError, subprocess.TimeoutExpired):
        result = subprocess.run([SYSTEMCTL, "show", "--property=Id,ActiveState,Result", "logrotate.timer", "logrotate.service"],
                                stdin=subprocess.DEVNULL, capture_output=True, timeout=5, text=True, check=False)
        units = [dict(line.split("=", 1) for line in unit.splitlines() if "=" in line) for unit in result.stdout.split("\n\n")]
        state = {unit.get("Id", ""): unit for unit in units}
        if (active := state["logrotate.timer"]["ActiveState"]) != "active":
            return f"; logrotate.timer is {active}"
        if (last := state["logrotate.service"]["Result"]) != "success":
            return f"; the last run of logrotate.service failed ({last})"
    return ""
