"""Reads runs as tavek-logrotate-show --commands prints them: commands for a shell, one per line."""

import os
import re
from typing import NamedTuple

from companions.command import Failure
from companions.program import PROGRAM
from companions.text import escaped

NAMES = ("tavek-logrotate", PROGRAM)

# What may stand between words, and the parts of a word. Everything else has a meaning for a shell, or is refused because
# not all shells read it in the same way.
BLANKS = re.compile(r"[ \t]+")
COMMENT = re.compile(r"#[^\n]*")
PART = re.compile(r"""
    (?P<plain>  (?:[\w@%+=:,./-]|[^\x00-\x7f])(?:[\w@%+=:,./\#-]|[^\x00-\x7f])* ) |
    (?P<escape> \\[^\n\0] ) |
    '(?P<single>[^'\0]*)' |
    "(?P<double>(?:[^"\\$`\0]|\\[^\n\0])*)" |
    \$'(?P<octal>(?:[^'\\\0]|\\(?:[0-3][0-7]{2}|['\\]))*)'""", re.VERBOSE)


class Run(NamedTuple):
    """A run of the program. `line` is the number of the line where its command starts, or None."""

    line: int | None
    arguments: list[str]


def parse(text: str) -> list[Run]:
    """Returns the runs. Raises Failure if a shell would do anything other than these runs."""
    runs: list[Run] = []
    words: list[str] = []
    place, line, start = 0, 1, 1
    while True:
        if words and text[place:place + 1] in ("", "\n"):
            if words[0] not in NAMES:
                raise refusal(start, f"{escaped(words[0])} is not {NAMES[0]}")
            runs.append(Run(start, words[1:]))
            words = []
        if place == len(text):
            return runs
        if match := BLANKS.match(text, place) or COMMENT.match(text, place):
            place = match.end()
        elif text[place] == "\n":
            place, line = place + 1, line + 1
        else:
            start = start if words else line
            word = b""
            while match := PART.match(text, place):
                word += value_of(match)
                place, line = match.end(), line + match[0].count("\n")
            if place < len(text) and text[place] not in " \t\n":
                raise refusal(line, f"unquoted or unfinished {escaped(text[place])}")
            words.append(os.fsdecode(word))


def value_of(part: re.Match[str]) -> bytes:
    """Returns what a shell makes of a part of a word."""
    kind, value = part.lastgroup, os.fsencode(part[part.lastgroup or 0])
    if kind == "escape":
        return value[1:]
    if kind == "double":
        return re.sub(rb'\\([$`"\\])', rb"\1", value)
    if kind == "octal":
        return re.sub(rb"\\([0-7]{3}|.)", lambda match: bytes([int(match[1], 8)]) if len(match[1]) == 3 else match[1], value)
    return value


def refusal(line: int, reason: str) -> Failure:
    return Failure(f"line {line}: {reason}; nothing was run")
