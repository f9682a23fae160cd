# Copyright 2026 the tavek-logrotate authors
# SPDX-License-Identifier: MIT
"""Writes the rotation files of hosts and of categories of system logs. The role's README describes the settings.

For each entry, tavek-logrotate-preview decides whether a run would change anything. Only then is tavek-logrotate run.
"""

import collections
import multiprocessing.pool
import os
import re
import shutil
import subprocess
import tempfile

from ansible.module_utils.basic import AnsibleModule
from ansible.module_utils.common.arg_spec import ArgumentSpecValidator
from ansible.module_utils.errors import UnsupportedError

PROGRAM = "/opt/oru/admin/sbin/tavek-logrotate"
DIRECTORY = "/opt/oru/etc/logrotate.d"
CHANGES = 10
RUNS_AT_A_TIME = 8

LABEL = "[A-Za-z0-9]([A-Za-z0-9-]{0,61}[A-Za-z0-9])?"
HOST_NAME = LABEL + r"(\." + LABEL + ")*"
# The program fails after creating an empty file if the name of its temporary file is longer than a file system permits.
LONGEST_HOST_NAME = 248
ADDRESS = "[A-Za-z0-9][A-Za-z0-9._+-]{0,63}@" + HOST_NAME
SIZE = "([0-9]{1,19})([kMG]?)"
UNITS = {"": 1, "k": 1 << 10, "M": 1 << 20, "G": 1 << 30}
LARGEST_SIZE = (1 << 63) - 1
LARGEST_COUNT = (1 << 31) - 1

SETTINGS = {
    "period": {"choices": ["daily", "weekly", "monthly"]},
    "size": {},
    "count": {"type": "int"},
    "anonymize": {"type": "bool"},
    "keep_copies": {"type": "bool", "default": False},
}
HOST = ArgumentSpecValidator(
    {
        "name": {"required": True},
        "state": {"choices": ["present", "absent"], "default": "present"},
        "compress": {"type": "bool"},
        "email": {},
        **SETTINGS,
    },
    mutually_exclusive=[("period", "size")],
    required_if=[("state", "present", ("period", "size"), True), ("state", "present", ("count", "compress"))],
)
CATEGORY = ArgumentSpecValidator(
    {"name": {"required": True, "choices": ["apache", "nginx", "tavek", "fail2ban", "modsecurity"]}, **SETTINGS},
    mutually_exclusive=[("period", "size")],
    required_one_of=[("period", "size", "count", "anonymize")],
    # A run without a count and without -K deletes every numbered copy.
    required_if=[("keep_copies", False, ("count",))],
)


def is_size(text):
    match = re.fullmatch(SIZE, text)
    return match and int(match[1]) * UNITS[match[2]] <= LARGEST_SIZE


def is_host_name(text):
    return re.fullmatch(HOST_NAME, text) and len(text) <= LONGEST_HOST_NAME


def merge(defaults, own):
    """Returns a host's settings. Its own period or size replaces both defaults, and null removes a default."""
    if own.get("period") is not None or own.get("size") is not None:
        defaults = {name: value for name, value in defaults.items() if name not in ("period", "size")}
    return without_nulls({**defaults, **own})


def without_nulls(settings):
    return {name: value for name, value in settings.items() if value is not None}


def complaint_of(error):
    return ("unsupported: " if isinstance(error, UnsupportedError) else "") + error.msg


class Entry:
    """A host or a category with its settings."""

    def __init__(self, kind, settings):
        validator = HOST if kind == "host" else CATEGORY
        result = validator.validate(settings)
        self.kind = kind
        self.given = settings
        self.settings = result.validated_parameters
        self.title = "%s %s" % (kind, settings.get("name"))
        self.problems = [complaint_of(error) for error in result.errors] or list(self.find_problems())

    def find_problems(self):
        settings = self.settings
        if self.kind == "host" and not is_host_name(settings["name"]):
            yield "the name is not a host name"
        if settings["size"] is not None and not is_size(settings["size"]):
            yield "size must be a number, optionally followed by k, M or G"
        if isinstance(self.given.get("count"), bool) or not 0 <= (settings["count"] or 0) <= LARGEST_COUNT:
            yield "count must be a number from 0 to %d" % LARGEST_COUNT
        if settings.get("email") is not None and not re.fullmatch(ADDRESS, settings["email"]):
            yield "email is not an address"

    def has_stanzas_to_anonymize(self):
        return self.kind == "host" and self.settings["state"] == "present" and self.settings["anonymize"]

    def arguments(self, target=None):
        """Returns the arguments of the program. Every value follows an equals sign, so none can be read as an option."""
        settings = self.settings
        if self.kind == "category":
            yield "--%s-logs" % settings["name"]
        else:
            yield "--vhost-name=" + (target or settings["name"])
            if settings["state"] == "absent":
                yield "--on-off=off"
                return
            yield "--on-off=on"
            yield "--compress=" + switch(settings["compress"])
            if settings["email"] is not None:
                yield "--email=" + settings["email"]
        if settings["period"] is not None:
            yield from ("--period-type=by_time", "--period=" + settings["period"])
        if settings["size"] is not None:
            yield from ("--period-type=by_size", "--period=" + settings["size"])
        if settings["count"] is not None:
            yield "--rot-count=%d" % settings["count"]
        if settings["anonymize"] is not None:
            yield "--anonymize-ip=" + switch(settings["anonymize"])
        if settings["keep_copies"]:
            yield "--keep-old-logs"


def switch(value):
    return "on" if value else "off"


def problems_of(entries):
    problems = ["%s: %s" % (entry.title, problem) for entry in entries for problem in entry.problems]
    titles = collections.Counter(entry.title for entry in entries)
    return problems + ["%s is listed twice" % title for title, times in titles.items() if times > 1]


class Failure(Exception):
    pass


def run(command, *arguments, successes=(0,)):
    """Returns the finished process. The last line of a program's messages is the reason for its failure."""
    result = subprocess.run([command, *arguments], stdin=subprocess.DEVNULL, capture_output=True, check=False,
                            encoding="utf-8", errors="backslashreplace")
    if result.returncode not in successes:
        messages = result.stderr.splitlines() or ["%s: exit status %d" % (os.path.basename(command), result.returncode)]
        raise Failure(messages[-1])
    return result


def second_run(entry):
    """Returns what a second run would change, as a diff, or nothing.

    The program generates one of a host's stanzas without the anonymizing script and adds the script in the next run.
    Two runs on a copy of the host's file show whether that will happen. They delete no rotated copies: they name
    the copied file by its absolute path, and the cleanup then looks for logs below that path, where there are none.
    """
    if not entry.has_stanzas_to_anonymize():
        return ""
    path = os.path.join(DIRECTORY, entry.settings["name"])
    with tempfile.TemporaryDirectory() as folder:
        copy = os.path.join(folder, entry.settings["name"])
        if os.path.exists(path):
            shutil.copyfile(path, copy)
        run(PROGRAM, *entry.arguments(copy))
        first = shutil.copyfile(copy, os.path.join(folder, "the first result"))
        run(PROGRAM, *entry.arguments(copy))
        return run("diff", "--unified", "--text", "--label", "a" + path, "--label", "b" + path, first, copy,
                   successes=(0, 1)).stdout


def make_plan(entry, preview):
    """Returns how many runs the entry needs, the diff and the messages of the preview, and the reason for a failure."""
    try:
        shown = run(preview, "--exit-code", *entry.arguments(), successes=(0, CHANGES))
        if shown.returncode != CHANGES:
            return {"runs": 0}
        more = second_run(entry)
        return {"runs": 2 if more else 1, "diff": shown.stdout + more, "messages": shown.stderr}
    except (Failure, OSError) as error:
        return {"runs": 0, "failure": "%s: %s" % (entry.title, error)}


def carry_out(entry, plan):
    try:
        for _ in range(plan["runs"]):
            plan["messages"] = run(PROGRAM, *entry.arguments()).stderr
    except (Failure, OSError) as error:
        plan["failure"] = "%s: %s" % (entry.title, error)


def main():
    module = AnsibleModule(
        argument_spec={
            "hosts": {"type": "list", "elements": "dict", "default": []},
            "host_defaults": {"type": "dict", "default": {}},
            "categories": {"type": "list", "elements": "dict", "default": []},
            "only_validate": {"type": "bool", "default": False},
        },
        supports_check_mode=True,
    )
    # A variable without a value is null.
    hosts, host_defaults, categories = (module.params[name] or {} for name in ("hosts", "host_defaults", "categories"))
    entries = [Entry("host", merge(host_defaults, settings)) for settings in hosts]
    entries += [Entry("category", without_nulls(settings)) for settings in categories]
    problems = problems_of(entries)
    if problems:
        module.fail_json(msg="\n".join(problems))
    if module.params["only_validate"]:
        module.exit_json(changed=False)

    preview = module.get_bin_path("tavek-logrotate-preview", required=True)
    with multiprocessing.pool.ThreadPool(RUNS_AT_A_TIME) as pool:
        # Files must not change below the overlays of a preview, so the first run starts after the last preview.
        plans = pool.map(lambda entry: make_plan(entry, preview), entries)
        if not module.check_mode:
            pool.starmap(carry_out, zip(entries, plans))
    changes = [plan for plan in plans if plan["runs"]]
    module.exit_json(
        changed=bool(changes),
        diff={"prepared": "".join(plan["diff"] for plan in changes)},
        messages="".join(plan["messages"] for plan in changes).splitlines(),
        failures=[plan["failure"] for plan in plans if "failure" in plan],
    )


if __name__ == "__main__":
    main()
