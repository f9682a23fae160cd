"""Shows what a run would change and delete."""

import errno
import os
import re
import subprocess
import sys

from companions.changes import changes_of
from companions.command import Failure
from companions.program import HOSTS_DIRECTORY, PROGRAM, SYSTEM_DIRECTORY
from companions.text import escaped, human, printable
from companions.view import build_view, run_in_view

LOGROTATE = "/usr/sbin/logrotate"
CONFIGURATION_DIRECTORIES = (HOSTS_DIRECTORY, SYSTEM_DIRECTORY)
LOGROTATE_SECONDS = 60
CHANGES = 10
NO_PREVIEW = 125


def is_rotation_file(path, arguments):
    """Returns whether the path is in a configuration directory or is the target that one of the arguments names."""
    def target(name):
        path = os.path.join(CONFIGURATION_DIRECTORIES[0], name)
        return os.path.join(os.path.realpath(os.path.dirname(path)), os.path.basename(path))
    return (any(path.startswith(os.path.realpath(directory) + "/") for directory in CONFIGURATION_DIRECTORIES) or
            any(path == target(re.sub("^--[^=]*=", "", argument)) for argument in arguments))


def print_judgement(files):
    """Prints the errors that logrotate finds in the files."""
    try:
        result = run_in_view([LOGROTATE, "--debug", "--state", "/dev/null", *files], LOGROTATE_SECONDS)
    except FileNotFoundError:
        print("logrotate is not installed: the new files are not checked.")
        return
    except subprocess.TimeoutExpired:
        print(f"logrotate does not end within {LOGROTATE_SECONDS} s: the new files are not checked.")
        return
    errors = [line for line in result.stderr.decode(errors="surrogateescape").split("\n") if line.startswith("error:")]
    for line in errors:
        print(f"logrotate: {escaped(line)}")
    if not errors:
        print("logrotate finds no error." if result.returncode == 0 else f"logrotate ends with status {result.returncode}.")


def print_changes(changes, arguments):
    copies, files = [], []
    for each in changes:
        (copies if each.is_removal() and not is_rotation_file(each.path, arguments) else files).append(each)
    for each in files:
        each.print()
    for each in copies:
        print(f"delete {printable(each.path)} ({human(each.size())})")
    summary = []
    if files:
        summary.append("1 file would change" if len(files) == 1 else f"{len(files)} files would change")
    if copies:
        summary.append(f"{len(copies)} {'copy' if len(copies) == 1 else 'copies'} "
                       f"({human(sum(each.size() for each in copies))}) would be deleted")
    print(", ".join(summary) + "." if summary else "No changes.")
    new = [each.path for each in files if not each.is_removal()]
    if new:
        print_judgement(new)


def preview(arguments):
    """Prints the preview. Returns the exit status of the run and whether the run changes anything."""
    if os.geteuid() != 0:
        raise Failure("must be run as root")
    mounts = build_view()
    try:
        result = run_in_view([PROGRAM, *arguments])
    except OSError as error:
        raise Failure(f"cannot start {PROGRAM}: {error.strerror}") from error
    for each in mounts:
        if each.needs_overlay() and not each.covered and os.strerror(errno.EROFS).encode() in result.stderr:
            raise Failure(f"{printable(each.path)} ({each.kind}) accepts no overlay, and the run may need to write there")
    for stream, text in (sys.stdout, result.stdout), (sys.stderr, result.stderr):
        stream.buffer.write(text)
        stream.flush()
    changes = [change for each in mounts if each.covered for change in changes_of(each) if change.exists()]
    print_changes(sorted(changes, key=lambda change: change.path), arguments)
    status = result.returncode if result.returncode >= 0 else 128 - result.returncode
    if status != 0:
        print(f"The run would fail with status {status}.")
    return status, bool(changes)


def main(arguments):
    exit_code = arguments[:1] == ["--exit-code"]
    status, changes = preview(arguments[exit_code:])
    return status or (CHANGES if exit_code and changes else 0)
