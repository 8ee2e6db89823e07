"""What the installed command lists."""

import functools
import json
import subprocess
import time

from harness.command import run
from harness.processes import become
from harness.waiting import wait_until

UNKNOWN = ("-", "-")


class Listing:
    """What vorn-openfiles has printed."""

    def __init__(self, done, seconds):
        self.status = done.returncode
        self.errors = done.stderr.decode(errors="replace")
        self.seconds = seconds
        if self.status not in (0, 1):
            raise AssertionError(f"vorn-openfiles ended with {self.status}: {self.errors}")
        self.document = json.loads(done.stdout.decode("utf-8", errors="strict"))
        self.complete = self.document["complete"]
        self.files = self.document["files"]

    def of(self, path, pid=None):
        """All records of a full path (of one process)."""
        return [file for file in self.files if file["full_path"] == path
                and (pid is None or file["pid"] == str(pid))]

    def one(self, path, pid=None):
        """The only record of a full path (of one process)."""
        found = self.of(path, pid)
        if len(found) != 1:
            raise AssertionError(f"{len(found)} records of {path} by {pid}: {found}; listed: "
                                 f"{[(file['full_path'], file['pid']) for file in self.files]}")
        return found[0]

    def client(self, path, pid=None):
        """(service, host, user) of the only record of a path."""
        record = self.one(path, pid)
        return record["service"], record["host"], record["user"]


def open_files(*arguments, environment=None, user=None):
    """Runs the installed vorn-openfiles (as a user) and gives what it lists."""
    # Leaks are another test's business.
    environment = {"ASAN_OPTIONS": "detect_leaks=0", **(environment or {})}
    started = time.monotonic()
    done = run("--format", "json", *arguments, env=environment, stdin=subprocess.DEVNULL,
               preexec_fn=user and functools.partial(become, user))
    return Listing(done, time.monotonic() - started)


def complete_list(*arguments):
    """The same, once nothing is missing: a slow host's smbstatus may take longer than its limit."""
    def look():
        listing = open_files(*arguments)
        return listing if listing.complete else None
    return wait_until(look, "a complete list")
