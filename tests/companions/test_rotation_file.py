"""The reader of rotation files. program_test.py compares it with the program."""

import os
import tempfile
import time
import unittest

from companions import rotation_file
from companions.command import Failure


def lines(text: str) -> list[tuple[object, ...]]:
    """Returns the lines of the first stanza, whose body is the text."""
    return [tuple(line) for line in rotation_file.parse("/a {\n" + text).stanzas[0].lines]


def heads(text: str) -> list[tuple[str, int]]:
    return [(stanza.head, stanza.number) for stanza in rotation_file.parse(text).stanzas]


class Heads(unittest.TestCase):
    def test_a_head_ends_with_a_brace_and_a_newline(self) -> None:
        self.assertEqual(heads("/a {\n}\n/b{\n}\n"), [("/a ", 1), ("/b", 3)])

    def test_a_head_may_take_several_lines(self) -> None:
        self.assertEqual(heads("/a\n# a note {\n}\n"), [("/a\n# a note ", 2)])
        self.assertEqual(heads("/a\n# a note\n/b {\n}\n"), [("/a\n# a note\n/b ", 3)])

    def test_a_head_may_be_indented_or_quoted(self) -> None:
        self.assertEqual(heads("  \"/a b\" {\n}\n"), [("  \"/a b\" ", 1)])

    def test_a_brace_that_does_not_end_its_line_opens_nothing(self) -> None:
        for head in "/a { # note", "/a { ", "/a {\r":
            found = rotation_file.parse(f"{head}\ndaily\n}}\n/b {{\n}}\n")
            self.assertEqual([stanza.head for stanza in found.stanzas], ["/b "])
            self.assertEqual(found.other_heads, [1])

    def test_a_brace_in_a_pattern_hides_the_text_before_it(self) -> None:
        found = rotation_file.parse("/a/{b,c}/d {\n}\n")
        self.assertEqual((found.stanzas[0].head, found.other_heads), ("/a/{b,c}/d ", []))
        self.assertEqual(rotation_file.parse("/a/{b,c} {\n}\n").other_heads, [1])

    def test_only_a_comment_in_the_first_column_hides_a_head(self) -> None:
        self.assertEqual(heads("# /a {\n"), [])
        self.assertEqual(heads(" # /a {\n"), [(" # /a ", 1)])
        self.assertEqual(rotation_file.parse("# /a { b\n").other_heads, [])

    def test_a_comment_behind_the_end_of_a_stanza_hides_nothing(self) -> None:
        self.assertEqual(heads("/a {\n}# /b {\n}\n"), [("/a ", 1), ("# /b ", 2)])

    def test_the_logs_are_the_paths_without_quotes(self) -> None:
        self.assertEqual(rotation_file.parse("include /x\n/a \"/b c\" '/d'\n# note\n  /e/*.log {\n").stanzas[0].logs(),
                         ["/a", "/b c", "/d", "/e/*.log"])

    def test_the_text_outside_is_complete(self) -> None:
        self.assertEqual(rotation_file.parse("one\n/a {\n}\ntwo\n/b {\n} three").outside, "one\n\ntwo\n three")

    def test_an_empty_file_has_no_stanza(self) -> None:
        self.assertEqual(rotation_file.parse(""), ([], "", []))


class Lines(unittest.TestCase):
    def test_managed_lines(self) -> None:
        for kind, text in [("period", "daily"), ("period", "size 100k"), ("period", "size=100k"), ("period", "monthly # note"),
                           ("period", "dailyish"), ("rotate", "rotate 5"), ("rotate", "rotate\t 5 }"), ("compress", "compress"),
                           ("compress", "nocompress"), ("missingok", "missingok"), ("missingok", "nomissingok"),
                           ("copytruncate", "copytruncate"), ("mail", "mail a@b"), ("mailwhen", "mailfirst"),
                           ("mailwhen", "maillast"), ("mail", "mail first")]:
            for line in f"{text}\n", f"\t{text}\n", f" \t {text} \t\n":
                self.assertEqual(lines(line), [(kind, 2, text)])

    def test_other_lines(self) -> None:
        for text in ["yearly", "hourly", "minsize 1", "rotate", "compress # note", "delaycompress", "nocopytruncate", "mail",
                     "nomail", "mailfirst x", "postrotate x", "prerotate", "# daily", "x daily"]:
            self.assertEqual(lines(text + "\n"), [("other", 2, text)])

    def test_the_last_line_is_managed_only_with_a_newline(self) -> None:
        self.assertEqual(lines("daily"), [("other", 2, "daily")])

    def test_blank_lines_count(self) -> None:
        self.assertEqual(lines("\n \t\n\tdaily\n"), [("period", 4, "daily")])

    def test_a_brace_closes_the_stanza_except_in_a_managed_line(self) -> None:
        self.assertEqual(lines("daily }\nfoo } rotate 5\nrotate 6\n"), [("period", 2, "daily }"), ("other", 3, "foo")])

    def test_a_script_ends_with_endscript(self) -> None:
        self.assertEqual(lines("postrotate\n\tdaily }\n\t/x/anonymize_ip $*\nendscript\ndaily\n}\n"),
                         [("postrotate", 2, "postrotate"), ("script", 3, "daily }"), ("anonymizer", 4, "/x/anonymize_ip $*"),
                          ("endscript", 5, "endscript"), ("period", 6, "daily")])

    def test_other_commands_of_a_script(self) -> None:
        for text in "/anonymize_ip $*", "x/anonymize_ip $*", "/x/anonymize_ip", "/x/anonymize_ipx $*", "/x/y $* /anonymize_ip":
            self.assertEqual(lines(f"postrotate\n{text}\n")[1:], [("script", 3, text)])


class Reading(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = folder.name + "/file"

    def test_any_bytes_are_read(self) -> None:
        data = bytes(range(256))
        with open(self.path, "wb") as file:
            file.write(data)
        self.assertEqual(os.fsencode(rotation_file.read(self.path)), data)

    def test_a_large_file_is_refused(self) -> None:
        with open(self.path, "wb") as file:
            file.truncate(rotation_file.LARGEST)
        self.assertEqual(len(rotation_file.read(self.path)), rotation_file.LARGEST)
        os.truncate(self.path, 1 << 40)
        self.assertRaises(Failure, rotation_file.read, self.path)

    def test_a_special_file_is_refused(self) -> None:
        os.mkfifo(self.path)
        for path in self.path, os.path.dirname(self.path), os.devnull:
            self.assertRaises(Failure, rotation_file.read, path)

    def test_no_text_takes_long(self) -> None:
        size = rotation_file.LARGEST
        for head, pieces in ("", ["/", "/{", "{", "#\n", "/a {\n}"]), ("/a {\n", [" ", "compress ", "daily\n", "\n", "mail "]), \
                ("/a {\npostrotate\n", ["/anonymize_ip"]):
            for piece in pieces:
                start = time.process_time()
                rotation_file.parse(head + piece * (size // len(piece)))
                self.assertLess(time.process_time() - start, 20, (head, piece))


if __name__ == "__main__":
    unittest.main()
