"""Runs of the real logrotate while the tool rewrites the files of hosts."""

import os
import shutil
import threading
import time

from lab import HOSTS, get, put, run, tool
from rows import row

SECONDS = 15
WRITERS = 2
NAMES = [f"host{number:02}.example" for number in range(20)]
EXAMPLE = "/tmp/skip-temporary-files.conf"
CONFIGURATION = "/tmp/logrotate.conf"
VHOSTS = "/var/www/vhosts/system"
# The sandbox is in memory. On a disk, syncing the temporary file takes about this long.
SLOW_DISK = ("strace", "-qqq", "-o", "/dev/null", "-e", "inject=fsync:delay_enter=3000:when=1")
ROTATE = ("logrotate", "-f", "-s", "/tmp/logrotate.state", CONFIGURATION)


class HostWriters:
    """Threads that repeatedly rewrite the files of all hosts. Each host is rewritten by only one of them."""

    def __init__(self):
        self.failed = []
        self.stop = threading.Event()
        self.threads = [threading.Thread(target=self.write, args=(NAMES[i::WRITERS],)) for i in range(WRITERS)]

    def __enter__(self):
        for thread in self.threads:
            thread.start()
        return self

    def __exit__(self, *_):
        self.stop.set()
        for thread in self.threads:
            thread.join()

    def write(self, names):
        while not self.stop.is_set():
            for name in names:
                result = tool(name, "on", "by_time", "daily", "3", "false", "-K", under=SLOW_DISK)
                if result.status != 0:
                    self.failed.append(result)


def log_of(name):
    return f"{VHOSTS}/{name}/logs/error_log"


def rotate_once(text):
    """Gives every log this content and rotates all logs.

    Returns the result of logrotate if the run failed, otherwise None. Also returns the hosts whose logs were not rotated.
    """
    for name in NAMES:
        put(log_of(name), text)
    result = run(ROTATE)
    lost = [name for name in NAMES if (get(log_of(name)), get(f"{log_of(name)}.1")) != (b"", text)]
    return result if result.status != 0 else None, lost


def rotate_beside_the_tool(row, what, lines):
    """Returns the rate of failed runs of logrotate."""
    put(CONFIGURATION, f"{lines}include {HOSTS}\n".encode())
    runs, failed, lost = 0, [], []
    end = time.monotonic() + SECONDS
    with HostWriters() as writers:
        while time.monotonic() < end:
            failure, not_rotated = rotate_once(b"%d\n" % runs)
            runs += 1
            failed += [failure] if failure else []
            lost += not_rotated
    row.check(not writers.failed, f"{what}: failed runs of the tool: {writers.failed[:3]}")
    row.check(not lost, f"{what}: {len(lost)} logs not rotated: {lost[:3]}")
    row.figure(f"{what}: {len(failed)} of {runs} runs failed")
    for failure in failed[:1]:
        print(f"{what}: for example {failure.error.splitlines()[:2]}", flush=True)
    return len(failed) / runs


@row("logrotate while hosts are rewritten")
def log_service(row):
    """logrotate reads temporary files unless the lines of the example file hide them."""
    for name in NAMES:
        os.makedirs(os.path.dirname(log_of(name)))
        tool(name, "on", "by_time", "daily", "3", "false", "-K")
    visible = rotate_beside_the_tool(row, "without the lines", "")
    hidden = rotate_beside_the_tool(row, "with the lines", f"include {EXAMPLE}\n")
    row.check(visible > 0.1, f"without the lines only {visible:.1%} fail: the row proves nothing")
    row.check(hidden < visible / 10, f"with the lines {hidden:.1%} fail")
    for name in NAMES:
        tool(name, "off")
        shutil.rmtree(f"{VHOSTS}/{name}")
