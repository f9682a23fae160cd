# Copyright 2026 the tavek-logrotate authors
# SPDX-License-Identifier: MIT
"""Writes the rotation files of hosts and of categories of system logs. The role's README describes the settings.

One preview of all runs of tavek-logrotate shows which of them would change anything. Only these are done.
"""

import collections
import json
import re
import shlex
import subprocess
from collections.abc import Iterator
from typing import Any

from ansible.module_utils.basic import AnsibleModule  # type: ignore[import]
from ansible.module_utils.common.arg_spec import ArgumentSpecValidator  # type: ignore[import]
from ansible.module_utils.errors import UnsupportedError  # type: ignore[import]

PROGRAM = "/opt/oru/admin/sbin/tavek-logrotate"

LABEL = "[A-Za-z0-9]([A-Za-z0-9-]{0,61}[A-Za-z0-9])?"
HOST_NAME = LABEL + r"(\." + LABEL + ")*"
# The program fails after creating an empty file if the name of its temporary file is longer than a file system permits.
LONGEST_HOST_NAME = 248
ADDRESS = "[A-Za-z0-9][A-Za-z0-9._+-]{0,63}@" + HOST_NAME
SIZE = "([0-9]{1,19})([kMG]?)"
UNITS = {"": 1, "k": 1 << 10, "M": 1 << 20, "G": 1 << 30}
LARGEST_SIZE = (1 << 63) - 1
LARGEST_COUNT = (1 << 31) - 1

Settings = dict[str, Any]

SETTINGS: Settings = {
    "period": {"choices": ["daily", "weekly", "monthly"]},
    "size": {},
    "count": {"type": "int"},
    "anonymize": {"type": "bool"},
    "keep_copies": {"type": "bool", "default": False},
}
VALIDATORS = {
    "host": ArgumentSpecValidator(
        {
            "name": {"required": True},
            "state": {"choices": ["present", "absent"], "default": "present"},
            "compress": {"type": "bool"},
            "email": {},
            **SETTINGS,
        },
        mutually_exclusive=[("period", "size")],
        required_if=[("state", "present", ("period", "size"), True), ("state", "present", ("count", "compress"))],
    ),
    "category": ArgumentSpecValidator(
        {"name": {"required": True, "choices": ["apache", "nginx", "tavek", "fail2ban", "modsecurity"]}, **SETTINGS},
        mutually_exclusive=[("period", "size")],
        required_one_of=[("period", "size", "count", "anonymize")],
        # A run without a count and without -K deletes every numbered copy.
        required_if=[("keep_copies", False, ("count",))],
    ),
}


def merge(defaults: Settings, own: Settings) -> Settings:
    """Returns the settings of an entry. Its own period or size replaces both defaults, and null removes a default."""
    if own.get("period") is not None or own.get("size") is not None:
        defaults = {name: value for name, value in defaults.items() if name not in ("period", "size")}
    return {name: value for name, value in {**defaults, **own}.items() if value is not None}


class Entry:
    """A host or a category with its settings."""

    def __init__(self, kind: str, given: Settings) -> None:
        result = VALIDATORS[kind].validate(given)
        self.is_host = kind == "host"
        self.title = f"{kind} {given.get('name')}"
        self.settings: Settings = result.validated_parameters
        self.problems = [("unsupported: " if isinstance(error, UnsupportedError) else "") + error.msg for error in result.errors]
        self.problems = self.problems or list(self.wrong_values(isinstance(given.get("count"), bool)))

    def wrong_values(self, count_is_truth_value: bool) -> Iterator[str]:
        name, size, count, email = (self.settings.get(setting) for setting in ("name", "size", "count", "email"))
        if self.is_host and not (re.fullmatch(HOST_NAME, str(name)) and len(str(name)) <= LONGEST_HOST_NAME):
            yield "the name is not a host name"
        if size is not None and not is_size(size):
            yield "size must be a number, optionally followed by k, M or G"
        if count is not None and (count_is_truth_value or not 0 <= count <= LARGEST_COUNT):
            yield f"count must be a number from 0 to {LARGEST_COUNT}"
        if email is not None and not re.fullmatch(ADDRESS, email):
            yield "email is not an address"

    def runs(self) -> list[list[str]]:
        """Returns the arguments of the program for each run that may be needed.

        For a new host the program generates one of the stanzas without the anonymizing script, which it adds in the next run.
        """
        anonymizes_host = self.is_host and self.settings["state"] == "present" and self.settings["anonymize"]
        return [list(self.arguments())] * (2 if anonymizes_host else 1)

    def arguments(self) -> Iterator[str]:
        """Every value follows an equals sign, so none can be read as an option."""
        settings = self.settings
        if not self.is_host:
            yield f"--{settings['name']}-logs"
        else:
            yield f"--vhost-name={settings['name']}"
            yield "--on-off=" + switch(settings["state"] == "present")
            if settings["state"] == "absent":
                return
            yield "--compress=" + switch(settings["compress"])
            if settings["email"] is not None:
                yield "--email=" + settings["email"]
        if settings["period"] is not None:
            yield from ("--period-type=by_time", "--period=" + settings["period"])
        if settings["size"] is not None:
            yield from ("--period-type=by_size", "--period=" + settings["size"])
        if settings["count"] is not None:
            yield f"--rot-count={settings['count']}"
        if settings["anonymize"] is not None:
            yield "--anonymize-ip=" + switch(settings["anonymize"])
        if settings["keep_copies"]:
            yield "--keep-old-logs"


def is_size(text: str) -> bool:
    match = re.fullmatch(SIZE, text)
    return match is not None and int(match[1]) * UNITS[match[2]] <= LARGEST_SIZE


def switch(value: bool) -> str:
    return "on" if value else "off"


def problems_of(entries: list[Entry]) -> list[str]:
    problems = [f"{entry.title}: {problem}" for entry in entries for problem in entry.problems]
    titles = collections.Counter(entry.title for entry in entries)
    return problems + [f"{title} is listed twice" for title, times in titles.items() if times > 1]


def run(command: str, *arguments: str, text: str = "") -> subprocess.CompletedProcess[str]:
    return subprocess.run([command, *arguments], input=text, capture_output=True, check=False,
                          encoding="utf-8", errors="backslashreplace")


def diff_of(result: dict[str, Any]) -> str:
    """Returns the diff of a run, and what is deleted, the names of which may contain anything."""
    deletions = [("delete", file) for file in result["deleted"]]
    deletions += [("at its next rotation, logrotate would delete:", file) for file in result["deleted_at_next_rotation"]]
    return "".join([result["diff"], *(f"{what} {file['path']!r} ({file['size']} bytes)\n" for what, file in deletions)])


def carry_out(module: AnsibleModule, runs: list[tuple[Entry, list[str]]]) -> None:
    """Does those of the runs that change anything, unless Ansible only checks. Reports the changes and the failures."""
    preview = run(module.get_bin_path("tavek-logrotate-preview", required=True), "--batch", "-", "--json",
                  text="".join(shlex.join([PROGRAM, *arguments]) + "\n" for _, arguments in runs))
    try:
        shown = json.loads(preview.stdout)
    except ValueError:
        module.fail_json(msg=preview.stderr.strip() or f"tavek-logrotate-preview: exit status {preview.returncode}")
    changes, failures = [], []
    for (entry, arguments), result in zip(runs, shown["runs"]):
        if result["changed"] and result["status"] == 0 and not module.check_mode:
            done = run(PROGRAM, *arguments)
            result.update(status=done.returncode, error=done.stderr)
        if result["status"] != 0:
            reason = (result["error"].splitlines() or [f"exit status {result['status']}"])[-1]
            failures.append(f"{entry.title}: {reason}")
        elif result["changed"]:
            changes.append(result)
    module.exit_json(
        changed=bool(changes),
        diff={"prepared": "".join(map(diff_of, changes))},
        messages=[line for result in changes for line in result["error"].splitlines()] + shown["judgement"],
        failures=list(dict.fromkeys(failures)),
    )


def main() -> None:
    module = AnsibleModule(
        argument_spec={
            "hosts": {"type": "list", "elements": "dict"},
            "host_defaults": {"type": "dict"},
            "categories": {"type": "list", "elements": "dict"},
            "only_validate": {"type": "bool"},
        },
        supports_check_mode=True,
    )
    # A variable without a value is null.
    hosts, host_defaults, categories = (module.params[name] or {} for name in ("hosts", "host_defaults", "categories"))
    entries = [Entry("host", merge(host_defaults, settings)) for settings in hosts]
    entries += [Entry("category", merge({}, settings)) for settings in categories]
    problems = problems_of(entries)
    if problems:
        module.fail_json(msg="\n".join(problems))
    if module.params["only_validate"]:
        module.exit_json(changed=False)

    carry_out(module, [(entry, arguments) for entry in entries for arguments in entry.runs()])


if __name__ == "__main__":
    main()
