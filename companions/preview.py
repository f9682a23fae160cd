"""Shows what runs would change and delete."""

import json
import os
import sys
from typing import Any, NamedTuple

from companions import batch
from companions.backup import back_up, refuse
from companions.batch import Run
from companions.changes import Changes
from companions.command import Failure
from companions.judgement import judgement
from companions.machine import Machine
from companions.text import escaped, human, printable, use_colour, valid
from companions.touched import Touched
from companions.worker import Result

CHANGES = 10
NO_PREVIEW = 125


class Options(NamedTuple):
    exit_code: bool
    json: bool
    backup: str | None
    runs: list[Run]


class Outcome(NamedTuple):
    """How a run ended in the view. `changes` are the changes of this run alone, if these are wanted."""

    run: Run
    result: Result
    changes: Changes


def parse_options(words: list[str]) -> Options:
    """Reads the options of the preview, which stand before the arguments of the run."""
    flags, values = {"--exit-code": False, "--json": False}, {"--backup": "", "--batch": ""}
    words = list(words)
    while words:
        name, mark, value = words[0].partition("=")
        if words[0] in flags:
            flags[words.pop(0)] = True
        elif name in values:
            del words[0]
            if not mark and not words:
                raise Failure(f"{name} needs a value")
            values[name] = value if mark else words.pop(0)
            if not values[name]:
                raise Failure(f"{name} needs a value")
        else:
            break
    if values["--batch"] and words:
        raise Failure("--batch takes no arguments of a run")
    runs = read_batch(values["--batch"]) if values["--batch"] else [Run(None, words)]
    return Options(flags["--exit-code"], flags["--json"], values["--backup"] or None, runs)


def read_batch(name: str) -> list[Run]:
    with open(0 if name == "-" else name, "rb", closefd=name != "-") as file:
        text = os.fsdecode(file.read())
    try:
        return batch.parse(text)
    except Failure as error:
        raise Failure(f"{printable(name)}: {error}") from None


def make_run(machine: Machine, run: Run) -> Result:
    """Makes the run in the view. If one of many cannot be previewed, it counts as failed, and the others continue."""
    try:
        return machine.run(run.arguments)
    except Failure as error:
        if run.line is None:
            raise
        return Result(NO_PREVIEW, b"", os.fsencode(f"tavek-logrotate-preview: line {run.line}: {escaped(str(error))}\n"))


def show(result: Result) -> None:
    for stream, text in (sys.stdout, result.output), (sys.stderr, result.error):
        stream.buffer.write(text)
        stream.flush()


def count_of(one: str, many: str, sizes: list[int]) -> str:
    return f"{len(sizes)} {one if len(sizes) == 1 else many} ({human(sum(sizes))})"


def print_preview(machine: Machine, options: Options) -> tuple[int, bool]:
    """Prints the preview as text. Returns the status of the first run that fails, or 0, and whether anything changes."""
    failures = []
    for each in options.runs:
        result = make_run(machine, each)
        show(result)
        if result.status != 0:
            failures.append((each, result.status))
    changes = machine.changes()
    new = [each.path for each in changes.files if not each.is_removal()]
    for file in changes.files:
        print(end=file.text(use_colour()))
    for path, size in changes.copies:
        print(f"delete {printable(path)} ({human(size)})")
    deletions, notes = machine.next_rotation(new)
    for path, size, _ in deletions:
        print(f"at its next rotation, logrotate would delete: {printable(path)} ({human(size)})")
    summary = []
    if changes.files:
        summary.append("1 file would change" if len(changes.files) == 1 else f"{len(changes.files)} files would change")
    if changes.copies:
        summary.append(f"{count_of('copy', 'copies', [size for _, size in changes.copies])} would be deleted")
    if deletions:
        summary.append(f"{count_of('file', 'files', [each.size for each in deletions])} would be deleted at the next rotation")
    print(", ".join(summary) + "." if summary else "No changes.")
    for line in notes + machine.worker.call(judgement, new):
        print(line)
    for line in back_up(machine, changes, deletions, options.backup) if options.backup else []:
        print(line)
    for run, status in failures:
        print("The run " + (f"in line {run.line} " if run.line else "") + f"would fail with status {status}.")
    return failures[0][1] if failures else 0, bool(summary)


def print_json(machine: Machine, options: Options) -> tuple[int, bool]:
    """Prints the preview as one JSON object. Returns the same as print_preview()."""
    touched = Touched(machine.mounts, machine.mount_of, machine.is_rotation_file)
    outcomes = [Outcome(each, make_run(machine, each), touched.changes()) for each in options.runs]
    touched.check()
    changes = machine.changes()
    new = [each.path for each in changes.files if not each.is_removal()]
    deletions, notes = machine.next_rotation(new)
    # A file that several runs change is rotated as the last of them leaves it.
    line_of = {file.path: outcome.run.line for outcome in outcomes for file in outcome.changes.files}
    later: dict[int | None, list[tuple[str, int]]] = {outcome.run.line: [] for outcome in outcomes}
    for path, size, by in deletions:
        later[line_of[by]].append((path, size))
    shown = {"runs": [as_json(each, later[each.run.line]) for each in outcomes],
             "judgement": [valid(line) for line in notes + machine.worker.call(judgement, new)]}
    if options.backup:
        shown["backup"] = [valid(line) for line in back_up(machine, changes, deletions, options.backup)]
    print(json.dumps(shown))
    status = next((each.result.status for each in outcomes if each.result.status != 0), 0)
    return status, bool(changes.files or changes.copies)


def as_json(outcome: Outcome, later: list[tuple[str, int]]) -> dict[str, Any]:
    """Returns the JSON object of a run. Bytes that are not UTF-8 become backslash escapes, because JSON cannot contain them."""
    changes = outcome.changes
    return {"line": outcome.run.line, "arguments": [valid(each) for each in outcome.run.arguments],
            "status": outcome.result.status, "output": valid(os.fsdecode(outcome.result.output)),
            "error": valid(os.fsdecode(outcome.result.error)), "changed": bool(changes.files or changes.copies),
            "diff": "".join(valid(each.text(colour=False)) for each in changes.files),
            "deleted": [{"path": valid(path), "size": size} for path, size in changes.copies],
            "deleted_at_next_rotation": [{"path": valid(path), "size": size} for path, size in later]}


def main(words: list[str]) -> int:
    options = parse_options(words)
    if os.geteuid() != 0:
        raise Failure("must be run as root")
    if options.backup:
        refuse(options.backup)
    machine = Machine()
    status, changes = (print_json if options.json else print_preview)(machine, options)
    return status or (CHANGES if options.exit_code and changes else 0)
