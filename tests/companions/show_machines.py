#!/usr/bin/env python3
"""Checks tavek-logrotate-show on random machines.

The hosts' files are made by runs, and some are then edited. The categories' files are those of distributions. Checked is:

- tavek-logrotate-show itself changes nothing;
- the commands change no byte of a file whose command has no comment above it, and what a comment announces does happen;
- on a machine without rotation files at most two runs of the commands give back the files of hosts that one command made;
- with one setting, exactly the lines of that setting change.

--seed repeats the machines of an earlier check.
"""

import ast
import concurrent.futures
import os
import pathlib
import random
import re
import shlex
import shutil
import stat
import subprocess
import sys
from collections import Counter
from collections.abc import Iterable

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))

from lib.report import Report  # noqa: E402
from lib.sandbox import TOOL, TOP, arguments, scratch  # noqa: E402

# For each path the mode, the content and, if wanted, what else identifies the file.
State = dict[str, tuple[int, bytes, tuple[int, int] | None]]
Counts = Counter[str]

HOSTS = "/opt/oru/etc/logrotate.d"
TREES = ["/etc/logrotate.d", "/opt/oru/etc", "/var"]
TEMPORARY = ".Ab12Cd"
WORKERS = 2

NAMES = ["a.example", "b.example", "sp ace.example", "-dash.example", "quote'\".example", "caf\u00e9.example", "g*[lo]?b.example",
         "$(id);&.example", "\udcff.example", "new\nline.example", "#hash.example", "~.example", "{brace}.example", "=.example"]
ADDRESSES = ["", "", "admin@a.example", "two words", "-x", "it's", "$HOME", "a,b@c.example"]
CATEGORIES = {"apache": "/etc/logrotate.d/apache2", "nginx": "/etc/logrotate.d/nginx", "tavek": "/opt/oru/etc/logrotate.conf",
              "fail2ban": "/etc/logrotate.d/fail2ban", "modsecurity": "/etc/logrotate.d/mod_security"}
# Files like those of Debian's packages and of the panel.
FILES = {
    "apache": "/var/log/apache2/*.log {\n\tdaily\n\tmissingok\n\trotate 14\n\tcompress\n\tdelaycompress\n\tnotifempty\n"
              "\tcreate 640 root adm\n\tsharedscripts\n\tprerotate\n\t\tif [ -d /etc/x ]; then\n\t\t\trun-parts /etc/x\n\t\tfi\n"
              "\tendscript\n\tpostrotate\n\t\tif pgrep -f ^/usr/sbin/apache2 > /dev/null; then\n"
              "\t\t\tinvoke-rc.d apache2 reload\n\t\tfi\n\tendscript\n}\n",
    "nginx": "/var/log/nginx/*.log {\n\tdaily\n\tmissingok\n\trotate 14\n\tcompress\n\tsharedscripts\n\tpostrotate\n"
             "\t\tinvoke-rc.d nginx rotate >/dev/null 2>&1\n\tendscript\n}\n",
    "tavek": "/var/log/maillog.processed {\n\tmissingok\n\trotate 3\n\tsize 10M\n\tcompress\n}\n/var/log/other {\n\tweekly\n"
             "\trotate 5\n}\n/var/log/tavek/xferlog.processed {\n\tmissingok\n\trotate 3\n\tsize=10M\n}\ninclude /etc/other.d\n",
    "fail2ban": "/var/log/fail2ban.log {\n    weekly\n    rotate 4\n    compress\n    delaycompress\n    missingok\n"
                "    postrotate\n\tfail2ban-client flushlogs 1>/dev/null\n    endscript\n    create 640 root adm\n}\n",
    "modsecurity": "/var/log/modsec_audit.log\n{\n\trotate 7\n\tdaily\n}\n",
}
LINES = ["\tdaily\n", "\tweekly\n", " rotate 3\n", "\trotate 07\n", "\tsize 10M\n", "\tsize=10M\n", "\tcompress\n",
         "\tnocompress\n", "\tmissingok\n", "\tmail a@b.example\n", "\tmaillast\n", "\tyearly\n", "\tminsize 1M\n",
         "# a comment\n", "\n", "\tdateext\n", "}\n", "/var/log/x {\n", "/var/log/x { # note\n",
         "\tpostrotate\n\t\ttrue\n\tendscript\n", "\tdaily # note\n", "\udcff\n",
         "\t\t/usr/local/bin/anonymize_ip $*\n", "\tsize abc\n", "\trotate\n", "\tmail  b@c.example \n", "no newline"]
# For each setting, values and the lines that it concerns.
SETTINGS = {
    "period": (["daily", "weekly", "monthly", "5M", "100k"], r"[ \t]*(?:size|daily|weekly|monthly)"),
    "rot-count": (["0", "3", "70"], r"[ \t]*rotate[ \t]"),
    "compress": (["true", "false"], r"[ \t]*(?:no)?compress[ \t]*$"),
    "email": (["new@a.example", ""], r"[ \t]*(?:mail[ \t]|mailfirst[ \t]*$)"),
    "anonymize-ip": (["true", "false", "keep"], r"[ \t]*(?:/\S+/anonymize_ip[ \t]|postrotate[ \t]*$|endscript[ \t]*$)"),
}


# ---- inside the sandbox

def run(*words: str) -> subprocess.CompletedProcess[bytes]:
    return subprocess.run(words, stdin=subprocess.DEVNULL, capture_output=True, check=False)


def show(*words: str) -> list[str]:
    """Returns the printed lines, after checking that the command has changed nothing and left nothing behind."""
    before = state(exact=True)
    result = run("tavek-logrotate-show", *words)
    if state(exact=True) != before or os.listdir("/dev/shm") or result.returncode > 1:
        raise AssertionError(f"show {words}: a change, something left behind or a failure: {result.stderr!r}")
    return os.fsdecode(result.stdout).split("\n")


def state(exact: bool = False) -> State:
    found: State = {}
    for tree in TREES:
        for folder, folders, files in os.walk(tree):
            for path in (os.path.join(folder, name) for name in folders + files):
                status = os.lstat(path)
                content = (os.fsencode(os.readlink(path)) if stat.S_ISLNK(status.st_mode) else
                           pathlib.Path(path).read_bytes() if stat.S_ISREG(status.st_mode) else b"")
                found[path] = status.st_mode, content, (status.st_ino, status.st_mtime_ns) if exact else None
    return found


def random_settings(chance: random.Random) -> list[str]:
    period = chance.choice(["daily", "weekly", "monthly", "10M", "1", "100k"])
    words = [f"--period-type={'by_time' if period.isalpha() else 'by_size'}", f"--period={period}",
             f"--compress={chance.choice(['true', 'false', 'keep'])}", "-K"]
    words += [f"--rot-count={chance.choice([0, 1, 5, 30])}"] * (chance.random() < 0.9)
    words += [f"--email={address}" for address in [chance.choice(ADDRESSES)] if address]
    return words + chance.choice([[], [], ["--anonymize-ip=true"], ["--anonymize-ip=false"]])


class Machine:
    """A random machine. `plain` are the hosts whose files were made by one command, run once or several times.

    `edited` are the paths of the files that were edited by hand.
    """

    def __init__(self, chance: random.Random) -> None:
        for tree in TREES:
            for name in os.listdir(tree):
                path = os.path.join(tree, name)
                if os.path.isdir(path) and not os.path.islink(path):
                    shutil.rmtree(path)
                else:
                    os.unlink(path)
        self.root = chance.choice(["/var/www/vhosts", "/var/my vhosts"])
        pathlib.Path("/etc/oru/oru.conf").write_text(f"HTTPD_VHOSTS_D {self.root}\n" if "my" in self.root else "")
        os.mkdir(HOSTS)
        self.plain: set[str] = set()
        self.edited: set[str] = set()
        for name in chance.sample(NAMES, chance.randrange(2, 6)):
            os.makedirs(f"{self.root}/system/{name}")
            self.make_host(f"{HOSTS}/{name}", chance)
        for category in chance.sample([*CATEGORIES], chance.randrange(4)):
            self.make_category(category, chance)

    def make_host(self, path: str, chance: random.Random) -> None:
        if chance.random() < 0.1:
            pathlib.Path(path + TEMPORARY).write_text("/var/log/x {\n\tdaily\n}\n")
        for number in range(chance.choice([1, 1, 1, 2, 3])):
            words = random_settings(chance)
            for _ in range(chance.choice([1, 1, 2])):
                if (result := run(TOOL, f"--vhost-name={path}", "--on-off=on", *words)).returncode != 0:
                    raise AssertionError(f"{words}: {result.stderr!r}")
        way = chance.random()
        if way < 0.35:
            self.edit(path, chance)
        elif way < 0.4:
            os.chmod(path, chance.choice([0o600, 0o664]))
        elif way < 0.45:
            os.rename(path, chance.choice([path + ".disabled", path + ".link"]))
            if os.path.exists(path + ".link"):
                os.symlink(path + ".link", path)
        elif way < 0.5:
            run(TOOL, f"--vhost-name={path}", "--on-off=keep")
        elif number == 0:
            self.plain.add(os.path.basename(path))

    def make_category(self, category: str, chance: random.Random) -> None:
        path = CATEGORIES[category]
        pathlib.Path(path).write_text(FILES[category])
        for _ in range(chance.choice([0, 0, 1, 2])):
            words = random_settings(chance)
            run(TOOL, f"--{category}-logs", *words)
        if chance.random() < 0.3:
            self.edit(path, chance)

    def edit(self, path: str, chance: random.Random) -> None:
        self.edited.add(path)
        lines = os.fsdecode(pathlib.Path(path).read_bytes()).splitlines(keepends=True)
        for _ in range(chance.choice([1, 1, 1, 2, 5])):
            place = chance.randrange(len(lines) + 1)
            lines[place:place + chance.choice([0, 0, 1])] = [chance.choice(LINES)]
        pathlib.Path(path).write_bytes(os.fsencode("".join(lines)))


def path_of(command: str) -> str:
    words = shlex.split(command)
    if found := re.fullmatch("--(.*)-logs", words[1]):
        return CATEGORIES[found[1]]
    return f"{HOSTS}/{words[1].removeprefix('--vhost-name=')}"


def commands(lines: list[str]) -> dict[str, str]:
    """Returns the path of each command's file, with the comment above the command."""
    found = {}
    for above, line in zip(lines, lines[1:]):
        if line.startswith("tavek-logrotate "):
            found[path_of(line)] = above if above.startswith("# ") and not above.startswith(("# -K", "# tavek-logrotate")) else ""
    return found


def run_commands(lines: list[str]) -> list[str]:
    result = subprocess.run(["sh", "-e"], input=os.fsencode("\n".join(lines)), capture_output=True, check=False)
    return [f"sh ends with status {result.returncode}: {result.stderr!r}"] if result.returncode or result.stderr else []


def restore(before: State) -> None:
    for path, (mode, content, _) in before.items():
        if stat.S_ISREG(mode):
            pathlib.Path(path).unlink(missing_ok=True)
            pathlib.Path(path).write_bytes(content)
            os.chmod(path, mode)
        elif stat.S_ISLNK(mode):
            pathlib.Path(path).unlink()
            os.symlink(content, path)


def check_unchanged(before: State, counts: Counts) -> tuple[list[str], list[str]]:
    lines = show("--commands")
    found = commands(lines)
    problems = run_commands(lines)
    after = state()
    for path in before.keys() | after.keys():
        same = before.get(path) == after.get(path)
        comment = found.get(path, "")
        if path in found and path.endswith(TEMPORARY):
            problems.append(f"{path!r} has a command")
        counts["unchanged" if not comment else "with a comment"] += path in found
        if not same and not comment:
            problems.append(f"{path!r} changed without a comment")
        if same and "a run would" in comment:
            problems.append(f"{path!r} did not change: {comment}")
    counts["refused"] += sum(line.startswith("# tavek-logrotate ") for line in lines)
    return problems, lines


def check_given_back(machine: Machine, before: State, lines: list[str], counts: Counts) -> list[str]:
    for name in os.listdir(HOSTS):
        os.unlink(f"{HOSTS}/{name}")
    active = [line for line in lines if re.match("tavek-logrotate (?!--[a-z0-9]*-logs )", line)]
    missing = {f"{HOSTS}/{name}" for name in machine.plain} - {path_of(line) for line in active}
    problems = [f"{path!r} has no command" for path in missing if path.isprintable()]
    given_back: set[str] = set()
    for number in 1, 2:
        problems += run_commands(active)
        back = {path for path in map(path_of, active) if state().get(path) == before[path]}
        counts[f"given back by run {number}"] += len(back - given_back)
        given_back |= back
    plain = {f"{HOSTS}/{name}" for name in machine.plain} - missing
    return problems + [f"{path!r} is not given back" for path in plain - given_back]


def without(text: str, pattern: str) -> list[str]:
    return [line for line in text.split("\n") if not re.match(pattern, line)]


def wanted_lines(setting: str, value: str) -> set[str]:
    """Returns the lines that remain of the setting."""
    if setting == "period":
        return {f"\t{value}" if value in ("daily", "weekly", "monthly") else f"\tsize={value}"}
    return {"rot-count": {f"\trotate {value}"}, "compress": {"\tcompress" if value == "true" else "\tnocompress"},
            "email": {f"\tmail {value}", "\tmailfirst"} if value else set()}[setting]


def check_setting(machine: Machine, before: State, chance: random.Random, counts: Counts) -> list[str]:
    setting = chance.choice([*SETTINGS])
    values, pattern = SETTINGS[setting]
    value = chance.choice(values)
    lines = show("--commands", f"--{setting}={value}")
    found = commands(lines)
    problems = run_commands(lines)
    after = state()
    for path in before.keys() | after.keys():
        if path not in found and before.get(path) != after.get(path):
            problems.append(f"--{setting}={value}: {path!r} changed without a command")
        if found.get(path) != "":
            continue
        old, new = (os.fsdecode(each[path][1]) for each in (before, after))
        counts["setting changed lines"] += old != new
        if without(old, pattern) != without(new, pattern):
            problems.append(f"--{setting}={value}: other lines of {path!r} changed:\n{old}---\n{new}")
        ignored = setting in ("compress", "email") and path in CATEGORIES.values()
        if ignored and old != new:
            problems.append(f"--{setting}={value}: {path!r} changed")
        # An edited file may contain such lines outside the stanzas.
        if not ignored and setting != "anonymize-ip" and path not in machine.edited:
            rest = {line for line in new.split("\n") if re.match(pattern, line)} - wanted_lines(setting, value)
            problems += [f"--{setting}={value}: {path!r} contains {rest}"] * bool(rest)
    return problems


def inside(seed: int) -> tuple[Counts, list[str]]:
    """Checks one machine and returns the counts and the problems."""
    chance = random.Random(seed)
    machine = Machine(chance)
    before = state()
    counts = Counts(machines=1, plain=len(machine.plain))
    problems, lines = check_unchanged(before, counts)
    restore(before)
    problems += check_setting(machine, before, chance, counts)
    restore(before)
    problems += check_given_back(machine, before, lines, counts)
    return counts, problems


def worker(seeds: Iterable[int]) -> None:
    """Prints one line per machine: its seed, the counts and the problems."""
    for seed in seeds:
        try:
            counts, problems = inside(seed)
        except AssertionError as error:
            counts, problems = Counts(), [str(error)]
        print(ascii((seed, dict(counts), problems)), flush=True)


# ---- outside

# On one machine there are at least so many of these on average, or the properties say little.
LEAST = {"unchanged": 1.5, "with a comment": 0.5, "refused": 0.15, "plain": 0.5, "given back by run 1": 0.5,
         "given back by run 2": 0.05, "setting changed lines": 0.7}


def check(program: pathlib.Path, seeds: Iterable[int], report: Report, totals: Counts) -> int:
    with scratch(program) as sandbox:
        shutil.copytree(TOP / "tests/lib", sandbox.path("/tmp/tests/lib"))
        shutil.copytree(TOP / "tests/companions", sandbox.path("/tmp/tests/companions"))
        script = "/tmp/tests/companions/show_machines.py"
        command = sandbox.command("/usr/bin/python3", "-Xutf8", script, "--inside", *map(str, seeds))
        with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True) as process:
            for line in process.stdout or ():
                seed, counts, problems = ast.literal_eval(line)
                totals.update(counts)
                report.tell(f"machine {seed}", problems)
    return process.returncode


def main() -> int:
    parser = arguments(__doc__)
    parser.add_argument("--machines", type=int, default=50)
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(10**6))
    options = parser.parse_args()
    report = Report(options.machines, "machines")
    totals = Counts()
    seeds = range(options.seed, options.seed + options.machines)
    with concurrent.futures.ThreadPoolExecutor(WORKERS) as pool:
        for future in [pool.submit(check, options.program, seeds[first::WORKERS], report, totals) for first in range(WORKERS)]:
            if future.result() != 0:
                report.tell("worker", ["ends with an error"])
    least = [f"only {totals[what]} times: {what}" for what, each in LEAST.items() if totals[what] < each * options.machines]
    report.tell("enough of everything", least)
    print(f"seed {options.seed}: " + ", ".join(f"{count} {what}" for what, count in sorted(totals.items())))
    return report.finish()


if __name__ == "__main__":
    if sys.argv[1:2] == ["--inside"]:
        worker(map(int, sys.argv[2:]))
    else:
        sys.exit(main())
