"""How the commands start and end. All of them are tried, in a sandbox."""

import os
import pty
import signal
import subprocess
import unittest

from companions import VERSION
from lib.sandbox import PROGRAM, TOP, Sandbox, scratch

# The commands of the package, and their status if they cannot do their job.
COMMANDS = {"tavek-logrotate-show": 2, "tavek-logrotate-preview": 125, "tavek-logrotate-check": 2}
ENVIRONMENTS = ["LC_ALL=C.UTF-8", "LC_ALL=C", "LC_ALL=en_US.ISO-8859-1", "PYTHONIOENCODING=latin-1",
                "PYTHONPATH=/tmp PYTHONHOME=/nowhere PYTHONSTARTUP=/tmp/companions.py PYTHONWARNINGS=error"]

# Lists what is left. A shell may be about to make its directory and to remove it.
REMNANTS = "for i in 1 2 3 4 5 6 7 8 9; do sleep 0.3; ls -A /dev/shm | grep -q . || break; done; ls -A /dev/shm"


class Commands(unittest.TestCase):
    sandbox: Sandbox

    def setUp(self) -> None:
        self.sandbox = self.enterContext(scratch(PROGRAM))
        self.sandbox.path("/tmp/companions.py").write_text("print('imported from /tmp')\n")

    def shell(self, script: str, *words: str) -> tuple[int, str, str]:
        result = self.sandbox.run("sh", "-c", f"cd /tmp; {script}", "sh", *words)
        return result.returncode, os.fsdecode(result.stdout), os.fsdecode(result.stderr)

    def test_every_command_is_tried(self) -> None:
        found = {path.name for path in (TOP / "commands").iterdir()}
        self.assertEqual(found - {"tavek-logrotate"}, set(COMMANDS))

    def test_help(self) -> None:
        for command in COMMANDS:
            said = {self.shell(f"{environment} {command} {option}") for environment in ENVIRONMENTS for option in ("--help", "-h")}
            self.assertEqual(len(said), 1)
            status, text, errors = said.pop()
            self.assertEqual((status, errors), (0, ""))
            self.assertRegex(text, rf"\A[A-Z][^\n]*\.\n\nUsage: {command} ")
            self.assertTrue(text.endswith(".\n") and f" {command} {{--help | --version}}\n" in text, text)

    def test_help_needs_no_rights(self) -> None:
        for command in COMMANDS:
            result = self.sandbox.run(command, "--help", user=True)
            self.assertEqual((result.returncode, result.stderr), (0, b""))

    def test_version(self) -> None:
        for command in COMMANDS:
            self.assertEqual(self.shell(f"{command} --version"), (0, f"{command} {VERSION}\n", ""))

    def test_closed_standard_streams(self) -> None:
        for command, failure in COMMANDS.items():
            self.assertEqual(self.shell(f"{command} --version <&- 2>&-"), (0, f"{command} {VERSION}\n", ""))
            self.assertEqual(self.shell(f"{command} --version >&-"), (0, "", ""))
            self.assertEqual(self.shell(f"{command} --help <&- >&- 2>&-"), (0, "", ""))
            self.assertEqual(self.shell(f"{command} --nonsense-a --nonsense-b <&- >&- 2>&-")[1:], ("", ""))
            self.assertEqual(self.shell(f"{command} --version >/dev/full"),
                             (failure, "", f"{command}: No space left on device\n"))
            self.assertEqual(self.shell(f"{command} --version >/dev/full 2>&1"), (failure, "", ""))

    def test_a_closed_pipe(self) -> None:
        for command in COMMANDS:
            script = f"(sleep 0.2; {command} --help; echo $? >/tmp/status) | true; cat /tmp/status"
            status, said, errors = self.shell(script)
            self.assertEqual((status, said, errors), (0, f"{128 + signal.SIGPIPE}\n", ""))

    def test_nothing_is_written_beside_the_code(self) -> None:
        for command in COMMANDS:
            folder = self.sandbox.path(f"/var/{command}")
            for part, place in ("commands", "sbin"), ("companions", "share/tavek-logrotate/companions"):
                subprocess.run(["cp", "-rT", TOP / part, self.mkdir(folder / place)], check=True)
            before = sorted(folder.rglob("*.pyc"))
            self.assertEqual(self.shell(f"/var/{command}/sbin/{command} --version")[0], 0)
            self.assertEqual(sorted(folder.rglob("*.pyc")), before)

    @staticmethod
    def mkdir(folder: os.PathLike[str]) -> os.PathLike[str]:
        os.makedirs(folder)
        return folder


class Show(unittest.TestCase):
    def setUp(self) -> None:
        self.sandbox = self.enterContext(scratch(PROGRAM))

    def start(self, *words: str, stdout: int = subprocess.PIPE) -> subprocess.Popen[bytes]:
        return subprocess.Popen(self.sandbox.command(*words), stdin=subprocess.DEVNULL, stdout=stdout, stderr=subprocess.PIPE)

    def test_colour_on_a_terminal(self) -> None:
        for environment, coloured in ("TERM=xterm", True), ("NO_COLOR=1", False), ("TERM=dumb", False):
            controller, terminal = pty.openpty()
            with self.start("env", environment, "tavek-logrotate-show", stdout=terminal) as process:
                process.wait()
            said = os.read(controller, 1000)
            os.close(terminal)
            os.close(controller)
            self.assertEqual(said.startswith(b"\x1b[1mNAME ") and said.endswith(b"\x1b[m\r\n"), coloured, said)
            self.assertIn(b"NOTE", said)

    def test_the_names_are_the_same_in_every_locale(self) -> None:
        for name in b"caf\xc3\xa9.example", b"\xff.example":
            (self.sandbox.path("/opt/oru/etc/logrotate.d") / os.fsdecode(name)).write_text("/a {\n\tdaily\n}\n")
        said = {self.sandbox.run("env", *environment.split(), "tavek-logrotate-show", "--commands").stdout for environment in ENVIRONMENTS}
        self.assertEqual(len(said), 1)
        self.assertIn(b"\ntavek-logrotate 'caf\xc3\xa9.example' on ", said.pop())

    def test_a_signal_leaves_nothing_behind(self) -> None:
        for number in range(200):
            (self.sandbox.path("/opt/oru/etc/logrotate.d") / f"{number}.example").write_text("/a {\n\tdaily\n}\n")
        script = "tavek-logrotate-show >/tmp/said & sleep $2; kill -$1 $!; wait $!; echo $?; " + REMNANTS
        killed = 0
        for name in "HUP", "INT", "TERM":
            for delay in range(5):
                result = self.sandbox.run("sh", "-c", script, "sh", name, str(0.06 + delay / 30))
                status, *left = result.stdout.decode().split()
                self.assertEqual(left, [], (name, delay))
                killed += status != "0"
        self.assertGreater(killed, 5)

    def test_a_check_that_is_killed_leaves_nothing_behind(self) -> None:
        """Without a private view its directory is visible."""
        script = ("setpriv --bounding-set=-sys_admin --inh-caps=-sys_admin tavek-logrotate-check >/tmp/said & "
                  "until set -- /dev/shm/*; [ -e $1 ]; do kill -0 $! || break; done; kill -KILL $!; wait $!; echo $?; ") + REMNANTS
        said = [self.sandbox.run("sh", "-c", script).stdout.decode() for _ in range(5)]
        self.assertIn("137\n", said)
        self.assertFalse([each for each in said if "tavek" in each])


if __name__ == "__main__":
    unittest.main()
