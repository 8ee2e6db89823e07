"""Clients that hold a file on a volume each, from an address of this host and as a user of it.

Each is a context, entered when its server holds the file. PATH is that file, PROGRAM what holds it.
"""

import contextlib
import glob
import os
import subprocess

from harness.files import write_file
from harness.processes import Announced, Holder, await_holder, output_of, start, stop
from harness.sample_host import PASSWORD
from harness.servers import from_address
from harness.waiting import wait_until


class Client:
    protocol = program = None

    def __init__(self, user, host, path):
        self.user, self.host, self.path = user, host, path
        self.pid = None
        self._ends = contextlib.ExitStack()

    def __enter__(self):
        with contextlib.ExitStack() as ends:
            self.begin(ends)
            self.pid = await_holder(self.path, self.program)
            self._ends = ends.pop_all()
        return self

    def __exit__(self, *_):
        self._ends.close()

    def begin(self, ends):
        """Starts it; what ends it goes onto a stack."""
        raise NotImplementedError

    def __str__(self):
        return f"{type(self).__name__} of {self.user} from {self.host}"


def start_until(ends, argv, **options):
    client = start(argv, **options)
    ends.callback(stop, client)
    return client


class SmbClient(Client):
    protocol, program = "SMB", "smbd"

    def begin(self, ends):
        share, name = self.path.split("/")[2:]
        write_file(self.path, b"content", 0o666)
        client = start_until(ends, ["smbclient", f"//{from_address(self.host)}/{share}",
                                    "-U", f"{self.user}%{PASSWORD}"], stdin=subprocess.PIPE)
        client.stdin.write(f"open {name}\n".encode())
        client.stdin.flush()


class CifsMount(Client):
    """The kernel's client: a program holds a file below a folder where the share is mounted."""

    protocol, program = "SMB", "smbd"

    def begin(self, ends):
        share, name = self.path.split("/")[2:]
        folder = f"/mnt/{name}"
        os.makedirs(folder, exist_ok=True)
        output_of(["mount", "-t", "cifs", f"//{from_address(self.host)}/{share}", folder,
                   "-o", f"username={self.user},password={PASSWORD}"])
        ends.callback(output_of, ["umount", folder])
        ends.enter_context(Holder(f"{folder}/{name}"))


SSH = ["-F", "none", "-o", "StrictHostKeyChecking=no", "-o", "UserKnownHostsFile=/dev/null",
       "-o", "LogLevel=ERROR", "-o", "BatchMode=yes"]


class SshCommand(Client):
    """A shell without a terminal."""

    protocol, program = "SSH", "bash"
    terminal = "no"
    command = "exec 9>{path}; echo ready; read -r _"

    def begin(self, ends):
        announced = Announced(
            ["ssh", *SSH, "-o", f"BindAddress={self.host}", "-o", f"RequestTTY={self.terminal}",
             f"{self.user}@127.0.0.1", self.command.format(path=self.path)])
        ends.callback(stop, announced.process)  # A terminal has no end of its input.


class SshTerminal(SshCommand):
    """A shell on a terminal, which leaves ends of lines as they are."""

    terminal = "force"
    command = "stty -opost; " + SshCommand.command


class Sftp(Client):
    """An upload at a bit more than no speed."""

    protocol, program = "SSH", "sftp-server"

    def begin(self, ends):
        upload = write_file(f"/root/{os.path.basename(self.path)}", bytes(1 << 20))
        client = start_until(ends, ["sftp", "-q", "-l", "8", *SSH, "-o", f"BindAddress={self.host}",
                                    "-b", "-", f"{self.user}@127.0.0.1"], stdin=subprocess.PIPE)
        client.stdin.write(f"put {upload} {self.path}\n".encode())
        client.stdin.flush()


class FtpUpload(Client):
    protocol, program = "FTP", "vsftpd"

    def begin(self, ends):
        upload = write_file(f"/root/{os.path.basename(self.path)}", bytes(1 << 22))
        start_until(ends, ["curl", "--silent", "--show-error", "--limit-rate", "1k", "--interface",
                           self.host, "--user", f"{self.user}:{PASSWORD}", "--upload-file", upload,
                           f"ftp://127.0.0.1/{os.path.basename(self.path)}"])


class RsyncUpload(Client):
    """The server writes into a file with a name of its own choice."""

    protocol, program = "rsync", "rsync"

    def begin(self, ends):
        folder, name = os.path.split(self.path)
        upload = write_file(f"/root/{name}", os.urandom(1 << 22))
        start_until(ends, ["rsync", "--bwlimit=4", f"--address={self.host}", upload,
                           f"rsync://127.0.0.1/{os.path.basename(folder)}/"])
        self.path = wait_until(lambda: glob.glob(f"{folder}/.{name}.*"), f"upload of {name}")[0]


def one_of_each(mark, first):
    """Clients of each kind, from addresses 127.0.0.FIRST and above, with files called by a mark."""
    kinds = (
        (SmbClient, "alice", "photo", "smbclient"),
        (CifsMount, "bob", "projects", "cifs"),
        (SshCommand, "alice", "photo", "command"),
        (SshTerminal, "bob", "projects", "terminal"),
        (Sftp, "bob", "photo", "sftp"),
        (FtpUpload, "alice", "photo", "ftp"),
        (RsyncUpload, "alice", "projects", "rsync"),
    )
    volumes = {"photo": "/volume1", "projects": "/volume2"}
    return [kind(user, f"127.0.0.{first + number}", f"{volumes[share]}/{share}/{mark}{name}")
            for number, (kind, user, share, name) in enumerate(kinds)]
