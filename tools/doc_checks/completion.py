"""Checks what both shells complete in a sandbox with a few hosts."""

import pathlib
import shutil

from . import world

HERE = pathlib.Path(__file__).resolve().parent
HOSTS = ("example.com", "example.net", "shop.museum")
# The last is a temporary file; shop.museum is a host whose name looks like one.
FILES = HOSTS + ("example.com.Vk3x0a",)
SWITCH = {"true", "false", "keep"}

# The text after the program's name, and the completions of both shells.
BOTH = [
    ("", set(HOSTS)),
    ("exa", {"example.com", "example.net"}),
    ("shop.museum ", {"on", "off", "keep"}),
    ("-K example.com o", {"on", "off"}),
    ("example.com on ", {"by_time", "by_size"}),
    ("example.com off ", set()),
    ("example.com keep ", set()),
    ("example.com on by_time ", {"daily", "weekly", "monthly"}),
    ("example.com on by_size ", set()),
    ("example.com on by_time daily ", set()),
    ("example.com on by_time daily 5 ", {"true", "false"}),
    ("example.com on by_time daily 5 true ", set()),
    ("--vhost-name=exa", {"example.com", "example.net"}),
    ("--vhost-name shop", {"shop.museum"}),
    ("--on-off ", {"on", "off", "keep"}),
    ("--period-type=", {"by_time", "by_size"}),
    ("--period ", {"daily", "weekly", "monthly"}),
    ("--period-type by_size --period ", set()),
    ("--period-type=by_size --period=", set()),
    ("--rot-count ", set()),
    ("--compress=", {"true", "false"}),
    ("--email ", set()),
    ("--anonymize-ip=", SWITCH),
    ("--anonymize-ip t", {"true"}),
    ("--apache-logs --anonymize-ip ", SWITCH),
]


class Shell:
    def __init__(self, name, command, machine):
        self.name, self.command, self.machine = name, command, machine

    def problems(self, typed, expected):
        status, printed = self.machine.run(*self.command, "tavek-logrotate " + typed)
        if status != 0:
            return [f"exit status {status}: {printed}"]
        offered = set(printed.split())
        return [] if offered == expected else [f"offers {sorted(offered)}, not {sorted(expected)}"]


def prepare(machine):
    machine.run("true")
    for name in FILES:
        (machine.root / "opt/oru/etc/logrotate.d" / name).write_text("")
    for path in (world.TOP / "completion" / "tavek-logrotate.bash", world.TOP / "completion" / "_tavek-logrotate",
                 HERE / "complete.bash", HERE / "complete.zsh"):
        shutil.copy(path, machine.root / "tmp")
    return [Shell("bash", ["bash", "/tmp/complete.bash", "/tmp/tavek-logrotate.bash"], machine),
            Shell("zsh", ["zsh", "-f", "/tmp/complete.zsh", "/tmp"], machine)]


def checks(machine, options):
    """Yields the name and the problems of each check; `options` are those of the usage text."""
    for shell in prepare(machine):
        yield f"{shell.name}: the options of the usage text", shell.problems("-", options)
        for typed, expected in BOTH:
            yield f"{shell.name}: tavek-logrotate {typed}", shell.problems(typed, expected)
