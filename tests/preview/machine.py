"""Random machines for the tests of the preview, and what is on them. This file runs inside the sandbox."""

import gzip
import itertools
import os
import pathlib
import random
import re
import shutil
import stat
import subprocess
import time
from collections.abc import Callable
from functools import partial
from typing import Any

HOSTS = "/opt/oru/etc/logrotate.d"
TREES = ["/etc/logrotate.d", "/opt/oru/etc", "/var"]
EXPECTED = "/tmp/expected"

# What is at each path: mode, owner, group, content, and perhaps inode and times. A directory has no content.
State = dict[str, tuple[Any, ...]]

NAMES = ["example.com", "sp ace.example", "new\nline.example", "\x1b[31mred.example", "caf\u00e9.example", "quote\"\\.example",
         "%s.example", "\udcff.example"]
TARGETS = [*NAMES, "/var/elsewhere/absolute.example", "../logrotate.d/example.com", "missing/example.com", "/var/log", ""]
LOGS = ["access_ssl_log.processed", "error_log", "proxy_error_log", "xferlog_regular.processed", "php-fpm_error.log"]
SUFFIXES = ["", ".1", ".2", ".3.gz", ".4", ".5.gz", ".07", ".10", ".123", ".gz", ".old", ".-3", ".99999999999", ".\x1b[31m9",
            ".x\n.9", ".\udcff.8"]
CATEGORIES = {"apache": "/etc/logrotate.d/apache2", "nginx": "/etc/logrotate.d/nginx", "tavek": "/opt/oru/etc/logrotate.conf",
              "fail2ban": "/etc/logrotate.d/fail2ban", "modsecurity": "/etc/logrotate.d/mod_security"}
LINES = ["\tdaily\n", "\tweekly\n", " rotate 3\n", "\tsize=10M\n", "\tcompress\n", "\tnocompress\n", "\tmissingok\n", "}\n",
         "\tmail a@b.example\n", "/var/log/apache2/*.log {\n", "/var/log/nginx/*.log {\n", "{\n", "# a comment\n", "\n", "junk\n",
         "\tpostrotate\n\t\ttrue\n\tendscript\n", "\udcff\n", "no newline"]


# Directives that an administrator may add.
SETTINGS = ["dateext", "dateext\n\tdateformat -%Y-%m-%d", "delaycompress", "nocompress", "maxage 5", "create", "nocopytruncate", "start 3",
            "extension .log", "notifempty", "ifempty", "compressext .zz",
            "su root root", "rotate 1", "nodateext", "sharedscripts", "copy", "mail a@b.example", "maillast", "shred"]


def logs_of(name: str) -> str:
    return f"/var/www/vhosts/system/{name}/logs"


def random_text(chance: random.Random) -> str:
    if chance.random() < 0.3:
        return "".join(chance.choices(LINES, k=chance.randrange(15)))
    log = chance.choice(["/var/log/apache2/*.log", "/var/log/nginx/*.log", "/var/log/modsec_audit.log", "/var/log/fail2ban.log"])
    body = "".join(chance.sample(LINES[:7], chance.randrange(5)))
    return f"{log} {{\n{body}\tpostrotate\n\t\ttrue\n\tendscript\n}}\n" * chance.randrange(1, 3)


def write(path: str, text: str) -> None:
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8", errors="surrogateescape") as file:
        file.write(text)


def disturb(chance: random.Random, unique: bool = False) -> None:
    """Makes a random change that an administrator, the panel, logrotate or a site owner could make.

    If `unique`, each log has a content of its own, by which it is recognized after a rotation.
    """
    kind = chance.randrange(8)
    target = chance.choice([f"{HOSTS}/{chance.choice(NAMES)}", chance.choice([*CATEGORIES.values()])])
    if kind < 2:
        if os.path.lexists(target):
            remove(target)
        write(target, random_text(chance))
    elif kind == 2 and os.path.isfile(target):
        os.chmod(target, chance.choice([0o600, 0o640, 0o644, 0o666]))
    elif kind == 3:
        if os.path.lexists(target):
            remove(target)
        make_special(chance, target, "/var/link-target", chance.choice(NAMES))
    else:
        for _ in range(10):
            folder, log = chance.choice([(logs_of(chance.choice(NAMES)), chance.choice(LOGS)), ("/var/log/apache2", "access.log"),
                                         ("/var/log/nginx", "error.log"), ("/var/log", "fail2ban.log")])
            path = f"{folder}/{log}{chance.choice(SUFFIXES)}"
            if unique and not os.path.lexists(path):
                write_unique(path)
            elif not unique:
                write(path, "x" * chance.choice([0, 1, 1023, 1024, 5000]))


def make_special(chance: random.Random, path: str, *link_targets: str) -> None:
    makers: list[Callable[[str], None]] = [os.mkdir, os.mkfifo, *(partial(os.symlink, target) for target in link_targets)]
    chance.choice(makers)(path)


def remove(path: str) -> None:
    if os.path.isdir(path) and not os.path.islink(path):
        shutil.rmtree(path)
    else:
        os.unlink(path)


def install_machine(chance: random.Random) -> None:
    """Replaces everything in the trees with empty directories and one file per category."""
    for tree in TREES:
        for name in os.listdir(tree):
            remove(os.path.join(tree, name))
    for folder in [HOSTS, "/var/log/apache2", "/var/log/nginx", "/var/log/tavek", "/var/www/vhosts"]:
        os.makedirs(folder)
    for path in CATEGORIES.values():
        write(path, random_text(chance))


NUMBERS = itertools.count()


def write_unique(path: str) -> None:
    """Writes a text that is in no other file, compressed if the name says so."""
    data = b"log %d\n" % next(NUMBERS)
    write(path, "")
    pathlib.Path(path).write_bytes(gzip.compress(data) if path.endswith((".gz", ".zz")) else data)


def add_logs(chance: random.Random) -> None:
    """Makes logs with copies as logrotate makes them, and links and special files as site owners may make them.

    The script that anonymizes them succeeds, as the preview assumes.
    """
    write("/opt/oru/admin/sbin/anonymize_ip", "#!/bin/sh\n")
    os.chmod("/opt/oru/admin/sbin/anonymize_ip", 0o755)
    places = [(logs_of(chance.choice(NAMES)), log) for log in LOGS for _ in range(2)]
    places += [("/var/log/apache2", "access.log"), ("/var/log/nginx", "error.log"), ("/var/log", "fail2ban.log")]
    os.makedirs("/var/log/old")
    for folder, log in places:
        write_unique(f"{folder}/{log}")
        if chance.random() < 0.5:
            os.makedirs(f"{folder}/old", exist_ok=True)
        ends = [f".{number}" for number in range(1, chance.randrange(1, 8))]
        ends += [f"-{time.strftime('%Y%m%d', time.localtime(time.time() - 86400 * day))}" for day in range(chance.randrange(4))]
        for end in ends:
            path = f"{chance.choice([folder, folder, folder, '/var/log/old'])}/{log}{end}{chance.choice(['', '.gz', '.gz', '.zz'])}"
            if not os.path.lexists(path):
                write_unique(path)
            when = time.time() - 86400 * (chance.randrange(10) + 0.5)  # The rotation is a little later than the preview.
            os.utime(path, (when, when), follow_symlinks=False)
            if chance.random() < 0.1:
                remove(path)
                make_special(chance, path, "/etc/passwd", "none")


def add_settings(chance: random.Random) -> None:
    """Adds directives to the main configuration file and to stanzas."""
    settings = "".join(f"{each}\n" for each in chance.sample(SETTINGS, chance.randrange(3)) if not each.startswith("mail"))
    write("/etc/logrotate.conf", f"{settings}/var/log/other.log {{\n}}\ninclude /etc/logrotate.d\ninclude {HOSTS}\nrotate 7\n")
    for folder in (HOSTS, "/etc/logrotate.d"):
        for name in os.listdir(folder):
            path = f"{folder}/{name}"
            if os.path.isfile(path) and not os.path.islink(path) and chance.random() < 0.5:
                data = pathlib.Path(path).read_bytes()
                words = "".join(f"\t{each}\n" for each in chance.sample(SETTINGS, chance.randrange(1, 3)))
                pathlib.Path(path).write_bytes(data.replace(b" {\n", b" {\n" + words.encode()))


def rotate(files: list[str]) -> list[str]:
    """Forces a rotation on this machine, of the logs of these rotation files only. Returns what it deletes.

    A file or copy is recognized by its content, which a copy may contain compressed, or by its inode.
    """
    for folder in (HOSTS, "/etc/logrotate.d"):
        for name in os.listdir(folder):
            if f"{folder}/{name}" not in files:
                remove(f"{folder}/{name}")
    panel = [path for path in files if os.path.dirname(path) not in (HOSTS, "/etc/logrotate.d")]
    with open("/etc/logrotate.conf") as file:
        main = file.read()
    with open("/etc/logrotate.conf", "w") as file:
        file.write(main.replace("/var/log/other.log {\n}\n", "").replace("rotate 7\n", "") +
                   "".join(f"include {path}\n" for path in panel))
    before = logs()
    # If the mail program ended without reading, the program that uncompresses the copy would sometimes fail.
    write("/tmp/mail", "#!/bin/sh\nexec cat >/dev/null\n")
    os.chmod("/tmp/mail", 0o755)
    subprocess.run(["logrotate", "--force", "--mail", "/tmp/mail", "--state", "/tmp/rotation.state", "/etc/logrotate.conf"],
                   capture_output=True, timeout=60, check=False)
    after = {key for keys in logs().values() for key in keys}
    return [path for path, keys in before.items() if not keys & after]


def logs() -> dict[str, set[object]]:
    found: dict[str, set[object]] = {}
    for folder, folders, files in os.walk("/var"):
        for name in files:
            path = os.path.join(folder, name)
            status = os.lstat(path)
            if stat.S_ISREG(status.st_mode):
                data = pathlib.Path(path).read_bytes()
                found[path] = {gzip.decompress(data) if data.startswith(b"\x1f\x8b") else data}
            else:
                found[path] = {status.st_ino}
    return found


def is_rotation_file(path: str, arguments: list[str]) -> bool:
    """Returns whether the path is a rotation file of the machine or the target of the run."""
    names = [argument.partition("=")[2] if argument.startswith("--") else argument for argument in arguments]
    return path.startswith((HOSTS + "/", "/etc/logrotate.d/", CATEGORIES["tavek"])) or path in [os.path.normpath(os.path.join(HOSTS, name)) for name in names]


def valid(text: str) -> str:
    """Returns the text as the preview shows it in JSON."""
    return text.encode("utf-8", "surrogateescape").decode("utf-8", "backslashreplace")


def followed(found: State, paths: set[str]) -> State:
    """Returns the entries of the paths. A link in a configuration directory counts as what it names."""
    result = {}
    for path in paths & found.keys():
        entry = found[path]
        if stat.S_ISLNK(entry[0]) and is_rotation_file(path, []):
            target = os.path.normpath(os.path.join(os.path.dirname(path), entry[3]))
            entry = found.get(target, entry)
        result[path] = entry
    return result


def random_arguments(chance: random.Random) -> list[str]:
    settings = [f"--rot-count={chance.choice([0, 1, 2, 2, 3, 4, 4, 5, 9, -1, 'x'])}"] if chance.random() < 0.9 else []
    settings += chance.choice([["--period-type=by_time", f"--period={chance.choice(['daily', 'weekly', 'monthly', 'hourly'])}"],
                               ["--period-type=by_size", f"--period={chance.choice(['10M', '1', 'junk'])}"]])
    if chance.random() < 0.1:
        settings.pop()
    settings += chance.choice([[], [], ["-K"], ["--anonymize-ip=true"], ["--anonymize-ip=false"]])
    job = chance.randrange(10)
    if job < 5:
        host = chance.choice(TARGETS)
        return [f"--vhost-name={host}", f"--on-off={chance.choice(['on', 'on', 'on', 'off', 'keep'])}", *settings,
                *chance.choice([["--compress=true"], ["--compress=false"], ["--compress=true", "--email=a@b.example"]])]
    if job < 9:
        return [f"--{chance.choice([*CATEGORIES])}-logs", *settings]
    return ["--system-logs", *settings]


def likely_arguments(chance: random.Random) -> list[str]:
    """Returns the arguments of a run that probably succeeds and leaves something for the next rotation."""
    if chance.random() < 0.3:
        return [f"--{chance.choice(['apache', 'nginx', 'fail2ban'])}-logs", f"--rot-count={chance.randrange(4)}", "-K"]
    return [chance.choice([NAMES[0], NAMES[4], *NAMES]), "on", "by_time", chance.choice(["daily", "weekly"]), str(chance.randrange(5)),
            chance.choice(["true", "true", "false"]), *(["-K"] if chance.random() < 2 / 3 else [])]


# ---- states

def state(trees: list[str], root: str = "", exact: bool = False) -> State:
    """Returns the attributes and the contents of everything below the trees. `exact` adds inodes and times."""
    found = {}
    for tree in trees:
        for folder, folders, files in os.walk(root + tree):
            for name in folders + files:
                path = os.path.join(folder, name)
                status = os.lstat(path)
                content = (os.readlink(path) if stat.S_ISLNK(status.st_mode) else
                           pathlib.Path(path).read_bytes() if stat.S_ISREG(status.st_mode) else None)
                found[path[len(root):]] = (status.st_mode, status.st_uid, status.st_gid, content) + (
                    (status.st_ino, status.st_mtime_ns, status.st_ctime_ns) if exact else ())
    return found


def path_of(shown: str) -> str:
    """Returns the path that a preview shows as `shown`, either plain or in quotes with octal escapes."""
    if not shown.startswith('"'):
        return shown
    data = re.sub(rb"\\([0-7]{3})", lambda match: bytes([int(match[1], 8)]), os.fsencode(shown[1:-1]))
    return os.fsdecode(data)


def apply(text: str) -> State:
    """Makes the changes that the preview shows, in copies of the trees below EXPECTED. Returns the state of the copies."""
    shutil.rmtree(EXPECTED, ignore_errors=True)
    os.mkdir(EXPECTED)
    subprocess.run(["cp", "-a", "--parents", *TREES, EXPECTED], check=True)
    modes, removed = {}, []
    for line in text.splitlines():
        if match := re.fullmatch(r'delete (".*"|/.*) \([0-9.]+ [KMGT]?i?B\)', line):
            os.unlink(EXPECTED + path_of(match[1]))
        elif match := re.fullmatch(r'(create|change|remove) (".*"|/.*?) (?:\D* )?([0-7]{4}) \d+:\d+(?: -> ([0-7]{4}) 0:0)?', line):
            path = EXPECTED + path_of(match[2])
            if match[1] == "remove":
                removed.append(path)
                continue
            modes[path] = int(match[4] or match[3], 8)
            if os.path.islink(path):
                content = pathlib.Path(path).read_bytes() if os.path.isfile(path) else b""
                os.unlink(path)
                pathlib.Path(path).write_bytes(content)
            pathlib.Path(path).touch()
    result = subprocess.run(["patch", "--strip=1", "--force", "--directory", EXPECTED], input=text, encoding="utf-8",
                            errors="surrogateescape", capture_output=True, check=False)
    if result.returncode != 0 and "Only garbage was found" not in result.stderr:
        raise AssertionError(f"patch: {result.stdout} {result.stderr}")
    for path, mode in modes.items():
        os.chmod(path, mode)
    for path in removed:
        os.makedirs(os.path.dirname(path), exist_ok=True)  # patch also removes a directory that becomes empty.
        if os.path.lexists(path):
            (os.rmdir if os.path.isdir(path) and not os.path.islink(path) else os.unlink)(path)
    return state(TREES, EXPECTED)
