"""Commands that a document gives for the top of the source tree: building, testing, packaging."""

import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import tempfile

from .documents import Command
from .world import TOP

# Set while such commands run, so that a test suite run by a document does not run the documents' commands again.
RUNNING = "TAVEK_DOCS_CHECKOUT"
SECONDS = 3600


def commands(block):
    """The commands of a block, one a line unless a line ends in a backslash; comments are none."""
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


def presets():
    known = json.loads((TOP / "CMakePresets.json").read_text())
    return {preset["name"] for kind, rows in known.items() if kind.endswith("Presets") for preset in rows}


def look_up(text):
    """Whether the programs that a command names exist, and the presets."""
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


class Build:
    """A copy of the source tree, made when the first command is to be run in it."""

    def __init__(self, really):
        self.really = really and RUNNING not in os.environ
        self.folder = None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.folder:
            self.folder.cleanup()

    def copy(self):
        if not self.folder:
            self.folder = tempfile.TemporaryDirectory(prefix="checkout.")
            shutil.copytree(TOP, pathlib.Path(self.folder.name) / TOP.name, symlinks=True,
                            ignore=lambda folder, _: ["build"] if folder == str(TOP) else [])
        return pathlib.Path(self.folder.name) / TOP.name

    def problems(self, text):
        problems = look_up(text)
        if problems or not self.really:
            return problems
        result = subprocess.run(["sh", "-eu", "-c", text], cwd=self.copy(), env={**os.environ, RUNNING: "1"}, check=False,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                timeout=SECONDS)
        return [] if result.returncode == 0 else [f"exit status {result.returncode}:\n" + result.stdout[-2000:]]
