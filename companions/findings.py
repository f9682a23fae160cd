"""The findings of the check: which are wanted, and how they are printed."""

import collections
import json
import os
from collections.abc import Iterable
from typing import NamedTuple

from companions.program import HOSTS_DIRECTORY, target_of, without_temporary_suffix
from companions.text import escaped, printable, valid

OK, WARNING, CRITICAL, UNKNOWN = range(4)
LEVELS = ("OK", "WARNING", "CRITICAL", "UNKNOWN")

# The kinds, with their level for a monitoring program. CRITICAL: logs are not rotated although they should be, or users
# other than root can decide what root runs.
KINDS = {kind: CRITICAL for kind in ("duplicate", "error", "log", "not-included", "overdue", "permissions", "state")}
KINDS |= {kind: WARNING for kind in ("anonymize", "command", "gone", "ignored", "leftover", "missing", "stanza", "unchecked")}


class Finding(NamedTuple):
    """`line` is 0 if the finding is about the whole file."""

    file: str
    line: int
    kind: str
    text: str


def target_file(path: str) -> str:
    """Returns the rotation file to which a file belongs: its temporary file, or its name while it is paused."""
    return (without_temporary_suffix(path) or path).removesuffix(".disabled")


def wanted(findings: Iterable[Finding], hosts: list[str], ignored: list[tuple[str, str]], machine: set[str]) -> list[Finding]:
    """Returns the findings in order: those about one of the hosts or about the machine, and none that is ignored."""
    own = machine | {target_of(host) for host in hosts}
    silenced = {(target_of(host), kind) for host, kind in ignored}

    def is_wanted(finding: Finding) -> bool:
        names = {finding.file, target_file(finding.file)}
        return (not hosts or bool(names & own)) and not any((name, finding.kind) in silenced for name in names)
    return sorted(filter(is_wanted, set(findings)))


def listed(names: list[str]) -> str:
    """Returns the first names as text. Thousands of names are one finding."""
    return ", ".join(map(printable, names[:3])) + (f" and {len(names) - 3} more" if len(names) > 3 else "")


def as_text(finding: Finding) -> str:
    place = printable(finding.file) + (f":{finding.line}" if finding.line else "")
    return f"{place}: {escaped(finding.text)}"


def as_json(findings: list[Finding]) -> str:
    """Returns one JSON object. Bytes that are not UTF-8 become backslash escapes, because JSON cannot contain them."""
    return json.dumps({"findings": [{"file": valid(finding.file), "line": finding.line or None, "kind": finding.kind,
                                     "text": valid(finding.text)} for finding in findings]})


def without_bars(text: str) -> str:
    """Returns the text without the character that begins the performance data."""
    return text.replace("|", "\\174")


def as_plugin(findings: list[Finding], age: float | None) -> tuple[int, str]:
    """Returns the status and the line of a monitoring plugin."""
    level = max((KINDS[finding.kind] for finding in findings), default=OK)
    said = "nothing to report"
    if findings:
        kinds = collections.Counter(finding.kind for finding in findings)
        worst = next(finding for finding in findings if KINDS[finding.kind] == level)
        said = ", ".join(f"{kinds[kind]} {kind}" for kind in sorted(kinds)) + "; " + without_bars(as_text(worst))
    critical = sum(KINDS[finding.kind] == CRITICAL for finding in findings)
    data = f"critical={critical};;0;0 warning={len(findings) - critical};0;;0"
    return level, f"LOGROTATE {LEVELS[level]} - {said} | {data}" + (f" state_age={age:.0f}s;;172800;0" if age is not None else "")


def is_host_file(path: str) -> bool:
    return os.path.dirname(path) == HOSTS_DIRECTORY
