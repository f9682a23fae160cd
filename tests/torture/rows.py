"""The rows of the torture: functions that make the world misbehave, run the tool in it and say what holds."""

import sys
import time
import traceback

ROWS = []


class Skip(Exception):
    """Raised by a row that this machine cannot run, with the reason."""


class Row:
    """What a row function is given: it counts what holds and prints what does not."""

    def __init__(self, name):
        self.name = name
        self.held = 0
        self.figures = []

    def holds(self, condition, what):
        if condition:
            self.held += 1
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
    except Exception:  # One row that breaks must not hide the others.
        print(f"FAILED {name}:\n{traceback.format_exc()}", flush=True)
    figures = "".join(f"; {figure}" for figure in current.figures)
    print(f"passed {current.held} {name}")
    print(f"{name}: {current.held} passed, {time.monotonic() - start:.1f} s{figures}", flush=True)


def run_rows(words):
    for name, function in ROWS:
        if not words or any(word in name for word in words):
            run_row(name, function)
    sys.stdout.flush()
