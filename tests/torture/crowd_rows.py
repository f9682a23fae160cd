"""Many runs on one target at once, and folders that hold very many files."""

import concurrent.futures
import os
import shutil
import threading

from lab import DAILY, HOSTS, NEW, TARGET, get, mode_of, processor_seconds, reset, stanzas, temporary_files, tool
from rows import row

WRITERS = 8
RUNS = 200
READERS = 2


class Readers:
    """Threads that read the target again and again and note everything that they see."""

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


def write_often(arguments, runs):
    """The results of these runs that were not as they should be."""
    results = (tool(*arguments) for _ in range(runs))
    return [result for result in results if result.status != 0 or result.error]


def crowd(commands, runs):
    with Readers() as readers, concurrent.futures.ThreadPoolExecutor(len(commands)) as pool:
        bad = [result for results in pool.map(write_often, commands, [runs] * len(commands)) for result in results]
    return readers, bad


def expect_whole(row, readers, bad, allowed, what):
    row.holds(not bad, f"{what}: {bad[:3]}")
    row.holds(readers.seen <= allowed, f"{what}: readers saw something else")
    row.holds(get(TARGET) in allowed - {None, b""}, f"{what}: the target is no run's whole output")
    row.holds(mode_of(TARGET) == 0o644, f"{what}: mode {mode_of(TARGET):o}")
    row.holds(os.listdir(HOSTS) == [os.path.basename(TARGET)], f"{what}: {os.listdir(HOSTS)}")


@row("eight writers, two hundred runs each")
def writers(row):
    """Each writes another rotation count, over a file that is longer than any buffer on the way."""
    start = stanzas(2000)
    reset(start)
    commands = [("example.com", "on", "by_time", "daily", str(count), "true", "-K") for count in range(WRITERS)]
    outputs = {stanzas(2000, "daily", count).replace(b"nocompress", b"compress") for count in range(WRITERS)}
    readers, bad = crowd(commands, RUNS)
    expect_whole(row, readers, bad, outputs | {start}, "rewrite")
    row.holds(len(readers.seen) > 1, "the readers saw no change")
    row.figure(f"{WRITERS * RUNS} runs, {readers.reads} reads, {len(readers.seen)} contents seen")


@row("eight writers of a new file")
def writers_of_a_new_file(row):
    reset(None)
    tool(*DAILY)
    new = get(TARGET)
    for _ in range(20):
        reset(None)
        readers, bad = crowd([DAILY] * WRITERS, 2)
        expect_whole(row, readers, bad, {None, b"", new}, "generate")


@row("two hundred thousand rotated copies")
def many_copies(row):
    logs = "/var/www/vhosts/system/example.com/logs"
    os.makedirs(logs, exist_ok=True)
    for number in range(200000):
        os.close(os.open(f"{logs}/error_log.{number}", os.O_CREAT | os.O_WRONLY, 0o644))
    reset()
    result, seconds = processor_seconds(lambda: tool(*DAILY))
    row.holds((result.status, result.error) == (0, b""), f"{result}")
    row.holds(sorted(os.listdir(logs)) == [f"error_log.{number}" for number in range(6)], "the wrong copies are left")
    row.holds(get(TARGET) == NEW and not temporary_files(), "the target is not NEW")
    row.holds(seconds < 5, f"takes {seconds:.1f} s")
    row.figure(f"removed in {seconds:.2f} s of processor time")
    shutil.rmtree(logs)
