"""What the fault sweep runs: jobs of the tool, each from the states that its target may be in."""

import os

TOOL = "/opt/oru/admin/sbin/tavek-logrotate"
HOST_FILE = "/opt/oru/etc/logrotate.d/example.com"
APACHE_FILE = "/etc/logrotate.d/apache2"

COMMENTS = b"# The rotation of this host is not set up yet.\n"

# Larger than any buffer on the way, so that it is written in several parts.
STANZA = b"/var/www/vhosts/system/example.com/logs/log%05d {\n\tdaily\n\trotate 3\n\tcompress\n}\n"
STANZAS = b"".join(STANZA % number for number in range(2000))

# A stanza that never closes and lacks a period. The second pass begins inside it and is brought out by
# the first brace, so that it finds the head again and puts what is missing behind it.
UNCLOSED = b"}\n/var/www/vhosts/system/example.com/logs/error_log {\n" + b"\tcreate 0640 root adm\n" * 6000

APACHE = b"""/var/log/apache2/*.log {
\tdaily
\tmissingok
\trotate 14
\tcompress
\tpostrotate
\t\tif pgrep -f ^/usr/sbin/apache2 > /dev/null; then invoke-rc.d apache2 reload; fi
\tendscript
}
"""


class Job:
    """One command line, with its target in one state before and a caller that may ignore a signal."""

    def __init__(self, name, target, before, arguments, ignored=None):
        self.name = name
        self.target = target
        self.before = before
        self.ignored = ignored
        self.command = ["env", f"--ignore-signal={ignored}"] if ignored else []
        self.command += [TOOL, *arguments]

    def reset(self):
        """Puts the target's folder back: the target as it was before and nothing beside it."""
        folder = os.path.dirname(self.target)
        for name in os.listdir(folder):
            os.unlink(os.path.join(folder, name))
        if self.before is not None:
            with open(self.target, "wb") as file:
                file.write(self.before)

    def now(self):
        """The bytes of the target, or None without a target."""
        try:
            with open(self.target, "rb") as file:
                return file.read()
        except FileNotFoundError:
            return None

    def beside(self):
        """The paths of the files beside the target."""
        folder = os.path.dirname(self.target)
        names = set(os.listdir(folder)) - {os.path.basename(self.target)}
        return sorted(os.path.join(folder, name) for name in names)


TIME = ["example.com", "on", "by_time", "daily", "5", "true", "admin@example.com", "--anonymize-ip=true"]
SIZE = ["example.com", "on", "by_size", "10485760", "7", "false"]
OFF = ["example.com", "off"]
CATEGORY = ["--apache-logs", "--period-type=by_time", "--period=weekly", "--rot-count=3", "--anonymize-ip=true"]


def all_jobs():
    rows = [
        ("generate", HOST_FILE, COMMENTS, TIME),
        ("rewrite", HOST_FILE, STANZAS, SIZE),
        ("remove", HOST_FILE, STANZAS, OFF),
        ("category", APACHE_FILE, APACHE, CATEGORY),
    ]
    jobs = [Job(f"{name}, target {state}", target, before if state == "present" else None, arguments)
            for name, target, before, arguments in rows for state in ("present", "absent")]
    jobs.append(Job("rewrite in two passes", HOST_FILE, UNCLOSED, SIZE))
    return jobs + [Job(f"rewrite, {name} ignored", HOST_FILE, STANZAS, SIZE, name) for name in ("HUP", "INT")]
