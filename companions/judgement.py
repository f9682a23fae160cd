"""What logrotate says about the new rotation files."""

import os

from companions.machine import Machine
from companions.text import escaped
from companions.worker import run

LOGROTATE = "/usr/sbin/logrotate"
LOGROTATE_SECONDS = 60


def judgement(machine: Machine, files: list[str]) -> list[str]:
    """Returns the lines about the errors that logrotate finds in the files."""
    try:
        result = machine.worker.call(run, [LOGROTATE, "--debug", "--state", "/dev/null", *files], LOGROTATE_SECONDS)
    except FileNotFoundError:
        return ["logrotate is not installed: the new files are not checked."]
    except TimeoutError:
        return [f"logrotate does not end within {LOGROTATE_SECONDS} s: the new files are not checked."]
    errors = [escaped(line) for line in os.fsdecode(result.error).split("\n") if line.startswith("error:")]
    if not errors and result.status != 0:
        return [f"logrotate ends with status {result.status}."]
    return [f"logrotate: {line}" for line in errors] or ["logrotate finds no error."]
