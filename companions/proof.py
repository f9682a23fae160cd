"""Finds out what a run would change in a rotation file. The program itself runs, on a copy of the file."""

import os
from collections import Counter
from collections.abc import Sequence
from typing import NamedTuple

from companions import rotation_file
from companions.command import Failure, private_directory
from companions.program import PROGRAM


class Run(NamedTuple):
    """A run with the words for a rotation file with the path and the text. The words do not name the file."""

    path: str
    text: str
    words: Sequence[str]


def prove(runs: Sequence[Run]) -> list[list[str] | Failure]:
    """Returns, for each run, what it would change in its file, or the message with which it fails."""
    results: list[list[str] | Failure] = [[] for _ in runs]
    running: dict[int, int] = {}

    def finish_one() -> None:
        pid, status = os.wait()
        index = running.pop(pid)
        results[index] = result_of(runs[index], f"{directory}/{index}", status)

    with private_directory() as directory:
        try:
            for index, run in enumerate(runs):
                if len(running) > (os.cpu_count() or 1):
                    finish_one()
                running[start(run, f"{directory}/{index}")] = index
        finally:
            while running:
                finish_one()
    return results


def start(run: Run, directory: str) -> int:
    """Starts the run for a copy with the same name: the last part of the path is the name of the host."""
    os.mkdir(directory)
    path = f"{directory}/{os.path.basename(run.path)}"
    with open(path, "wb") as file:
        file.write(os.fsencode(run.text))
    actions = [(os.POSIX_SPAWN_OPEN, 0, os.devnull, os.O_RDWR, 0), (os.POSIX_SPAWN_DUP2, 0, 1),
               (os.POSIX_SPAWN_OPEN, 2, f"{directory}.error", os.O_WRONLY | os.O_CREAT, 0o600)]
    try:
        return os.posix_spawn(PROGRAM, [PROGRAM, path, *run.words], dict[str, str](), file_actions=actions)
    except OSError as error:
        raise Failure(f"cannot start {PROGRAM}: {error.strerror}") from error


def result_of(run: Run, directory: str, status: int) -> list[str] | Failure:
    with open(f"{directory}/{os.path.basename(run.path)}", "rb") as file:
        text = os.fsdecode(file.read())
    os.unlink(file.name)
    if status == 0:
        return line_changes(run.text, text)
    message = rotation_file.read(f"{directory}.error").strip() or f"status {os.waitstatus_to_exitcode(status)}"
    return Failure(message.replace(directory, os.path.dirname(run.path)))


def line_changes(old: str, new: str) -> list[str]:
    """Returns up to six of the lines that only one of the texts contains, each once."""
    before, after = (Counter(" ".join(line.split()) for line in text.split("\n")) for text in (old, new))
    changes = [f"- {line}" for line in before - after] + [f"+ {line}" for line in after - before]
    return changes[:6] if changes or old == new else ["white space or the order of lines"]
