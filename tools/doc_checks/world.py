"""Sandboxes for the commands of documents: one per document, so that each block finds the files of earlier blocks."""

import pathlib
import re
import shutil
import subprocess
import tempfile

TOP = pathlib.Path(__file__).resolve().parent.parent.parent
PATH = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"
SECONDS = 300
# In the sandbox /usr is that of the machine and read-only, so a folder with the installed documents is mounted over
# /usr/share/doc.
MOUNT = 'mount --bind /opt/doc /usr/share/doc && exec "$@"'
# Runs after each command of a console. Puts the exit status between two record separators; no document contains that
# character.
PRINT_STATUS = "\nprintf '\\036%d\\036' $?\n"


class World:
    def __init__(self, program):
        self.folder = tempfile.TemporaryDirectory(prefix="docs.", dir="/dev/shm")  # Thousands of syncs are slow on a disk.
        self.root = pathlib.Path(self.folder.name)
        self.root.chmod(0o755)
        sandbox = [str(TOP / "tools" / "sandbox"), "--program", str(program), str(self.root)]
        subprocess.run(sandbox, check=True)
        shutil.copytree(TOP / "examples", self.root / "opt/doc/tavek-logrotate/examples")
        self.start = [*sandbox, "sh", "-c", MOUNT, "sh"]

    def close(self):
        self.folder.cleanup()

    def run(self, *command):
        """Returns the exit status and the output."""
        try:
            result = subprocess.run([*self.start, *command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
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
