"""What the check learns from logs, from systemd and from a logrotate that does not answer."""

import os
import pathlib
import subprocess
import tempfile
import time
import unittest
from unittest import mock

from companions import configuration, findings, log_service, log_view, logs, state_file
from companions.findings import Finding

DAY = 86400
DAILY = logs.Schedule(DAY, 0, 0, True, False)


class Folder(unittest.TestCase):
    def setUp(self) -> None:
        self.folder = self.enterContext(tempfile.TemporaryDirectory())

    def write(self, name: str, text: str = "x", days: float = 0) -> str:
        path = f"{self.folder}/{name}"
        pathlib.Path(path).write_text(text)
        os.utime(path, (time.time() - days * DAY,) * 2)
        return path

    def overdue(self, schedule: logs.Schedule, days: float | None) -> list[str]:
        """Returns the names of the overdue logs, if the state file says that each was rotated `days` ago."""
        found = logs.Logs(f"{self.folder}/*.log", logs.Directories())
        dates = {} if days is None else dict.fromkeys(found.logs, time.time() - days * DAY)
        return [os.path.basename(path) for _, path in found.overdue(schedule, dates)]


class Overdue(Folder):
    def test_two_periods_have_a_tolerance(self) -> None:
        self.write("a.log")
        self.assertEqual(self.overdue(DAILY, 2.1), [])
        self.assertEqual(self.overdue(DAILY, 2.2), ["a.log"])
        weekly = DAILY._replace(period=7 * DAY)
        self.assertEqual(self.overdue(weekly, 14.1), [])
        self.assertEqual(self.overdue(weekly, 14.2), ["a.log"])

    def test_a_log_that_the_state_file_does_not_contain_is_new(self) -> None:
        self.write("a.log")
        self.assertEqual(self.overdue(DAILY, None), [])

    def test_the_newest_copy_counts_more_than_the_state_file(self) -> None:
        self.write("a.log")
        self.write("a.log.2.gz", days=5)
        self.assertEqual(self.overdue(DAILY, 1), ["a.log"])
        self.assertEqual(self.overdue(DAILY._replace(has_copies=False), 1), [])
        self.write("a.log-20261121", days=1)
        self.assertEqual(self.overdue(DAILY, 5), [])

    def test_a_log_must_have_been_modified_in_the_last_period(self) -> None:
        self.write("a.log", days=1.5)
        self.assertEqual(self.overdue(DAILY, 5), [])
        self.assertEqual(self.overdue(DAILY._replace(period=7 * DAY), 20), ["a.log"])

    def test_a_log_must_be_large_enough(self) -> None:
        self.write("a.log", "")
        self.write("b.log", "123", days=9)
        by_size = DAILY._replace(period=DAY, size=3)
        self.assertEqual(self.overdue(by_size, 5), [])
        self.assertEqual(self.overdue(by_size._replace(size=2), 5), ["b.log"])
        self.assertEqual(self.overdue(DAILY._replace(period=20 * DAY, minimum=4), 50), [])
        self.assertEqual(self.overdue(DAILY._replace(period=20 * DAY, minimum=3), 50), ["b.log"])

    def test_a_recent_first_line_excuses_the_log(self) -> None:
        now = time.localtime()
        for form in ("[%a %b %d %H:%M:%S.123456 %Y] x", '1.2.3.4 - - [%d/%b/%Y:%H:%M:%S +0000] "GET /"', "%Y/%m/%d x",
                     "[%d-%b-%Y] x"):
            self.write("a.log", time.strftime(form, now))
            self.assertEqual(self.overdue(DAILY, 5), [], form)
            self.write("a.log", time.strftime(form, time.localtime(time.time() - 4 * DAY)) + time.strftime(f"\n{form}", now))
            self.assertEqual(self.overdue(DAILY, 5), ["a.log"], form)

    def test_for_a_size_the_line_counts_that_exceeds_it(self) -> None:
        self.write("a.log", "2001-01-01 x\n" + time.strftime("%Y-%m-%d x\n"))
        self.assertEqual(self.overdue(DAILY._replace(size=12), 5), [])
        self.assertEqual(self.overdue(DAILY, 5), ["a.log"])


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

    def test_copies_have_a_number_or_a_date(self) -> None:
        for name in "a.log", "a.log.1", "a.log.2.gz", "a.log-20261122-17.xz", "a.log.old", "a.log.1.gz.bak", "a.logs.1":
            self.write(name)
        copies = logs.Directories().copies_of(f"{self.folder}/a.log")
        self.assertEqual(sorted(os.path.basename(path) for path, _ in copies), ["a.log-20261122-17.xz", "a.log.1", "a.log.2.gz"])

    def test_names_that_look_like_copies_of_copies_cost_no_time(self) -> None:
        for number in range(logs.LARGEST_DIRECTORY // 100):
            for length in range(100):
                self.write(f"{number}" + ".1" * length)
        start = time.monotonic()
        logs.Logs(f"{self.folder}/*", logs.Directories())
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

    def test_names_in_the_state_file_are_unescaped(self) -> None:
        self.assertEqual(state_file.unescaped(rb'a\"b\\n\nc'), 'a"b\\n\nc')

    def test_an_immutable_file_is_recognized(self) -> None:
        path = self.write("log")
        if subprocess.run(["chattr", "+i", path], stderr=subprocess.DEVNULL, check=False).returncode != 0:
            self.skipTest("chattr +i is not possible here")
        self.addCleanup(lambda: subprocess.run(["chattr", "-i", path], check=True))
        self.assertTrue(logs.is_immutable(path))
        self.assertFalse(logs.is_immutable(self.write("other")))


    def test_an_immutable_directory_keeps_the_state_file_from_being_replaced(self) -> None:
        state = self.write("status", "logrotate state -- version 2\n")
        for fixed in state, self.folder:
            with mock.patch.object(state_file, "is_immutable", lambda path, fixed=fixed: path == fixed), \
                    mock.patch.object(state_file, "run_logrotate", lambda _: f"    Default state file path:    {state}\n"):
                self.assertRegex(state_file.StateFile().problem(False) or "", "^logrotate cannot replace it: .* immutable")


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
