"""The rotation files of hosts: whether they name the host's logs, and whether the program recognizes them."""

import fnmatch
import os
import re
import subprocess
from collections.abc import Iterator

from companions.log_service import run_logrotate
from companions.log_view import LogView
from companions.program import LOG_FAMILIES, PROGRAM
from companions.rotation_file import RotationFile
from companions.text import shell_quoted
from companions.view import SCRATCH

FOREIGN = "names logs of another host: "
HOST_LOG = re.compile(r"(/.*)/system/([^/*?[]+)/logs/[^/]*")


def stanza_problems(path: str, root: str, text: str, rotation: RotationFile, others: list[str]) -> Iterator[tuple[int, str]]:
    """Yields the line and the text of what is wrong with the stanzas of a host's file. `others` are patterns of other files."""
    host = os.path.basename(path)
    heads = [number for number in rotation.other_heads if "/" in text.split("\n")[number - 1].partition("{")[0]]
    if heads:
        lost = "" if rotation.stanzas else " and the next run appends four stanzas"
        script = ";".join(f"{number}s/{{/{{\\n/" for number in heads)
        yield heads[0], (f"text follows the brace, so the program does not recognize this stanza{lost}"
                         f"; look at it, then: sed -i {shell_quoted(script)} {shell_quoted(path)}")
        return
    if not rotation.stanzas:
        yield 0, "contains no stanza, so the logs of this host are not rotated"
        return
    patterns = [(pattern, stanza.number) for stanza in rotation.stanzas for pattern in stanza.logs()]
    for pattern, number in patterns:
        match = HOST_LOG.fullmatch(pattern)
        if match and match[1] != root and os.path.realpath(match[1]) != os.path.realpath(root):
            yield number, f"names logs below {match[1]}, but HTTPD_VHOSTS_D is {root}"
            return
        if match and match[2] != host:
            yield number, FOREIGN + match[2]
            return
    folder = f"{root}/system/{host}/logs"
    named = [*(pattern for pattern, _ in patterns), *others]
    missing = [log for log in (f"{folder}/{family}" for family in LOG_FAMILIES) if os.path.isdir(folder) and
               log not in named and not any(fnmatch.fnmatchcase(log, each) or fnmatch.fnmatchcase(each, log) for each in named)]
    if missing:
        yield 0, f"contains no stanza for {', '.join(missing)}"


def repair(path: str, number: int, text: str, view: LogView) -> str:
    """Returns what to do about an error in a line, as text after the error. Empty if another run repairs the line.

    The program and logrotate judge copies of the file. No repair touches a brace or the head of a stanza.
    """
    copy = SCRATCH + "/repaired"

    def errors_after(*command: str) -> int:
        with open(copy, "w", errors="surrogateescape", newline="") as file:
            file.write(text)
        subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, check=False)
        with view.shown():
            said = run_logrotate(["--debug", "--state", os.devnull, copy]) or "error: "
        return len(re.findall(r"^error: |^warning: .* unknown option ", said, re.MULTILINE))
    errors = errors_after("true")
    if errors_after(PROGRAM, copy, "on", "by_time", "daily", "5", "true", "-K") < errors:
        return ""
    line = "".join(text.split("\n")[number - 1:number])
    script = f"{number}s/}}.*/}}/" if re.fullmatch(r"[ \t]*}[^/{}]+", line) else f"{number}d"
    is_safe = script[-1] == "/" or re.fullmatch(r"[ \t]*[^ \t\"'/{}][^{}]*", line)
    command = ""
    if is_safe and errors_after("sed", "-i", script, copy) < errors:
        command = f"; look at it, then: sed -i {shell_quoted(script)} {shell_quoted(path)}"
    return "; another run does not repair this line" + command
