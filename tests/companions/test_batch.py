"""The reader of runs: it reads what a shell reads in the same way, and refuses everything else."""

import os
import random
import shlex
import subprocess
import unittest

from companions import batch
from companions.command import Failure


def arguments(text: str) -> list[list[str]]:
    return [run.arguments for run in batch.parse(text)]


class Commands(unittest.TestCase):
    def test_blank_lines_and_comments_are_skipped(self) -> None:
        self.assertEqual(batch.parse("\n# a comment; rm\n \ttavek-logrotate a on # more\n\n"), [batch.Run(3, ["a", "on"])])

    def test_the_last_line_needs_no_newline(self) -> None:
        self.assertEqual(batch.parse("tavek-logrotate a\n/opt/oru/admin/sbin/tavek-logrotate b"),
                         [batch.Run(1, ["a"]), batch.Run(2, ["b"])])

    def test_other_commands_are_refused(self) -> None:
        for text in "rm -r /", "./tavek-logrotate a", "sudo tavek-logrotate a", "A=b tavek-logrotate c", "''":
            with self.assertRaisesRegex(Failure, "^line 2: .* is not tavek-logrotate; nothing was run$"):
                batch.parse("tavek-logrotate a\n" + text)

    def test_text_with_a_meaning_for_a_shell_is_refused(self) -> None:
        for text in ("a;b", "a&", "a|b", "a>b", "a<b", "(a)", "`a`", "$a", "${a}", "$(a)", '"$a"', '"`a`"', "a*", "?", "[a]", "~", "~a",
                     "{a,b}", "!a", "a^b", "'a", '"a', "a\\", "a\\\nb", '"a\\\nb"', "'a\nb'", "\r", "a\r", "\f", "$'a'", "a#b", "'a'#b",
                     "$\"a\"", "a\0b", "'a\0b'", '"a\0"', "\\\0"):
            with self.subTest(text=text), self.assertRaisesRegex(Failure, "^line 1 is not a command as "):
                batch.parse("tavek-logrotate " + text + "\ntavek-logrotate b")


class Quotes(unittest.TestCase):
    def test_a_shell_reads_the_same_words(self) -> None:
        for text in ("a'b c'd\"e f\"g", "''", '""', "'\\'", "'#'", "'$a'", "caf\u00e9", "a=b,c.d/e:f@g%h+i-j_k"):
            with self.subTest(text=text):
                shown = subprocess.run(["sh", "-c", f"printf '%s\\0' {text}"], capture_output=True, check=True).stdout
                self.assertEqual(arguments("tavek-logrotate " + text), [os.fsdecode(shown).split("\0")[:-1]])

    def test_what_the_companions_quote_is_read_back(self) -> None:
        chance = random.Random(1)
        for _ in range(2000):
            words = [os.fsdecode(bytes(chance.choices(b"a'\"\\$`\r\t #\x1b\xc3\xa9\xff=~*", k=chance.randrange(6)))) for _ in range(3)]
            self.assertEqual(arguments("tavek-logrotate " + shlex.join(words)), [words])
