"""The checks of the preview. This program runs inside the sandbox."""

import json
import os
import pathlib
import random
import re
import shlex
import shutil
import signal
import subprocess
import sys
import time
from typing import Any

import machine
from machine import TREES, State, apply, disturb, install_machine, is_rotation_file, logs_of, random_arguments, state, write

TOOL = "/opt/oru/admin/sbin/tavek-logrotate"
PREVIEW = "/usr/local/sbin/tavek-logrotate-preview"
BACKUP = "/tmp/backup"
# Fewer that change something would show a preview of nothing.
CHANGING = 0.2


def run(*command: str, text: str = "") -> subprocess.CompletedProcess[bytes]:
    return subprocess.run(command, input=text.encode("utf-8", "surrogateescape"), capture_output=True, check=False)


def text_of(data: bytes) -> str:
    return data.decode("utf-8", "surrogateescape")


def without_times(found: State) -> State:
    return {path: entry[:4] for path, entry in found.items()}


def require_equal(what: str, shown: State, real: State) -> None:
    different = sorted(path for path in real.keys() | shown.keys() if real.get(path) != shown.get(path))
    assert not different, f"{what}: {[(path, shown.get(path), real.get(path)) for path in different]}"


def shown_size(size: int) -> str:
    return f"{size} B" if size < 1024 else f"{size / 1024:.1f} KiB"


def size_of(entry: tuple[Any, ...]) -> int:
    return len(entry[3]) if isinstance(entry[3], bytes) else 0


def require_totals(text: str, before: State, after: State, arguments: list[str]) -> None:
    """Compares the sizes of the copies and the summary with what really changed."""
    changed = [path for path in before.keys() | after.keys() if before.get(path) != after.get(path)]
    copies = {path: size_of(before[path]) for path in changed if path not in after and not is_rotation_file(path, arguments)}
    sizes = {machine.path_of(path): size for path, size in re.findall(r'^delete (".*"|/.*) \(([0-9.]+ [KMGT]?i?B)\)$', text, re.M)}
    assert sizes == {path: shown_size(size) for path, size in copies.items()}, f"sizes: {sizes}, {copies}"
    total, files = len(copies), len(changed) - len(copies)
    parts = [f"{files} file{'s' * (files != 1)} would change"] * bool(files)
    parts += [f"{total} cop{'y' if total == 1 else 'ies'} ({shown_size(sum(copies.values()))}) would be deleted"] * bool(total)
    later = re.search(r", \d+ files? \([^)]*\) would be deleted at the next rotation\.$", text, re.M)
    wanted = ", ".join(parts) + (later[0] if later else ".") if parts else "No changes."
    assert f"\n{wanted}\n" in "\n" + text, f"the summary is not {wanted}"


def check_pair(chance: random.Random, arguments: list[str]) -> bool:
    """Previews the run, then makes it, and returns whether it changed anything."""
    before = state(TREES, exact=True)
    shown = run(PREVIEW, "--exit-code", *arguments)
    require_equal("the preview changed something", before, state(TREES, exact=True))
    expected = apply(text_of(shown.stdout))
    real = run(TOOL, *arguments)
    after = state(TREES)
    require_equal("not as previewed", expected, after)
    changes = without_times(before) != after
    assert shown.returncode == (real.returncode or (10 if changes else 0)), f"exit status {shown.returncode}, {real.returncode}"
    assert shown.stderr == real.stderr, f"messages: {shown.stderr!r}, {real.stderr!r}"
    require_totals(text_of(shown.stdout), without_times(before), after, arguments)
    return changes


def check_pairs(seed: int, pairs: int) -> None:
    chance = random.Random(seed)
    changing = 0
    for number in range(pairs):
        if number % 25 == 0:
            install_machine(chance)
        for _ in range(chance.randrange(1, 6)):
            disturb(chance)
        arguments = random_arguments(chance)
        try:
            changing += check_pair(chance, arguments)
        except AssertionError as error:
            sys.exit(f"FAILED with seed {seed}, pair {number}, {arguments}: {error}")
    if changing < int(pairs * CHANGING):
        sys.exit(f"FAILED with seed {seed}: only {changing} of {pairs} runs changed something")
    print(f"ok: {pairs} runs were as previewed, {changing} of them changed something", flush=True)


def check_runs(shown: list[dict[str, Any]], runs: list[list[str]]) -> None:
    """Makes the runs one after the other and compares each with its part of the preview."""
    for part, arguments in zip(shown, runs, strict=True):
        before = state(TREES)
        # A diff with escapes for bytes that are not UTF-8 cannot be applied.
        expected = None if "\\x" in part["diff"] else apply(part["diff"])
        real = run(TOOL, *arguments)
        after = state(TREES)
        copies = {each["path"]: each["size"] for each in part["deleted"]}
        gone = {path for path in before.keys() - after.keys() if not is_rotation_file(path, arguments)}
        assert copies == {machine.valid(path): size_of(before[path]) for path in gone}, f"{arguments}: copies {copies}, {gone}"
        if expected is not None:
            require_equal(f"{arguments}: not as previewed", {path: expected[path] for path in expected.keys() - gone}, after)
        assert part["changed"] == (before != after), f"{arguments}: changed {part['changed']}"
        assert part["status"] == real.returncode, f"{arguments}: exit status {part['status']}, {real.returncode}"
        assert part["error"] == machine.valid(text_of(real.stderr)), f"{arguments}: messages {part['error']!r}, {real.stderr!r}"


def check_backup(before: State, lost: set[str]) -> None:
    """Compares the backup with the state before. `lost` are all files that were changed or deleted."""
    found = state(["/"], BACKUP, exact=True) if os.path.exists(BACKUP) else {}
    files = {path: entry for path, entry in found.items() if isinstance(entry[3], bytes)}
    expected = {path: entry for path, entry in machine.followed(before, lost).items() if isinstance(entry[3], bytes)}
    for path in files.keys() | expected.keys():
        assert path in files and path in expected, f"backup: {path} is {'missing' if path in expected else 'too much'}"
        assert files[path][:4] == expected[path][:4] and files[path][5] == expected[path][5], f"backup: {path} differs"


def check_machine(chance: random.Random) -> tuple[int, int]:
    """Returns how many runs changed something, and how many files the rotation deleted."""
    install_machine(chance)
    machine.add_logs(chance)
    for _ in range(10):
        disturb(chance, unique=True)
    machine.add_settings(chance)
    runs = [chance.choice([random_arguments, machine.likely_arguments])(chance) for _ in range(chance.randrange(2, 9))]
    runs = [arguments for arguments in runs if "\n" not in "".join(arguments)]  # A line of a batch cannot contain such a name.
    text = "".join(shlex.join(["tavek-logrotate", *arguments]) + "\n" for arguments in runs)
    shutil.rmtree(BACKUP, ignore_errors=True)
    before = state(TREES, exact=True)
    preview = run(PREVIEW, "--json", "--backup", BACKUP, "--batch", "-", text=text)
    require_equal("the preview changed something", before, state(TREES, exact=True))
    assert preview.stdout, f"no preview: {preview.stderr!r}"
    shown = json.loads(preview.stdout)["runs"]
    check_runs(shown, runs)
    between = state(TREES)
    changed = [path for path in before.keys() | between.keys() if before.get(path, ())[:4] != between.get(path, ())[:4]]
    new = [path for path in changed if path in between and any(is_rotation_file(path, each) for each in runs)]
    deleted = machine.rotate(new)
    later = {each["path"]: each["size"] for part in shown for each in part["deleted_at_next_rotation"]}
    real = {machine.valid(path): size_of(between[path]) for path in deleted}
    assert later == real, f"rotation of {new}: shown {later}, deleted {real}"
    check_backup(before, {*changed, *deleted})
    return sum(part["changed"] for part in shown), len(deleted)


def check_machines(seed: int, machines: int) -> None:
    changing = rotated = 0
    for number in range(machines):
        try:
            changes, deleted = check_machine(random.Random(f"{seed} {number}"))
        except AssertionError as error:
            sys.exit(f"FAILED with seed {seed}, machine {number}: {error}")
        changing, rotated = changing + changes, rotated + deleted
    if changing < machines or rotated < machines // 2:  # Fifty machines have about fifty.
        sys.exit(f"FAILED with seed {seed}: only {changing} runs changed something, and rotations deleted only {rotated} files")
    print(f"ok: {machines} machines were as previewed; {changing} runs changed something, and rotations deleted {rotated} files",
          flush=True)


def processes() -> set[str]:
    return {name for name in os.listdir("/proc") if name.isdigit()}


def check_kills(seed: int, kills: int) -> None:
    chance = random.Random(seed)
    install_machine(chance)
    for number in range(1000):
        write(f"{logs_of('example.com')}/error_log.{number}", "x")
    before = state(TREES, exact=True)
    mounts = pathlib.Path("/proc/self/mountinfo").read_text()
    others = processes()
    command = [PREVIEW, "example.com", "on", "by_time", "daily", "5", "true"]
    start = time.monotonic()
    if run(*command).returncode != 0:
        sys.exit("FAILED: the preview that nobody kills fails")
    seconds = time.monotonic() - start
    ends = []
    for number in range(kills):
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(chance.random() * seconds * 1.2)
        process.send_signal(chance.choice([signal.SIGKILL, signal.SIGTERM, signal.SIGINT]))
        ends.append(process.wait())
        assert state(TREES, exact=True) == before, f"kill {number}: the preview changed something"
    if set(ends) - {0, -signal.SIGKILL, -signal.SIGTERM, -signal.SIGINT} or kills > 10 and ends.count(0) > kills * 0.6:
        sys.exit(f"FAILED with seed {seed}: the previews ended with {sorted(ends)}")
    # A child process of a killed preview may run a little longer than the preview.
    time.sleep(1)
    assert state(TREES, exact=True) == before, "a child of a killed preview changed something"
    assert pathlib.Path("/proc/self/mountinfo").read_text() == mounts, "a mount of a preview is left"
    assert processes() <= others, f"processes of a preview are left: {processes() - others}"
    print(f"ok: {kills} previews were interrupted and changed nothing; {ends.count(0)} of them had finished")


def main() -> int:
    seed, pairs, machines, kills = map(int, sys.argv[1:])
    check_pairs(seed, pairs)
    check_machines(seed, machines)
    check_kills(seed, kills)
    return 0


if __name__ == "__main__":
    sys.exit(main())
