"""The sandbox of all tests: a scratch folder with its own /etc, /opt, /var and /tmp, and as little of the machine as possible.

Root and ordinary users can make one. Inside, the program is at its real path, and the commands and their package are where
an installation by hand puts them. What is installed on the machine itself cannot be seen: of /usr/sbin and /usr/share only
the parts listed here are shown.
"""

import argparse
import contextlib
import os
import pathlib
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
from collections.abc import Iterator

TOP = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = TOP / "build" / "release" / "src" / "tavek-logrotate"
TOOL = "/opt/oru/admin/sbin/tavek-logrotate"
PATH = "/usr/local/sbin:/usr/sbin:/usr/bin:/sbin:/bin"

FOLDERS = ("etc/logrotate.d", "etc/oru", "opt/oru/admin/sbin", "opt/oru/etc/logrotate.d", "tmp", "var/lib", "var/log/apache2",
           "var/log/nginx", "var/log/tavek", "var/www/vhosts")
USERS = """\
root:x:0:0:root:/:/bin/sh
daemon:x:1:1::/:/bin/false
mail:x:8:8::/:/bin/false
www-data:x:33:33::/:/bin/false
nobody:x:65534:65534::/:/bin/false
oru:x:1000:1000::/:/bin/sh
"""
GROUPS = "root:x:0:\ndaemon:x:1:\nadm:x:4:\nmail:x:8:\nwww-data:x:33:\nutmp:x:43:\noru:x:1000:\nnogroup:x:65534:\n"

# What remains of the folders of the machine in which the program may be installed.
SHOWN = {"/usr/local": (), "/usr/sbin": ("logrotate",),
         "/usr/share": ("augeas", "bash-completion", "fish", "perl", "zoneinfo", "zsh")}
# The parts of the source tree that an installation brings with the program, and their places.
INSTALLED = {"commands": "/usr/local/sbin", "companions": "/usr/local/share/tavek-logrotate/companions",
             "logrotate/hosts.conf": "/usr/local/share/tavek-logrotate/hosts.conf",
             "logrotate": "/usr/share/tavek-logrotate"}  # The documents name the place in the package.
ROOT = ("--uid", "0", "--gid", "0", "--cap-add", "ALL")
USER = ("--uid", "1000", "--gid", "1000", "--cap-drop", "ALL")


class Sandbox:
    """The sandbox in the folder `root`, which is filled first if it is empty."""

    def __init__(self, root: pathlib.Path, program: pathlib.Path | None = None, writable: str = "") -> None:
        """Without a program nothing of the source tree is shown. `writable` is a folder of the machine to be shown as well."""
        self.root = root
        self.program = program
        self.writable = writable
        os.umask(0o022)  # What a test creates must not depend on the developer's settings.
        if not (root / "etc/passwd").exists():
            for folder in FOLDERS:
                self.path(folder).mkdir(parents=True)
            self.path("/etc/passwd").write_text(USERS)
            self.path("/etc/group").write_text(GROUPS)
        if program:
            self.path(TOOL).touch()  # Here the program is mounted.

    def path(self, inside: str) -> pathlib.Path:
        """Converts a path inside the sandbox to the path of the same file outside."""
        return self.root / inside.lstrip("/")

    def command(self, *words: str | os.PathLike[str], user: bool = False) -> list[str]:
        """Returns the command that runs `words` inside, as root, or as a user without capabilities who owns everything."""
        bind = [word for top in ("tmp", "etc", "opt", "var") for word in ("--bind", f"{self.root}/{top}", f"/{top}")]
        if self.writable:
            bind += ["--bind", self.writable, self.writable]
        return ["bwrap", "--unshare-all", "--unshare-user", *(USER if user else ROOT), "--die-with-parent",
                "--clearenv", "--setenv", "PATH", PATH, *self._system(), "--dev", "/dev", "--proc", "/proc", "--dir", "/mnt",
                "--dir", "/sys", *bind, *self._installed(), "--chdir", "/", *(os.fspath(word) for word in words)]

    def run(self, *words: str | os.PathLike[str], user: bool = False, timeout: float = 120) -> subprocess.CompletedProcess[bytes]:
        """Runs a command inside, with its output and its messages apart."""
        return subprocess.run(self.command(*words, user=user), stdin=subprocess.DEVNULL, capture_output=True, timeout=timeout,
                              check=False)

    def make_readable(self) -> None:
        """Lets an ordinary user read, and remove, what a run has forbidden."""
        for folder, subfolders, files in os.walk(self.root):
            for name in subfolders + files:
                path = os.path.join(folder, name)
                mode = os.lstat(path).st_mode
                if stat.S_ISDIR(mode) or stat.S_ISREG(mode):
                    os.chmod(path, mode | (stat.S_IRWXU if stat.S_ISDIR(mode) else stat.S_IRUSR))

    @staticmethod
    def _system() -> Iterator[str]:
        yield from ("--ro-bind", "/usr", "/usr")
        for name in ("bin", "sbin", "lib", "lib64"):
            yield from ("--symlink", f"usr/{name}", f"/{name}")
        for folder, names in SHOWN.items():
            yield from ("--tmpfs", folder)
            for name in names:
                yield from ("--ro-bind-try", f"{folder}/{name}", f"{folder}/{name}")

    def _installed(self) -> Iterator[str]:
        if self.program:
            yield from ("--ro-bind", str(self.program), TOOL)
            for part, place in INSTALLED.items():
                yield from ("--ro-bind", str(TOP / part), place)
        for folder in SHOWN:
            yield from ("--remount-ro", folder)


@contextlib.contextmanager
def scratch(program: pathlib.Path | None = None, writable: str = "") -> Iterator[Sandbox]:
    """A sandbox in a new folder, in memory if possible: on a disk, the syncs of a run take most of its time."""
    with contextlib.ExitStack() as stack:
        memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
        root = pathlib.Path(tempfile.mkdtemp(prefix="sandbox.", dir=memory))
        stack.callback(shutil.rmtree, root)
        root.chmod(0o755)
        sandbox = Sandbox(root, program, writable)
        stack.callback(sandbox.make_readable)
        yield sandbox


def built(path: str) -> pathlib.Path:
    """The type of an argument that names a program which must exist."""
    if not os.access(path, os.X_OK):
        raise argparse.ArgumentTypeError(f"{path} is not built")
    return pathlib.Path(path).resolve()


def arguments(description: str | None) -> argparse.ArgumentParser:
    """A parser with the option --program, which names the program to be tested. A runner that is ended removes its sandboxes."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(128 + signal.SIGTERM))
    parser = argparse.ArgumentParser(description=description, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", type=built, default=str(PROGRAM), metavar="FILE",
                        help="the program, by default that of the release preset")
    return parser
