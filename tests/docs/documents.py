"""Finds the sections of Markdown files and manual pages, and the blocks in them, whose kinds README.md describes."""

import pathlib
import re
from collections.abc import Iterator
from dataclasses import dataclass, field

FENCE = re.compile(r"^(?P<indent> *)```(?P<words>[^`]*)$")
TITLE = re.compile(r'^(?:#+ (?P<markdown>.*)|\.S[hs] "?(?P<manual>.*?)"?)$')
KINDS = {("console",): "console", ("console", "fails"): "failing console", ("sh", "checkout"): "checkout"}
# A fence that starts with one of these words but is of no known kind is an error: its commands would not be tested.
SHELLS = {"sh", "bash", "shell", "zsh", "console", "shell-session", "shellsession"}
CODE = re.compile(r"^ *```.*?^ *```$|`[^`\n]*`", re.M | re.S)
LINK = re.compile(r"\[[^\]]*\]\(([^)#\s]+)(?:#[^)]*)?\)")


@dataclass
class Command:
    line: int
    text: str
    output: str = ""


@dataclass
class Block:
    path: str
    line: int
    kind: str
    lines: list[str] = field(default_factory=list)

    def commands(self) -> list[Command]:
        """Returns the commands of a console with their outputs."""
        commands: list[Command] = []
        for number, line in enumerate(self.lines, self.line + 1):
            if line.startswith(("# ", "$ ")):
                commands.append(Command(number, line[2:]))
            elif line.startswith("> ") and commands and not commands[-1].output:
                commands[-1].text += "\n" + line[2:]
            elif commands:
                commands[-1].output += line + "\n"
            else:
                raise ValueError(f"{self.path}:{number}: output before the first command")
        return commands


@dataclass
class Section:
    """The part of a document from one title to the next, whatever their ranks."""

    title: str
    blocks: list[Block] = field(default_factory=list)

    @property
    def slug(self) -> str:
        """The title in lower case, with a hyphen for each group of characters that are not letters or digits."""
        return re.sub(r"\W+", "-", self.title.lower()).strip("-")


class Reader:
    """Reads a document line by line into sections."""

    def __init__(self, shown: str) -> None:
        self.path = shown
        self.sections = [Section("")]
        self.block: Block | None = None
        self.indent = self.ending = ""

    def read(self, text: str) -> list[Section]:
        for number, line in enumerate(text.splitlines(), 1):
            if self.block is None:
                self.outside(number, line)
            elif line.strip() == self.ending:
                self.block = None
            else:
                self.block.lines.append(self.content(line))
        if self.block is not None:
            raise ValueError(f"{self.path}:{self.block.line}: the block does not end")
        return self.sections

    def outside(self, number: int, line: str) -> None:
        if title := TITLE.match(line):
            self.sections.append(Section(title["markdown"] or title["manual"]))
        else:
            self.start(number, line)

    def begin(self, number: int, kind: str, ending: str, indent: str = "") -> None:
        self.block = Block(self.path, number, kind)
        self.sections[-1].blocks.append(self.block)
        self.ending, self.indent = ending, indent

    def start(self, number: int, line: str) -> None:
        """Begins a block, if the line begins one."""
        raise NotImplementedError

    def content(self, line: str) -> str:
        """Returns what a reader sees of a line in a block."""
        raise NotImplementedError


class Markdown(Reader):
    def start(self, number: int, line: str) -> None:
        if fence := FENCE.match(line):
            self.begin(number, self.kind(tuple(fence["words"].split()), number), "```", fence["indent"])

    def content(self, line: str) -> str:
        return line.removeprefix(self.indent)

    def kind(self, words: tuple[str, ...], number: int) -> str:
        if words and words[0] in SHELLS and words not in KINDS:
            raise ValueError(f"{self.path}:{number}: a block marked '{' '.join(words)}' is of no known kind")
        return KINDS.get(words, "text")


class Manual(Reader):
    def start(self, number: int, line: str) -> None:
        if line.startswith(".Bd -literal"):
            self.begin(number, "console", ".Ed")

    def content(self, line: str) -> str:
        """Only these escapes are used in literal displays."""
        return re.sub(r"\\.", lambda match: {r"\-": "-", r"\e": "\\", r"\ ": " ", r"\&": ""}[match[0]], line)


def sections_of(path: pathlib.Path, shown: str) -> list[Section]:
    return (Markdown if path.suffix == ".md" else Manual)(shown).read(path.read_text())


def broken_links(path: pathlib.Path) -> Iterator[str]:
    """Finds the links of a Markdown file to files that do not exist."""
    for target in LINK.findall(CODE.sub("", path.read_text())):
        if ":" not in target and not (path.parent / target).exists():
            yield f"{target} does not exist"
