"""Sandboxes for the commands of documents: one per document, so that each block finds the files of earlier blocks."""

import contextlib
import pathlib
import re
import subprocess

from docs.documents import Command
from lib.sandbox import scratch

PATH = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"
SECONDS = 300
# Runs after each command of a console. Puts the exit status between two record separators; no document contains that
# character.
PRINT_STATUS = "\nprintf '\\036%d\\036' $?\n"


class World:
    """A context manager."""

    def __init__(self, program: pathlib.Path) -> None:
        self.stack = contextlib.ExitStack()
        self.sandbox = self.stack.enter_context(scratch(program))

    def __enter__(self) -> "World":
        return self

    def __exit__(self, *_: object) -> None:
        self.stack.close()

    def run(self, *command: str) -> tuple[int, str]:
        """Returns the exit status and the output."""
        try:
            result = subprocess.run(self.sandbox.command(*command), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                    stderr=subprocess.STDOUT, timeout=SECONDS, check=False)
        except subprocess.TimeoutExpired:
            return 124, f"still running after {SECONDS} s"
        return result.returncode, result.stdout.decode("utf-8", "backslashreplace")

    def shell(self, options: str, script: str) -> tuple[int, str]:
        return self.run("/usr/bin/env", f"PATH={PATH}", "LC_ALL=C.UTF-8", "/bin/sh", options, "-c", "cd /tmp\n" + script)

    def script(self, text: str) -> list[str]:
        """Returns the problems of a script, which must succeed."""
        status, printed = self.shell("-eu", text)
        return [] if status == 0 else [f"exit status {status}, output: {printed!r}"]

    def console(self, commands: list[Command]) -> list[tuple[int, str]]:
        """Runs the commands in one shell; returns the status and the output of each one reached."""
        _, printed = self.shell("-u", "exec 2>&1\n" + "".join(command.text + PRINT_STATUS for command in commands))
        return [(int(status), output) for output, status in re.findall("([^\036]*)\036([0-9]+)\036", printed)]
