"""The settings that are read from stanzas, and the options that make them."""

import unittest

from companions import rotation_file, settings
from companions.settings import Settings, settings_of, words

SCRIPT = "postrotate\n/x/anonymize_ip $*\nendscript\n"


def host(*bodies: str, category: str | None = None) -> Settings:
    text = "".join(f"/{number} {{\n{body}}}\n" for number, body in enumerate(bodies))
    return settings_of(rotation_file.parse(text).stanzas, category)


class Values(unittest.TestCase):
    def found(self, setting: str, *bodies: str) -> list[str]:
        return host(*bodies).found[setting]

    def test_periods(self) -> None:
        for line, value in [("daily", "daily"), ("weekly", "weekly"), ("monthly", "monthly"), ("size 10M", "10M"),
                            ("size=10M", "10M"), ("size = 10M", "10M"), ("size\t100", "100")]:
            self.assertEqual(self.found("period", line + "\n"), [value])

    def test_counts(self) -> None:
        for line, value in [("rotate 5", "5"), ("rotate\t 05", "5"), ("rotate 0", "0"), ("rotate 00", "0"),
                            ("rotate 100", "100")]:
            self.assertEqual(self.found("rot-count", line + "\n"), [value])

    def test_switches(self) -> None:
        self.assertEqual(self.found("compress", "compress\n", "nocompress\n", ""), ["true", "false", ""])
        self.assertEqual(self.found("anonymize-ip", SCRIPT, ""), ["true", "false"])

    def test_addresses(self) -> None:
        self.assertEqual(self.found("email", "mail  a b@c \n", ""), ["a b@c", ""])

    def test_the_last_line_of_a_stanza_counts(self) -> None:
        self.assertEqual(self.found("rot-count", "rotate 5\nrotate 6\n"), ["6"])

    def test_each_value_is_found_once(self) -> None:
        self.assertEqual(self.found("rot-count", "rotate 5\n", "rotate 6\n", "", "rotate 5\n"), ["5", "6", ""])

    def test_the_php_fpm_stanza_does_not_decide_about_anonymizing(self) -> None:
        for head, found in ("/h/logs/php-fpm_error.log ", ["true"]), ("/h/logs/error.log ", ["true", "false"]):
            stanzas = rotation_file.parse(f"/a {{\n{SCRIPT}}}\n{head}{{\n}}\n").stanzas
            self.assertEqual(settings_of(stanzas, None).found["anonymize-ip"], found)
        stanzas = rotation_file.parse("/h/logs/php-fpm_error.log {\n" + SCRIPT + "}\n").stanzas
        self.assertEqual(settings_of(stanzas, None).found["anonymize-ip"], ["true"])

    def test_a_category_has_neither_compression_nor_an_address(self) -> None:
        self.assertEqual(set(host("compress\nmail a@b\n", category="nginx").found), {"period", "rot-count", "anonymize-ip"})


class Problems(unittest.TestCase):
    def test_lines_without_an_option(self) -> None:
        for line in "daily # note", "rotate 5 # note", "rotate -1", "rotate x", "yearly", "hourly", "minsize 1M", "maxsize=1M":
            problems = host("\ndaily\n" + line + "\n").problems
            self.assertEqual(list(problems.values()), [f"line 4: {line}"])
            self.assertEqual(list(problems), ["rot-count" if line.startswith("rotate") else "period"])

    def test_the_first_line_is_named(self) -> None:
        self.assertEqual(host("yearly\n", "yearly\n").problems["period"], "line 2: yearly")

    def test_other_lines_are_no_problem(self) -> None:
        self.assertEqual(host("daily\nyearlyish\ndelaycompress\nmaxage 5\n").problems, {})

    def test_only_a_host_needs_a_period(self) -> None:
        self.assertEqual(host("").problems, {"period": "no period"})
        self.assertEqual(host("", category="nginx").problems, {})


class Options(unittest.TestCase):
    def test_all_settings(self) -> None:
        self.assertEqual(host("weekly\nrotate 5\ncompress\nmail a@b\n" + SCRIPT).options,
                         {"period-type": "by_time", "period": "weekly", "rot-count": "5", "compress": "true", "email": "a@b",
                          "anonymize-ip": "true"})

    def test_what_a_host_lacks(self) -> None:
        self.assertEqual(host("size 5\n").options,
                         {"period-type": "by_size", "period": "5", "rot-count": "-1", "compress": "false", "email": "",
                          "anonymize-ip": "false"})

    def test_where_stanzas_of_a_host_differ(self) -> None:
        self.assertEqual(host("rotate 5\n", "daily\ncompress\nmail a@b\n" + SCRIPT, "weekly\nnocompress\n").options,
                         {"period-type": "by_time", "period": "daily", "rot-count": "-1", "compress": "true", "email": "a@b",
                          "anonymize-ip": "keep"})

    def test_where_stanzas_of_a_category_differ(self) -> None:
        self.assertEqual(host("daily\nrotate 5\n" + SCRIPT, "", category="tavek").options,
                         {"rot-count": "-1", "anonymize-ip": "keep"})
        self.assertEqual(host("daily\nrotate 5\n" + SCRIPT, category="tavek").options,
                         {"period-type": "by_time", "period": "daily", "rot-count": "5", "anonymize-ip": "true"})

    def test_words(self) -> None:
        options = {"email": "a b", "compress": "true", "period": "5"}
        self.assertEqual(words(options, None), ["--period=5", "--compress=true", "--email=a b", "-K"])
        self.assertEqual(words(options, "nginx"), ["--period=5", "-K"])
        self.assertEqual(words({"email": ""}, None), ["-K"])

    def test_the_type_follows_from_the_period(self) -> None:
        self.assertEqual([settings.period_options(period).get("period-type")
                          for period in ("daily", "weekly", "monthly", "5M", "")],
                         ["by_time", "by_time", "by_time", "by_size", None])


if __name__ == "__main__":
    unittest.main()
