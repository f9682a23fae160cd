"""Runs the rows inside the sandbox. Arguments: words that limit the run to the rows whose names hold one."""

import sys

# Importing a module registers its rows.
import disk_rows  # noqa: F401
import stream_rows  # noqa: F401
import order_rows  # noqa: F401
import fanout_rows  # noqa: F401
import signal_rows  # noqa: F401
import crowd_rows  # noqa: F401
import memory_rows  # noqa: F401
import time_rows  # noqa: F401
from rows import run_rows
from sweep_calls import take_default_signals

take_default_signals()
run_rows(sys.argv[1:])
