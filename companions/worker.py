"""A process inside the view, which starts the runs there."""

import os
import pickle
import resource
import select
import signal
from collections.abc import Callable
from typing import Any, BinaryIO, NamedTuple, NoReturn, ParamSpec, TypeVar

from companions.command import Failure
from companions.view import CLONE_NEWPID, FILE_LIMITS, MS_NODEV, MS_NOEXEC, MS_NOSUID, MS_RDONLY
from companions.view import PR_SET_PDEATHSIG, VIEW, Mount, mount, system_call

P = ParamSpec("P")
T = TypeVar("T")


class Result(NamedTuple):
    """How a program ended: `status` is 128 plus the number of the signal if a signal killed it."""

    status: int
    output: bytes
    error: bytes


def run(command: list[str], seconds: float | None = None, environment: dict[str, str] | None = None) -> Result:
    """Runs the program and waits for its end. Raises OSError if it does not start, and TimeoutError if it takes too long."""
    output, error = os.memfd_create("output"), os.memfd_create("error")
    try:
        pid = os.posix_spawn(command[0], command, os.environ if environment is None else environment,
                             file_actions=[(os.POSIX_SPAWN_DUP2, output, 1), (os.POSIX_SPAWN_DUP2, error, 2)],
                             setsigdef=[signal.SIGPIPE, signal.SIGXFSZ])
        late = seconds is not None and not ends_within(pid, seconds)
        status = os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])
        if late:
            raise TimeoutError
        return Result(status if status >= 0 else 128 - status, contents(output), contents(error))
    finally:
        os.close(output)
        os.close(error)


def ends_within(pid: int, seconds: float) -> bool:
    """Returns whether the process ends in time. Kills it if it does not."""
    handle = os.pidfd_open(pid)
    try:
        ended = bool(select.select([handle], [], [], seconds)[0])
    finally:
        os.close(handle)
    if not ended:
        os.kill(pid, signal.SIGKILL)
    return ended


def contents(fd: int) -> bytes:
    with open(fd, "rb", closefd=False) as file:
        file.seek(0)
        return file.read()


class Worker:
    """Calls functions in a process whose root directory is the view, in a process namespace of its own."""

    def __init__(self, mounts: list[Mount], directory: str):
        """`directory` is the current directory of the runs."""
        requests, replies = os.pipe(), os.pipe()
        parent = os.getpid()
        if os.fork() == 0:
            try:
                # Only a child of the process that leaves the namespace is in the new one. Each dies with its parent.
                die_with(parent)
                system_call("unshare", CLONE_NEWPID)
                if (worker := os.fork()) == 0:
                    die_with(0)
                    serve(requests[0], replies[1], mounts, directory)
                for fd in (*requests, *replies):
                    os.close(fd)
                os.waitpid(worker, 0)
            finally:
                os._exit(1)
        os.close(requests[0])
        os.close(replies[1])
        self.requests, self.replies = open(requests[1], "wb"), open(replies[0], "rb")
        self.receive()

    def call(self, function: Callable[P, T], *arguments: P.args, **options: P.kwargs) -> T:
        """Returns what the function returns in the view, and raises what it raises there."""
        self.start(function, *arguments, **options)
        result: T = self.receive()
        return result

    def start(self, function: Callable[P, T], *arguments: P.args, **options: P.kwargs) -> None:
        """Starts the function. receive() waits for what it returns or raises."""
        send((function, arguments, options), self.requests)

    def receive(self) -> Any:
        try:
            result = pickle.load(self.replies)
        except EOFError:
            raise Failure("the process in the view ended unexpectedly") from None
        if isinstance(result, Exception):
            raise result
        return result


def send(message: object, stream: BinaryIO) -> None:
    pickle.dump(message, stream)
    stream.flush()


def die_with(parent: int) -> None:
    system_call("prctl", PR_SET_PDEATHSIG, signal.SIGKILL)
    if os.getppid() != parent:
        os._exit(1)


def serve(requests: int, replies: int, mounts: list[Mount], directory: str) -> NoReturn:
    with open(replies, "wb") as answers:
        try:
            enter(mounts, directory, {requests, replies})
            send(None, answers)
            with open(requests, "rb") as questions:
                while True:
                    function, arguments, options = pickle.load(questions)
                    try:
                        result = function(*arguments, **options)
                    except Exception as error:  # pylint: disable=broad-exception-caught
                        result = error
                    send(result, answers)
        except EOFError:
            pass
        except Exception as error:  # pylint: disable=broad-exception-caught
            send(error, answers)
    os._exit(0)


def enter(mounts: list[Mount], directory: str, keep: set[int]) -> None:
    """Makes the view the root directory of this process. An open file would be a way out, through /proc/1/fd."""
    for each in mounts:
        if each.kind == "proc" and each.root == "/":
            try:
                mount("proc", VIEW + each.path, "proc", MS_RDONLY | MS_NOSUID | MS_NODEV | MS_NOEXEC)
            except OSError as error:
                raise Failure(f"cannot mount a private /proc: {error.strerror}") from error
    os.chroot(VIEW)
    null = os.open(os.devnull, os.O_RDWR)
    for fd in range(3):
        os.dup2(null, fd)
    first, second = sorted(keep)
    os.closerange(3, first)
    os.closerange(first + 1, second)
    os.closerange(second + 1, 1 << 30)
    resource.setrlimit(resource.RLIMIT_NOFILE, FILE_LIMITS)
    os.chdir(directory)


def current_directory() -> str:
    path = os.getcwd()
    if not os.path.samefile(path, "."):
        raise Failure("the current directory has no path")
    return path
