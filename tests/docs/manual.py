"""Compares the manual pages with the program and the commands."""

import pathlib
import re
import subprocess
from collections.abc import Iterator

from lib.sandbox import TOP

PAGES = TOP / "man"
OF_ALL_COMMANDS = {"--help", "-h", "--version"}


def options_of_usage(usage: str) -> set[str]:
    listing = usage[usage.index("Allowed options:"):]
    return set(re.findall(r"^ +(--[a-z0-9-]+|-[A-Za-z])\b", listing, re.M)) | set(re.findall(r"\[ (--[a-z0-9-]+) \]", listing))


def options_of_manual(text: str) -> set[str]:
    section = re.search(r"^\.Sh OPTIONS\n(.*?)(?=^\.Sh |\Z)", text, re.M | re.S)
    items = re.findall(r"^\.It Fl (.*)$", section[1] if section else "", re.M)
    return {"-" + word for item in items for word in re.split(r" Ns = .*| Ar .*| , | ", item) if word not in ("", "Fl")}


def options_of_docstring(script: str) -> set[str]:
    """Returns the options that are explained in the docstring of a script, one per line."""
    lines = re.findall(r"^  (-.*?)(?:  |$)", script.split('"""')[1], re.M)
    return {word for line in lines for word in re.split(r", | ", line) if word.startswith("-")}


def keys_of_source(text: str) -> set[str]:
    """Returns the keys with their defaults, as "KEY default"."""
    root = "".join(re.findall(r'^#define TAVEK_PRODUCT_ROOT "(.*)"$', text, re.M))
    text = text.replace('TAVEK_PRODUCT_ROOT "', f'"{root}').replace("TAVEK_PRODUCT_ROOT}", f'"{root}"}}')
    return {f"{key} {value}" for key, value in re.findall(r'\{"([^"]+)", "([^"]+)"\}', text) if not key.startswith("_")}


def keys_of_manual(text: str) -> set[str]:
    return {f"{key} {value}" for key, value in re.findall(r"^\.It Va (\w+) Ta Li (\S+) Ta ", text, re.M)}


def compare_sets(what: str, documented: set[str], real: set[str]) -> list[str]:
    problems = [f"{what} not in the manual: {name}" for name in sorted(real - documented)]
    return problems + [f"{what} only in the manual: {name}" for name in sorted(documented - real)]


def lint(path: pathlib.Path) -> list[str]:
    result = subprocess.run(["mandoc", "-Tlint", "-Wwarning", str(path)], capture_output=True, text=True, check=False)
    said = [line for line in (result.stdout + result.stderr).splitlines() if "outdated mandoc.db" not in line]
    return said + ([] if result.returncode == 0 else [f"exit status {result.returncode}"])


def checks(usage: str) -> Iterator[tuple[str, list[str]]]:
    """Yields the name and the problems of each check; `usage` is the usage text of the program."""
    for page in sorted(PAGES.iterdir()):
        yield f"man/{page.name}: mandoc has no warnings", lint(page)
    yield "man/tavek-logrotate.8: OPTIONS against the usage text", compare_sets(
        "option", options_of_manual((PAGES / "tavek-logrotate.8").read_text()), options_of_usage(usage))
    for command in sorted((TOP / "commands").glob("tavek-logrotate-*")):
        yield f"man/{command.name}.8: OPTIONS against the usage text", compare_sets(
            "option", options_of_manual((PAGES / f"{command.name}.8").read_text()) - OF_ALL_COMMANDS,
            options_of_docstring(command.read_text()) - OF_ALL_COMMANDS)
    sources = [TOP / "src/runtime_conf" / name for name in ("product_root.h", "runtime_conf_keys.cpp")]
    yield "man/oru.conf.5: keys and defaults against the program's", compare_sets(
        "key", keys_of_manual((PAGES / "oru.conf.5").read_text()), keys_of_source("".join(path.read_text() for path in sources)))
