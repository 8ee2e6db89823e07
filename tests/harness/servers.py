"""Real servers, their network and the system log."""

import glob
import os
import socket

from harness.files import touch
from harness.processes import kill_group, output_of, start
from harness.waiting import wait_until


def listening(port):
    """Whether somebody accepts connections on a TCP port, asked without connecting."""
    for table in ("/proc/net/tcp", "/proc/net/tcp6"):
        with open(table, encoding="ascii") as file:
            for line in list(file)[1:]:
                fields = line.split()
                if fields[3] == "0A" and int(fields[1].rpartition(":")[2], 16) == port:
                    return True
    return False


def connected(port, peer):
    """Whether a TCP connection from an IPv4 address to a local port is established, or half closed."""
    peer_hex = "".join(f"{int(part):02X}" for part in reversed(peer.split(".")))
    with open("/proc/net/tcp", encoding="ascii") as file:
        lines = [line.split() for line in list(file)[1:]]
    return any(fields[3] in ("01", "08") and int(fields[1].rpartition(":")[2], 16) == port
               and fields[2].startswith(peer_hex) for fields in lines)


def from_address(client):
    """An address of this host that is reached from the given loopback address, by a route of its
    own; for clients that can't be told which address to use."""
    if ":" in client:
        return client
    server = client.replace("127.0.0.", "127.0.1.")
    output_of(["ip", "route", "replace", "local", server, "dev", "lo", "src", client, "table", "local"])
    return server


def slice_of(unit):
    """The slice that the installed drop-ins put a daemon into."""
    for drop_in in sorted(glob.glob(f"/usr/lib/systemd/system/{unit}.service.d/*.conf")):
        with open(drop_in, encoding="utf-8") as file:
            for line in file:
                if line.startswith("Slice="):
                    return line.strip().partition("=")[2]
    raise AssertionError(f"no drop-in names a slice for {unit}")


class Server:
    """A real server, in the control group that systemd would give its unit."""

    def __init__(self, unit, argv, port, **options):
        self.group = f"{slice_of(unit)}/{unit}.service"
        self.log = f"/var/log/e2e-{unit}.log"
        self.port = port
        if listening(port):
            raise AssertionError(f"port {port} is taken")
        with open(self.log, "wb") as log:
            self.process = start(argv, self.group, stdout=log, stderr=log, **options)
        wait_until(self._is_ready, f"{argv[0]} to listen on port {port}")

    def _is_ready(self):
        if self.process.poll() is not None:
            with open(self.log, encoding="utf-8", errors="replace") as log:
                raise AssertionError(f"{self.process.args} has ended: {log.read()}")
        return listening(self.port)

    def stop(self):
        kill_group(self.group)
        self.process.wait()


class SystemLog:
    """Listens where programs write to the system log."""

    PATH = "/dev/log"

    def __init__(self):
        if os.path.lexists(self.PATH):
            os.unlink(self.PATH)
        # A sender waits when the queue is full, and nobody reads before the test asks.
        touch("/proc/sys/net/unix/max_dgram_qlen", "10000")
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM | socket.SOCK_NONBLOCK)
        self.socket.bind(self.PATH)
        os.chmod(self.PATH, 0o666)

    def take(self, program="vorn-openfiles"):
        """The lines of a program since the last call, without priority, time and pid."""
        lines = []
        while True:
            try:
                line = self.socket.recv(65536).decode(errors="replace").rstrip("\n\0")
            except BlockingIOError:
                return lines
            header, _, text = line.partition(": ")
            if program in header:
                lines.append(text)

    def close(self):
        self.socket.close()
        os.unlink(self.PATH)
