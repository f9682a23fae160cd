"""Finds the commands in Markdown files and manual pages.

The fence of a Markdown block gives its kind:

    ```sh               a script, run in the sandbox; it must end with status 0
    ```console          commands after "# " or "$ ", continued after "> ", each followed by its exact output; they run
                        in one shell, and each must end with status 0
    ```console fails    the same, but each must fail
    ```sh checkout      commands to be run at the top of the source tree; the tests do not run them
    ```other or ```     not commands

A comment that starts with "<!-- before" contains a script that prepares the following blocks. In a manual page,
each literal display is a console, and each comment '.\\"! ...' is such a script.
"""

import re
from dataclasses import dataclass, field

FENCE = re.compile(r"^(?P<indent> *)```(?P<words>[^`]*)$")
KINDS = {("sh",): "script", ("console",): "console", ("console", "fails"): "failing console", ("sh", "checkout"): "checkout"}
# A fence that starts with one of these words but is of no known kind is an error: its commands would not be tested.
SHELLS = {"sh", "bash", "shell", "zsh", "console", "shell-session", "shellsession"}


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
    lines: list = field(default_factory=list)

    def text(self):
        return "".join(line + "\n" for line in self.lines)

    def commands(self):
        """Returns the commands of a console with their outputs."""
        commands = []
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


def kind_of(words, where):
    if words in KINDS:
        return KINDS[words]
    if words and words[0] in SHELLS:
        raise ValueError(f"{where}: a block marked '{' '.join(words)}' is of no known kind")
    return "text"


def markdown_blocks(path, text):
    blocks, block, indent, ending = [], None, "", ""
    for number, line in enumerate(text.splitlines(), 1):
        fence = FENCE.match(line)
        if block is not None:
            if line.strip() == ending:
                blocks.append(block)
                block = None
            else:
                block.lines.append(line.removeprefix(indent))
        elif fence:
            block = Block(path, number, kind_of(tuple(fence["words"].split()), f"{path}:{number}"))
            indent, ending = fence["indent"], "```"
        elif line == "<!-- before":
            block, indent, ending = Block(path, number, "before"), "", "-->"
    if block is not None:
        raise ValueError(f"{path}:{block.line}: the block does not end")
    return blocks


def unescape(line):
    """Returns the text of a line in a literal display, where only these escapes are used."""
    def character(match):
        return {r"\-": "-", r"\e": "\\", r"\ ": " ", r"\&": ""}[match[0]]
    return re.sub(r"\\.", character, line)


def manual_blocks(path, text):
    blocks, block = [], None
    for number, line in enumerate(text.splitlines(), 1):
        if line.startswith('.\\"!'):
            if not (blocks and blocks[-1].kind == "before" and blocks[-1].line + len(blocks[-1].lines) == number):
                blocks.append(Block(path, number, "before"))
            blocks[-1].lines.append(line[4:].strip())
        elif line.startswith(".Bd -literal"):
            block = Block(path, number, "console")
        elif line == ".Ed" and block is not None:
            blocks.append(block)
            block = None
        elif block is not None:
            block.lines.append(unescape(line))
    return blocks


def blocks_of(path, shown):
    text = path.read_text()
    return markdown_blocks(shown, text) if path.suffix == ".md" else manual_blocks(shown, text)
