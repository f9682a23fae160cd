"""The module of the Ansible role, with scripts in place of the program and of its preview."""

import contextlib
import importlib.util
import io
import json
import os
import pathlib
import sys
import tempfile
import unittest
from typing import Any
from unittest import mock

from ansible.module_utils import basic  # type: ignore[import]

sys.dont_write_bytecode = True
MODULE = pathlib.Path(__file__).resolve().parents[2] / "contrib/ansible/roles/tavek_logrotate/library/tavek_logrotate.py"
module_spec = importlib.util.spec_from_file_location("tavek_logrotate", MODULE)
assert module_spec and module_spec.loader
tavek_logrotate = importlib.util.module_from_spec(module_spec)
module_spec.loader.exec_module(tavek_logrotate)

DAILY: dict[str, Any] = {"period": "daily", "count": 7, "compress": True}
TOO_LONG = ".".join(["a" * 61] * 4) + ".b"  # By one character.


def host(**settings: Any) -> Any:
    return tavek_logrotate.Entry("host", tavek_logrotate.merge(DAILY, {"name": "a.example", **settings}))


def category(**settings: Any) -> Any:
    return tavek_logrotate.Entry("category", tavek_logrotate.merge({}, {"name": "apache", **settings}))


class Values(unittest.TestCase):
    def check(self, setting: str, good: tuple[Any, ...], bad: tuple[Any, ...], problem: str) -> None:
        for value in good:
            self.assertEqual(host(**{setting: value}).problems, [], value)
        for value in bad:
            problems = host(**{setting: value}).problems
            self.assertEqual([each[:len(problem)] for each in problems], [problem], (value, problems))

    def test_names_of_hosts(self) -> None:
        good = ("a", "9", "A.Example", "a-b.example", "a--b.c", "a" * 63, "a" * 63 + ".b", TOO_LONG[1:])
        bad = ("", "../x", "-K", "a-", "a.-b", "a b", "a_b", "a.example\n", "\na", "a.example/", "*.example", ".a", "a.", "a..b",
               "a" * 64, "a." + "b" * 64, TOO_LONG, "\u00e4.example")
        self.check("name", good, bad, "the name is not a host name")

    def test_sizes(self) -> None:
        good = (10, "0", "10", "10k", "10M", "10G", "0001", "9223372036854775807", "9007199254740991k", "8796093022207M",
                "8589934591G")
        bad = ("", "k", "10MB", "10m", "1.5M", "10M\n\tprerotate", "10\n", "-1", "+1", "1 k", "9223372036854775808",
               "9007199254740992k", "8796093022208M", "8589934592G", "0" * 20, "\u0663")
        self.check("size", good, bad, "size must be a number, optionally followed by k, M or G")

    def test_counts(self) -> None:
        self.check("count", (0, 1, "7", 2147483647), (-1, 1 << 31, True, False), "count must be a number from 0 to 2147483647")
        self.check("count", (), ("x", 1.5), "argument 'count' is of type")

    def test_addresses(self) -> None:
        good = ("a@b", "9@b", "a.b_c+d-e@f.example", "a" * 64 + "@b.example", "a@" + "b" * 63)
        bad = ("", "a", "@b", "a@", "a@b.example\n}", "a@b\n", "a b@c.example", "-s@c.example", ".a@b", "a@b@c", "a@-b",
               "a@b,c@d", "a" * 65 + "@b.example", "a@" + "b" * 64, "\u00e4@b")
        self.check("email", good, bad, "email is not an address")

    def test_periods(self) -> None:
        self.check("period", ("daily", "weekly", "monthly"), ("", "yearly", "Daily", "daily\n"),
                   "value of period must be one of: daily, weekly, monthly, got: ")

    def test_states(self) -> None:
        self.check("state", ("present", "absent"), ("", "off"), "value of state must be one of: present, absent, got: ")

    def test_truth_values(self) -> None:
        for setting in "compress", "anonymize", "keep_copies":
            self.check(setting, (True, False, "yes", "no"), ("", "x", 2), f"argument '{setting}' is of type")

    def test_categories(self) -> None:
        for name in "apache", "nginx", "tavek", "fail2ban", "modsecurity":
            self.assertEqual(category(name=name, count=5).problems, [])
        problems = category(name="system", count=5).problems
        self.assertEqual(problems, ["value of name must be one of: apache, nginx, tavek, fail2ban, modsecurity, got: system"])
        self.assertEqual(category(size="x", count=5).problems, ["size must be a number, optionally followed by k, M or G"])
        self.assertEqual(category(count=-1).problems, ["count must be a number from 0 to 2147483647"])


class Combinations(unittest.TestCase):
    def refuse(self, entry: Any, problem: str) -> None:
        self.assertEqual([each[:len(problem)] for each in entry.problems], [problem], entry.problems)

    def test_an_entry_needs_a_name(self) -> None:
        self.refuse(host(name=None), "missing required arguments: name")
        self.refuse(category(name=None, count=1), "missing required arguments: name")
        self.assertEqual(host(name=None).title, "host None")

    def test_a_host_needs_a_period_a_count_and_compression(self) -> None:
        self.refuse(host(period=None), "state is present but any of the following are missing: period, size")
        self.refuse(host(count=None), "state is present but all of the following are missing: count")
        self.refuse(host(compress=None), "state is present but all of the following are missing: compress")

    def test_an_absent_host_needs_only_its_name(self) -> None:
        self.assertEqual(host(period=None, count=None, compress=None, state="absent").problems, [])

    def test_a_category_needs_a_count_or_all_copies(self) -> None:
        self.refuse(category(period="weekly"), "keep_copies is False but all of the following are missing: count")
        self.assertEqual(category(period="weekly", keep_copies=True).problems, [])

    def test_a_category_needs_a_setting(self) -> None:
        self.refuse(category(keep_copies=True), "one of the following is required: period, size, count, anonymize")
        for setting, value in ("period", "daily"), ("size", "1"), ("count", 1), ("anonymize", False):
            self.assertEqual(category(keep_copies=True, **{setting: value}).problems, [])

    def test_period_and_size_exclude_each_other(self) -> None:
        self.refuse(host(period="daily", size="1"), "parameters are mutually exclusive: period|size")
        self.refuse(category(count=1, period="daily", size="1"), "parameters are mutually exclusive: period|size")

    def test_other_settings_are_refused(self) -> None:
        self.refuse(host(rotate=5), "unsupported: rotate. Supported parameters include: ")
        for setting in "compress", "email", "state":
            self.refuse(category(count=5, **{setting: True}), f"unsupported: {setting}. Supported parameters include: ")

    def test_own_settings_replace_defaults(self) -> None:
        merge = tavek_logrotate.merge
        for kind, other in ("period", "size"), ("size", "period"):
            for default in kind, other:
                self.assertEqual(merge({default: 1, "count": 2}, {kind: 3}), {kind: 3, "count": 2})
        self.assertEqual(merge({"period": 1, "size": 2}, {"period": None}), {"size": 2})
        self.assertEqual(merge({"period": 1}, {"size": None, "count": 0}), {"period": 1, "count": 0})
        self.assertEqual(merge({"email": 1}, {"email": None, "compress": False}), {"compress": False})


class Runs(unittest.TestCase):
    def check(self, entry: Any, arguments: str, times: int = 1) -> None:
        self.assertEqual(entry.problems, [])
        self.assertEqual([" ".join(each) for each in entry.runs()], [arguments] * times)

    def test_a_host_by_time(self) -> None:
        self.check(host(), "--vhost-name=a.example --on-off=on --compress=on --period-type=by_time --period=daily --rot-count=7")

    def test_a_host_by_size(self) -> None:
        self.check(host(size=50, count=0, compress=False, email="a@b.example"), "--vhost-name=a.example --on-off=on "
                   "--compress=off --email=a@b.example --period-type=by_size --period=50 --rot-count=0")

    def test_an_absent_host(self) -> None:
        self.check(host(state="absent", anonymize=True, keep_copies=True), "--vhost-name=a.example --on-off=off")

    def test_a_host_is_anonymized_in_two_runs(self) -> None:
        start = "--vhost-name=a.example --on-off=on --compress=on --period-type=by_time --period=daily --rot-count=7 "
        self.check(host(anonymize=True, keep_copies=True), start + "--anonymize-ip=on --keep-old-logs", 2)
        self.check(host(anonymize=False), start + "--anonymize-ip=off")

    def test_a_category(self) -> None:
        self.check(category(count=5), "--apache-logs --rot-count=5")
        self.check(category(name="nginx", size="1M", keep_copies=True),
                   "--nginx-logs --period-type=by_size --period=1M --keep-old-logs")
        self.check(category(anonymize=True, keep_copies=True), "--apache-logs --anonymize-ip=on --keep-old-logs")
        self.check(category(period="weekly", count=0, anonymize=False),
                   "--apache-logs --period-type=by_time --period=weekly --rot-count=0 --anonymize-ip=off")


PREVIEW = """#!/bin/sh
cd "${0%/*}"
echo "$*" >>words
cat >>lines
cat messages >&2
cat reply
exit 3
"""
PROGRAM = """#!/bin/sh
cd "${0%/*}"
echo "$*" >>words
cat >>words
cat program_messages >&2
exec test ! -e "$1"
"""


class Module(unittest.TestCase):
    def setUp(self) -> None:
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        for name, script in ("tavek-logrotate-preview", PREVIEW), ("tavek-logrotate", PROGRAM):
            self.write(name, script).chmod(0o755)
        for name in "words", "lines", "messages", "reply", "program_messages":
            self.write(name, "")
        path = f"{self.folder}:{os.environ['PATH']}"
        self.enterContext(mock.patch.dict(os.environ, PATH=path))
        self.enterContext(mock.patch.object(tavek_logrotate, "PROGRAM", f"{self.folder}/tavek-logrotate"))

    def write(self, name: str, text: str) -> pathlib.Path:
        (self.folder / name).write_text(text)
        return self.folder / name

    def reply(self, *runs: dict[str, Any], judgement: tuple[str, ...] = ()) -> None:
        """Sets what the preview shows for each run. By default a run succeeds, changes nothing and says nothing."""
        nothing = {"status": 0, "error": "", "changed": False, "diff": "", "deleted": [], "deleted_at_next_rotation": []}
        self.write("reply", json.dumps({"runs": [{**nothing, **each} for each in runs], "judgement": judgement}))

    def execute(self, check_mode: bool = False, **parameters: Any) -> Any:
        """Returns what the module reports, as Ansible reads it."""
        given = json.dumps({"ANSIBLE_MODULE_ARGS": {**parameters, "_ansible_check_mode": check_mode}})
        output = io.StringIO()
        with (mock.patch.object(basic, "_ANSIBLE_ARGS", None), mock.patch.object(sys, "argv", ["", given]),
              contextlib.redirect_stdout(output)):
            self.assertRaises(SystemExit, tavek_logrotate.main)
        reported = json.loads(output.getvalue())
        del reported["invocation"]
        return reported

    def hosts(self, *names: str, **parameters: Any) -> Any:
        return self.execute(hosts=[{"name": name, **DAILY} for name in names], **parameters)

    def words(self) -> list[str]:
        """Returns the arguments of all processes, one line each."""
        return (self.folder / "words").read_text().splitlines()

    def test_all_problems_are_reported_and_nothing_runs(self) -> None:
        hosts: list[Any] = [{"name": "a", **DAILY}, {"name": "-", **DAILY, "email": ""}, {"name": "a", "state": "absent"}]
        problems = ["host -: the name is not a host name", "host -: email is not an address", "category apache: "
                    "unsupported: email. Supported parameters include: anonymize, count, keep_copies, name, period, size.",
                    "host a is listed twice"]
        categories = [{"name": "apache", "count": 1, "email": ""}]
        for only_validate in False, True:
            reported = self.execute(hosts=hosts, categories=categories, only_validate=only_validate)
            self.assertEqual(reported, {"failed": True, "msg": "\n".join(problems)})
        self.assertEqual(self.words(), [])

    def test_a_host_may_be_named_like_a_category(self) -> None:
        hosts, categories = [{"name": "apache", **DAILY}], [{"name": "apache", "count": 1}]
        self.assertEqual(self.execute(hosts=hosts, categories=categories, only_validate=True), {"changed": False})
        self.assertEqual(self.words(), [])

    def test_an_entry_must_be_a_dictionary(self) -> None:
        for variable in "hosts", "categories":
            self.assertIn("dictionary", self.execute(False, **{variable: ["a"]})["msg"])
        self.assertEqual(self.words(), [])

    def test_variables_may_be_null(self) -> None:
        self.reply()
        nothing = {"changed": False, "diff": {"prepared": ""}, "messages": [], "failures": []}
        self.assertEqual(self.execute(hosts=None, host_defaults=None, categories=None), nothing)
        self.assertEqual(self.execute(only_validate="no"), nothing)

    def test_one_preview_shows_all_runs(self) -> None:
        self.reply({}, {}, {}, {})
        reported = self.execute(hosts=[{"name": "a"}, {"name": "b", "anonymize": True, "size": "1k"}], host_defaults=DAILY,
                                categories=[{"name": "nginx", "count": 5, "anonymize": None}])
        self.assertEqual(reported, {"changed": False, "diff": {"prepared": ""}, "messages": [], "failures": []})
        program = f"{self.folder}/tavek-logrotate"
        a = "--vhost-name=a --on-off=on --compress=on --period-type=by_time --period=daily --rot-count=7"
        b = "--vhost-name=b --on-off=on --compress=on --period-type=by_size --period=1k --rot-count=7 --anonymize-ip=on"
        lines = "".join(f"{program} {words}\n" for words in (a, b, b, "--nginx-logs --rot-count=5"))
        self.assertEqual((self.folder / "lines").read_text(), lines)
        self.assertEqual(self.words(), ["--batch - --json"])

    def test_only_runs_that_change_something_are_done(self) -> None:
        self.reply({"changed": True, "diff": "A\n", "error": "preview of a"}, {},
                   {"changed": True, "diff": "C\n", "deleted": [{"path": "/x\n", "size": 5}, {"path": "/\u00e4", "size": 0}],
                    "deleted_at_next_rotation": [{"path": "/y", "size": 7}]}, judgement=("fine",))
        diff = ("A\nC\ndelete '/x\\n' (5 bytes)\ndelete '/\u00e4' (0 bytes)\n"
                "at its next rotation, logrotate would delete: '/y' (7 bytes)\n")
        changed = {"changed": True, "diff": {"prepared": diff}, "failures": []}
        self.assertEqual(self.hosts("a", "b", "c", check_mode=True), {**changed, "messages": ["preview of a", "fine"]})
        self.assertEqual(self.words(), ["--batch - --json"])
        (self.folder / "program_messages").write_bytes(b"one\ntwo \xff\n")
        messages = ["one", "two \\xff"] * 2
        self.assertEqual(self.hosts("a", "b", "c"), {**changed, "messages": [*messages, "fine"]})
        end = "--on-off=on --compress=on --period-type=by_time --period=daily --rot-count=7"
        self.assertEqual(self.words()[2:], [f"--vhost-name=a {end}", f"--vhost-name=c {end}"])

    def test_a_run_that_fails_in_the_preview_is_not_done(self) -> None:
        self.reply({"status": 2, "changed": True, "diff": "A\n", "error": "first\nlast\n"}, {"status": 137}, {"changed": True})
        for check_mode in True, False:
            self.assertEqual(self.hosts("a", "b", "c", check_mode=check_mode), {
                "changed": True, "diff": {"prepared": ""}, "messages": [],
                "failures": ["host a: last", "host b: exit status 137"]})
        self.assertEqual([each.split()[0] for each in self.words()], ["--batch", "--batch", "--vhost-name=c"])

    def test_a_run_that_fails_changes_nothing_and_does_not_stop_the_others(self) -> None:
        self.reply({"changed": True, "diff": "A\n"}, {"changed": True, "diff": "B\n"})
        self.write("program_messages", "said\n")
        self.write("--vhost-name=a", "")
        self.assertEqual(self.hosts("a", "b"), {
            "changed": True, "diff": {"prepared": "B\n"}, "messages": ["said"], "failures": ["host a: said"]})
        self.write("--vhost-name=b", "")
        self.write("program_messages", "")
        self.assertEqual(self.hosts("a", "b"), {"changed": False, "diff": {"prepared": ""}, "messages": [],
                                                "failures": ["host a: exit status 1", "host b: exit status 1"]})

    def test_a_failure_of_both_runs_is_reported_once(self) -> None:
        self.reply({"status": 1, "error": "no"}, {"status": 1, "error": "no"})
        reported = self.execute(hosts=[{"name": "a", "anonymize": True, **DAILY}])
        self.assertEqual(reported["failures"], ["host a: no"])

    def test_no_preview_is_possible(self) -> None:
        self.write("messages", "the reason\n")
        self.assertEqual(self.hosts("a"), {"failed": True, "msg": "the reason"})
        self.write("messages", "")
        self.assertEqual(self.hosts("a"), {"failed": True, "msg": "tavek-logrotate-preview: exit status 3"})
        self.assertEqual(self.words(), ["--batch - --json"] * 2)

    def test_the_preview_must_be_installed(self) -> None:
        (self.folder / "tavek-logrotate-preview").unlink()
        self.assertIn("tavek-logrotate-preview", self.hosts("a")["msg"])


if __name__ == "__main__":
    unittest.main()
