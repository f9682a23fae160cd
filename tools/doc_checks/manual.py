"""Compares the manual pages with the program."""

import re
import subprocess


def options_of_usage(usage):
    listing = usage[usage.index("Allowed options:"):]
    return set(re.findall(r"^ +(--[a-z0-9-]+|-[A-Za-z])\b", listing, re.M)) | set(re.findall(r"\[ (--[a-z0-9-]+) \]", listing))


def section(text, name):
    return re.search(rf"^\.Sh {name}\n(.*?)(?=^\.Sh |\Z)", text, re.M | re.S)[1]


def options_of_manual(text):
    found = set()
    for item in re.findall(r"^\.It Fl (.*)$", section(text, "OPTIONS"), re.M):
        names = [word for word in re.split(r" Ns = .*| , | ", item) if word]
        found |= {"-" + name for name in names}
    return found


def options_of_docstring(script):
    """Returns the options that are explained in the docstring of a script, one per line."""
    lines = re.findall(r"^  (-.*?)  ", script.split('"""')[1], re.M)
    return {word for line in lines for word in re.split(r", | ", line) if word.startswith("-")}


def keys_of_source(text):
    root = re.search(r'^#define PRODUCT_ROOT "(.*)"$', text, re.M)[1]
    text = text.replace('PRODUCT_ROOT "', f'"{root}').replace("PRODUCT_ROOT}", f'"{root}"}}')
    return {row for row in re.findall(r'\{"([^"]+)", "([^"]+)"\}', text) if not row[0].startswith("_")}


def keys_of_manual(text):
    return set(re.findall(r"^\.It Va (\w+)\n(?:(?!\.It).*\n)*?Default:\n\.Li (\S+) \.$", text, re.M))


def compare_sets(what, documented, real):
    problems = [f"{what} not in the manual: {name}" for name in sorted(real - documented)]
    return problems + [f"{what} only in the manual: {name}" for name in sorted(documented - real)]


def lint(path):
    result = subprocess.run(["mandoc", "-Tlint", "-Wwarning", str(path)], capture_output=True, text=True, check=False)
    said = [line for line in (result.stdout + result.stderr).splitlines() if "outdated mandoc.db" not in line]
    return said + ([] if result.returncode == 0 else [f"exit status {result.returncode}"])
