"""What the companions know of the program: its places and names. tests/companions compares them with the program."""

import errno
import os
import subprocess

from companions.command import Failure, memory

PROGRAM = "/opt/oru/admin/sbin/tavek-logrotate"
ANONYMIZER = "/opt/oru/admin/sbin/anonymize_ip"
HOSTS_DIRECTORY = "/opt/oru/etc/logrotate.d"
SYSTEM_DIRECTORY = "/etc/logrotate.d"
# A copy of this file in the system directory, whose name must be the last one, makes logrotate read the hosts' files.
HOSTS_CONFIGURATION = os.path.join(os.path.dirname(os.path.dirname(os.path.realpath(__file__))), "hosts.conf")
PANEL_FILE = "/opt/oru/etc/logrotate.conf"

# The word of each category's option, in the order of a run for all categories, and its rotation file.
CATEGORIES = {
    "apache": f"{SYSTEM_DIRECTORY}/apache2",
    "nginx": f"{SYSTEM_DIRECTORY}/nginx",
    "tavek": PANEL_FILE,
    "fail2ban": f"{SYSTEM_DIRECTORY}/fail2ban",
    "modsecurity": f"{SYSTEM_DIRECTORY}/mod_security",
}

# The directories of each category's logs, from which a run removes copies.
CATEGORY_LOGS = {
    "apache": ("/var/log/apache2",),
    "nginx": ("/var/log/nginx",),
    "tavek": ("/var/log", "/var/log/tavek"),
    "fail2ban": ("/var/log",),
    "modsecurity": ("/var/log",),
}

# Below the logs directory of a host, the logs of the stanzas that the program generates, in their order.
LOG_FAMILIES = ("*.processed", "error_log", "proxy_error_log", "php-fpm_error.log")


def target_of(name: str) -> str:
    """Returns the path of the rotation file that a run for the host or path `name` edits."""
    return os.path.join(HOSTS_DIRECTORY, name)


def targets_of(arguments: list[str]) -> list[str]:
    """Returns the rotation files that a run with these arguments edits, and others: each argument may be a name."""
    words = [argument.partition("=") for argument in arguments]
    files = [path for option, _, _ in words for category, path in CATEGORIES.items() if selects(option, category)]
    return files + [target_of(value if option.startswith("--") else option + mark + value) for option, mark, value in words]


def log_directories_of(arguments: list[str], root: str) -> list[str]:
    """Returns patterns for the directories from which a run with these arguments removes copies, and for others.

    `root` is the root directory of the virtual hosts.
    """
    words = [argument.partition("=") for argument in arguments]
    names = [value if option.startswith("--") else option + mark + value for option, mark, value in words]
    return [path for option, _, _ in words for category, paths in CATEGORY_LOGS.items() if selects(option, category)
            for path in paths] + [os.path.join(parent, name, "logs") for name in names for parent in (root + "/system", root)]


def selects(option: str, category: str) -> bool:
    """Returns whether the option, which may be abbreviated, selects the category."""
    return option.startswith("--") and any(each.startswith(option) for each in (f"--{category}-logs", "--system-logs"))


def without_temporary_suffix(path: str) -> str | None:
    """Returns the path of the rotation file whose temporary file has this path: without a dot and six characters.

    Returns None for a path that does not end so. A host's name may end so.
    """
    name, dot, suffix = path[:-7], path[-7:-6], path[-6:]
    return name if dot == "." and suffix.isascii() and suffix.isalnum() else None


# The shell removes its directory even if the process that started it is killed.
NEW_FILE = """trap '' HUP INT PIPE TERM
directory=$(mktemp -d "$1/tavek-logrotate.XXXXXX") || exit
program=$2
shift 2
"$program" "$directory/host" "$@" >&2 && cat "$directory/host"
status=$?
rm -r "$directory"
exit $status"""


def run_on_new_file(*words: str, parent: str | None = None) -> str:
    """Returns the file that a run with the words generates for a host with the name "host", in a directory below `parent`."""
    if not os.access(PROGRAM, os.X_OK):
        raise Failure(f"cannot start {PROGRAM}: {os.strerror(errno.EACCES if os.path.exists(PROGRAM) else errno.ENOENT)}")
    result = subprocess.run(["/bin/sh", "-c", NEW_FILE, "sh", parent or memory(), PROGRAM, *words],
                            stdin=subprocess.DEVNULL, capture_output=True, check=False)
    if result.returncode != 0:
        raise Failure(os.fsdecode(result.stderr).strip())
    return os.fsdecode(result.stdout)


def vhosts_root(generated: str | None = None) -> str:
    """Returns the root directory of the virtual hosts, which only the program knows, from a file that it generated."""
    head, found, _ = (generated or run_on_new_file("keep")).partition("/system/host/logs/*.processed {")
    if not found:
        raise Failure(f"{PROGRAM} generates a file without a path of the virtual hosts")
    return head.rpartition("allowhardlink\n")[2]


def hosts_of_panel(root: str) -> set[str] | None:
    """Returns the panel's hosts: the directories below `root`/system. Returns None if there is no such directory."""
    try:
        with os.scandir(root + "/system") as entries:
            return {entry.name for entry in entries if not entry.name.startswith(".") and
                    (entry.is_dir(follow_symlinks=False) or os.path.isdir(entry.path))}
    except (FileNotFoundError, NotADirectoryError):
        return None
