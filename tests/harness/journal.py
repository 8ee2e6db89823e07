"""A journald of its own, as that of a unit with LogNamespace= is."""

import os
import shutil
import signal
import socket
import struct
import subprocess

from harness.processes import plain_environment

NAMESPACE = "vorn-openfiles"
PROGRAM = "/usr/lib/systemd/systemd-journald"
SOCKET = "/run/systemd/journal/socket"
SETTINGS = f"/etc/systemd/journald@{NAMESPACE}.conf"


def parse_export(text):
    """Entries of the export format: a list of values for each name, all of them bytes."""
    entries, entry, at = [], {}, 0
    while at < len(text):
        end = text.index(b"\n", at)
        name, is_text, value = text[at:end].partition(b"=")
        at = end + 1
        if not name:
            entries.append(entry)
            entry = {}
            continue
        if not is_text:
            [size] = struct.unpack_from("<Q", text, at)
            value, at = text[at + 8:at + 8 + size], at + 9 + size
        entry.setdefault(name.decode(), []).append(value)
    return entries + [entry] * bool(entry)


class Journal:
    """Its sockets are there as long as it is, as systemd keeps them; journald comes and goes."""

    def __init__(self, settings="Storage=persistent\nRateLimitIntervalSec=0\nForwardToSyslog=no\n"):
        with open("/etc/machine-id", encoding="ascii") as file:
            self.folder = f"/var/log/journal/{file.read().strip()}.{NAMESPACE}"
        self.runtime = f"/run/systemd/journal.{NAMESPACE}"
        for folder in (self.folder, self.runtime, os.path.dirname(SETTINGS)):
            os.makedirs(folder, exist_ok=True)
        with open(SETTINGS, "w", encoding="ascii") as file:
            file.write(f"[Journal]\n{settings}")
        os.symlink(self.runtime, os.path.dirname(SOCKET))
        self.sockets = {}
        self.listen()
        self.process = None
        self.start()

    def listen(self):
        for name, kind in (("socket", socket.SOCK_DGRAM), ("stdout", socket.SOCK_STREAM)):
            self.sockets[name] = socket.socket(socket.AF_UNIX, kind)
            if kind == socket.SOCK_DGRAM:
                self.sockets[name].setsockopt(socket.SOL_SOCKET, socket.SO_PASSCRED, 1)
            self.sockets[name].bind(os.path.join(self.runtime, name))  # by this very name journald knows it
            if kind == socket.SOCK_STREAM:
                self.sockets[name].listen()

    def start(self):
        """Passes the sockets on as systemd does, from descriptor 3 up."""
        def prepare():
            copies = [os.dup(each.fileno()) for each in self.sockets.values()]
            for number, copy in enumerate(copies, 3):
                os.dup2(copy, number)
        # The shell becomes journald: LISTEN_PID is to be its own.
        argv = ["/bin/sh", "-c", f'LISTEN_PID=$$ LISTEN_FDS={len(self.sockets)} exec "$0" "$1"', PROGRAM, NAMESPACE]
        self.process = subprocess.Popen(argv, env=plain_environment(), preexec_fn=prepare, close_fds=False,
                                        stderr=subprocess.DEVNULL)

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait()

    def pause(self):
        self.process.send_signal(signal.SIGSTOP)

    def go_on(self):
        self.process.send_signal(signal.SIGCONT)

    def vanish(self):
        """Without journald there are no sockets either."""
        self.stop()
        for name, each in self.sockets.items():
            each.close()
            os.unlink(os.path.join(os.path.dirname(SOCKET), name))

    def entries(self, *matches):
        """Those of the command, with values of fields such as VORN_EVENT=lost."""
        return parse_export(output_bytes(["journalctl", "--directory", self.folder, "--output", "export", "--all",
                                          "--quiet", "SYSLOG_IDENTIFIER=vorn-openfiles", *matches]))

    def close(self):
        self.go_on()
        self.stop()
        for each in self.sockets.values():
            each.close()
        os.unlink(os.path.dirname(SOCKET))
        shutil.rmtree(self.runtime)
        shutil.rmtree(self.folder)


def output_bytes(argv):
    return subprocess.run(argv, stdout=subprocess.PIPE, check=True, timeout=60, env=plain_environment()).stdout
