"""Shows what runs would change and delete."""

import json
import os
import sys
from typing import Any, NamedTuple

from companions import batch
from companions.backup import back_up, new_directory
from companions.batch import Run
from companions.changes import Changes
from companions.command import Failure
from companions.judgement import judgement
from companions.machine import Machine, Outcome
from companions.next_rotation import Deletion
from companions.text import escaped, human, printable, use_colour, valid
from companions.worker import Result

CHANGES = 10
NO_PREVIEW = 125


class Options(NamedTuple):
    exit_code: bool
    json: bool
    backup: str | None
    runs: list[Run]


class Preview(NamedTuple):
    """How the runs end, and what all of them change. `remarks` are about the new files, and `saved` about the backup."""

    outcomes: list[tuple[Run, Outcome]]
    changes: Changes
    diffs: list[str]
    deletions: list[Deletion]
    remarks: list[str]
    saved: list[str]


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
            if values[name]:
                raise Failure(f"{name} is given twice")
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


def make_run(machine: Machine, run: Run) -> Outcome:
    """Makes the run in the view. If one of many cannot be previewed, it counts as failed, and the others continue."""
    try:
        return machine.run(run.arguments)
    except Failure as error:
        if run.line is None:
            raise
        message = os.fsencode(f"tavek-logrotate-preview: line {run.line}: {escaped(str(error))}\n")
        return Outcome(Result(NO_PREVIEW, b"", message), Changes([], machine.is_rotation_file))


def make_preview(machine: Machine, options: Options) -> Preview:
    """Makes the runs in the view, and the backup: a reader who has seen the first line may end this process."""
    outcomes = [(each, make_run(machine, each)) for each in options.runs]
    changes = machine.changes()
    deletions: list[Deletion] = []
    remarks: list[str] = []
    new = [each.path for each in changes.files if not each.is_removal()]
    rotation = machine.start_next_rotation(new) if new else None
    machine.worker.start(judgement, new)
    if options.json:
        diffs = ["".join(each.text(colour=False) for each in outcome.changes.files) for _, outcome in outcomes]
    else:
        diffs = [each.text(use_colour()) for each in changes.files]
    if rotation:
        deletions, remarks = rotation.receive()
    remarks += machine.worker.receive()
    saved = back_up(machine, changes, deletions, options.backup) if options.backup else []
    return Preview(outcomes, changes, diffs, deletions, remarks, saved)


def count_of(one: str, many: str, sizes: list[int]) -> str:
    return f"{len(sizes)} {one if len(sizes) == 1 else many} ({human(sum(sizes))})"


def print_text(preview: Preview) -> None:
    changes, deletions = preview.changes, preview.deletions
    for _, (result, _) in preview.outcomes:
        for stream, text in (sys.stdout, result.output), (sys.stderr, result.error):
            stream.buffer.write(text)
            stream.flush()
    for diff in preview.diffs:
        print(end=diff)
    for path, size in changes.copies:
        print(f"delete {printable(path)} ({human(size)})")
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
    for line in preview.remarks + preview.saved:
        print(line)
    for run, (result, _) in preview.outcomes:
        if result.status != 0:
            print("The run " + (f"in line {run.line} " if run.line else "") + f"would fail with status {result.status}.")


def print_json(preview: Preview, backup: bool) -> None:
    # A file that several runs change is rotated as the last of them leaves it.
    line_of = {file.path: run.line for run, outcome in preview.outcomes for file in outcome.changes.files}
    later: dict[int | None, list[Deletion]] = {run.line: [] for run, _ in preview.outcomes}
    for deletion in preview.deletions:
        later[line_of[deletion.by]].append(deletion)
    runs = [as_json(run, outcome, diff, later[run.line]) for (run, outcome), diff in zip(preview.outcomes, preview.diffs)]
    shown = {"runs": runs, "judgement": [valid(line) for line in preview.remarks]}
    print(json.dumps(shown | ({"backup": [valid(line) for line in preview.saved]} if backup else {})))


def as_json(run: Run, outcome: Outcome, diff: str, later: list[Deletion]) -> dict[str, Any]:
    """Returns the JSON object of a run. Bytes that are not UTF-8 become backslash escapes, because JSON cannot contain them."""
    result, changes = outcome
    return {"line": run.line, "arguments": [valid(each) for each in run.arguments],
            "status": result.status, "output": valid(os.fsdecode(result.output)), "error": valid(os.fsdecode(result.error)),
            "changed": bool(changes.files or changes.copies), "diff": valid(diff),
            "deleted": [{"path": valid(path), "size": size} for path, size in changes.copies],
            "deleted_at_next_rotation": [{"path": valid(path), "size": size} for path, size, _ in later]}


def main(words: list[str]) -> int:
    options = parse_options(words)
    if os.geteuid() != 0:
        raise Failure("must be run as root")
    if options.backup:
        options = options._replace(backup=new_directory(options.backup))
    preview = make_preview(Machine(), options)
    if options.json:
        print_json(preview, options.backup is not None)
    else:
        print_text(preview)
    failed = next((outcome.result.status for _, outcome in preview.outcomes if outcome.result.status != 0), 0)
    return failed or (CHANGES if options.exit_code and (preview.changes.files or preview.changes.copies) else 0)
