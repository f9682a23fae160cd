"""A view of the machine's file systems in which a run changes nothing: each is covered with an overlay.

The view is in a private mount namespace and ends with the process.
"""

import ctypes
import os
import re
import resource
import stat
import subprocess

from companions.command import Failure
from companions.text import printable

# In the private namespace, a file system in memory is mounted here. It contains the view and the upper layers. No link
# of the machine that a diff follows leads here.
SCRATCH = "/sys"
VIEW = SCRATCH + "/view"

# Interfaces of the kernel. No rotation file or log can be created in them.
KERNEL_TYPES = {"autofs", "binfmt_misc", "bpf", "cgroup", "cgroup2", "configfs", "debugfs", "devpts", "efivarfs",
                "fusectl", "mqueue", "nsfs", "proc", "pstore", "rpc_pipefs", "securityfs", "selinuxfs", "sysfs", "tracefs"}

# From <sched.h>, <sys/mount.h> and <linux/mount.h>.
CLONE_NEWNS = 0x20000
MS_RDONLY, MS_BIND, MS_REC, MS_PRIVATE = 0x1, 0x1000, 0x4000, 0x40000
MOUNT_ATTR_RDONLY = 1
MOUNT_ATTR_SIZE = 32

FILE_LIMITS = resource.getrlimit(resource.RLIMIT_NOFILE)

libc = ctypes.CDLL(None, use_errno=True)


def system_call(name: str, *arguments: object) -> None:
    if getattr(libc, name)(*arguments) != 0:
        number = ctypes.get_errno()
        raise OSError(number, os.strerror(number))


def mount(source: str, target: str, kind: str = "", flags: int = 0, data: str = "") -> None:
    system_call("mount", os.fsencode(source), os.fsencode(target), kind.encode(), ctypes.c_ulong(flags), data.encode())


class Mount:
    """A mount of the machine. The view has a mount at the same path."""

    def __init__(self, line):
        fields, _, source = line.partition(" - ")
        self.id, _, _, _, path, options = fields.split(" ")[:6]
        self.path = re.sub(r"\\([0-7]{3})", lambda match: chr(int(match[1], 8)), path)
        self.kind, _, more_options = source.split(" ")
        self.read_only = "ro" in options.split(",") + more_options.split(",")
        self.upper = f"{SCRATCH}/{self.id}/upper"
        self.real = None
        self.covered = False

    def open(self):
        """Opens the root of the mount, so that it remains accessible. Returns False if another mount hides the root."""
        try:
            fd = os.open(self.path, os.O_PATH | os.O_NOFOLLOW)
        except OSError:
            return False
        # The process id differs from that in /proc if /proc belongs to another process namespace.
        self.real = f"/proc/{os.readlink('/proc/self')}/fd/{fd}"
        with open(f"/proc/self/fdinfo/{fd}") as info:
            return f"mnt_id:\t{self.id}\n" in info.read()

    def is_below_any(self, paths):
        return any(self.path.startswith(path + "/") for path in paths)

    def needs_overlay(self):
        """Returns whether the run could create, replace or remove files in this mount."""
        return not self.read_only and self.kind not in KERNEL_TYPES and os.path.isdir(self.real)

    def show(self):
        """Adds the mount to the view: under an empty layer for changes or, if none is needed or possible, read-only."""
        if self.kind == "proc":
            # A path such as /proc/1/root leads out of the view.
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
        attributes = (ctypes.c_uint64 * 4)(MOUNT_ATTR_RDONLY)
        system_call("mount_setattr", -1, os.fsencode(VIEW + self.path), 0, attributes, ctypes.c_size_t(MOUNT_ATTR_SIZE))


def enter_private_namespace() -> None:
    """Gives the process its own mounts, so that nothing it mounts is visible to others or outlives it."""
    system_call("unshare", CLONE_NEWNS)
    mount("none", "/", flags=MS_REC | MS_PRIVATE)


def build_view():
    """Builds the view in a private mount namespace and returns its mounts. The real machine is not affected."""
    # Each mount needs an open file.
    resource.setrlimit(resource.RLIMIT_NOFILE, (FILE_LIMITS[1], FILE_LIMITS[1]))
    try:
        enter_private_namespace()
        with open("/proc/self/mountinfo", errors="surrogateescape", newline="\n") as lines:
            mounts = [Mount(line.rstrip("\n")) for line in lines]
        # Even examining an automount point would trigger the mount.
        mounts = [each for each in mounts if each.kind != "autofs" and each.open()]
        mounts = [each for each in mounts if not each.is_below_any(other.path for other in mounts if other.kind == "proc")]
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
    return mounts


def run_in_view(command, timeout=None):
    """Runs the command in the view and returns the finished process."""
    def enter():
        resource.setrlimit(resource.RLIMIT_NOFILE, FILE_LIMITS)
        os.chroot(VIEW)
        os.chdir("/")
    return subprocess.run(command, preexec_fn=enter, capture_output=True, timeout=timeout, check=False)
