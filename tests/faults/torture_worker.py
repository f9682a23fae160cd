"""Runs the rows inside the sandbox. With words as arguments, runs only the rows whose names contain one of them."""

import sys

# Importing a module registers its rows.
import limit_rows  # noqa: F401
import process_rows  # noqa: F401
import fanout_rows  # noqa: F401
import crowd_rows  # noqa: F401
import log_service_rows  # noqa: F401
import memory_rows  # noqa: F401
import time_rows  # noqa: F401
from lab import set_up_process
from rows import run_rows

set_up_process()
run_rows(sys.argv[1:])
