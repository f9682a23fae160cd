"""Checks that the installed command does not run a program from the current directory.

Started by a bare name, the program itself does: --system-logs looks for the program there first, once per category.
That must fail here too, or the check proves nothing.
"""

PLANT = "cd /tmp && printf '#!/bin/sh\\necho planted\\n' >tavek-logrotate && chmod 755 tavek-logrotate\n"
CHECKS = [
    ("the installed command ignores a program in the current directory", "", ""),
    ("the program started by a bare name runs it", "PATH=/opt/oru/admin/sbin:$PATH\n", "planted\n" * 5),
]


def checks(world):
    """(name, problems) of everything that is compared."""
    for name, setting, expected in CHECKS:
        status, printed = world.shell("-eu", PLANT + setting + "tavek-logrotate --system-logs\n")
        yield f"wrapper: {name}", [] if (status, printed) == (0, expected) else [f"exit status {status}: {printed!r}"]
