"""Reads runs as tavek-logrotate-show --commands prints them: commands for a shell, one per line."""

import re
import shlex
from typing import NamedTuple

from companions.command import Failure
from companions.program import PROGRAM
from companions.text import escaped

NAMES = ("tavek-logrotate", PROGRAM)

# Everything that is not in this form has another meaning for a shell, or shells differ about it.
WORD = r"""(?:[\w@%+=:,./-] | '[^'\0]*' | "[^"\\$`\0]*")+"""
COMMAND = re.compile(rf"[ \t]*(?:{WORD}(?:[ \t]+{WORD})*[ \t]*)?(?:(?<![^ \t])\#.*)?", re.VERBOSE)


class Run(NamedTuple):
    """A run of the program. `line` is the number of its line, or None."""

    line: int | None
    arguments: list[str]


def parse(text: str) -> list[Run]:
    """Returns the runs. Raises Failure if a shell would do anything other than these runs."""
    runs = []
    for number, line in enumerate(text.split("\n"), 1):
        if not COMMAND.fullmatch(line):
            raise Failure(f"line {number} is not a command as tavek-logrotate-show --commands prints it; nothing was run")
        words = shlex.split(line, comments=True)
        if words and words[0] not in NAMES:
            raise Failure(f"line {number}: {escaped(words[0])} is not {NAMES[0]}; nothing was run")
        if words:
            runs.append(Run(number, words[1:]))
    return runs
