#!/usr/bin/python3
"""What the page's tests want of their sample host, asked in lines of JSON on standard input.

Each line {"do": NAME, ...} is answered by one: {"done": what it gives} or {"failed": why}. All that was begun ends
with standard input.
"""

import json
import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.realpath(__file__)), ".."))

from harness.files import touch, write_file  # noqa: E402
from harness.fuse_volume import FuseVolume  # noqa: E402
from harness.processes import Holder, await_holder, output_of, start, stop  # noqa: E402
from harness.sample_host import PASSWORD, set_up_host  # noqa: E402
from harness.servers import Server, from_address  # noqa: E402

CONFIGURATION = """
[global]
    server role = standalone server
    map to guest = never
    load printers = no
    disable spoolss = yes
    smb ports = 445
    log level = 0
[share]
    path = /volume1/share
    read only = no
[photo]
    path = /volume1/photo
    read only = no
"""


class Host:
    def __init__(self):
        set_up_host()
        self._begun = {}
        self._server = None
        self._volume = None
        self._configuration = b""

    def hold(self, files, forks=0):
        """A process that holds files open; they are made."""
        for file in files:
            touch(file.encode("utf-8", "surrogateescape"))
        return self._keep(Holder([file.encode("utf-8", "surrogateescape") for file in files], forks=forks))

    def hold_many(self, folder, count, processes):
        """Many files, each held by one of some processes."""
        os.makedirs(folder, exist_ok=True)
        each = count // processes
        for number in range(processes):
            names = [f"file-{number * each + index:06}.dat" for index in range(each)]
            inner = f"{folder}/{number}"
            os.makedirs(inner)
            for name in names:
                with open(f"{inner}/{name}", "wb"):
                    pass
            self._keep(Holder(folder=inner))

    def smb(self, user, client, share, name):
        """A client of a real server that holds a file open."""
        self._start_smb()
        write_file(f"/volume1/{share}/{name}", b"content", 0o666)
        process = start(["smbclient", f"//{from_address(client)}/{share}", "-U", f"{user}%{PASSWORD}"],
                        stdin=subprocess.PIPE)
        process.stdin.write(f"open {name}\n".encode())
        process.stdin.flush()
        await_holder(f"/volume1/{share}/{name}", "smbd")
        return self._keep(process)

    def begin_dead_volume(self):
        """A volume that answers nobody."""
        self._volume = FuseVolume()
        self._volume.die()

    def end_dead_volume(self):
        self._volume.close()

    def allow_sudo(self, user):
        """With the password, as Debian's installer allows it."""
        write_file("/etc/sudoers.d/tests", f"{user} ALL=(ALL) ALL\n", 0o440)

    def end(self, what):
        begun = self._begun.pop(what)
        if isinstance(begun, Holder):
            begun.stop()
        else:
            stop(begun)

    def end_all(self):
        for what in list(self._begun):
            self.end(what)
        if self._server is not None:
            self._server.stop()
            self._server = None
            write_file("/etc/samba/smb.conf", self._configuration)

    def _start_smb(self):
        if self._server is None:
            with open("/etc/samba/smb.conf", "rb") as file:
                self._configuration = file.read()
            write_file("/etc/samba/smb.conf", CONFIGURATION)
            for user in ("alice", "bob"):
                output_of(["smbpasswd", "-s", "-a", user], input=f"{PASSWORD}\n{PASSWORD}\n")
            self._server = Server("smbd", ["/usr/sbin/smbd", "--foreground", "--no-process-group"], 445)

    def _keep(self, begun):
        number = len(self._begun) + 1
        while number in self._begun:
            number += 1
        self._begun[number] = begun
        return number


def main():
    host = Host()
    print(json.dumps({"done": None}), flush=True)
    for line in sys.stdin:
        request = json.loads(line)
        try:
            answer = {"done": getattr(host, request.pop("do"))(**request)}
        except Exception as error:  # pylint: disable=broad-except
            answer = {"failed": f"{type(error).__name__}: {error}"}
        print(json.dumps(answer), flush=True)
    host.end_all()


main()
