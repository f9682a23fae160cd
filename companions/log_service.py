"""What logrotate says about its configuration."""

import contextlib
import os
import re
import stat
from contextlib import AbstractContextManager

from companions.command import Failure
from companions.configuration import Configuration
from companions.findings import Finding
from companions.logs import DAY, Schedule
from companions.program import HOSTS_DIRECTORY, SYSTEM_DIRECTORY
from companions.text import printable
from companions.worker import run

LOGROTATE = "/usr/sbin/logrotate"
LOGROTATE_SECONDS = 60

PERIODS = {"hourly": DAY / 24, "weekly": 7 * DAY, "monthly": 31 * DAY, "yearly": 366 * DAY}
# The start of the messages about the logs of a stanza. Depending on the version, more follows on the line or on the next.
SCHEDULE = re.compile(r"(.*?)\s+(?:(hourly|weekly|monthly|yearly)|after (\d+) days|(\d+) bytes) (.*?)"
                      r"(?:No logs found|considering log|$)", re.DOTALL)
MINIMUM = re.compile(r"only log files >= (\d+) bytes")
OLD_DIRECTORY = re.compile(r"olddir is (.*?), ")
INSECURE = re.compile(r'skipping "(.*)/[^/]*" because (parent directory has insecure permissions) .*')


def run_logrotate(arguments: list[str]) -> str | None:
    """Returns what logrotate prints, or None if it does not end in time."""
    try:
        result = run([LOGROTATE, *arguments], LOGROTATE_SECONDS)
    except TimeoutError:
        return None
    except OSError as error:
        raise Failure(f"cannot start {LOGROTATE}: {error.strerror}") from error
    return os.fsdecode(result.output + result.error)


def logs_key(text: str) -> str:
    """Returns the patterns of a stanza, as logrotate prints them or as they stand in the file, in one form."""
    return " ".join(re.sub("[\"']", "", text).split())


class Reading:
    """The messages of logrotate when it reads the configuration file `main`, and then the files and directories `more`.

    A message contains either a path or the name of a file in the directory that logrotate included last.
    """

    def __init__(self, configuration: Configuration, main: str, more: list[str], view: AbstractContextManager[None]):
        self.main = main
        self.included: set[str] = set()
        self.directories = list(more)
        self.read: dict[str, bool] = {}
        self.ignored: dict[str, str] = {}
        self.faulty: set[str] = set()
        self.errors: list[Finding] = []
        self.paths: dict[str, str] = {}
        self.mentioned: set[str] = set()
        self.schedules: dict[str, Schedule] = {}
        self.stanzas = {logs_key(" ".join(logs)): (path, number)
                        for path, stanzas in configuration.stanzas.items() for logs, number in reversed(stanzas)}
        with view:
            said = self.ask([main, *more], configuration.files)
        self.answered = said is not None
        said, _, about_logs = (said or "").partition("\nReading state from file: /")
        for line in said.split("\n"):
            self.take(line)
        for text in about_logs.split("\nrotating pattern: ")[1:]:
            self.take_stanza(text)

    @staticmethod
    def ask(arguments: list[str], files: dict[str, os.stat_result]) -> str | None:
        """Returns the messages of logrotate. In the names of the files each newline is replaced with NUL."""
        with contextlib.ExitStack() as pipes:
            for path, status in files.items():
                # logrotate waits for a FIFO forever unless another process has opened the FIFO for writing.
                if stat.S_ISFIFO(status.st_mode):
                    pipes.callback(os.close, os.open(path, os.O_RDWR | os.O_NONBLOCK | os.O_NOFOLLOW))
            said = run_logrotate(["--debug", "--state", os.devnull, *arguments])
        for name in (os.path.basename(path) for path in files if "\n" in path):
            said = said and said.replace(name, name.replace("\n", "\0"))
        return said

    def take(self, line: str) -> None:
        if line.startswith("including "):
            path = os.path.join("/", line.removeprefix("including "))
            real = os.path.realpath(path)
            self.included.add(real)
            managed = (directory for directory in (HOSTS_DIRECTORY, SYSTEM_DIRECTORY) if os.path.realpath(directory) == real)
            self.directories.append(next(managed, path))
        elif line.startswith("reading config file "):
            path = self.resolve(line.removeprefix("reading config file "))
            self.read[path] = True
            self.included.add(os.path.realpath(path))
        elif match := re.fullmatch(r"(error: )?Ignoring (.*?),? (because .*?)\.?", line):
            path = self.resolve(match[2])
            if match[1]:
                self.add(path, 0, "permissions", f"ignored {match[3]}")
            else:
                self.ignored[path] = match[3]
        elif line.startswith("error: ") or line.startswith("warning: ") and " unknown option " in line:
            self.take_error(line.partition(" ")[2])

    def take_stanza(self, text: str) -> None:
        """Takes the messages about the logs of a stanza, which contain neither its file nor its line."""
        match = SCHEDULE.match(text)
        if match is None:
            return
        key = logs_key(match[1])
        path, line = self.stanzas.get(key, (self.main, 0))
        size, minimum, olddir = int(match[4] or 0), MINIMUM.search(match[5]), OLD_DIRECTORY.search(match[5])
        always = "empty log files are rotated" in match[5] and "no old logs" not in match[5]
        self.schedules[key] = Schedule(PERIODS[match[2]] if match[2] else int(match[3] or 1) * DAY, size,
                                       int(minimum[1]) if minimum else 0, "older than" in match[5],
                                       olddir[1] if olddir else None, always and not size and not minimum)
        for error in re.findall("^error: (.*)", text, re.MULTILINE):
            if insecure := INSECURE.fullmatch(error):
                self.add(path, 0, "log", f"logrotate skips the logs in {printable(insecure[1])} because the {insecure[2]}")
            else:
                self.add(path, line, "error", error)

    def take_error(self, text: str) -> None:
        for number in re.finditer(r":(\d+)[:,]? ", text):
            path = self.paths.get(text[:number.start()])
            if path:
                said = text[number.end():]
                self.add(path, int(number[1]), "duplicate" if said.startswith("duplicate ") else "error", said)
                return
        if match := re.fullmatch(r"(?:cannot stat|failed to open config file) (.*): (.*)", text):
            self.add(self.resolve(match[1]), 0, "error", match[2])
        elif match := re.fullmatch(r"found error in file (.*), skipping", text):
            path = self.paths.get(match[1], self.main)
            if not self.faulty:  # It is also skipped if a file that it includes has an error, which is reported.
                self.add(path, 0, "error", "logrotate skips this file")
        elif not text.startswith("found error in "):
            self.add(next(reversed(self.read), self.main), 0, "error", text)

    def add(self, path: str, line: int, kind: str, text: str) -> None:
        self.faulty.add(path)
        self.errors.append(Finding(path, line, kind, text.replace("\0", "\n")))

    def resolve(self, name: str) -> str:
        """Returns the path of a name. logrotate mentions each file of a directory only once."""
        paths = [os.path.join(directory, name.replace("\0", "\n")) for directory in ["/", *self.directories]][::-1]
        path = next((path for path in paths if path not in self.mentioned and os.path.lexists(path)), paths[0])
        self.mentioned.add(path)
        self.paths[name] = path
        return path
