"""Running the tool inside the sandbox and looking at what it leaves."""

import collections
import contextlib
import glob
import os
import re
import resource
import stat
import subprocess

TOOL = "/opt/oru/admin/sbin/tavek-logrotate"
HOSTS = "/opt/oru/etc/logrotate.d"
TARGET = f"{HOSTS}/example.com"
SYSTEM_FILES = ["/etc/logrotate.d/apache2", "/etc/logrotate.d/nginx", "/opt/oru/etc/logrotate.conf",
                "/etc/logrotate.d/fail2ban", "/etc/logrotate.d/mod_security"]

DAILY = ("example.com", "on", "by_time", "daily", "5", "true")
SYSTEM = ("--system-logs", "--period-type=by_time", "--period=weekly", "--rot-count=3")

Result = collections.namedtuple("Result", "status output error")


def stanzas(count, period="weekly", rotate=9):
    """A file whose directives all differ from what DAILY writes."""
    lines = ["/var/www/vhosts/system/example.com/logs/log%06d {", f"\t{period}", f"\trotate {rotate}", "\tnocompress",
             "\tmissingok", "\tcopytruncate", "}", ""]
    text = "\n".join(lines)
    return "".join(text % number for number in range(count)).encode()


OLD = stanzas(290)  # About 31 KB.
NEW = OLD.replace(b"weekly", b"daily").replace(b"rotate 9", b"rotate 5").replace(b"nocompress", b"compress")


def put(path, data):
    with open(path, "wb") as file:
        file.write(data)


def get(path):
    """The bytes of a file, or None without one."""
    try:
        with open(path, "rb") as file:
            return file.read()
    except FileNotFoundError:
        return None


def reset(data=OLD):
    """The hosts' folder with the target alone, or, for None, with nothing."""
    for name in os.listdir(HOSTS):
        os.unlink(os.path.join(HOSTS, name))
    if data is not None:
        put(TARGET, data)


def tool(*arguments, under=(), timeout=60, **popen):
    """One run to its end, under another command where one is given. The status is negative for a death by a signal."""
    popen = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **popen}
    done = subprocess.run([*under, TOOL, *arguments], timeout=timeout, check=False, **popen)
    return Result(done.returncode, done.stdout or b"", done.stderr or b"")


def shell(script, *arguments, **popen):
    """A shell script with the tool as $TOOL and the arguments as "$@"."""
    done = subprocess.run(["sh", "-c", script, "sh", *arguments], stdin=subprocess.DEVNULL, capture_output=True,
                          env={**os.environ, "TOOL": TOOL}, timeout=60, check=False, **popen)
    return Result(done.returncode, done.stdout, done.stderr)


def temporary_files(target=TARGET):
    return glob.glob(glob.escape(target) + ".??????")


def mode_of(path):
    return stat.S_IMODE(os.stat(path).st_mode)


def expect_new(row, result, what, new=NEW, target=TARGET):
    row.holds(result.status == 0, f"{what}: exit status {result.status}, {result.error!r}")
    row.holds(get(target) == new, f"{what}: the target is not NEW")
    row.holds(mode_of(target) == 0o644, f"{what}: mode {mode_of(target):o}")
    row.holds(not temporary_files(target), f"{what}: temporary files stay")


def expect_refusal(row, result, what, message="", old=(OLD,), target=TARGET):
    """The target is one of `old`, nothing lies beside it, one line says why and matches `message`."""
    row.holds(result.status == 1, f"{what}: exit status {result.status}")
    row.holds(get(target) in old, f"{what}: the target is not OLD")
    row.holds(not temporary_files(target), f"{what}: temporary files stay")
    expect_message(row, result.error, what, message)


def expect_message(row, error, what, message):
    lines = error.decode("utf-8", "backslashreplace").splitlines()
    right = len(lines) == 1 and "Success" not in lines[0] and re.search(message, lines[0])
    row.holds(right, f"{what}: the message is {error!r}")


def processor_seconds(run):
    """The processor time of what a function runs to its end, which other work of the machine does not make longer."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    result = run()
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return result, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


@contextlib.contextmanager
def mounted(place, *options):
    """Something mounted on a folder or file of the sandbox for a while."""
    subprocess.run(["mount", *options, place], check=True)
    try:
        yield
    finally:
        subprocess.run(["umount", "-l", place], check=True)
