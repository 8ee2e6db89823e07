"""What "vorn-openfiles events" tells."""

import itertools
import json
import signal
import subprocess

from harness.command import COMMAND
from harness.processes import plain_environment
from harness.waiting import PATIENCE, wait_until

NUMBERS = itertools.count()


class Recording:
    """The command at work; it has begun to watch when this is there."""

    def __init__(self, *arguments, prefix=(), patience=PATIENCE):
        self.file = f"/tmp/events-{next(NUMBERS)}"
        self.status = None
        with open(self.file, "wb") as out:
            self.process = subprocess.Popen([*prefix, COMMAND, "events", *arguments], env=plain_environment(),
                                            stdout=out, stderr=subprocess.PIPE)
        wait_until(self.lines, "the line of the beginning", patience)

    def lines(self):
        """The whole lines up to now."""
        with open(self.file, "rb") as file:
            return [json.loads(line) for line in file if line.endswith(b"\n")]

    def of(self, path):
        return [line for line in self.lines() if line.get("file", {}).get("full_path") == path]

    def wait_for(self, path, *events):
        """Waits until a path has had these events; gives their lines."""
        return wait_until(lambda: set(events) <= {line["event"] for line in self.of(path)} and self.of(path),
                          f"{events} of {path}")

    def pause(self):
        self.process.send_signal(signal.SIGSTOP)

    def go_on(self):
        self.process.send_signal(signal.SIGCONT)

    def stop(self, number=signal.SIGTERM):
        """Ends it; gives all lines and what it has said."""
        if self.status is None:
            self.process.send_signal(number)
            self.said = self.process.communicate(timeout=PATIENCE)[1].decode()
            self.status = self.process.returncode
        return self.lines(), self.said

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.go_on()
        self.stop()
