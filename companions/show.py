"""Shows the settings of hosts and of categories of system logs: as a table, as JSON, or as the commands that make them."""

import argparse
import json
import os
import shlex
import stat
import sys
from collections.abc import Iterator, Sequence

from companions import rotation_file
from companions.command import Failure
from companions.program import CATEGORIES, HOSTS_DIRECTORY, LOG_FAMILIES, hosts_of_panel, run_on_new_file, target_of, vhosts_root
from companions.program import without_temporary_suffix
from companions.proof import Run, prove
from companions.settings import LINES, OPTIONS, Settings, period_options, settings_of, words
from companions.text import escaped, printable, shell_quoted, use_colour, valid

NOTHING_SHOWN = 2
PAUSED = ".disabled"
HEADINGS = ("NAME", "PERIOD", "COUNT", "COMPRESS", "MAIL", "ANONYMIZE", "NOTE")
ABOUT_K = "# -K: these runs delete no rotated copies, not even those beyond a lower count. logrotate(8) still deletes some."

# How a note affects the command: not at all, it stands above the command, or the command cannot be given.
INFORM, WARN, REFUSE = range(3)


class Entry:
    """A host or a category with its settings and notes about it."""

    def __init__(self, name: str, category: str | None) -> None:
        self.name = name
        self.category = category
        self.path = CATEGORIES[category] if category else target_of(name)
        self.text = ""
        self.settings = Settings({}, {}, {})
        self.notes: list[tuple[int, str]] = []
        self.failed = False

    def note(self, effect: int, text: str) -> None:
        self.notes.append((effect, text))

    def remarks(self, effect: int = INFORM) -> list[str]:
        """Returns the notes with this effect or a greater one."""
        return [text for each, text in self.notes if each >= effect]

    def read(self, root: str, header: str) -> None:
        """`root` is the root directory of the virtual hosts and `header` the text outside the stanzas of a generated file."""
        system, host = root + "/system", os.path.basename(self.name) if self.name.startswith("/") else self.name
        if no_host := not self.category and os.path.isdir(system) and not os.path.isdir(f"{system}/{host}"):
            self.note(INFORM, "no such host")
        if not os.path.lexists(self.path) and os.path.lexists(self.path + PAUSED):
            self.path += PAUSED
            self.note(REFUSE, "paused")
        try:
            status = os.lstat(self.path)
            self.text = rotation_file.read(self.path)
        except FileNotFoundError:
            self.note(REFUSE, "no rotation file")
            self.failed = no_host
        except (OSError, Failure) as error:
            self.note(REFUSE, f"cannot be read: {error.strerror if isinstance(error, OSError) else error}")
            self.failed = True
        else:
            if stat.S_ISLNK(status.st_mode) or stat.S_IMODE(status.st_mode) != 0o644:
                self.note(WARN, "a run would replace this link with a file" if stat.S_ISLNK(status.st_mode) else
                          f"a run would change mode {stat.S_IMODE(status.st_mode):04o} to 0644")
            self.judge(rotation_file.parse(self.text), [f"{system}/{host}/logs/{family} " for family in LOG_FAMILIES], header)

    def judge(self, file: rotation_file.RotationFile, heads: list[str], header: str) -> None:
        """`heads` and `header` are those of a generated file."""
        if not file.stanzas:
            self.note(REFUSE, "no stanza")
            return
        self.settings = settings_of(file.stanzas, self.category)
        if differ := [setting for setting, values in self.settings.found.items() if len(values) > 1]:
            self.note(WARN, f"stanzas differ in {', '.join(differ)}")
        if not self.category and (file.outside != header or [stanza.head for stanza in file.stanzas] != heads or
                                  any(stanza.of_kind("other") or stanza.of_kind("script") for stanza in file.stanzas)):
            self.note(INFORM, "edited by hand")

    def words(self, options: dict[str, str]) -> list[str]:
        return [f"--{self.category}-logs" if self.category else "on", *words(options, self.category)]

    def command(self, given: dict[str, str]) -> list[str]:
        """Returns the command that makes the settings, with the given ones instead of those in the file."""
        options = self.words(self.settings.options | given)
        if self.category:
            return ["tavek-logrotate", *options]
        if self.name.startswith("-"):
            return ["tavek-logrotate", f"--vhost-name={self.name}", "--on-off=on", *options[1:]]
        return ["tavek-logrotate", self.name, *options]


def prove_all(entries: Sequence[Entry], given: dict[str, str]) -> None:
    """Notes what the commands would change besides the settings. A given setting is used only for what is not set."""
    for each in entries:
        for setting, text in each.settings.problems.items():
            if setting not in given:
                each.note(REFUSE, text)
        # Bytes that are not UTF-8 may be printed. Other unprintable characters could deceive the reader or end the line.
        if not "".join(each.command(given)).encode(errors="ignore").decode().isprintable():
            each.note(REFUSE, "contains an unprintable character")
    proven = [each for each in entries if not each.remarks(REFUSE)]
    runs = [Run(each.path, each.text, each.words(given | each.settings.options)) for each in proven]
    for each, result in zip(proven, prove(runs)):
        if isinstance(result, Failure):
            each.note(REFUSE, str(result))
        elif result:
            each.note(WARN, f"a run would change: {', '.join(result)}")


def names_on_machine(root: str) -> list[tuple[str, str | None]]:
    hosts = hosts_of_panel(root) or set()
    files = {entry.name for entry in os.scandir(HOSTS_DIRECTORY) if not entry.is_dir()}
    files = {name for name in files if name in hosts or without_temporary_suffix(name) not in files | hosts}
    paused = {name for name in files if name.endswith(PAUSED) and name.removesuffix(PAUSED) not in files}
    names = hosts | files - paused | {name.removesuffix(PAUSED) for name in paused}
    return [(name, None) for name in names] + \
        [(f"--{category}-logs", category) for category, path in CATEGORIES.items() if os.path.lexists(path)]


def table(entries: Sequence[Entry]) -> Iterator[str]:
    rows: list[tuple[str, ...]] = [HEADINGS]
    for each in entries:
        cells = (",".join(value or "-" for value in each.settings.found.get(setting, [""])) for setting in LINES)
        rows.append((printable(each.name), *map(escaped, cells), escaped(", ".join(each.remarks()))))
    widths = [max(map(len, column)) for column in zip(*rows)]
    for number, row in enumerate(rows):
        line = "  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip()
        yield f"\x1b[1m{line}\x1b[m" if number == 0 and use_colour() else line


def commands(entries: Sequence[Entry], given: dict[str, str]) -> Iterator[str]:
    yield ABOUT_K
    for each in entries:
        refused = each.remarks(REFUSE)
        if above := ["no command"] * bool(refused) + each.remarks(WARN):
            yield f"# {escaped(each.name)}: {escaped('; '.join(above))}"
        if each.settings.found:
            yield "# " * bool(refused) + " ".join(map(shell_quoted if refused else shlex.quote, each.command(given)))
        if given and refused:
            print(f"tavek-logrotate-show: {escaped(each.name)}: no command: {escaped('; '.join(refused))}", file=sys.stderr)


def as_json(entries: Sequence[Entry], given: dict[str, str]) -> str:
    def texts(values: Sequence[str]) -> list[str]:
        return [valid(value) for value in values]
    return json.dumps({"version": 1, "entries": [{
        "name": valid(each.name), "category": each.category, "file": valid(each.path),
        "settings": {setting: texts(values) for setting, values in each.settings.found.items()},
        "notes": texts(each.remarks()), "above": texts(each.remarks(WARN)),
        "command": texts(each.command(given)) if not each.remarks(REFUSE) else None} for each in entries]})


def parse(arguments: list[str]) -> tuple[argparse.Namespace, dict[str, str]]:
    """Returns the arguments, and the settings in the words of the program. A period alone tells its type."""
    parser = argparse.ArgumentParser(prog="tavek-logrotate-show", add_help=False, allow_abbrev=False,
                                     usage="%(prog)s [--commands | --json] [SETTING ...] [HOST ... | --CATEGORY-logs ...]")
    output = parser.add_mutually_exclusive_group()
    output.add_argument("--commands", action="store_true")
    output.add_argument("--json", action="store_true")
    for option in OPTIONS:
        parser.add_argument(f"--{option}", dest=option)
    for category in CATEGORIES:
        parser.add_argument(f"--{category}-logs", dest="categories", action="append_const", const=category)
    parser.add_argument("--system-logs", dest="categories", action="store_const", const=list(CATEGORIES))
    parser.add_argument("hosts", nargs="*")
    found = parser.parse_intermixed_args(arguments)
    given = {option: value for option, value in vars(found).items() if option in OPTIONS and value is not None}
    if given and not found.commands:
        parser.error("a SETTING needs --commands")
    if "period-type" in given and "period" not in given:
        parser.error("--period-type needs --period")
    return found, period_options(given.get("period", "")) | given


def main(arguments: list[str]) -> int:
    options, given = parse(arguments)
    # Fails for a setting that the program refuses.
    generated = run_on_new_file("on", *words(period_options("daily") | {"compress": "true"} | given, None))
    root = vhosts_root(generated)
    names = [(name, None) for name in options.hosts] + [(f"--{each}-logs", each) for each in options.categories or ()]
    entries = [Entry(*name) for name in sorted({*(names or names_on_machine(root))}, key=lambda name: os.fsencode(name[0]))]
    for entry in entries:
        entry.read(root, rotation_file.parse(generated).outside)
    prove_all(entries, given)
    if options.json:
        print(as_json(entries, given))
    else:
        print("\n".join(commands(entries, given) if options.commands else table(entries)))
    return 1 if any(entry.failed for entry in entries) else 0
