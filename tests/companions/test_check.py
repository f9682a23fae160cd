"""What the check learns from logs, from systemd and from a logrotate that does not answer."""

import os
import pathlib
import subprocess
import tempfile
import time
import unittest
from unittest import mock

from companions import configuration, findings, log_service, log_view, logs, rotation_file, state_file
from companions.findings import Finding

DAY = 86400
DAILY = logs.Schedule(DAY, 0, 0, False, None, True)


class Folder(unittest.TestCase):
    def setUp(self) -> None:
        self.folder = self.enterContext(tempfile.TemporaryDirectory())

    def write(self, name: str, text: str = "x", days: float = 0) -> str:
        path = f"{self.folder}/{name}"
        pathlib.Path(path).write_text(text)
        os.utime(path, (time.time() - days * DAY,) * 2)
        return path

    def old(self, name: str, days: float, text: str = "") -> str:
        """Writes a log whose first line is `days` old, and whose last line is new."""
        return self.write(name, text + time.strftime("%Y-%m-%d x\n", time.localtime(time.time() - days * DAY)))

    def overdue(self, schedule: logs.Schedule) -> list[str]:
        """Returns the names of the overdue logs."""
        found = logs.Logs(self.folder, "*.log", logs.Directories())
        return [os.path.basename(path) for _, path in found.overdue(schedule)]


class Overdue(Folder):
    def test_two_periods_have_a_tolerance(self) -> None:
        # The date of a line has no time.
        self.old("a.log", 2)
        self.assertEqual(self.overdue(DAILY), [])
        self.old("a.log", 4)
        self.assertEqual(self.overdue(DAILY), ["a.log"])
        weekly = DAILY._replace(period=7 * DAY)
        self.old("a.log", 14)
        self.assertEqual(self.overdue(weekly), [])
        self.old("a.log", 16)
        self.assertEqual(self.overdue(weekly), ["a.log"])

    def test_a_copy_in_any_form_excuses_an_old_line(self) -> None:
        self.old("a.log", 9)
        self.write("a.log.2.gz", days=5)
        self.assertEqual(self.overdue(DAILY), ["a.log"])
        self.write("a.log_22_11", days=2)
        self.assertEqual(self.overdue(DAILY), [])

    def test_copies_may_be_in_a_directory_of_their_own(self) -> None:
        self.old("a.log", 9)
        os.mkdir(f"{self.folder}/old")
        self.assertEqual(self.overdue(DAILY._replace(olddir="old")), ["a.log"])
        self.write("old/a.log.1", days=2)
        for folder in "old", f"{self.folder}/old":
            self.assertEqual(self.overdue(DAILY._replace(olddir=folder)), [])

    def test_a_log_without_dates_is_as_old_as_its_newest_copy_if_each_period_has_one(self) -> None:
        self.write("a.log")
        self.assertEqual(self.overdue(DAILY), [])
        self.write("a.log.1", days=5)
        self.assertEqual(self.overdue(DAILY), ["a.log"])
        self.assertEqual(self.overdue(DAILY._replace(always=False)), [])
        self.write("a.log.1", days=1)
        self.assertEqual(self.overdue(DAILY), [])

    def test_a_log_must_have_been_modified_in_the_last_period(self) -> None:
        self.write("a.log", "2001-01-01", days=1.5)
        self.assertEqual(self.overdue(DAILY), [])
        self.assertEqual(self.overdue(DAILY._replace(period=7 * DAY)), ["a.log"])

    def test_a_log_must_be_large_enough(self) -> None:
        self.write("a.log", "")
        self.write("b.log", "123", days=9)
        by_size = DAILY._replace(size=3, always=False)
        self.assertEqual(self.overdue(by_size), [])
        self.assertEqual(self.overdue(by_size._replace(size=2)), ["b.log"])
        self.old("b.log", 90)
        self.assertEqual(self.overdue(DAILY._replace(minimum=14)), [])
        self.assertEqual(self.overdue(DAILY._replace(minimum=13)), ["b.log"])

    def test_a_recent_first_line_excuses_the_log(self) -> None:
        now = time.localtime()
        for form in ("[%a %b %d %H:%M:%S.123456 %Y] x", '1.2.3.4 - - [%d/%b/%Y:%H:%M:%S +0000] "GET /"', "%Y/%m/%d x",
                     "[%d-%b-%Y] x"):
            self.write("a.log", time.strftime(form, now))
            self.assertEqual(self.overdue(DAILY), [], form)
            self.write("a.log", time.strftime(form, time.localtime(time.time() - 5 * DAY)) + time.strftime(f"\n{form}", now))
            self.assertEqual(self.overdue(DAILY), ["a.log"], form)

    def test_for_a_size_the_line_counts_that_exceeds_it(self) -> None:
        by_size = DAILY._replace(always=False)
        self.old("a.log", 0, "2001-01-01 x\n")
        for size in range(13, 25):
            self.assertEqual(self.overdue(by_size._replace(size=size)), [])
        self.assertEqual(self.overdue(by_size._replace(size=12)), ["a.log"])


class Directories(Folder):
    def test_patterns_match_as_for_logrotate(self) -> None:
        for name in "a.log", ".b.log", "b.logs":
            self.write(name)
        os.mkdir(f"{self.folder}/sub")
        self.write("sub/c.log")
        matching = logs.Directories().matching
        self.assertEqual(matching(f"{self.folder}/*.log"), [f"{self.folder}/a.log"])
        self.assertEqual(matching(f"{self.folder}/.*.log"), [f"{self.folder}/.b.log"])
        self.assertEqual(matching(f"{self.folder}/s?b/[a-c].log"), [f"{self.folder}/sub/c.log"])
        self.assertEqual(matching(f"{self.folder}/s*/absent"), [])

    def test_names_that_look_like_copies_of_copies_cost_no_time(self) -> None:
        for number in range(logs.LARGEST_DIRECTORY // 100):
            for length in range(100):
                self.write(f"{number}" + ".1" * length)
        start = time.monotonic()
        found = logs.Logs(self.folder, "*", logs.Directories())
        self.assertEqual([*found.obstacles(), *found.overdue(DAILY)], [])
        self.assertLess(time.monotonic() - start, 5)


class View(unittest.TestCase):
    def test_samples_match_their_patterns(self) -> None:
        for pattern, path in ("/a/*.log", "/a/x.log"), ("/[ab]?/c", "/ax/c"), ("/a[!b]", "/a_"), ("/plain", "/plain"):
            self.assertEqual(log_view.sample(pattern), path)


class Service(Folder):
    def script(self, text: str) -> str:
        path = self.write("script", "#!/bin/sh\n" + text)
        os.chmod(path, 0o755)
        return path

    def test_a_logrotate_that_does_not_end_gives_no_answer(self) -> None:
        with mock.patch.object(log_service, "LOGROTATE", self.script("exec sleep 60")), \
                mock.patch.object(log_service, "LOGROTATE_SECONDS", 0.2):
            self.assertIsNone(log_service.run_logrotate(["x"]))

    def test_systemd_says_why_logrotate_does_not_run(self) -> None:
        units = {"timer": "active", "service": "success"}
        for unit, value, said in (("timer", "inactive", "; logrotate.timer is inactive"), ("service", "success", ""),
                                  ("service", "exit-code", "; the last run of logrotate.service failed (exit-code)")):
            both = units | {unit: value}
            script = self.script(f"printf 'Id=logrotate.timer\\nActiveState={both['timer']}\\n\\n"
                                 f"Id=logrotate.service\\nActiveState=inactive\\nResult={both['service']}\\n'")
            with mock.patch.object(state_file, "SYSTEMCTL", script), mock.patch.object(state_file, "SYSTEMD", self.folder):
                self.assertEqual(state_file.reason(), said)

    def test_an_immutable_file_or_directory_is_recognized(self) -> None:
        self.assertFalse(logs.is_immutable(self.folder))
        os.mkdir(f"{self.folder}/fixed")
        for path in self.write("log"), f"{self.folder}/fixed":
            if subprocess.run(["chattr", "+i", path], stderr=subprocess.DEVNULL, check=False).returncode != 0:
                self.skipTest("chattr +i is not possible here")
            self.addCleanup(subprocess.call, ["chattr", "-i", path])
            self.assertTrue(logs.is_immutable(path))
        self.assertFalse(logs.is_immutable(self.write("other")))

    def problem(self, text: str, old: bool = False) -> str | None:
        """Returns what the real logrotate and the check find in a state file with the text."""
        path = self.write("status", text)
        state = state_file.StateFile()
        state.path, state.age = path, 0
        return state.problem(old)

    def test_an_immutable_directory_keeps_the_state_file_from_being_replaced(self) -> None:
        for fixed in f"{self.folder}/status", self.folder:
            with mock.patch.object(state_file, "is_immutable", lambda path, fixed=fixed: path == fixed):
                self.assertRegex(self.problem("") or "", "^logrotate cannot replace it: .* immutable")

    def test_entries_that_logrotate_accepts_are_no_damage(self) -> None:
        head = "logrotate state -- version 2\n"
        for line in '"/a b" 2026-11-22-5:0:59', r'"/a\"b\\" 2026-1-2-23:59:0', "", '"/x" 2026-1-2':
            self.assertIsNone(self.problem(f"{head}{line}\n"), line)
        for line in '"/x" 2026-13-1-0:0:0', '"/x" 2026-1-32-0:0:0', '"/x" 2026-1-1-24:0:0', "x", '"/x':
            self.assertRegex(self.problem(f'{head}"/y" 2026-11-22-5:0:59\n{line}\n') or "", f"{self.folder}/status; ", line)
        self.assertRegex(self.problem('"/y" 2026-11-22-5:0:59\n') or "", "^bad top line")

    def test_many_entries_cost_no_time(self) -> None:
        start = time.monotonic()
        entries = (f'"/{number}{"n" * 200}" 2026-11-22-5:0:0\n' for number in range(200_000))
        self.assertIsNone(self.problem("logrotate state -- version 2\n" + "".join(entries)))
        self.assertLess(time.monotonic() - start, 5)

    def test_a_new_machine_has_no_state_file_yet(self) -> None:
        state = state_file.StateFile()
        state.path, state.age = f"{self.folder}/status", None
        for running, old, found in (1, True, False), (3, False, False), (3, True, True):
            with mock.patch("time.clock_gettime", lambda _, running=running: running * DAY):
                self.assertEqual(bool(state.problem(old)), found)


class Stanzas(unittest.TestCase):
    def test_each_stanza_that_logrotate_reads(self) -> None:
        text = """daily
/a.log { weekly }
# /b {
  "/c d"
'/e' { # x
  prerotate
    find / {} +
  endscript
  postrotate
/f {
} /g { daily
}
"""
        self.assertEqual(rotation_file.stanzas_for_logrotate(text), [(["/a.log"], 2), (["/c d", "/e"], 5)])
        text = text.replace("/f {", "endscript")
        self.assertEqual(rotation_file.stanzas_for_logrotate(text)[2:], [(["/g"], 11)])


class Hosts(unittest.TestCase):
    def test_only_a_hosts_file_can_belong_to_an_unknown_host(self) -> None:
        for hosts, path, unknown in (({"a"}, "/opt/oru/etc/logrotate.d/b", True), ({"a"}, "/opt/oru/etc/logrotate.d/a", False),
                                     (None, "/opt/oru/etc/logrotate.d/b", False), ({"a"}, "/etc/logrotate.d/nginx", False)):
            self.assertEqual(configuration.is_unknown_host(path, mock.Mock(hosts=hosts)), unknown)


class Findings(unittest.TestCase):
    def test_thousands_of_names_are_three(self) -> None:
        self.assertEqual(findings.listed(["a", "b c", "d", "e", "f"]), 'a, "b c", d and 2 more')

    def test_a_paused_file_and_a_temporary_file_belong_to_their_host(self) -> None:
        for name in "a", "a.disabled", "a.Ab12Cd":
            found = Finding(f"/opt/oru/etc/logrotate.d/{name}", 0, "leftover", "x")
            self.assertEqual(findings.wanted([found], ["a"], [], set()), [found])
            self.assertEqual(findings.wanted([found], ["b"], [], set()), [])
            self.assertEqual(findings.wanted([found], [], [("a", "leftover")], set()), [])
            self.assertEqual(findings.wanted([found], [], [("a", "error")], set()), [found])
