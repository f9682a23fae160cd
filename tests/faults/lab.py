"""Runs the tool inside the sandbox and checks the files it leaves."""

import collections
import contextlib
import os
import re
import resource
import signal
import stat
import subprocess

TOOL = "/opt/oru/admin/sbin/tavek-logrotate"
HOSTS = "/opt/oru/etc/logrotate.d"
TARGET = f"{HOSTS}/example.com"
LOGS = "/var/www/vhosts/system/example.com/logs"
SYSTEM_FILES = ["/etc/logrotate.d/apache2", "/etc/logrotate.d/nginx", "/opt/oru/etc/logrotate.conf",
                "/etc/logrotate.d/fail2ban", "/etc/logrotate.d/mod_security"]
TRACE = "/tmp/trace"

DAILY = ("example.com", "on", "by_time", "daily", "5", "true")
APACHE = ("--apache-logs", "--period-type=by_time", "--period=weekly", "--rot-count=3")
SYSTEM = ("--system-logs", *APACHE[1:])

# The named signals that end a process by default, except KILL, PIPE, XFSZ and the signals that an error in a program
# raises.
NAMED_SIGNALS = [signal.SIGHUP, signal.SIGINT, signal.SIGQUIT, signal.SIGUSR1, signal.SIGUSR2, signal.SIGALRM,
                 signal.SIGTERM, signal.SIGSTKFLT, signal.SIGXCPU, signal.SIGVTALRM, signal.SIGPROF, signal.SIGIO,
                 signal.SIGPWR]
REAL_TIME_SIGNALS = list(range(signal.SIGRTMIN, signal.SIGRTMAX + 1))
ENDING_SIGNALS = NAMED_SIGNALS + REAL_TIME_SIGNALS

Result = collections.namedtuple("Result", "status output error trace", defaults=[""])
Call = collections.namedtuple("Call", "name ordinal text")  # The ordinal counts the calls of that name from 1.


def stanzas(count, period="weekly", rotate=9, compress="nocompress"):
    """A file in which a run with the arguments DAILY changes only these three directives of every stanza."""
    lines = ["/var/www/vhosts/system/example.com/logs/log%06d {", f"\t{period}", f"\trotate {rotate}", f"\t{compress}",
             "\tmissingok", "\tcopytruncate", "}", ""]
    text = "\n".join(lines)
    return "".join(text % number for number in range(count)).encode()


OLD = stanzas(290)  # About 31 KB.
NEW = stanzas(290, "daily", 5, "compress")

# A stanza that never closes and lacks a period, so the tool scans the file twice.
UNCLOSED = b"}\n/var/log/unclosed {\n" + b"\tcreate 0640 root adm\n" * 6000


def set_up_process():
    """Restores the default actions of signals, which a shell changes for background jobs, and prevents core dumps.

    A limit of 1 also prevents dumps into a pipe, which a limit of 0 does not.
    """
    for number in ENDING_SIGNALS:
        signal.signal(number, signal.SIG_DFL)
    resource.setrlimit(resource.RLIMIT_CORE, (1, 1))


def signal_name(number):
    """The name of a signal as strace prints it."""
    return f"SIGRT_{number - 32}" if number >= signal.SIGRTMIN else signal.Signals(number).name


def put(path, data):
    with open(path, "wb") as file:
        file.write(data)


def get(path):
    """The bytes of a file, or None if it does not exist."""
    try:
        with open(path, "rb") as file:
            return file.read()
    except FileNotFoundError:
        return None


def reset(data=OLD, target=TARGET):
    """Leaves only the target in its folder, or, if `data` is None, an empty folder."""
    for path in beside(target):
        os.unlink(path)
    with contextlib.suppress(FileNotFoundError):
        os.unlink(target)
    if data is not None:
        put(target, data)


def beside(target=TARGET):
    """The other files in the folder of the target."""
    folder, name = os.path.split(target)
    return sorted(os.path.join(folder, other) for other in os.listdir(folder) if other != name)


def mode_of(path):
    return stat.S_IMODE(os.stat(path).st_mode)


def run(command, **popen):
    """Runs a command to its end. The status is negative if a signal killed it."""
    popen = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "timeout": 60, **popen}
    done = subprocess.run(command, check=False, **popen)
    return Result(done.returncode, done.stdout or b"", done.stderr or b"")


def tool(*arguments, under=(), **popen):
    return run([*under, TOOL, *arguments], **popen)


def shell(script, *arguments):
    """Runs a shell script in which "$0" is the tool and "$@" are the arguments."""
    return run(["sh", "-c", script, TOOL, *arguments])


def traced(command, *options, **popen):
    result = run(["strace", "-q", "-s", "128", "-o", TRACE, *options, *command], **popen)
    return result._replace(trace=get(TRACE).decode("utf-8", "backslashreplace"))


def calls_of(trace):
    counts = collections.Counter()
    calls = []
    for line in trace.splitlines():
        match = re.match(r"(\w+)\(", line)
        if match:
            counts[match[1]] += 1
            calls.append(Call(match[1], counts[match[1]], line))
    return calls


def expect_new(row, result, what, new=NEW):
    row.check(result.status == 0, f"{what}: exit status {result.status}, {result.error!r}")
    row.check(get(TARGET) == new, f"{what}: the target is not NEW")
    row.check(mode_of(TARGET) == 0o644, f"{what}: mode {mode_of(TARGET):o}")
    row.check(not beside(), f"{what}: left {beside()}")


def expect_refusal(row, result, what, message, old=(OLD,)):
    """Checks that the target is one of `old`, that no other file exists and that one line gives the reason."""
    row.check(result.status == 1, f"{what}: exit status {result.status}")
    row.check(get(TARGET) in old, f"{what}: the target is not OLD")
    row.check(not beside(), f"{what}: left {beside()}")
    row.check(is_one_line(result.error, message), f"{what}: the message is {result.error!r}")


def is_one_line(error, pattern=r"\S"):
    lines = error.decode("utf-8", "backslashreplace").splitlines()
    return len(lines) == 1 and "Success" not in lines[0] and re.search(pattern, lines[0]) is not None


def processor_seconds(function):
    """Returns the result of the function and the processor time of the processes that it ran.

    Unlike elapsed time, processor time does not depend on other load.
    """
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    result = function()
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return result, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
