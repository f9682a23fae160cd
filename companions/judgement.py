"""What logrotate and the check find in the new rotation files."""

import contextlib
import os

from companions import rotation_file
from companions.command import Failure
from companions.configuration import Panel, is_unknown_host, missing_commands
from companions.text import escaped, printable
from companions.worker import run

LOGROTATE = "/usr/sbin/logrotate"
SECONDS = 60


def judgement(files: list[str]) -> list[str]:
    """Returns lines about what is wrong with the files, and the judgement of logrotate, which only parses them."""
    return [*findings(files), *errors(files)] if files else []


def errors(files: list[str]) -> list[str]:
    try:
        result = run([LOGROTATE, "--debug", "--state", "/dev/null", *files], SECONDS)
    except FileNotFoundError:
        return ["logrotate is not installed: the new files are not checked."]
    except TimeoutError:
        return [f"logrotate does not end within {SECONDS} s: the new files are not checked."]
    found = [escaped(line) for line in os.fsdecode(result.error).split("\n") if line.startswith("error:")]
    if not found and result.status != 0:
        return [f"logrotate ends with status {result.status}."]
    return [f"logrotate: {line}" for line in found] or ["logrotate -d parses the new files without an error."]


def findings(files: list[str]) -> list[str]:
    """Returns what logrotate notices only when it rotates, or not at all."""
    found = []
    with contextlib.suppress(Failure, OSError):
        panel = Panel(None)
        found += [f"{printable(path)}: no such host: {printable(f'{panel.directory}/{os.path.basename(path)}')} does not exist"
                  for path in files if is_unknown_host(path, panel)]
    for path in files:
        with contextlib.suppress(Failure, OSError):
            commands = missing_commands(rotation_file.parse(rotation_file.read(path)))
            found += [f"{printable(path)}:{line}: {escaped(command)} does not exist or cannot be executed"
                      for command, line in commands.items()]
    return found
