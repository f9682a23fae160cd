"""Sandboxes for the commands of documents: one per document, so that each block finds the files of earlier blocks."""

import contextlib
import re
import subprocess

from lib.sandbox import TOP, scratch

__all__ = ["TOP", "World"]
PATH = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"
SECONDS = 300
# Runs after each command of a console. Puts the exit status between two record separators; no document contains that
# character.
PRINT_STATUS = "\nprintf '\\036%d\\036' $?\n"


class World:
    def __init__(self, program):
        self.stack = contextlib.ExitStack()
        self.sandbox = self.stack.enter_context(scratch(program))
        self.root = self.sandbox.root

    def close(self):
        self.stack.close()

    def run(self, *command):
        """Returns the exit status and the output."""
        try:
            result = subprocess.run(self.sandbox.command(*command), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                    stderr=subprocess.STDOUT, timeout=SECONDS, check=False)
        except subprocess.TimeoutExpired:
            return 124, f"still running after {SECONDS} s"
        return result.returncode, result.stdout.decode("utf-8", "backslashreplace")

    def shell(self, options, script):
        return self.run("/usr/bin/env", f"PATH={PATH}", "LC_ALL=C.UTF-8", "/bin/sh", options, "-c", "cd /tmp\n" + script)

    def script(self, block):
        """Returns the problems of a script, which must succeed."""
        status, printed = self.shell("-eu", block.text())
        return [] if status == 0 else [f"exit status {status}, output: {printed!r}"]

    def console(self, commands):
        """Runs the commands in one shell; returns the status and the output of each one reached."""
        _, printed = self.shell("-u", "exec 2>&1\n" + "".join(command.text + PRINT_STATUS for command in commands))
        return [(int(status), output) for output, status in re.findall("([^\036]*)\036([0-9]+)\036", printed)]
