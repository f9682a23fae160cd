"""Many runs on one target at the same time, and a folder with very many files."""

import concurrent.futures
import os
import shutil
import threading

from lab import DAILY, LOGS, TARGET, beside, expect_new, get, mode_of, processor_seconds, reset, stanzas, tool
from rows import row

WRITERS = 8
READERS = 2


class Readers:
    """Threads that read the target repeatedly and keep every version of it that they see."""

    def __init__(self):
        self.seen = set()
        self.reads = 0
        self.stop = threading.Event()
        self.threads = [threading.Thread(target=self.read) for _ in range(READERS)]

    def __enter__(self):
        for thread in self.threads:
            thread.start()
        return self

    def __exit__(self, *_):
        self.stop.set()
        for thread in self.threads:
            thread.join()

    def read(self):
        while not self.stop.is_set():
            self.seen.add(get(TARGET))
            self.reads += 1


def crowd(row, commands, runs, allowed):
    """Runs each command `runs` times; all commands run at the same time. Returns the readers."""
    def failures(arguments):
        results = [tool(*arguments) for _ in range(runs)]
        return [result for result in results if result.status != 0 or result.error]
    with Readers() as readers, concurrent.futures.ThreadPoolExecutor(len(commands)) as pool:
        failed = sum(pool.map(failures, commands), [])
    row.check(not failed, f"failed runs: {failed[:3]}")
    row.check(readers.seen <= allowed, "the readers saw text that no run wrote")
    row.check(get(TARGET) in allowed - {None, b""}, "the target is not the output of one run")
    row.check(mode_of(TARGET) == 0o644 and not beside(), f"mode {mode_of(TARGET):o}, left {beside()}")
    return readers


@row("eight writers with two hundred runs each")
def writers(row):
    """Each writer sets its own rotation count in a file that is larger than every buffer."""
    start = stanzas(2000)
    reset(start)
    commands = [("example.com", "on", "by_time", "daily", str(count), "true", "-K") for count in range(WRITERS)]
    outputs = {stanzas(2000, "daily", count, "compress") for count in range(WRITERS)}
    readers = crowd(row, commands, 200, outputs | {start})
    row.check(len(readers.seen) > 1, "the readers saw no change")
    row.figure(f"{readers.reads} reads, {len(readers.seen)} versions seen")


@row("eight writers of a new file")
def writers_of_a_new_file(row):
    reset(None)
    tool(*DAILY)
    new = get(TARGET)
    for _ in range(20):
        reset(None)
        crowd(row, [DAILY] * WRITERS, 2, {None, b"", new})


@row("two hundred thousand rotated copies")
def many_copies(row):
    os.makedirs(LOGS)
    for number in range(200000):
        os.close(os.open(f"{LOGS}/error_log.{number}", os.O_CREAT | os.O_WRONLY, 0o644))
    reset()
    result, seconds = processor_seconds(lambda: tool(*DAILY))
    expect_new(row, result, "rewrite")
    row.check(sorted(os.listdir(LOGS)) == [f"error_log.{number}" for number in range(6)], "wrong copies are left")
    row.check(seconds < 5, f"takes {seconds:.1f} s")
    row.figure(f"removed in {seconds:.2f} s of processor time")
    shutil.rmtree(LOGS)
