"""How the companions show names and sizes."""

import os
import shlex
import sys


def escaped(text: str, special: str = "") -> str:
    """Returns the text with octal escapes for unprintable characters and for those in `special`."""
    return "".join(c if c.isprintable() and c not in special else "".join(f"\\{byte:03o}" for byte in os.fsencode(c))
                   for c in text)


def printable(path: str) -> str:
    """Returns the path, in quotes if it contains a space, a quote, a backslash or an unprintable character.

    patch(1) reads both forms.
    """
    result = escaped(path, '"\\')
    return result if result == path and " " not in path else f'"{result}"'


def shell_quoted(text: str) -> str:
    """Returns the text quoted for a shell. Only unprintable text gets octal escapes, which dash does not understand."""
    return shlex.quote(text) if text.isprintable() else "$'" + escaped(text, "'\\") + "'"


def valid(text: str) -> str:
    """Returns the text with backslash escapes for bytes that are not UTF-8, because JSON cannot contain them."""
    return os.fsencode(text).decode(errors="backslashreplace")


def human(size: float) -> str:
    """Returns the size in bytes as text, in the largest unit in which the number is at least 1."""
    if size < 1024:
        return f"{size:.0f} B"
    for unit in ("KiB", "MiB", "GiB", "TiB"):
        size /= 1024
        if size < 1023.95:
            break
    return f"{size:.1f} {unit}"


def use_colour() -> bool:
    return sys.stdout.isatty() and os.environ.get("TERM") != "dumb" and not os.environ.get("NO_COLOR")
