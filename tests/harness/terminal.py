"""A pseudo terminal with a program on it."""

import fcntl
import os
import pty
import select
import struct
import subprocess
import termios
import time

from harness.processes import plain_environment
from harness.waiting import PATIENCE


class Terminal:
    def __init__(self, program, *arguments, columns=80, lines=24, **env):
        self._master, slave = pty.openpty()
        self.resize(columns, lines)
        self.settings_before = self.settings()
        self.process = subprocess.Popen([program, *arguments], stdin=slave, stdout=slave, stderr=slave,
                                        env=plain_environment(**{"TERM": "xterm", **env}), start_new_session=True,
                                        preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
        os.close(slave)
        self.text = b""

    def settings(self):
        """Of keys and lines; the characters among them can't be compared as they stand."""
        return termios.tcgetattr(self._master)[:4]

    def type(self, text):
        os.write(self._master, text.encode())

    def resize(self, columns, lines):
        """The kernel tells the program."""
        fcntl.ioctl(self._master, termios.TIOCSWINSZ, struct.pack("HHHH", lines, columns, 0, 0))

    def _more(self, deadline):
        if not select.select([self._master], [], [], max(0, deadline - time.monotonic()))[0]:
            raise AssertionError(f"waited in vain; so far: {self.text!r}")
        try:
            chunk = os.read(self._master, 65536)
        except OSError:
            chunk = b""
        self.text += chunk
        return chunk != b""

    def wait_for(self, wanted):
        """Reads until a text has come; gives and forgets all up to its end."""
        deadline = time.monotonic() + PATIENCE
        while wanted not in self.text:
            assert self._more(deadline), f"ended without {wanted!r}: {self.text!r}"
        end = self.text.index(wanted) + len(wanted)
        read, self.text = self.text[:end], self.text[end:]
        return read

    def finish(self):
        """Reads to the end; gives the exit status and the lines."""
        deadline = time.monotonic() + PATIENCE
        while self._more(deadline):
            pass
        self.settings_after = self.settings()
        os.close(self._master)
        return self.process.wait(PATIENCE), self.text.decode().split("\r\n")
