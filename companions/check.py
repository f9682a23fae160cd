"""Finds what keeps logs from being rotated."""

import argparse
import collections
import contextlib
import os
import re
import stat
import sys
import time
from typing import NoReturn

from companions import findings as report
from companions import log_view
from companions.command import Failure, message
from companions.configuration import Configuration, Panel, is_managed, is_unknown_host, missing_commands
from companions.findings import KINDS, UNKNOWN, Finding, is_host_file
from companions.host_files import FOREIGN, HOST_LOG, repair, stanza_problems
from companions.log_service import LOGROTATE, LOGROTATE_SECONDS, Reading, logs_key
from companions.logs import DAY, LARGEST_DIRECTORY, Directories, Logs, is_immutable, is_pattern
from companions.program import ANONYMIZER, HOSTS_CONFIGURATION, HOSTS_DIRECTORY, PANEL_FILE, PROGRAM, SYSTEM_DIRECTORY, target_of
from companions.rotation_file import LARGEST
from companions.state_file import StateFile
from companions.text import escaped, printable, shell_quoted
from companions.view import SCRATCH

# A file younger than this may belong to a run in progress.
LEFTOVER_SECONDS = 60
MOST_REPAIRS = 20
NO_CHECK = 2

SHARED_SCRIPTS = re.compile(r"^[ \t]*(no)?sharedscripts[ \t]*$", re.MULTILINE)


class Check:
    """The findings about the machine."""

    def __init__(self, main: str):
        self.main = main
        self.findings: set[Finding] = set()
        refusal = log_view.enter()
        self.scratch = None if refusal else SCRATCH
        if refusal:
            self.add(LOGROTATE, 0, "unchecked", f"no private view of the logs is possible ({refusal}), "
                     "so their names and their number can mislead and delay logrotate")
        self.panel = Panel(self.scratch)
        self.configuration = Configuration(main, self.panel)
        self.directories = Directories()
        self.state = StateFile()
        self.guarded = ["/etc/oru", "/etc/oru/oru.conf", "/opt/oru", "/opt/oru/etc", HOSTS_DIRECTORY, "/opt/oru/admin",
                        os.path.dirname(PROGRAM), PROGRAM, ANONYMIZER, SYSTEM_DIRECTORY, self.panel.root, self.panel.directory]
        self.check_permissions()
        self.check_stanzas()
        self.check_leftovers()
        logs = self.look_at_logs()
        files = map(self.configuration.files.__getitem__, self.configuration.host_files())
        if problem := self.state.problem(any(time.time() - status.st_mtime > 2 * DAY for status in files)):
            self.add(self.state.path, 0, "state", problem)
        self.view = None if refusal else log_view.LogView(self.panel.root, self.configuration, self.directories)
        reading = self.read_everything()
        self.check_messages(reading)
        self.check_hosts(reading)
        self.check_files(reading)
        self.check_includes(reading)
        self.check_logs(reading, logs)

    def add(self, path: str, line: int, kind: str, text: str) -> None:
        self.findings.add(Finding(path, line, kind, text))

    def check_permissions(self) -> None:
        """Reports directories in which other users could make root run commands. logrotate does not check this."""
        for path in filter(os.path.exists, self.guarded):
            status = os.stat(path)
            if status.st_uid != 0 or status.st_mode & 0o022:
                self.add(path, 0, "permissions", "writable by users other than root: "
                         f"mode {stat.S_IMODE(status.st_mode):04o}, owner {status.st_uid}:{status.st_gid}")

    def check_stanzas(self) -> None:
        for path in self.configuration.too_large:
            self.add(path, 0, "unchecked", f"larger than {LARGEST >> 20} MiB, so its stanzas are not examined")
        rotations = self.configuration.rotation
        others = [pattern for stanzas in self.configuration.stanzas.values() for logs, _ in stanzas for pattern in logs
                  if is_pattern(os.path.dirname(pattern))]
        for path in self.configuration.host_files() & rotations.keys():
            # An empty file may be the start of a run. logrotate reports it.
            if os.path.basename(path) in (self.panel.hosts or ()) and (text := self.configuration.texts[path]):
                for line, problem in stanza_problems(path, self.panel.root, text, rotations[path], others):
                    self.add(path, line, "stanza", problem)

    def check_leftovers(self) -> None:
        for path in self.configuration.temporary:
            if time.time() - self.configuration.files[path].st_mtime >= LEFTOVER_SECONDS:
                self.add(path, 0, "leftover", f"temporary file of a killed run; look at it, then: rm {shell_quoted(path)}")

    def look_at_logs(self) -> list[tuple[str, int, str, Logs]]:
        """Returns the logs of each pattern and directory, after the file and line of the stanza, and the stanza's logs."""
        return [(path, number, logs_key(" ".join(logs)), Logs(folder, os.path.basename(pattern), self.directories))
                for path, stanzas in self.configuration.stanzas.items() for logs, number in stanzas
                for pattern in logs for folder in self.directories.folders(pattern)]

    def read_with(self, more: list[str]) -> Reading:
        return Reading(self.configuration, self.main, more, self.view.shown() if self.view else contextlib.nullcontext())

    def read_everything(self) -> Reading:
        """Lets logrotate read the files that it reads every night, and the other files that the tool manages."""
        more: list[str] = []
        if self.scratch and self.panel.hosts:
            # logrotate would ignore a file of some names.
            for host in self.panel.hosts - {os.path.basename(path) for path in self.configuration.files if is_host_file(path)}:
                os.makedirs(f"{self.scratch}/names", exist_ok=True)
                with open(f"{self.scratch}/names/{host}", "w", encoding="ascii") as file:
                    file.write("#\n")
                more = [f"{self.scratch}/names"]
        reading = self.read_with(more)
        # The panel's file may include the hosts' directory.
        for path in (PANEL_FILE, HOSTS_DIRECTORY, SYSTEM_DIRECTORY) if reading.answered else ():
            if (path == HOSTS_DIRECTORY or os.path.lexists(path)) and os.path.realpath(path) not in reading.included:
                advice = f"add this line to {self.main}: include {path}"
                if path == HOSTS_DIRECTORY and os.path.realpath(SYSTEM_DIRECTORY) in reading.included:
                    advice = f"run: cp {HOSTS_CONFIGURATION} {SYSTEM_DIRECTORY}/zz-tavek-logrotate"
                self.add(path, 0, "not-included", f"not included; {advice}")
                more.insert(0, path)
                reading = self.read_with(more)
        if not reading.answered:
            self.add(LOGROTATE, 0, "unchecked", f"{LOGROTATE} --debug does not end within {LOGROTATE_SECONDS} s, "
                     "so nothing that it would report is here")
        return reading

    def check_messages(self, reading: Reading) -> None:
        repairs = 0
        # A duplicate entry may follow from a finding about stanzas.
        known = {word for finding in self.findings if finding.kind == "stanza" and finding.line
                 for word in (finding.file, finding.text)}
        for path, line, kind, text in sorted(set(reading.errors)):
            # The temporary file of a run is not an error. A run may have created or removed a file in the meantime.
            if self.configuration.is_temporary(path) or is_managed(path) and not line and not os.path.lexists(path):
                continue
            if kind == "duplicate":
                log = text.removeprefix("duplicate log entry for ")
                match = HOST_LOG.fullmatch(log)
                if path in known or match and FOREIGN + match[2] in known:
                    continue
                # logrotate skips the whole file. Usually all its stanzas are duplicates, from one cause.
                known.add(path)
                text = text.replace(log, self.view.patterns.get(log, log) if self.view else log)
            broken = self.configuration.texts.get(path) if kind == "error" and line and is_host_file(path) else None
            if self.view and broken and repairs < MOST_REPAIRS:
                repairs += 1
                text += repair(path, line, broken, self.view)
            self.add(path, line, kind, text)
        if PANEL_FILE + ".disabled" in self.configuration.files:
            reading.ignored.setdefault(PANEL_FILE + ".disabled", "because of its name")
        for path, why in reading.ignored.items():
            if is_managed(path) and path not in reading.read and path not in self.configuration.temporary:
                status = self.configuration.files.get(path)
                age = time.time() - status.st_mtime if status else 0
                # A run creates an empty file first.
                if "empty" not in why or age >= LEFTOVER_SECONDS:
                    pipe = "; logrotate waits for this FIFO forever" if status and stat.S_ISFIFO(status.st_mode) else ""
                    self.add(path, 0, "ignored", f"ignored {why}{pipe}")

    def check_hosts(self, reading: Reading) -> None:
        names = {os.path.basename(path) for path in self.configuration.host_files()}
        if self.panel.hosts is None:
            if names:
                self.add(self.panel.directory, 0, "error", "no such directory, so no host of the panel is known")
            return
        for name in self.panel.hosts - names:
            path = f"{HOSTS_DIRECTORY}/{name}"
            # A file with this name pauses the rotation. logrotate ignores the file, which is a finding of its own.
            if name + ".disabled" not in names and not os.path.lexists(path) and os.path.isdir(f"{self.panel.directory}/{name}"):
                why = reading.ignored.get(f"{self.scratch}/names/{name}")
                lost = f"; logrotate would ignore a file of this name {why}" if why else ""
                self.add(path, 0, "missing", f"no such file, so the logs of this host are not rotated{lost}")
        for path in self.configuration.host_files():
            if is_unknown_host(path, self.panel) and path not in reading.ignored and os.path.lexists(path):
                name = os.path.basename(path)
                if not os.path.isdir(f"{self.panel.directory}/{name}"):
                    self.add(path, 0, "gone", f"no such host: {self.panel.directory}/{name} does not exist")

    def check_files(self, reading: Reading) -> None:
        """Reports directives that have no effect. logrotate does not notice them."""
        before: list[str] = []
        for path in reading.read:
            rotation = self.configuration.rotation.get(path)
            if rotation is None:
                continue
            # A directive outside the stanzas applies to the files that logrotate reads later, too.
            before += SHARED_SCRIPTS.findall(rotation.outside)
            for command, line in missing_commands(rotation).items() if is_managed(path) else ():
                self.add(path, line, "command", f"{command} does not exist or cannot be executed")
            for stanza in rotation.stanzas if is_managed(path) else ():
                words = before[-1:] + SHARED_SCRIPTS.findall("\n".join(each.text for each in stanza.of_kind("other")))
                if words and not words[-1] and stanza.of_kind("anonymizer"):
                    self.add(path, stanza.number, "anonymize", "sharedscripts keeps the script from anonymizing rotated logs; "
                             "replace it with nosharedscripts")

    def check_includes(self, reading: Reading) -> None:
        """Reports what is included twice, instead of all the duplicate entries that follow."""
        places = collections.defaultdict(list)
        for include in self.configuration.includes:
            if include.file in reading.read:
                places[os.path.realpath(include.target)].append(include)
        for real, includes in places.items():
            if len(includes) > 1:
                first, again = includes[:2]
                self.findings = {finding for finding in self.findings if finding.kind != "duplicate" or
                                 real not in (os.path.realpath(finding.file), os.path.realpath(os.path.dirname(finding.file)))}
                self.add(again.file, again.line, "duplicate", f"includes {printable(again.target)} again, "
                         f"after {printable(first.file)}:{first.line}")

    def check_logs(self, reading: Reading, all_logs: list[tuple[str, int, str, Logs]]) -> None:
        works = not any(finding.kind == "state" for finding in self.findings)
        seen: set[str] = set()
        for path, line, key, logs in all_logs:
            if logs.folder not in seen:
                seen.add(logs.folder)
                self.check_folder(path, line, logs.folder)
            for obstacle in logs.obstacles() if is_managed(path) else ():
                self.add(path, line, "log", obstacle)
            if works and key in reading.schedules and (late := logs.overdue(reading.schedules[key])):
                day = time.strftime("%Y-%m-%d", time.localtime(max(begin for begin, _ in late)))
                self.add(path, line, "overdue", f"not rotated since {day}: {report.listed([name for _, name in late])}")

    def check_folder(self, path: str, line: int, folder: str) -> None:
        if self.directories.names.get(folder, []) is None:
            self.add(path, line, "unchecked", f"more than {LARGEST_DIRECTORY} files in {printable(folder)}, "
                     "so its logs are not examined and their rotation takes long")
        if os.path.lexists(folder) and not os.path.isdir(folder):
            self.add(path, line, "log", f"not a directory: {printable(folder)}")
        elif is_immutable(folder):
            self.add(path, line, "log", f"immutable or append-only, see chattr(1): {printable(folder)}")


class Arguments(argparse.ArgumentParser):
    def error(self, text: str) -> NoReturn:
        if "--plugin" in sys.argv:
            raise Failure(text)
        super().error(text)


def ignored_kind(text: str) -> tuple[str, str]:
    host, _, kind = text.rpartition(":")
    if not host or kind not in KINDS:
        raise argparse.ArgumentTypeError(f"not HOST:KIND with one of the kinds: {text}")
    return host, kind


def parse(words: list[str]) -> argparse.Namespace:
    parser = Arguments(prog="tavek-logrotate-check", add_help=False, allow_abbrev=False,
                       usage="%(prog)s [--json | --plugin] [--config FILE] [--ignore HOST:KIND] [HOST ...]")
    form = parser.add_mutually_exclusive_group()
    form.add_argument("--json", action="store_true")
    form.add_argument("--plugin", action="store_true")
    parser.add_argument("--config", default="/etc/logrotate.conf")
    parser.add_argument("--ignore", action="append", default=[], type=ignored_kind)
    parser.add_argument("hosts", nargs="*")
    return parser.parse_args(words)


def findings_of(arguments: argparse.Namespace) -> tuple[list[Finding], float | None]:
    """Returns the wanted findings and the age of the state file."""
    if os.geteuid() != 0:
        raise Failure("must be run as root")
    main_file = os.path.abspath(arguments.config)
    check = Check(main_file)
    for host in arguments.hosts:
        path = target_of(host)
        if host not in (check.panel.hosts or ()) and path not in check.configuration.files:
            check.add(path, 0, "missing", "no such host: it has neither a file nor a directory")
    machine = {main_file, LOGROTATE, check.state.path, *check.guarded}
    return report.wanted(check.findings, arguments.hosts, arguments.ignore, machine), check.state.age


def main(words: list[str]) -> int:
    if "--plugin" not in words:
        arguments = parse(words)
        findings, _ = findings_of(arguments)
        for line in [report.as_json(findings)] if arguments.json else map(report.as_text, findings):
            print(line)
        return 1 if findings else 0
    try:
        level, line = report.as_plugin(*findings_of(parse(words)))
    except Exception as error:  # pylint: disable=broad-exception-caught
        level, line = UNKNOWN, f"LOGROTATE UNKNOWN - {report.without_bars(escaped(message(error)))}"
    print(line)
    return level
