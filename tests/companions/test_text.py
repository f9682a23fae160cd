"""How names and sizes are shown."""

import io
import os
import subprocess
import unittest
from unittest import mock

from companions.text import escaped, human, printable, shell_quoted, use_colour, valid

NAMES = ["a", "a b", "a'b", 'a"b', "a\\b", "a\nb", "\x1b[31m", "caf\u00e9", "\udcff", "\u202e",
         "$(id)", "*", "", "-x", "~", "\x7f", "a\tb"]


class Names(unittest.TestCase):
    def test_escapes(self) -> None:
        for text, shown in [("a b", "a b"), ("caf\u00e9", "caf\u00e9"), ("a\nb", "a\\012b"), ("\udcff", "\\377"),
                            ("\x1b", "\\033"), ("\u202e", "\\342\\200\\256"), ("\\", "\\"), ("", "")]:
            self.assertEqual(escaped(text), shown)
        self.assertEqual(escaped("a'b", "'"), "a\\047b")

    def test_quotes_where_they_are_needed(self) -> None:
        for text, shown in [("/a", "/a"), ("/a b", '"/a b"'), ("/a\\", '"/a\\134"'), ('/"', '"/\\042"'), ("/a\n", '"/a\\012"'),
                            ("/'", "/'")]:
            self.assertEqual(printable(text), shown)

    def test_a_shell_reads_what_was_quoted(self) -> None:
        for name in NAMES:
            said = subprocess.run(["bash", "-c", "printf %s " + shell_quoted(name)], capture_output=True, check=True,
                                  env={"LC_ALL": "C"})
            self.assertEqual(os.fsdecode(said.stdout), name)
            self.assertTrue(shell_quoted(name).isprintable())

    def test_json_gets_valid_text(self) -> None:
        self.assertEqual([valid(text) for text in ("a\u00e9", "\udcff", "\n")], ["a\u00e9", "\\xff", "\n"])


class Sizes(unittest.TestCase):
    def test_the_largest_unit(self) -> None:
        for size, shown in [(0, "0 B"), (1023, "1023 B"), (1024, "1.0 KiB"), (1536, "1.5 KiB"), (1048524, "1023.9 KiB"),
                            (1048575, "1.0 MiB"), (1 << 20, "1.0 MiB"),
                            (1 << 30, "1.0 GiB"), (1 << 40, "1.0 TiB"), (1 << 50, "1024.0 TiB")]:
            self.assertEqual(human(size), shown)


class Colour(unittest.TestCase):
    def test_only_on_a_terminal_that_wants_it(self) -> None:
        for terminal, environment, wanted in [(True, {}, True), (False, {}, False), (True, {"TERM": "dumb"}, False),
                                              (True, {"TERM": "xterm", "NO_COLOR": ""}, True), (True, {"NO_COLOR": "1"}, False)]:
            output = io.StringIO()
            with mock.patch.object(output, "isatty", return_value=terminal), mock.patch("sys.stdout", output), \
                    mock.patch.dict(os.environ, environment, clear=True):
                self.assertEqual(use_colour(), wanted, (terminal, environment))


if __name__ == "__main__":
    unittest.main()
