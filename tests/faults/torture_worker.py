"""Runs the rows inside the sandbox. With words as arguments, runs only the rows whose names contain one of them."""

import importlib
import sys

from lab import set_up_process
from rows import run_rows

for kind in ("limit", "process", "fanout", "memory", "time"):
    importlib.import_module(f"{kind}_rows")  # This registers its rows.
set_up_process()
run_rows(sys.argv[1:])
