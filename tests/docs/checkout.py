"""Checks the commands that are meant for the top of the source tree (build, test, package), but does not run them."""

import json
import os
import re
import shlex
import shutil

from docs.documents import Block, Command
from lib.sandbox import TOP


def commands(block: Block) -> list[Command]:
    """Returns the commands of a block: its lines, joined at a final backslash, without comments."""
    found, text, first = [], "", 0
    for number, line in enumerate(block.lines, block.line + 1):
        first = first if text else number
        text += line
        if line.endswith("\\"):
            text += "\n"
        elif text.strip() and not text.lstrip().startswith("#"):
            found.append(Command(first, text))
            text = ""
        else:
            text = ""
    return found


def presets() -> set[str]:
    known = json.loads((TOP / "CMakePresets.json").read_text())
    return {preset["name"] for kind, rows in known.items() if kind.endswith("Presets") for preset in rows}


def problems_of(text: str) -> list[str]:
    """Returns a problem for each program or preset that a command names but that does not exist."""
    problems = []
    for part in re.split(r"&&|\|\||;|\|", text):
        words = shlex.split(part, comments=True)
        while words and (words[0] == "sudo" or re.match(r"\w+=", words[0])):
            words.pop(0)
        if words and words[0] not in ("cd", "export") and shutil.which(words[0], path=f"{os.environ['PATH']}:{TOP}") is None \
                and not os.access(TOP / words[0], os.X_OK):
            problems.append(f"there is no program '{words[0]}'")
        problems += [f"there is no preset '{name}'" for name in re.findall(r"--preset[= ](\S+)", part) if name not in presets()]
    return problems
