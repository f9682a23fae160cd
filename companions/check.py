"""Finds what keeps logs from being rotated."""

import argparse
import collections
import contextlib
import json
import os
import re
import stat
import subprocess
import time

from companions.command import Failure
from companions.program import CATEGORIES, HOSTS_CONFIGURATION, HOSTS_DIRECTORY, PANEL_FILE, SYSTEM_DIRECTORY, hosts_of_panel, vhosts_root
from companions.program import without_temporary_suffix
from companions.text import escaped, printable, shell_quoted, valid

LOGROTATE = "/usr/sbin/logrotate"
MAIL = "/usr/bin/mail"  # logrotate's default mail program (see -m).
CATEGORY_FILES = set(CATEGORIES.values())
# A temporary file that is younger may belong to a run in progress.
LEFTOVER_SECONDS = 60
LOGROTATE_SECONDS = 60
NO_CHECK = 2

Finding = collections.namedtuple("Finding", "file line kind text")


def files_in(directory):
    """Returns the paths in a directory with the status of each. A missing directory has none."""
    files = {}
    with contextlib.suppress(FileNotFoundError, NotADirectoryError), os.scandir(directory) as entries:
        for entry in entries:
            # A run in progress may remove its temporary file in the meantime.
            with contextlib.suppress(FileNotFoundError):
                files[f"{directory}/{entry.name}"] = entry.stat(follow_symlinks=False)
    return files


class Panel:
    """The panel's hosts on this machine: the directories in `directory`, or None if there is no such directory."""

    def __init__(self):
        root = vhosts_root()
        self.directory = root + "/system"
        self.hosts = hosts_of_panel(root)


class Reading:
    """The messages of logrotate when it reads the configuration file `main`, and then the files and directories `more`.

    A message contains either a path or the name of a file in the directory that logrotate included last.
    """

    def __init__(self, files, main, more=()):
        self.main = main
        self.included = set()
        self.directories = list(more)
        self.read = {}
        self.ignored = {}
        self.faulty = set()
        self.errors = []
        self.paths = {}
        self.mentioned = set()
        self.index = None
        # An error about a duplicate entry contains the name of a log, which cannot contain a slash.
        said, _, more_said = run_logrotate([main, *more], files).partition("\nReading state from file: /")
        for line in said.split("\n"):
            self.take(line)
        # The rest contains names of logs. Site owners can choose names that look like messages.
        state, *lines = more_said.split("\n")
        self.current = "/" + state, None
        for line in lines:
            self.take_about_log(line)

    def take(self, line):
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
                self.add(path, None, "permissions", f"ignored {match[3]}")
            else:
                self.ignored[path] = match[3]
        elif line.startswith("error: ") or line.startswith("warning: ") and " unknown option " in line:
            self.take_error(line.partition(" ")[2])

    def take_about_log(self, line):
        # The first word of a pattern contains a slash. The name of a log cannot contain one.
        if match := re.match(r"rotating pattern: (\S*/.*?)(?:  |$)", line):
            self.current = self.find_pattern(match[1])
        elif line.startswith("error: "):
            self.add(*self.current, "error", line.removeprefix("error: "))

    def take_error(self, text):
        for match in re.finditer(r":(\d+)[:,]? ", text):
            path = self.paths.get(text[:match.start()])
            if path:
                said = text[match.end():]
                self.add(path, int(match[1]), "duplicate" if said.startswith("duplicate ") else "error", said)
                return
        if match := re.fullmatch(r"(?:cannot stat|failed to open config file) (.*): (.*)", text):
            self.add(self.resolve(match[1]), None, "error", match[2])
        elif match := re.fullmatch(r"found error in file (.*), skipping", text):
            path = self.paths.get(match[1], self.main)
            if path not in self.faulty:
                self.add(path, None, "error", "logrotate skips this file")
        elif not text.startswith("found error in "):
            self.add(next(reversed(self.read), self.main), None, "error", text)

    def add(self, path, line, kind, text):
        self.faulty.add(path)
        self.errors.append((path, line, kind, text.replace("\0", "\n")))

    def resolve(self, name):
        """Returns the path of a name. logrotate mentions each file of a directory only once."""
        paths = [os.path.join(directory, name.replace("\0", "\n")) for directory in ["/", *self.directories]][::-1]
        path = next((path for path in paths if path not in self.mentioned and os.path.lexists(path)), paths[0])
        self.mentioned.add(path)
        self.paths[name] = path
        return path

    def find_pattern(self, pattern):
        """Returns the file and the line of the stanza with this pattern, because messages about logs contain neither.

        If there is no such stanza, returns the main file without a line.
        """
        if self.index is None:
            self.index = {}
            for path in self.read:
                with contextlib.suppress(OSError), open(path, errors="surrogateescape") as file:
                    for number, line in enumerate(file, 1):
                        patterns = line.partition("{")[0].split()
                        for key in " ".join(patterns), *(each.strip("\"'") for each in patterns):
                            self.index.setdefault(key, (path, number))
        # A pattern of several lines is found by its first word.
        first = pattern.split()[0].strip("\"'")
        return self.index.get(" ".join(pattern.split()), self.index.get(first, (self.main, None)))


def run_logrotate(arguments, files):
    """Returns the messages of logrotate. In the names of the files each newline is replaced with NUL."""
    with contextlib.ExitStack() as pipes:
        for path, status in files.items():
            # logrotate waits for a FIFO forever unless another process has opened the FIFO for writing.
            if stat.S_ISFIFO(status.st_mode):
                pipes.callback(os.close, os.open(path, os.O_RDWR | os.O_NONBLOCK | os.O_NOFOLLOW))
        try:
            result = subprocess.run([LOGROTATE, "--debug", *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                    stderr=subprocess.PIPE, cwd="/", timeout=LOGROTATE_SECONDS, check=False)
        except OSError as error:
            raise Failure(f"cannot start {LOGROTATE}: {error.strerror}") from error
        except subprocess.TimeoutExpired as error:
            raise Failure(f"{LOGROTATE} --debug does not end within {LOGROTATE_SECONDS} s") from error
    said = os.fsdecode(result.stderr)
    for name in (os.path.basename(path) for path in files if "\n" in path):
        said = said.replace(name, name.replace("\n", "\0"))
    return said


def commands_in(path):
    """Returns the programs that a rotation file needs for mail and for anonymizing, with the first line that needs each."""
    commands = {}
    with contextlib.suppress(OSError), open(path, errors="surrogateescape") as file:
        for number, line in enumerate(file, 1):
            words = line.split()
            if len(words) > 1 and (words[0] == "mail" or words[0].endswith("/anonymize_ip")):
                commands.setdefault(MAIL if words[0] == "mail" else words[0], number)
    return commands


class Check:
    """The findings about the machine. Reads everything once, at the start."""

    def __init__(self, main):
        self.main = main
        self.panel = Panel()
        self.files = files_in(HOSTS_DIRECTORY) | files_in(SYSTEM_DIRECTORY)
        beside = files_in(os.path.dirname(PANEL_FILE))
        self.files |= {path: beside[path] for path in beside if path.startswith(PANEL_FILE)}
        self.temporary = {path for path in self.files if self.is_temporary(path)}
        self.findings = set()
        reading = self.read_everything()
        self.check_messages(reading)
        self.check_directories()
        self.check_leftovers()
        self.check_hosts(reading)
        self.check_commands(reading)

    def add(self, path, line, kind, text):
        self.findings.add(Finding(path, line, kind, text))

    def is_temporary(self, path):
        """Returns whether this may be the temporary file of a run: a rotation file's path, a dot and six characters."""
        name = without_temporary_suffix(path)
        if name is None:
            return False
        if path in self.files and not stat.S_ISREG(self.files[path].st_mode):
            return False
        if os.path.dirname(path) != HOSTS_DIRECTORY:
            return name in CATEGORY_FILES
        hosts = self.panel.hosts or ()
        return os.path.basename(path) not in hosts and (name in self.files or os.path.basename(name) in hosts)

    @staticmethod
    def is_managed(path):
        return os.path.dirname(path) == HOSTS_DIRECTORY or path in CATEGORY_FILES

    def read_everything(self):
        """Lets logrotate read the files that it reads every night, and the other files that the tool manages."""
        more = []
        reading = Reading(self.files, self.main)
        # The panel's file may include the hosts' directory.
        for path in (PANEL_FILE, HOSTS_DIRECTORY, SYSTEM_DIRECTORY):
            if (path == HOSTS_DIRECTORY or os.path.lexists(path)) and os.path.realpath(path) not in reading.included:
                if path == HOSTS_DIRECTORY and os.path.realpath(SYSTEM_DIRECTORY) in reading.included:
                    advice = f"run: cp {HOSTS_CONFIGURATION} {SYSTEM_DIRECTORY}/zz-tavek-logrotate"
                else:
                    advice = f"add this line to {self.main}: include {path}"
                self.add(path, None, "not-included", f"not included; {advice}")
                more.append(path)
                reading = Reading(self.files, self.main, more)
        return reading

    def check_messages(self, reading):
        for error in reading.errors:
            # The temporary file of a run is not an error. The run may have created or removed it in the meantime.
            if not self.is_temporary(error[0]):
                self.add(*error)
        for path, reason in reading.ignored.items():
            if self.is_managed(path) and path not in reading.read and path not in self.temporary:
                pipe = path in self.files and stat.S_ISFIFO(self.files[path].st_mode)
                consequence = "; logrotate waits for this FIFO forever" if pipe else ""
                self.add(path, None, "ignored", f"ignored {reason}{consequence}")

    def check_directories(self):
        """Reports directories in which other users could make root run commands. logrotate does not check this."""
        for path in (HOSTS_DIRECTORY, SYSTEM_DIRECTORY):
            with contextlib.suppress(FileNotFoundError):
                status = os.stat(path)
                if status.st_uid != 0 or status.st_mode & 0o022:
                    self.add(path, None, "permissions", "writable by users other than root: "
                             f"mode {stat.S_IMODE(status.st_mode):04o}, owner {status.st_uid}:{status.st_gid}")

    def check_leftovers(self):
        for path in self.temporary:
            if time.time() - self.files[path].st_mtime >= LEFTOVER_SECONDS:
                self.add(path, None, "leftover", f"temporary file of a killed run; look at it, then: rm {shell_quoted(path)}")

    def check_hosts(self, reading):
        names = {os.path.basename(path) for path in self.files
                 if os.path.dirname(path) == HOSTS_DIRECTORY and path not in self.temporary}
        if self.panel.hosts is None:
            if names:
                self.add(self.panel.directory, None, "error", "no such directory, so no host of the panel is known")
            return
        for name in self.panel.hosts - names:
            # A file with this name pauses the rotation. logrotate ignores the file, which is a finding of its own.
            if name + ".disabled" not in names:
                self.add(f"{HOSTS_DIRECTORY}/{name}", None, "missing", "no such file, so the logs of this host are not rotated")
        for name in names - self.panel.hosts:
            path = f"{HOSTS_DIRECTORY}/{name}"
            if path not in reading.ignored:
                self.add(path, None, "gone", f"no such host: {self.panel.directory}/{name} does not exist")

    def check_commands(self, reading):
        """logrotate notices only when it rotates a log that it cannot start a program."""
        for path in reading.read:
            if self.is_managed(path) and path not in self.temporary:
                for command, line in commands_in(path).items():
                    if not os.access(command, os.X_OK):
                        self.add(path, line, "command", f"{command} does not exist or cannot be executed")

    def restrict(self, hosts):
        """Removes findings that are neither about the machine nor about one of the hosts."""
        def is_wanted(finding):
            name = finding.file[:-7] if finding.file in self.temporary else finding.file
            name = name.removesuffix(".disabled")
            return name in own or name in machine
        machine = {self.main, HOSTS_DIRECTORY, SYSTEM_DIRECTORY, self.panel.directory}
        own = {f"{HOSTS_DIRECTORY}/{host}" for host in hosts}
        self.findings = {finding for finding in self.findings if is_wanted(finding)}
        for host in hosts:
            path = f"{HOSTS_DIRECTORY}/{host}"
            if host not in (self.panel.hosts or ()) and path not in self.files:
                self.add(path, None, "missing", "no such host: it has neither a file nor a directory")


def as_text(finding):
    place = printable(finding.file) + (f":{finding.line}" if finding.line else "")
    return f"{place}: {escaped(finding.text)}"


def as_json(findings):
    """Returns one JSON object. Bytes that are not UTF-8 become backslash escapes, because JSON cannot contain them."""
    return json.dumps({"findings": [{"file": valid(finding.file), "line": finding.line, "kind": finding.kind,
                                     "text": valid(finding.text)} for finding in findings]})


def main(words):
    parser = argparse.ArgumentParser(prog="tavek-logrotate-check", add_help=False, allow_abbrev=False,
                                     usage="%(prog)s [--json] [--config FILE] [HOST ...]")
    parser.add_argument("--json", action="store_true")
    parser.add_argument("--config", default="/etc/logrotate.conf")
    parser.add_argument("hosts", nargs="*")
    arguments = parser.parse_args(words)
    if os.geteuid() != 0:
        raise Failure("must be run as root")
    check = Check(os.path.abspath(arguments.config))
    if arguments.hosts:
        check.restrict(arguments.hosts)
    findings = sorted(check.findings, key=lambda finding: (finding.file, finding.line or 0, finding.kind, finding.text))
    if arguments.json:
        print(as_json(findings))
    else:
        print(end="".join(as_text(finding) + "\n" for finding in findings))
    return 1 if findings else 0
