"""A view of the machine's file systems in which a run changes nothing: each is covered with an overlay.

The view is in a private mount namespace and ends with the process.
"""

import contextlib
import ctypes
import os
import re
import resource
import signal
import stat
import time

from companions.command import Failure
from companions.text import printable

# In the private namespace, a file system in memory is mounted here. It contains the view and the upper layers. No link
# of the machine that a diff follows leads here.
SCRATCH = "/sys"
VIEW = SCRATCH + "/view"

# Interfaces of the kernel. No rotation file or log can be created in them.
KERNEL_TYPES = {"autofs", "binfmt_misc", "bpf", "cgroup", "cgroup2", "configfs", "debugfs", "devpts", "efivarfs",
                "fusectl", "mqueue", "nsfs", "proc", "pstore", "rpc_pipefs", "securityfs", "selinuxfs", "sysfs", "tracefs"}

# Without one of these, the view could differ from what the run finds. Numbers from <linux/capability.h>.
CAPABILITIES = {"CAP_CHOWN": 0, "CAP_DAC_OVERRIDE": 1, "CAP_FOWNER": 3, "CAP_SYS_CHROOT": 18, "CAP_SYS_ADMIN": 21}

# A mount that does not answer for so long is left out.
ANSWER_SECONDS = 3

# From <sched.h>, <sys/mount.h>, <linux/mount.h>, <fcntl.h> and <sys/prctl.h>.
CLONE_NEWNS, CLONE_NEWPID, CLONE_NEWNET = 0x20000, 0x20000000, 0x40000000
MS_RDONLY, MS_NOSUID, MS_NODEV, MS_NOEXEC, MS_BIND, MS_REC, MS_PRIVATE = 0x1, 0x2, 0x4, 0x8, 0x1000, 0x4000, 0x40000
MOUNT_ATTR_RDONLY, MOUNT_ATTR_NOATIME, MOUNT_ATTR_ATIME_MASK = 0x1, 0x10, 0x70
MOUNT_ATTR_SIZE = 32
AT_RECURSIVE = 0x8000
PR_SET_PDEATHSIG = 1

FILE_LIMITS = resource.getrlimit(resource.RLIMIT_NOFILE)

libc = ctypes.CDLL(None, use_errno=True)


def system_call(name: str, *arguments: object) -> None:
    if getattr(libc, name)(*arguments) != 0:
        number = ctypes.get_errno()
        raise OSError(number, os.strerror(number))


def mount(source: str, target: str, kind: str = "", flags: int = 0, data: str = "") -> None:
    system_call("mount", os.fsencode(source), os.fsencode(target), kind.encode(), ctypes.c_ulong(flags), data.encode())


def set_attributes(target: str, attributes: int, cleared: int = 0, flags: int = 0) -> None:
    what = (ctypes.c_uint64 * 4)(attributes, cleared)
    system_call("mount_setattr", -1, os.fsencode(target), flags, what, ctypes.c_size_t(MOUNT_ATTR_SIZE))


def make_read_only(target: str, flags: int = 0) -> None:
    set_attributes(target, MOUNT_ATTR_RDONLY, flags=flags)


class Mount:
    """A mount of the machine. The view has a mount at the same path."""

    def __init__(self, line: str):
        fields, _, source = line.partition(" - ")
        self.id, _, _, self.root, path, options = fields.split(" ")[:6]
        self.path = re.sub(r"\\([0-7]{3})", lambda match: chr(int(match[1], 8)), path)
        self.kind, _, more_options = source.split(" ")
        self.read_only = "ro" in options.split(",") + more_options.split(",")
        self.upper = f"{SCRATCH}/{self.id}/upper"
        self.fd = -1
        self.real = ""
        self.covered = False

    def answers(self) -> bool:
        """Returns whether this is the mount that one finds at its path. Waits for the file system, perhaps for ever."""
        try:
            fd = os.open(self.path, os.O_PATH | os.O_NOFOLLOW)
        except OSError:
            return False
        try:
            with open(f"/proc/self/fdinfo/{fd}") as info:
                return f"mnt_id:\t{self.id}\n" in info.read() and os.fstat(fd) is not None
        except OSError:
            return True
        finally:
            os.close(fd)

    def open(self) -> None:
        """Opens the root of the mount, so that it remains accessible."""
        self.fd = os.open(self.path, os.O_PATH | os.O_NOFOLLOW)
        # The process id differs from that in /proc if /proc belongs to another process namespace.
        self.real = f"/proc/{os.readlink('/proc/self')}/fd/{self.fd}"
        # Reading leaves even the times of files as they are. A user namespace may not allow this.
        with contextlib.suppress(OSError):
            set_attributes(self.real, MOUNT_ATTR_NOATIME, MOUNT_ATTR_ATIME_MASK)

    def contains(self, path: str) -> bool:
        return path == self.path or path.startswith(self.path.rstrip("/") + "/")

    def needs_overlay(self) -> bool:
        """Returns whether the run could create, replace or remove files in this mount."""
        return not self.read_only and self.kind not in KERNEL_TYPES and os.path.isdir(self.real)

    def show(self) -> None:
        """Adds the mount to the view: under an empty layer for changes or, if none is needed or possible, read-only."""
        if self.kind == "proc" and os.path.isdir(self.real):
            # A path such as /proc/1/root leads out of the view. The worker mounts a /proc of its own.
            mount("none", VIEW + self.path, "tmpfs", MS_RDONLY)
            return
        if self.needs_overlay():
            work = f"{SCRATCH}/{self.id}/work"
            os.makedirs(self.upper)
            os.mkdir(work)
            # The root of an overlay has the attributes of its upper layer.
            status = os.stat(self.real)
            os.chown(self.upper, status.st_uid, status.st_gid)
            os.chmod(self.upper, stat.S_IMODE(status.st_mode))
            try:
                mount("overlay", VIEW + self.path, "overlay", data=f"lowerdir={self.real},upperdir={self.upper},workdir={work}")
                self.covered = True
                return
            except OSError:
                if self.path == "/":
                    raise
        mount(self.real, VIEW + self.path, flags=MS_BIND)
        make_read_only(VIEW + self.path)


def enter_private_namespace() -> None:
    """Gives the process its own mounts, so that nothing it mounts is visible to others or outlives it."""
    system_call("unshare", CLONE_NEWNS)
    mount("none", "/", flags=MS_REC | MS_PRIVATE)


def silent_mounts(mounts: list[Mount]) -> list[Mount]:
    """Returns the mounts that do not answer. Removes these from `mounts`, and those that are hidden by another mount."""
    children: dict[int, Mount] = {}
    for each in mounts:
        if (child := os.fork()) == 0:  # It may never end.
            try:
                os._exit(0 if each.answers() else 1)
            finally:
                os._exit(1)
        children[child] = each
    silent = []
    end = time.monotonic() + ANSWER_SECONDS
    mounts.clear()
    for child, each in children.items():
        while (ended := os.waitpid(child, os.WNOHANG)) == (0, 0) and time.monotonic() < end:
            time.sleep(0.001)
        if ended == (0, 0):
            os.kill(child, signal.SIGKILL)
            silent.append(each)
        elif ended[1] == 0:
            mounts.append(each)
    return silent


def require_capabilities() -> None:
    with open("/proc/self/status") as file:
        effective = int(next(line for line in file if line.startswith("CapEff:")).split()[1], 16)
    if lacking := [name for name, number in CAPABILITIES.items() if not effective >> number & 1]:
        raise Failure(f"lacks {', '.join(lacking)}")


def build_view() -> tuple[list[Mount], list[Mount]]:
    """Builds the view in a private mount namespace. The real machine is not affected.

    Returns the mounts in the view, and those that do not answer and are left out.
    """
    require_capabilities()
    # Each mount needs an open file.
    resource.setrlimit(resource.RLIMIT_NOFILE, (FILE_LIMITS[1], FILE_LIMITS[1]))
    try:
        enter_private_namespace()
        with open("/proc/self/mountinfo", errors="surrogateescape", newline="\n") as lines:
            mounts = [Mount(line.rstrip("\n")) for line in lines]
        # Even examining an automount point would trigger the mount.
        mounts = [each for each in mounts if each.kind != "autofs"]
        silent = silent_mounts(mounts)
        for each in mounts:
            each.open()
        proc = [each for each in mounts if each.kind == "proc"]
        mounts = [each for each in mounts if not any(other is not each and other.contains(each.path) for other in proc)]
        # Each removed copy needs an inode.
        mount("none", SCRATCH, "tmpfs", data="nr_inodes=0")
        os.mkdir(VIEW)
    except OSError as error:
        raise Failure(f"cannot make a private mount namespace: {error.strerror}") from error
    for each in sorted(mounts, key=lambda each: each.path.rstrip("/").count("/")):
        try:
            each.show()
        except OSError as error:
            raise Failure(f"cannot show {printable(each.path)} ({each.kind}): {error.strerror}") from error
    return mounts, silent
