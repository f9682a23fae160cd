"""Finds broken links of a Markdown file to other files of the source tree."""

import re

CODE = re.compile(r"^ *```.*?^ *```$|`[^`\n]*`", re.M | re.S)
LINK = re.compile(r"\[[^\]]*\]\(([^)#\s]+)(?:#[^)]*)?\)")


def broken(path):
    targets = LINK.findall(CODE.sub("", path.read_text()))
    return [f"{target} does not exist" for target in targets if ":" not in target and not (path.parent / target).exists()]
