"""The state file of logrotate, which tells when it ran last and when it rotated each log."""

import contextlib
import os
import re
import stat
import subprocess
import time

from companions.log_service import run_logrotate
from companions.logs import DAY, is_immutable
from companions.text import shell_quoted

LARGEST = 64 << 20
SYSTEMD = "/run/systemd/system"
SYSTEMCTL = "/usr/bin/systemctl"
ENTRY = re.compile(rb'^"(.*)" (\d+)-(\d+)-(\d+)-(\d+):(\d+):(\d+)$', re.MULTILINE)
ESCAPE = re.compile(rb"\\(.)", re.DOTALL)


class StateFile:
    """`age` is the time in seconds since logrotate ran, and `dates` are the dates of the logs; None and empty without a file."""

    def __init__(self) -> None:
        said = run_logrotate(["--version"]) or ""
        match = re.search(r"state file path: *(/.*)", said)
        self.path = match[1] if match else "/var/lib/logrotate/status"
        self.age: float | None = None
        self.dates: dict[str, float] = {}
        self.is_regular = True
        with contextlib.suppress(FileNotFoundError):
            status = os.stat(self.path)
            self.age = time.time() - status.st_mtime
            self.is_regular = stat.S_ISREG(status.st_mode)
            if self.is_regular:
                with open(self.path, "rb") as file:
                    for name, *date in ENTRY.findall(file.read(LARGEST)):
                        with contextlib.suppress(ValueError, OverflowError):
                            self.dates[unescaped(name)] = time.mktime((*map(int, date), 0, 0, -1))  # type: ignore[arg-type]

    def problem(self, logs_are_old: bool) -> str | None:
        """Returns the first of the problems that keep logrotate from rotating anything, in the order of their causes."""
        if not self.is_regular:
            return "not a regular file"
        if is_immutable(self.path) or is_immutable(os.path.dirname(self.path)):
            return "logrotate cannot replace it: the file or its directory is immutable or append-only, see chattr(1)"
        if is_read_only(os.path.dirname(self.path)):
            return "logrotate cannot replace it: the file system is read-only"
        said = run_logrotate(["--debug", "--state", self.path, os.devnull]) or ""
        if match := re.search("^error: (.*)", said, re.MULTILINE):
            file = shell_quoted(self.path)
            return f"{match[1]}; logrotate rotates nothing any more; look at it, then: mv {file} {file}.damaged"
        if self.age is None:
            return "no such file although there are old logs" + reason() if logs_are_old else None
        if self.age > 2 * DAY:
            return f"logrotate has not run for {self.age / DAY:.0f} days" + reason()
        return None


def unescaped(name: bytes) -> str:
    return os.fsdecode(ESCAPE.sub(lambda match: b"\n" if match[1] == b"n" else match[1], name))


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
