"""The settings in a rotation file, in the words of the program's options."""

import re
from collections.abc import Sequence
from typing import NamedTuple

from companions.program import LOG_FAMILIES
from companions.rotation_file import Stanza

OPTIONS = ("period-type", "period", "rot-count", "compress", "email", "anonymize-ip")
HOST_OPTIONS = ("compress", "email")  # A run for a category leaves these settings alone.

# For each setting, the kind of its lines and how such a line contains the value. A stanza's last line counts.
LINES = {
    "period": ("period", r"(?:size(?:[ \t]*=[ \t]*|[ \t]+))?(\S+)"),
    "rot-count": ("rotate", r"rotate[ \t]+0*([0-9]+)"),
    "compress": ("compress", "((?:no)?compress)"),
    "email": ("mail", r"mail[ \t]+(.*)"),
    "anonymize-ip": ("anonymizer", "(/).*"),
}
SWITCHES = {"compress": "true", "nocompress": "false", "/": "true"}
OTHER_PERIOD = re.compile(r"(?:hourly|yearly|minsize|maxsize)\b")  # The program has no option for these.


class Settings(NamedTuple):
    """`found` contains the values of each setting in the order of the stanzas, "" for a stanza that lacks the setting.

    `options` set them again, except those for which `problems` contains a reason.
    """

    found: dict[str, list[str]]
    options: dict[str, str]
    problems: dict[str, str]


def settings_of(stanzas: Sequence[Stanza], category: str | None) -> Settings:
    problems: dict[str, str] = {}

    def value(setting: str, stanza: Stanza) -> str:
        kind, pattern = LINES[setting]
        line = stanza.of_kind(kind)[-1:]
        match = re.fullmatch(pattern, line[0].text) if line else None
        if line and not match:
            problems.setdefault(setting, f"line {line[0].number}: {line[0].text}")
        return SWITCHES.get(match[1], match[1]) if match else "false" if kind == "anonymizer" else ""

    # The first run for a host does not anonymize the last stanza, the second does.
    decisive = [each for each in stanzas if category or not each.head.endswith(f"/{LOG_FAMILIES[-1]} ")] or stanzas
    found = {setting: list(dict.fromkeys(value(setting, each) for each in (decisive if setting == "anonymize-ip" else stanzas)))
             for setting in LINES if not category or setting not in HOST_OPTIONS}
    for line in (line for stanza in stanzas for line in stanza.of_kind("other") if OTHER_PERIOD.match(line.text)):
        problems.setdefault("period", f"line {line.number}: {line.text}")
    if not category and not any(found["period"]):
        problems.setdefault("period", "no period")
    return Settings(found, options_of(found, category), problems)


def options_of(found: dict[str, list[str]], category: str | None) -> dict[str, str]:
    """If the stanzas differ, a setting is kept if the program can keep it. Otherwise the first value is set."""
    same = {setting: values[0] if len(values) == 1 else "" for setting, values in found.items()}
    first = {setting: next(filter(None, values), "") for setting, values in found.items()}
    options = period_options((same if category else first)["period"])
    options |= {"rot-count": same["rot-count"] or "-1", "anonymize-ip": same["anonymize-ip"] or "keep"}
    return options if category else options | {"compress": first["compress"] or "false", "email": first["email"]}


def period_options(period: str) -> dict[str, str]:
    by_time = period in ("daily", "weekly", "monthly")
    return {"period-type": "by_time" if by_time else "by_size", "period": period} if period else {}


def words(options: dict[str, str], category: str | None) -> list[str]:
    """Returns the options as words of a command. Without an address there is no mail; an empty one is not accepted."""
    return [f"--{option}={options[option]}" for option in OPTIONS
            if options.get(option) and not (category and option in HOST_OPTIONS)] + ["-K"]
