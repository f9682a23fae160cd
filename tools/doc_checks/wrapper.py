"""Checks that the installed command does not run a program from the current directory.

If the program itself is started by a bare name, --system-logs first looks for that name in the current directory and
runs what it finds there, once per category. The second check confirms this; otherwise the first would prove nothing.
"""

PLANT = "cd /tmp && printf '#!/bin/sh\\necho planted\\n' >tavek-logrotate && chmod 755 tavek-logrotate\n"
CHECKS = [
    ("the installed command ignores a program in the current directory", "", ""),
    ("the program started by a bare name runs it", "PATH=/opt/oru/admin/sbin:$PATH\n", "planted\n" * 5),
]


def checks(world):
    """Yields the name and the problems of each check."""
    for name, setting, expected in CHECKS:
        status, printed = world.shell("-eu", PLANT + setting + "tavek-logrotate --system-logs\n")
        yield f"wrapper: {name}", [] if (status, printed) == (0, expected) else [f"exit status {status}: {printed!r}"]
