"""Checks what bash, zsh and fish complete in a sandbox with a few hosts."""

import shlex
import shutil

from . import world

FILES = {"example.com", "example.net", "shop.museum"}
FOLDERS = {"example.org", "odd host", "$\\it's"}
HOSTS = FILES | FOLDERS
# A temporary file; shop.museum is a host whose name looks like one.
TEMPORARY = "example.com.Vk3x0a"
SWITCH = {"true", "false", "keep"}
PERIODS = {"daily", "weekly", "monthly"}
RUN = {"--period-type", "--period", "--rot-count", "--anonymize-ip"}
KEEP = {"--keep-old-logs", "-K"}
HOST = RUN | KEEP | {"--vhost-name", "--on-off", "--compress", "--email"}
CATEGORIES = {f"--{name}-logs" for name in ("apache", "nginx", "tavek", "fail2ban", "modsecurity")}
HELP = {"--help", "-h"}

# The text after the program's name, and the completions that every shell offers for it.
ALL = [
    ("", HOSTS),
    ("exa", {"example.com", "example.net", "example.org"}),
    ("'exa", {"example.com", "example.net", "example.org"}),
    ('"shop', {"shop.museum"}),
    ("odd", {"odd host"}),
    ("shop.museum ", {"on", "off", "keep"}),
    ("example.org ", {"on"}),
    ("-K example.com o", {"on", "off"}),
    ("example.com on ", {"by_time", "by_size"}),
    ("example.com off ", set()),
    ("example.com keep ", set()),
    ("example.com on by_time ", PERIODS),
    ("example.com on by_size ", set()),
    ("example.com on by_time daily ", set()),
    ("example.com on by_time daily 5 ", {"true", "false"}),
    ("example.com on by_time daily 5 true ", set()),
    ("--vhost-name=exa", {"example.com", "example.net", "example.org"}),
    ("--vhost-name shop", {"shop.museum"}),
    ("--on-off ", {"on", "off", "keep"}),
    ("--on-off=off --vhost-name=", FILES),
    ("--on-off keep --vhost-name ", FILES),
    ("--on-off on --vhost-name ", HOSTS),
    ("--on-off=off exa", {"example.com", "example.net"}),
    ("--on-off=off example.com ", set()),
    ("--vhost-name=example.org --on-off=", {"on"}),
    ("--period-type=", {"by_time", "by_size"}),
    ("--period ", PERIODS),
    ("--period-type by_size --period ", set()),
    ("--period-type=by_size --period=", set()),
    ("--rot-count ", set()),
    ("--compress=", {"true", "false"}),
    ("--email ", set()),
    ("--anonymize-ip=", SWITCH),
    ("--anonymize-ip t", {"true"}),
    ("--apache-logs --anonymize-ip ", SWITCH),
    ("--system-logs -", RUN),
    ("--system-logs --rot-count=4 -", RUN - {"--rot-count"}),
    ("--system-logs --rot-count 4 -", RUN - {"--rot-count"}),
    ("--nginx-logs -", RUN | KEEP | {"--vhost-name"}),
    ("--nginx-logs -K -", RUN | {"--vhost-name"}),
    ("-K -", HOST - KEEP | CATEGORIES | HELP),
    ("--email a@example.com -", HOST - {"--email"}),
    ("example.com -", HOST - {"--vhost-name"}),
    ("example.com off -", set()),
    ("example.com keep -", {"--anonymize-ip"}),
    ("example.com on by_time daily 5 true -", {"--email", "--anonymize-ip"} | KEEP),
    ("--help -", set()),
]
SUDO = [
    ("exa", {"example.com", "example.net", "example.org"}),
    ("example.com on by_time ", PERIODS),
    ("--system-logs -", RUN),
    ("--on-off=off --vhost-name=", FILES),
]
PREVIEW = [
    ("exa", {"example.com", "example.net", "example.org"}),
    ("--exit-code example.com on by_time ", PERIODS),
    ("--exit-code -K -", HOST - KEEP | CATEGORIES | HELP),
]
CHECK = [
    ("exa", {"example.com", "example.net", "example.org"}),
    ("example.com example.net s", {"shop.museum"}),
    ("example.com example.net od", {"odd host"}),
    ("-", {"--json", "--config", "--help", "-h"}),
]
SHOWN = {"--commands", "--json", "--system-logs"} | CATEGORIES | HELP
SHOW = [
    ("exa", {"example.com", "example.net", "example.org"}),
    ("example.com example.net od", {"odd host"}),
    ("--co", {"--commands"}),
    ("--commands --period-", {"--period-type"}),
    ("--commands --period ", PERIODS),
    ("--commands --period-type=", {"by_time", "by_size"}),
    ("--commands --anonymize-ip=", SWITCH),
    ("--commands --rot-count ", set()),
    ("--commands --comp", {"--compress"}),
    ("--commands --period=weekly shop", {"shop.museum"}),
]
# The text after the program's name, and the explanation that both zsh and fish show.
SAID_BY_BOTH = [
    ("--on-off=", "remove the file and forget its settings"),
    ("example.com ", "write the file without compression and mail address"),
    ("--anonymize-ip ", "anonymize logs at future rotations"),
    ("--system-lo", "without a count all copies are deleted"),
]
SAID = {
    "zsh": [("--rot-count ", "those with a higher number are deleted"),
            ("example.com on by_time daily ", "those with a higher number are deleted"),
            ("example.com on by_size ", "size, such as 10M")],
    "fish": [("--rot-co", "Copies with a higher number are deleted, without this option all")],
}
# The text after the program's name, and the completed line in bash.
BASH_LINES = [
    ("shop", "shop.museum "),
    ("'shop", "'shop.museum' "),
    ('"shop', '"shop.museum" '),
    ("odd", "odd\\ host "),
    ("'odd", "'odd host' "),
    ("odd\\ h", "odd\\ host "),
    ('"\\$', '"\\$\\\\it\'s" '),
    ("\\$", "\\$\\\\it\\'s "),
    ("'$", "'$\\it'\\''s' "),
    ("--vhost-name=od", "--vhost-name=odd\\ host "),
]


class Shell:
    def __init__(self, name, command, machine):
        self.name, self.command, self.machine = name, command, machine

    def complete(self, line):
        """Returns the completions, and the explanations that the shell shows."""
        status, printed = self.machine.run(*self.command, line)
        if status != 0:
            raise ValueError(f"exit status {status}: {printed}")
        pairs = [row.partition("\t") for row in printed.splitlines()]
        option = line.rpartition(" ")[2].partition("=")[0] + "="
        return {word.removeprefix(option).rstrip("=") for word, _, _ in pairs if word}, "\n".join(text for _, _, text in pairs)

    def problems(self, line, expected):
        try:
            offered, _ = self.complete(line)
        except ValueError as error:
            return [str(error)]
        return [] if offered == expected else [f"offers {sorted(offered)}, not {sorted(expected)}"]

    def problems_said(self, line, expected):
        said = self.complete(line)[1]
        return [] if expected in said else [f"says {said!r}"]


class Bash(Shell):
    def line(self, key, line):
        return self.machine.run(*self.command, key, line)[1].removesuffix("\n")

    def complete(self, line):
        """Readline replaces the last word with all completions."""
        made = self.line("all", line)
        kept = line[:max(line.rfind(mark) for mark in " =") + 1]
        if not made.startswith(kept):
            raise ValueError(made)
        return (set() if made == line else set(shlex.split(made[len(kept):]))), ""


def prepare(machine):
    machine.run("true")
    for name in FILES | {TEMPORARY}:
        (machine.root / "opt/oru/etc/logrotate.d" / name).write_text("")
    for name in HOSTS:
        (machine.root / "var/hosts/system" / name).mkdir(parents=True)
    (machine.root / "etc/oru/oru.conf").write_text("HTTPD_VHOSTS_D /var/elsewhere\nHTTPD_VHOSTS_D /var/hosts # moved\n")
    for source, target in (("completion/tavek-logrotate.bash", "completions/tavek-logrotate"),
                           ("completion/tavek-logrotate.bash", "completions/tavek-logrotate-check"),
                           ("completion/tavek-logrotate.bash", "completions/tavek-logrotate-preview"),
                           ("completion/tavek-logrotate.bash", "completions/tavek-logrotate-show"),
                           ("completion/_tavek-logrotate", "_tavek-logrotate"),
                           ("completion/tavek-logrotate-check.fish", "tavek-logrotate-check.fish"),
                           ("completion/tavek-logrotate-preview.fish", "tavek-logrotate-preview.fish"),
                           ("completion/tavek-logrotate-show.fish", "tavek-logrotate-show.fish"),
                           ("completion/tavek-logrotate.fish", "tavek-logrotate.fish"),
                           ("tools/doc_checks/complete_bash.py", "complete_bash.py"),
                           ("tools/doc_checks/complete.zsh", "complete.zsh")):
        (machine.root / "tmp" / target).parent.mkdir(exist_ok=True)
        shutil.copy(world.TOP / source, machine.root / "tmp" / target)
    fish = "set -p fish_complete_path /tmp; complete -C $argv[1]"
    environment = ["env", "LC_ALL=C.UTF-8", "HOME=/tmp", f"PATH={world.PATH}"]
    return (Bash("bash", [*environment, "python3", "/tmp/complete_bash.py", "/tmp"], machine),
            Shell("zsh", [*environment, "zsh", "-f", "/tmp/complete.zsh", "/tmp"], machine),
            Shell("fish", [*environment, "fish", "-c", fish], machine))


def checks(machine, options):
    """Yields the name and the problems of each check; `options` are those of the usage text."""
    bash, zsh, fish = shells = prepare(machine)
    for shell in shells:
        yield f"{shell.name}: the options of the usage text", shell.problems("tavek-logrotate -", options)
        yield f"{shell.name}: the options of a preview", shell.problems("tavek-logrotate-preview -", options | {"--exit-code"})
        yield f"{shell.name}: the options of a view", shell.problems("tavek-logrotate-show -", SHOWN)
        for command, cases in (("tavek-logrotate ", ALL), ("sudo tavek-logrotate ", SUDO), ("tavek-logrotate-preview ", PREVIEW),
                               ("tavek-logrotate-check ", CHECK), ("tavek-logrotate-show ", SHOW)):
            for typed, expected in cases:
                yield f"{shell.name}: {command}{typed}", shell.problems(command + typed, expected)
    for shell in (zsh, fish):
        for typed, expected in SAID_BY_BOTH + SAID[shell.name]:
            yield f"{shell.name} says: tavek-logrotate {typed}", shell.problems_said("tavek-logrotate " + typed, expected)
    for typed, expected in BASH_LINES:
        made = bash.line("tab", "tavek-logrotate " + typed)
        yield (f"bash: tavek-logrotate {typed} and a tab",
               [] if made == "tavek-logrotate " + expected else [f"becomes {made!r}, not {expected!r}"])
