"""The rows of tests/faults/torture: named functions, each of which causes a fault, runs the tool and checks the result."""

import time
import traceback

ROWS = []


class Skip(Exception):
    """Raised, with the reason, by a row that cannot run on this machine."""


class Row:
    """Passed to the function of a row: counts the checks that pass and prints the others."""

    def __init__(self, name):
        self.name = name
        self.passed = 0
        self.figures = []

    def check(self, condition, what):
        if condition:
            self.passed += 1
        else:
            print(f"FAILED {self.name}: {what}", flush=True)

    def figure(self, text):
        self.figures.append(text)


def row(name):
    def register(function):
        ROWS.append((name, function))
        return function
    return register


def run_row(name, function):
    current = Row(name)
    start = time.monotonic()
    try:
        function(current)
    except Skip as reason:
        print(f"SKIPPED {name}: {reason}", flush=True)
        return
    except Exception:  # The other rows still run.
        print(f"FAILED {name}:\n{traceback.format_exc()}", flush=True)
    figures = "".join(f"; {figure}" for figure in current.figures)
    print(f"passed {current.passed} {name}")
    print(f"{name}: {current.passed} passed, {time.monotonic() - start:.1f} s{figures}", flush=True)


def run_rows(words):
    for name, function in ROWS:
        if not words or any(word in name for word in words):
            run_row(name, function)
