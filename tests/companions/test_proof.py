"""Runs on copies, with a script in place of the program."""

import os
import tempfile
import unittest
from unittest import mock

from companions import proof
from companions.command import Failure
from companions.proof import Run, line_changes, prove

PROGRAM = """#!/bin/sh
[ -z "$HOME" ] || exit 9
path=$1
shift
case $1 in
  keep) ;;
  add) echo "$path" >>"$path" ;;
  name) printf %s "${path##*/}" >"$path" ;;
  fail) echo "cannot open $path" >&2; echo more; exit 3 ;;
  die) kill -9 $$ ;;
  wait) sleep 0.3 ;;
esac
"""


class Proofs(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        program = folder.name + "/program"
        with open(program, "w", encoding="utf-8") as file:
            file.write(PROGRAM)
        os.chmod(program, 0o755)
        self.left = set(os.listdir("/dev/shm"))
        for target, value in ("companions.proof.PROGRAM", program), ("companions.command.signal.signal", mock.DEFAULT):
            patch = mock.patch(target, value)
            patch.start()
            self.addCleanup(patch.stop)

    def tearDown(self) -> None:
        left = {name for name in os.listdir("/dev/shm") if name.startswith("tavek-logrotate.")} - self.left
        self.assertEqual(left, set())

    def test_a_run_that_changes_nothing(self) -> None:
        self.assertEqual(prove([Run("/x/a", "text\n", ["keep"])]), [[]])

    def test_the_copy_has_the_name_of_the_file_and_its_bytes(self) -> None:
        self.assertEqual(prove([Run("/x/-b *\udcff", "\udcff", ["name"])]), [["- \udcff", "+ -b *\udcff"]])

    def test_a_failure_names_the_file(self) -> None:
        result = prove([Run("/x/a", "", ["fail"])])[0]
        self.assertIsInstance(result, Failure)
        self.assertEqual(str(result), "cannot open /x/a")

    def test_a_failure_without_a_message(self) -> None:
        self.assertEqual(str(prove([Run("/x/a", "", ["die"])])[0]), "status -9")

    def test_each_result_belongs_to_its_run(self) -> None:
        runs = [Run(f"/x/{number}", "", ["wait" if number % 5 == 0 else "name"]) for number in range(20)]
        self.assertEqual(prove(runs), [[] if number % 5 == 0 else ["- ", f"+ {number}"] for number in range(20)])

    def test_files_of_the_same_name(self) -> None:
        self.assertEqual(prove([Run("/x/a", "x", ["keep"]), Run("/y/a", "y", ["name"])]), [[], ["- y", "+ a"]])

    def test_few_runs_at_once_and_few_copies(self) -> None:
        start, result_of = proof.start, proof.result_of
        running = most = 0

        def counted_start(run: Run, directory: str) -> int:
            nonlocal running, most
            running += 1
            most = max(most, running)
            return start(run, directory)

        def counted_result(run: Run, directory: str, status: int) -> list[str] | Failure:
            nonlocal running
            running -= 1
            result = result_of(run, directory, status)
            self.assertEqual(os.listdir(directory), [])
            return result

        for processors, expected in (3, 4), (None, 2):
            most = 0
            with mock.patch("companions.proof.start", counted_start), mock.patch("companions.proof.result_of", counted_result), \
                    mock.patch("os.cpu_count", return_value=processors):
                prove([Run("/x/a", "", ["keep"])] * 9)
            self.assertEqual(most, expected)

    def test_no_program(self) -> None:
        with mock.patch("companions.proof.PROGRAM", "/nowhere/program"), self.assertRaisesRegex(Failure, "cannot start /nowhere"):
            prove([Run("/x/a", "", [])])

    def test_no_runs(self) -> None:
        self.assertEqual(prove([]), [])


class Changes(unittest.TestCase):
    def test_lines_that_only_one_text_contains(self) -> None:
        self.assertEqual(line_changes("a\n\tb  c\nd\n", "a\nx\nd\n"), ["- b c", "+ x"])

    def test_a_line_that_occurs_more_often(self) -> None:
        self.assertEqual(line_changes("a\nb\n", "a\nb\na\n"), ["+ a"])

    def test_equal_texts(self) -> None:
        self.assertEqual(line_changes("a\n", "a\n"), [])

    def test_differences_that_cannot_be_seen(self) -> None:
        for old, new in ("a\nb\n", "b\na\n"), (" a\n", "\ta\n"):
            self.assertEqual(line_changes(old, new), ["white space or the order of lines"])

    def test_at_most_six_lines_are_shown(self) -> None:
        new = "".join(f"{number}\n" for number in range(9))
        self.assertEqual(line_changes("", new), ["+ 0", "+ 1", "+ 2", "+ 3", "+ 4", "+ 5"])


if __name__ == "__main__":
    unittest.main()
