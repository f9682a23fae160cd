"""A gate passes only if each of its steps has passed."""

import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from collections.abc import Callable

HERE = pathlib.Path(__file__).resolve().parent
# Runs lanes of scripts, given as arguments: "|" separates the steps of a lane, which are called 1, 2, ... The second step's
# skips are allowed.
GATE = """
import itertools, pathlib, sys
from lib.gate import Gate, Step
number = itertools.count(1)
lanes = [[Step(str(next(number)), script) for script in lane.split("|")] for lane in sys.argv[2:]]
sys.exit(Gate(lanes, ["2"], pathlib.Path(sys.argv[1])).run())
"""


class GateTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def start(self, *lanes: str) -> subprocess.Popen[str]:
        environment = {**os.environ, "PYTHONPATH": str(HERE.parent), "PYTHONDONTWRITEBYTECODE": "1"}
        return subprocess.Popen([sys.executable, "-c", GATE, self.folder / "logs", *lanes], env=environment, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)

    def gate(self, *lanes: str) -> tuple[int, str]:
        """Returns the exit status and the last line."""
        process = self.start(*lanes)
        output = process.communicate(timeout=60)[0]
        return process.returncode, output.splitlines()[-1].partition(" s  ")[2]

    def expect(self, status: int, summary: str, *lanes: str) -> None:
        self.assertEqual(self.gate(*lanes), (status, summary))

    def test_says_how_many_steps_passed(self) -> None:
        self.expect(0, "3 steps: 3 passed, 0 failed, 0 skipped", "true|true", "true")

    def test_fails_if_a_step_fails_and_ends_only_its_lane(self) -> None:
        self.expect(1, "4 steps: 2 passed, 1 failed, 0 skipped, 1 did not run", "false|true", "true|true")

    def test_fails_if_a_step_is_killed(self) -> None:
        self.expect(1, "2 steps: 1 passed, 1 failed, 0 skipped", "kill -KILL $$", "true")

    def test_fails_if_a_lane_is_killed_from_outside(self) -> None:
        process = self.start("true", f"echo $$ >{self.folder}/lane; sleep 60")
        os.killpg(self.number_in("lane"), signal.SIGKILL)
        output = process.communicate(timeout=60)[0]
        self.assertEqual(process.returncode, 1)
        self.assertIn("2 steps: 1 passed, 1 failed, 0 skipped", output)

    def test_fails_if_a_lane_ends_by_a_mistake_of_the_gate(self) -> None:
        self.expect(1, "2 steps: 1 passed, 0 failed, 0 skipped, 1 did not run", "rm $(readlink /proc/$$/fd/1)", "true")

    def test_fails_if_a_step_could_not_check_something(self) -> None:
        self.expect(1, "1 steps: 0 passed, 0 failed, 1 skipped", "exit 77")

    def test_passes_if_that_is_allowed_for_the_step(self) -> None:
        self.expect(0, "2 steps: 1 passed, 0 failed, 1 skipped", "true|exit 77")

    def test_fails_if_ctest_could_not_run_a_test(self) -> None:
        self.expect(1, "1 steps: 0 passed, 0 failed, 1 skipped", "echo '1/9 Test #1: TargetFile.Is .....***Skipped   0.01 sec'")

    def test_a_failure_is_not_a_skip(self) -> None:
        self.expect(1, "2 steps: 1 passed, 1 failed, 0 skipped", "true|echo 'SKIPPED a row: no disk'; exit 1")

    def test_ends_its_own_steps_and_nothing_else_on_term(self) -> None:
        process = self.start(f"echo $$ >{self.folder}/lane; sleep 60; touch {self.folder}/survived", "sleep 60|true")
        step = self.number_in("lane")
        process.terminate()
        process.communicate(timeout=60)
        self.assertEqual(process.returncode, 128 + signal.SIGTERM)
        self.wait_until(lambda: not pathlib.Path(f"/proc/{step}").exists())
        self.assertFalse((self.folder / "survived").exists())

    def number_in(self, name: str) -> int:
        """Waits for a step to write its process number."""
        file = self.folder / name
        self.wait_until(lambda: file.exists() and file.read_text() != "")
        return int(file.read_text())

    def wait_until(self, condition: Callable[[], bool]) -> None:
        end = time.monotonic() + 30
        while not condition():
            self.assertLess(time.monotonic(), end)
            time.sleep(0.01)


if __name__ == "__main__":
    unittest.main()
