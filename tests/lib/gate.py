"""Runs the steps of tools/test and tools/nightly and says which of them passed.

A gate passes only if every step ended with status 0. A step that ends with the status SKIPPED, or in which ctest skipped a
test, could not check something on this machine: that fails the gate too, unless the caller allows this step's skips by name.
"""

import argparse
import os
import pathlib
import re
import signal
import subprocess
import sys
import threading
import time
from collections.abc import Sequence
from dataclasses import dataclass
from types import FrameType

from lib.report import SKIPPED
from lib.sandbox import TOP

INTERVAL, POLL = 10.0, 2.0
SKIPPED_LINE = re.compile(rb"^SKIPPED .*|^.*\*\*\*Skipped.*", re.M)


@dataclass(frozen=True)
class Step:
    name: str
    script: str  # For bash, at the top of the source tree.


def build(preset: str) -> Step:
    return Step(f"build-{preset}", f"cmake --preset {preset} && cmake --build --preset {preset}")


class Gate:
    """Lanes run at the same time; the steps of a lane run one after another until one fails."""

    def __init__(self, lanes: Sequence[Sequence[Step]], allowed: Sequence[str], logs: pathlib.Path, go_on: bool = False) -> None:
        self.lanes, self.allowed, self.logs, self.go_on = lanes, allowed, logs, go_on
        self.results: dict[str, str] = {}
        self.running: dict[str, subprocess.Popen[bytes]] = {}
        self.signal = 0
        self.begin = time.monotonic()

    def run(self) -> int:
        """Runs all lanes and returns the exit status of the gate."""
        self.logs.mkdir(parents=True, exist_ok=True)
        for log in self.logs.iterdir():
            log.unlink()
        for number in (signal.SIGINT, signal.SIGTERM):
            signal.signal(number, self._stop)
        threads = [threading.Thread(target=self._run_lane, args=(lane,)) for lane in self.lanes]
        for thread in threads:
            thread.start()
        for thread in threads:
            while thread.is_alive():
                thread.join(POLL)  # A signal that comes just before the wait is handled only after it.
        return 128 + self.signal if self.signal else self._finish()

    def _stop(self, number: int, _: FrameType | None) -> None:
        """Ends the steps. Each has a process group of its own, so nothing else is ended with it."""
        self.signal = number
        for process in list(self.running.values()):
            os.killpg(process.pid, signal.SIGTERM)

    def _say(self, text: str) -> None:
        print(f"{time.monotonic() - self.begin:5.0f} s  {text}", flush=True)

    def _run_lane(self, lane: Sequence[Step]) -> None:
        for step in lane:
            if self.signal or self._run_step(step) == "failed" and not self.go_on:
                return

    def _run_step(self, step: Step) -> str:
        begin, log = time.monotonic(), self.logs / f"{step.name}.log"
        number = len(self.results) + len(self.running) + 1
        self._say(f"{step.name} ({number} of {sum(map(len, self.lanes))})")
        with open(log, "wb") as output:
            process = subprocess.Popen(["bash", "-euo", "pipefail", "-c", step.script], cwd=TOP, stdin=subprocess.DEVNULL,
                                       stdout=output, stderr=subprocess.STDOUT, start_new_session=True)
        self.running[step.name] = process
        status = self._wait(step, process, log)
        del self.running[step.name]
        skips = SKIPPED_LINE.findall(log.read_bytes())
        result = "failed" if status not in (0, SKIPPED) else "skipped" if skips or status == SKIPPED else "passed"
        self.results[step.name] = result
        if result == "failed":
            print(log.read_bytes()[-8000:].decode("utf-8", "backslashreplace"), flush=True)
        for skip in skips[:5]:
            self._say(f"{step.name}: {skip.decode('utf-8', 'backslashreplace')[:120]}")
        why = f", exit status {status}, see {log}" if result == "failed" else f": {_last_line(log)}"
        self._say(f"{result}: {step.name} ({time.monotonic() - begin:.0f} s){why}")
        return result

    def _wait(self, step: Step, process: subprocess.Popen[bytes], log: pathlib.Path) -> int:
        next_report = time.monotonic() + INTERVAL
        while True:
            try:
                return process.wait(POLL)
            except subprocess.TimeoutExpired:
                if self.signal:  # It may have come before the process was listed, or while a shell was starting another.
                    os.killpg(process.pid, signal.SIGTERM)
            if time.monotonic() >= next_report:
                next_report += INTERVAL
                self._say(f"{step.name}: {_last_line(log)}")

    def _finish(self) -> int:
        """Judges every step that was to run, so a step or a lane that disappears is a failure."""
        names: dict[str, list[str]] = {result: [] for result in ("passed", "failed", "skipped", "did not run")}
        for lane in self.lanes:
            for step in lane:
                names[self.results.get(step.name, "did not run")].append(step.name)
        for result in ("did not run", "skipped", "failed"):
            if names[result]:
                self._say(f"{result}: {', '.join(names[result])}")
        refused = [name for name in names["skipped"] if name not in self.allowed]
        if refused:
            self._say(f"FAILED: {', '.join(refused)} could not check everything here; --allow-skip NAME allows that")
        counts = ", ".join(f"{len(found)} {result}" for result, found in names.items() if found or result != "did not run")
        self._say(f"{sum(map(len, names.values()))} steps: {counts}")
        return 1 if names["failed"] or names["did not run"] or refused else 0


def _last_line(log: pathlib.Path) -> str:
    """Returns the last line of a log that says something."""
    lines = log.read_bytes()[-4000:].decode("utf-8", "backslashreplace").split("\n")
    return next((line.strip()[:120] for line in reversed(lines) if line.strip()), "has printed nothing yet")


def main(description: str | None, lanes: Sequence[Sequence[Step]], chosen_by_name: bool = False) -> int:
    """The command line of a gate. With `chosen_by_name` the caller may name steps, and all of them run although one failed."""
    steps = [step.name for lane in lanes for step in lane]
    parser = argparse.ArgumentParser(description=description, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--allow-skip", action="append", default=[], choices=steps, metavar="STEP",
                        help="pass although this step could not check everything on this machine; may be repeated")
    if chosen_by_name:
        parser.add_argument("steps", nargs="*", metavar="STEP", help="run only these steps: " + ", ".join(steps))
    options = parser.parse_args()
    chosen = getattr(options, "steps", [])
    if unknown := set(chosen) - set(steps):
        parser.error(f"there is no step {', '.join(sorted(unknown))}")
    lanes = [[step for step in lane if not chosen or step.name in chosen] for lane in lanes]
    subprocess.run(["tools/install-packages", "tests"], cwd=TOP, check=True)
    logs = TOP / "build" / pathlib.Path(sys.argv[0]).name
    return Gate(lanes, options.allow_skip, logs, go_on=chosen_by_name).run()
