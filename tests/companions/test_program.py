"""Compares what the companions know of the program with the program, which runs in a sandbox."""

import ast
import os
import pathlib
import random
import re
import unittest

from companions import program, rotation_file
from lib.sandbox import PROGRAM, TOOL, Sandbox, scratch

SETTINGS = ("--period-type=by_size", "--period=12345", "--rot-count=777", "--compress=true")
MANAGED = {"period", "rotate", "compress", "missingok", "copytruncate", "mail", "mailwhen", "anonymizer"}
# Lines of random files. Each number occurs once, and blanks at the end make the other lines different.
LINES = ["\tdaily # {n}", "weekly{n}", " \tsize={n}", "monthly {n} }}", "\trotate {n}", "rotate{n}", "x rotate {n}",
         "\tcompress{b}", "nocompress{b}", "compress # {n}", "missingok{b}", " nomissingok{b}", "copytruncate{b}",
         "nocopytruncate{b}", "\tmail {n}@a.example", "mailfirst{b}", "maillast{b}", "mailfirst {n}", "\tpostrotate{b}",
         "\tpostrotate{b}", "\tendscript{b}", "\tendscript{b}", "postrotate {n}", "/x/anonymize_ip {n}",
         "\t/x/y/anonymize_ip\t{n}", "/anonymize_ip {n}", "x/anonymize_ip {n}", "/x/anonymize_ip{n} y", "yearly {n}",
         "# {n}", " # /c{n} {{", "# /c{n} {{", "}} # {n}", "}} # {n}", "}}/{n} {{", "x{n} }} daily", "/log{n} {{",
         "/log{n} {{", "\"/log {n}\" {{", "/log{n}", "/log{n} {{ # x", "/log{n} {{ ", "/{{a,b}}/{n} {{", "\udcff{n}",
         "\0{n}", "\tdaily # {n}\r", ""]


def random_text(chance: random.Random) -> str:
    """Returns a file with a stanza that is closed. Without one the program reads a file a second time, differently."""
    lines = ["/first {", "}"]
    lines += [chance.choice(LINES).format(n=number, b=" " * number) for number in range(100, 100 + chance.randrange(40))]
    return "\n".join(lines) + chance.choice(["\n", "\n", ""])


class Program(unittest.TestCase):
    def setUp(self) -> None:
        self.sandbox: Sandbox = self.enterContext(scratch(PROGRAM))

    def run_program(self, *words: str) -> str:
        """Returns the messages of a run."""
        return os.fsdecode(self.sandbox.run(TOOL, *words).stderr)

    def call(self, expression: str) -> object:
        """Returns the value of an expression inside the sandbox, about the module `program`."""
        script = f"from companions import program; print(ascii({expression}))"
        package = "PYTHONPATH=/usr/local/share/tavek-logrotate"
        result = self.sandbox.run("env", package, "/usr/bin/python3", "-Xutf8", "-c", script)
        self.assertEqual(result.stderr, b"")
        return ast.literal_eval(result.stdout.decode())

    def write(self, path: str, text: str) -> pathlib.Path:
        file = self.sandbox.path(path)
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(os.fsencode(text))
        return file

    def test_the_file_of_each_category(self) -> None:
        for category in program.CATEGORIES:
            files = {each: self.write(path, "/x {\n}\n") for each, path in program.CATEGORIES.items()}
            self.assertEqual(self.run_program(f"--{category}-logs", "--rot-count=3", "-K"), "")
            changed = {each for each, file in files.items() if "rotate 3" in file.read_text()}
            self.assertEqual(changed, {category})

    def test_all_categories_in_their_order(self) -> None:
        for path in program.CATEGORIES.values():
            self.sandbox.path(path).unlink(missing_ok=True)
            self.sandbox.path(path).mkdir()
            said = self.run_program("--system-logs", "--rot-count=3")
            self.assertIn(f"--{next(each for each, file in program.CATEGORIES.items() if file == path)}-logs", said)
            self.sandbox.path(path).rmdir()
        for path in program.CATEGORIES.values():
            self.sandbox.path(path).mkdir()
        self.assertIn(f"--{next(iter(program.CATEGORIES))}-logs", self.run_program("--system-logs", "--rot-count=3"))

    def test_the_directories_of_the_copies_of_each_category(self) -> None:
        logs = ["/var/log/apache2/a.log", "/var/log/nginx/a.log", "/var/log/maillog.processed",
                "/var/log/tavek/xferlog.processed", "/var/log/fail2ban.log", "/var/log/modsec_audit.log", "/var/log/other/a.log"]
        for category, path in program.CATEGORIES.items():
            copies = [self.write(log + ".9", "") for log in logs]
            self.write(path, "/x {\n}\n")
            self.assertEqual(self.run_program(f"--{category}-logs", "--rot-count=3"), "")
            removed = {f"/{os.path.relpath(copy.parent, self.sandbox.root)}" for copy in copies if not copy.exists()}
            self.assertEqual(removed, set(program.CATEGORY_LOGS[category]))

    def test_temporary_names(self) -> None:
        names = set()
        for _ in range(100):
            result = self.sandbox.run("sh", "-c", f"trap '' XFSZ; ulimit -f 0; exec {TOOL} a.example on by_time daily 5 true")
            found = re.fullmatch(r"Failed to write (/.*): File too large\n", result.stderr.decode())
            assert found, result
            names.add(found[1])
        self.assertGreater(len(names), 90)
        self.assertEqual({program.without_temporary_suffix(name) for name in names}, {program.target_of("a.example")})

    def test_the_resolution_of_names(self) -> None:
        self.sandbox.path(program.HOSTS_DIRECTORY + "/folder").mkdir()
        for name in "a.example", "-x", "a b", "folder/a", "/var/elsewhere", "../b", "./c", "\udcff", "/tmp//d":
            self.run_program(f"--vhost-name={name}", "--on-off=on", *SETTINGS, "-K")
            self.assertTrue(self.sandbox.path(program.target_of(name)).is_file(), name)

    def test_a_generated_file(self) -> None:
        self.run_program("a.example", "on", *SETTINGS, "-K")
        file = rotation_file.parse(rotation_file.read(str(self.sandbox.path(program.target_of("a.example")))))
        self.assertEqual([stanza.logs() for stanza in file.stanzas],
                         [[f"/var/www/vhosts/system/a.example/logs/{family}"] for family in program.LOG_FAMILIES])
        self.assertEqual(self.call("program.run_on_new_file('keep').count('/system/host/logs/')"), 4)

    def test_the_anonymizer(self) -> None:
        self.run_program("a.example", "on", *SETTINGS, "--anonymize-ip=true", "-K")
        self.assertIn(f"\t\t{program.ANONYMIZER} ", self.sandbox.path(program.target_of("a.example")).read_text())

    def test_the_root_of_the_virtual_hosts(self) -> None:
        for text, root in [("", "/var/www/vhosts"), ("HTTPD_VHOSTS_D /srv/a b\n", "/srv/a b"), 
                           ("HTTPD_VHOSTS_D /srv \n", "/srv \n"),
                           ("HTTPD_VHOSTS_D /x\nHTTPD_VHOSTS_D /srv/caf\u00e9\udcff # moved\n", "/srv/caf\u00e9\udcff")]:
            self.write("/etc/oru/oru.conf", text)
            self.assertEqual(self.call("program.vhosts_root()"), root)

    def test_the_hosts_of_the_panel(self) -> None:
        self.assertIsNone(self.call("program.hosts_of_panel('/var/www/vhosts')"))
        system = self.sandbox.path("/var/www/vhosts/system")
        (system / "a.example").mkdir(parents=True)
        (system / ".hidden").mkdir()
        (system / "file").touch()
        (system / "link").symlink_to("a.example")
        (system / "dangling").symlink_to("nowhere")
        self.assertEqual(self.call("program.hosts_of_panel('/var/www/vhosts')"), {"a.example", "link"})

    def test_the_reader_of_rotation_files(self) -> None:
        """Of each random file, the program copies the lines that are not managed, and only these."""
        chance = random.Random(os.environ.get("SEED", "1"))
        texts = [random_text(chance) for _ in range(600)]
        for number, text in enumerate(texts):
            self.write(f"/tmp/files/{number}", text)
        words = " ".join([*SETTINGS, "--email=new@a.example", "--anonymize-ip=true", "-K"])
        result = self.sandbox.run("sh", "-ec", f'for file in /tmp/files/*; do {TOOL} "$file" on {words}; done')
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        found = {kind: 0 for kind in MANAGED}
        for number, text in enumerate(texts):
            file = rotation_file.parse(text)
            managed = {line.number: line.kind for stanza in file.stanzas for line in stanza.lines if line.kind in MANAGED}
            copied = [line for place, line in enumerate(text.split("\n"), 1) if place not in managed and line]
            after = os.fsdecode(self.sandbox.path(f"/tmp/files/{number}").read_bytes()).split("\n")
            # A line that the program adds before a closing brace that does not begin its line joins what precedes the brace.
            self.assertEqual([line for line in copied if not any(line.endswith(each) for each in after)], [], text)
            kept = [line for place, line in enumerate(text.split("\n"), 1) if place in managed and line in after]
            self.assertEqual(kept, [], text)
            for kind in managed.values():
                found[kind] += 1
        self.assertGreater(min(found.values()), 20)


if __name__ == "__main__":
    unittest.main()
