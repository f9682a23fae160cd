"""The report of a runner: what passed, what failed, and what could not be checked here."""

import time

# The exit status of a runner if a check could not be made on this machine. tests/lib/gate.py names such a runner.
SKIPPED = 77
INTERVAL = 10.0


class Report:
    """Counts checks and prints those that need attention. `total`, if known, is the number of checks to come."""

    def __init__(self, total: int = 0, unit: str = "checks", verbose: bool = False) -> None:
        self.total, self.unit, self.verbose = total, unit, verbose
        self.passed = self.failed = self.skipped = 0
        self._next = time.monotonic() + INTERVAL

    def tell(self, what: str, problems: list[str]) -> None:
        """Counts one check, which passed if there is no problem."""
        self.passed += not problems
        self.failed += bool(problems)
        if problems or self.verbose:
            print(("FAILED  " if problems else "ok      ") + _indented(what), flush=True)
        for problem in problems:
            print("        " + _indented(problem), flush=True)
        self.show_progress()

    def skip(self, what: str, reason: object) -> None:
        """Counts a check that cannot be made on this machine."""
        self.skipped += 1
        print(f"SKIPPED {what}: {reason}", flush=True)

    def finish(self) -> int:
        """Prints the totals and returns the exit status of the runner. A runner that checked nothing has failed."""
        print(f"{self.passed} passed, {self.failed} failed, {self.skipped} skipped", flush=True)
        if self.failed or not self.passed and not self.skipped:
            return 1
        return SKIPPED if self.skipped else 0

    def show_progress(self) -> None:
        """Prints from time to time how many checks are done."""
        if time.monotonic() >= self._next:
            self._next = time.monotonic() + INTERVAL
            done = self.passed + self.failed + self.skipped
            print(f"{done} of {self.total} {self.unit}" if self.total else f"{done} {self.unit}", flush=True)


def _indented(text: str) -> str:
    return text.replace("\n", "\n        ")
