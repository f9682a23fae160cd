"""Prints a command line as bash completes it: complete_bash.py FOLDER KEY LINE

FOLDER/completions contains the completion file, which bash-completion loads by its name. An interactive shell on a
pseudo-terminal receives the line and the key: "tab" completes the word, "all" inserts all completions. Prints the line.
"""

import os
import pathlib
import pty
import select
import sys
import time

SECONDS = 30
SETUP = r"""
. /usr/share/bash-completion/bash_completion
report() { printf %s "$READLINE_LINE" >$FOLDER/line.new && mv $FOLDER/line.new $FOLDER/line; }
bind '"\C-t": insert-completions'
bind -x '"\C-o": report'
PS1='ready'$'\n'
"""
KEYS = {"tab": "\t", "all": "\x14"}


def wait_for(terminal, condition):
    """Reads what the shell prints until the condition is true of the text."""
    printed, end = b"", time.monotonic() + SECONDS
    while not condition(printed):
        if time.monotonic() > end:
            sys.exit(f"bash did not complete in {SECONDS} s; it printed {printed!r}")
        if select.select([terminal], [], [], 0.02)[0]:
            printed += os.read(terminal, 4096)


def main():
    folder, key, line = pathlib.Path(sys.argv[1]), KEYS[sys.argv[2]], sys.argv[3]
    (folder / "setup.bash").write_text(SETUP)
    (folder / "line").unlink(missing_ok=True)
    os.environ.update(FOLDER=str(folder), BASH_COMPLETION_USER_DIR=str(folder), TERM="dumb")
    child, terminal = pty.fork()
    if child == 0:
        os.execvp("bash", ["bash", "--noprofile", "--rcfile", str(folder / "setup.bash"), "-i"])
    wait_for(terminal, lambda printed: b"ready\r\n" in printed)
    os.write(terminal, (line + key + "\x0f").encode())
    wait_for(terminal, lambda printed: (folder / "line").exists())
    os.close(terminal)
    os.waitpid(child, 0)
    print((folder / "line").read_text())


main()
