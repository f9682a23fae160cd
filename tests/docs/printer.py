"""Prints a Markdown document on a terminal, part by part."""

import os
import pathlib
import re
import sys

from docs.documents import Block

TITLE, BOLD, RED, GREEN, PLAIN = "\x1b[1;36m", "\x1b[1m", "\x1b[31m", "\x1b[32m", "\x1b[0m"
IN_DISPLAYS = [(re.compile(r"[$#>] .*"), BOLD), (re.compile(r"-.*"), RED), (re.compile(r"\+.*"), GREEN)]


class Printer:
    """Coloured on a terminal, unless NO_COLOR is set."""

    def __init__(self, path: pathlib.Path) -> None:
        self.lines = path.read_text().splitlines()
        self.printed = 0
        self.in_display = False
        self.coloured = sys.stdout.isatty() and not os.environ.get("NO_COLOR") and os.environ.get("TERM", "dumb") != "dumb"

    def show(self, block: Block) -> None:
        """Prints what is left of the document up to the end of the block."""
        self._print_to(block.line + len(block.lines) + 1)

    def show_rest(self) -> None:
        self._print_to(len(self.lines))

    def _print_to(self, end: int) -> None:
        for line in self.lines[self.printed:end]:
            if line.startswith("```"):
                self.in_display = not self.in_display
            else:
                print(self._display(line) if self.in_display else self._text(line))
        self.printed = end
        sys.stdout.flush()

    def _text(self, line: str) -> str:
        title = re.fullmatch(r"#+ (.*)", line)
        return self._colour(TITLE, title[1]) if title else line.replace("**", "").replace("`", "")

    def _display(self, line: str) -> str:
        colours = [colour for pattern, colour in IN_DISPLAYS if pattern.fullmatch(line)]
        return self._colour(colours[0], line) if colours else line

    def _colour(self, colour: str, text: str) -> str:
        return colour + text + PLAIN if self.coloured else text
