"""Reads rotation files as the program reads them: the same stanzas, and the same lines as managed lines."""

import bisect
import os
import re
import stat
from typing import NamedTuple

from companions.command import Failure

LARGEST = 1 << 20  # A thousand times the size of a generated file.

# In the first column a "#" starts a comment, in which a slash starts no head.
COMMENT_OR_SLASH = re.compile(r"^#.*|/", re.MULTILINE)

# A managed line. The group that matches is its kind, and its text is the line without the white space around it.
MANAGED_LINE = re.compile(r"""[ \t]*(?:
    (?P<period>(?:size|daily|weekly|monthly).*) | (?P<rotate>rotate[ \t].*)         | (?P<compress>(?:no)?compress)[ \t]*  |
    (?P<missingok>(?:no)?missingok)[ \t]*       | (?P<copytruncate>copytruncate)[ \t]* | (?P<mail>mail[ \t].*)             |
    (?P<mailwhen>mail(?:first|last))[ \t]*      | (?P<postrotate>postrotate)[ \t]* )\n""", re.VERBOSE)
SCRIPT_LINE = re.compile(r"[ \t]*(?:(?P<anonymizer>/[^ \t\n]+/anonymize_ip[ \t].*)|(?P<endscript>endscript)[ \t]*)\n")

# A line outside the stanzas that opens a stanza only for logrotate.
OTHER_HEAD = re.compile(r"^[^#\n]*\{", re.MULTILINE)

# For logrotate.
COMMENT = re.compile(r"^[ \t]*#.*", re.MULTILINE)
SCRIPT = re.compile(r"^[ \t]*(?:(?:pre|post)rotate|(?:first|last)action|preremove)\b.*?(?:^[ \t]*endscript\b|\Z)",
                    re.MULTILINE | re.DOTALL)
PATH = re.compile(r"""^[ \t]*["'/]""", re.MULTILINE)
WORD = re.compile(r"""\"[^"]*"?|'[^']*'?|[^\s"']+""")


class Line(NamedTuple):
    """A line of a stanza. `kind` is a group of the patterns above, or "script" or "other" for a line that is copied."""

    kind: str
    number: int
    text: str


class Stanza(NamedTuple):
    """`head` is the text from the first slash to the brace, and `number` the number of the line with the brace."""

    head: str
    number: int
    lines: list[Line]

    def logs(self) -> list[str]:
        """Returns the paths and patterns of the logs, without quotes."""
        paths = (line for line in self.head.split("\n") if re.match(r"""[ \t]*["'/]""", line))
        return [word.strip("\"'") for line in paths for word in re.findall(r"""\"[^"]*"?|'[^']*'?|[^ \t"']+""", line)]

    def of_kind(self, kind: str) -> list[Line]:
        return [line for line in self.lines if line.kind == kind]


class RotationFile(NamedTuple):
    """`outside` is the text outside the stanzas. `other_heads` are the numbers of lines with heads that the program ignores."""

    stanzas: list[Stanza]
    outside: str
    other_heads: list[int]


def read(path: str) -> str:
    """Returns the text of a file. Raises OSError or Failure if it is not a regular file of at most `LARGEST` bytes."""
    fd = os.open(path, os.O_RDONLY | os.O_NONBLOCK | os.O_NOCTTY | os.O_CLOEXEC)
    try:
        if not stat.S_ISREG(os.fstat(fd).st_mode):
            raise Failure("not a regular file")
        with open(fd, "rb", closefd=False) as file:
            data = file.read(LARGEST + 1)
    finally:
        os.close(fd)
    if len(data) > LARGEST:
        raise Failure(f"larger than {LARGEST >> 20} MiB")
    return os.fsdecode(data)


def parse(text: str) -> RotationFile:
    newlines = [match.start() for match in re.finditer("\n", text)]

    def number_at(place: int) -> int:
        return bisect.bisect_left(newlines, place) + 1

    stanzas: list[Stanza] = []
    outside: list[str] = []
    other_heads: set[int] = set()
    body = 0
    while body >= 0:
        position = body
        start, body = find_head(text, position)
        outside.append(text[position:start])
        other_heads.update(number_at(match.end()) for match in OTHER_HEAD.finditer(text, position, start))
        if body >= 0:
            # With the start of its first line, the head contains an opening quote.
            head = text[max(position, text.rfind("\n", 0, start) + 1):body - 2]
            stanzas.append(Stanza(head, number_at(body - 1), []))
            body = parse_body(text, body, stanzas[-1])
    return RotationFile(stanzas, "".join(outside), sorted(other_heads - {stanza.number for stanza in stanzas}))


def find_head(text: str, position: int) -> tuple[int, int]:
    """Returns the start of the next stanza's head and of its body, or the end of the text and -1."""
    brace = -1
    for match in COMMENT_OR_SLASH.finditer(text, position):
        if match[0] == "/":
            if brace < match.end():
                brace = text.find("{", match.end())
            if brace < 0:
                break
            if text.startswith("\n", brace + 1):
                return match.start(), brace + 2
    return len(text), -1


def parse_body(text: str, position: int, stanza: Stanza) -> int:
    """Adds the lines of the stanza, whose body starts at `position`. Returns where the stanza ends."""
    number, in_script = stanza.number, False
    while position < len(text):
        number += 1
        if match := (SCRIPT_LINE if in_script else MANAGED_LINE).match(text, position):
            kind = match.lastgroup or ""
            stanza.lines.append(Line(kind, number, match[kind].rstrip(" \t")))
            in_script = kind == "postrotate" or in_script and kind != "endscript"
            position = match.end()
        else:
            end = text.find("\n", position)
            end = len(text) if end < 0 else end
            close = -1 if in_script else text.find("}", position, end)
            if said := text[position:end if close < 0 else close].strip():
                stanza.lines.append(Line("script" if in_script else "other", number, said))
            if close >= 0:
                return close + 1
            position = end + 1
    return len(text)


def stanzas_for_logrotate(text: str) -> list[tuple[list[str], int]]:
    """Returns the logs of each stanza that logrotate reads, and the number of the line with its brace."""
    text = COMMENT.sub("", SCRIPT.sub(lambda match: "\n" * match[0].count("\n"), text))
    found, number, is_open = [], 1, False
    pieces = re.split("([{}])", text)
    for piece, brace in zip(pieces[::2], pieces[1::2]):
        number += piece.count("\n")
        if brace == "{" and not is_open and (match := PATH.search(piece)):
            found.append(([word.strip("\"'") for word in WORD.findall(piece, match.start())], number))
        is_open = brace == "{"
    return found
