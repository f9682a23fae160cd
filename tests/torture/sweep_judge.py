"""Judging a run that a fault struck by the bytes that it leaves."""

import fnmatch
import os
import signal
import stat

from sweep_calls import run

OLD, NEW, EMPTY, MIX = "OLD", "NEW", "EMPTY", "MIX"
INTERRUPTED_READ = ("read", "error=EINTR")
SCANNER_MESSAGE = b"input in flex scanner failed\n"


class Judge:
    """Knows the new content of a job's target from a run without a fault, and what a run over that makes of it."""

    def __init__(self, job, new, again):
        self.job = job
        self.new = new
        self.again = again

    def state(self):
        now = self.job.now()
        if now == self.new:
            return NEW
        if now == self.job.before:
            return OLD
        return EMPTY if now == b"" and self.job.before is None else MIX

    def problems(self, fault, result):
        """What is wrong with a run; nothing when all is well."""
        left = self.job.beside()
        found = self.wrong_state() + self.wrong_names(left)
        found += [f"standard output holds {result.output!r}"] if result.output else []
        if fault.signal == "KILL":
            return found + self.after_a_kill(result, left)
        if fault.signal is not None:
            return found + self.after_a_signal(fault, result, left)
        return found + self.after_an_error(fault, result, left)

    def wrong_state(self):
        state = self.state()
        if state == MIX:
            return [f"the target is a mix: {self.job.now()[:80]!r}..."]
        return self.wrong_mode(self.job.target) if state == NEW and self.new is not None else []

    @staticmethod
    def wrong_mode(path):
        mode = stat.S_IMODE(os.stat(path).st_mode)
        return [] if mode == 0o644 else [f"{path} has mode {mode:04o}"]

    def wrong_names(self, left):
        strange = [path for path in left if not fnmatch.fnmatch(path, self.job.target + ".??????")]
        return [f"unexpected beside the target: {strange}"] if strange else []

    def after_a_kill(self, result, left):
        found = [] if len(left) <= 1 else [f"more than one temporary file: {left}"]
        if result.status != -9:
            found.append(f"ended with {result.status}, not by the kill")
        wanted = self.again if self.state() == NEW else self.new
        status, _, error = run(self.job.command)
        if (status, error, self.job.beside()) != (0, b"", left) or self.job.now() != wanted:
            now = f"target {self.state()}, beside it {self.job.beside()}"
            found.append(f"the next run ends with {status}, {error!r}, {now}")
        return found

    def after_a_signal(self, fault, result, left):
        found = [f"temporary files stay: {left}"] if left else []
        found += [f"a message: {result.error!r}"] if result.error else []
        if fault.name != "exit_group" and f"--- SIG{fault.signal} " not in result.trace:
            found.append("the signal never struck")
        # At the exit itself a signal may come too late to end the run.
        may_succeed = self.job.ignored is not None or fault.name == "exit_group"
        if result.status == 0 and may_succeed:
            return found + ([] if self.state() == NEW else [f"exit status 0, but the target is {self.state()}"])
        if result.status != -signal.Signals[f"SIG{fault.signal}"] or self.job.ignored:
            found.append(f"ended with {result.status}")
        return found

    def after_an_error(self, fault, result, left):
        if "INJECTED" not in result.trace:
            return ["the fault never struck"]
        if result.status == 0:
            found = ["the fault is ignored"] if fault.must_fail else []
            return found + self.after_success(result, left)
        return self.after_failure(fault, result, left)

    def after_success(self, result, left):
        found = [] if self.state() == NEW else [f"exit status 0, but the target is {self.state()}"]
        found += [f"a message after all: {result.error!r}"] if result.error else []
        return found + ([f"temporary files stay: {left}"] if left else [])

    def after_failure(self, fault, result, left):
        found = self.wrong_message(result)
        found += ["an interrupted read is not tried again"] if (fault.name, fault.what) == INTERRUPTED_READ else []
        if self.state() == NEW and self.new != self.job.before:
            found.append(f"exit status {result.status}, but the target is NEW")
        if fault.name == "rename":
            return found + self.wrong_remainder(left)
        return found + ([f"temporary files stay: {left}"] if left else [])

    @staticmethod
    def wrong_message(result):
        lines = result.error.decode("utf-8", "backslashreplace").splitlines()
        found = [] if len(lines) == 1 and lines[0].strip() else [f"not one line of message: {result.error!r}"]
        found += ["the message says Success"] if b"Success" in result.error else []
        wanted = 2 if result.error == SCANNER_MESSAGE else 1
        return found + ([] if result.status == wanted else [f"exit status {result.status}, not {wanted}"])

    def wrong_remainder(self, left):
        """A rename that fails leaves the whole new file, which an administrator can put in place."""
        if len(left) != 1:
            return [f"not one temporary file, but {left}"]
        with open(left[0], "rb") as file:
            whole = file.read() == self.new
        return self.wrong_mode(left[0]) + ([] if whole else ["the temporary file is not whole"])
