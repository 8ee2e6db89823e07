#!/usr/bin/python3
"""What the page's tests want of their sample host, asked in lines of JSON on standard input.

Each line {"do": NAME, ...} is answered by one: {"done": what it gives} or {"failed": why}. All that was begun ends
with standard input.
"""

import json
import os
import shlex
import shutil
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.realpath(__file__)), ".."))

from harness.files import touch, write_file  # noqa: E402
from harness.fuse_volume import FuseVolume  # noqa: E402
from harness.processes import Holder, await_holder, output_of, start, stop  # noqa: E402
from harness.sample_host import PASSWORD, set_up_host  # noqa: E402
from harness.servers import Server, from_address, listening  # noqa: E402
from harness.waiting import wait_until  # noqa: E402

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

KEY = "/root/key-of-tests"
KEYS = "/etc/ssh/keys-of-tests"
SSH_PORT = 2222
SECOND = ("127.0.0.9", 2223)


def ssh_server(address, port):
    """The command that starts one, which lets everybody in by the same key."""
    if not os.path.exists(KEY):
        os.makedirs("/run/sshd", exist_ok=True)
        output_of(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", KEY])
        output_of(["ssh-keygen", "-A"])
        shutil.copy(f"{KEY}.pub", KEYS)
    config = write_file(f"/etc/ssh/sshd_config.{port}", f"""
        ListenAddress {address}
        Port {port}
        PidFile none
        UsePAM yes
        PermitRootLogin prohibit-password
        AuthorizedKeysFile {KEYS}
        StrictModes no
        """)
    return ["/usr/sbin/sshd", "-D", "-e", "-f", config]


class Host:
    def __init__(self):
        set_up_host()
        self._begun = {}
        self._servers = {}
        self._volume = None
        self._configuration = b""

    def hold(self, files, forks=0, user=None):
        """A process of root or another user that holds files open; they are made."""
        for file in files:
            touch(file.encode("utf-8", "surrogateescape"))
        return self._keep(Holder([file.encode("utf-8", "surrogateescape") for file in files], forks=forks,
                                 user=user))

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

    def smb(self, user, client, share, names):
        """A client of a real server that holds files open."""
        self._start_smb()
        for name in names:
            write_file(f"/volume1/{share}/{name}", b"content", 0o666)
        process = start(["smbclient", f"//{from_address(client)}/{share}", "-U", f"{user}%{PASSWORD}"],
                        stdin=subprocess.PIPE)
        for name in names:
            process.stdin.write(f"open {name}\n".encode())
            process.stdin.flush()
            await_holder(f"/volume1/{share}/{name}", "smbd")
        return self._keep(process)

    def ssh(self, user, client, path, heeds=True):
        """A client of a real server whose command holds a file open, and heeds signals or not."""
        if "ssh" not in self._servers:
            self._servers["ssh"] = Server("ssh", ssh_server("127.0.0.1", SSH_PORT), SSH_PORT)
        write_file(path, b"content", 0o666)
        trap = "" if heeds else "trap '' TERM HUP; "
        process = start(["ssh", "-F", "none", "-i", KEY, "-p", str(SSH_PORT), "-o", "StrictHostKeyChecking=no",
                         "-o", "UserKnownHostsFile=/dev/null", "-o", "BatchMode=yes", "-o", f"BindAddress={client}",
                         f"{user}@127.0.0.1", f"{trap}exec 9>{shlex.quote(path)}; exec sleep 1000"])
        await_holder(path, "sleep")
        return self._keep(process)

    def begin_second_host(self, file):
        """A host with processes and a volume of its own, on which a process holds a file; gives its address and the
        agent by which root gets in."""
        setup = ("hostname second && mount -t tmpfs volume1 /volume1 && mkdir -m 1777 /volume1/photo && "
                 f"{{ sleep 1000 9>{shlex.quote(file)} & }} && exec ")
        self._keep(start(["unshare", "--pid", "--mount", "--uts", "--fork", "--kill-child", "--mount-proc", "sh", "-ec",
                          setup + shlex.join(ssh_server(*SECOND))]))
        wait_until(lambda: listening(SECOND[1]), "the second host")
        touch("/etc/ssh/ssh_known_hosts", output_of(["sh", "-c", f"ssh-keyscan -p {SECOND[1]} {SECOND[0]} 2>/dev/null"]))
        agent = "/run/agent-of-tests"
        self._keep(start(["ssh-agent", "-D", "-a", agent]))
        wait_until(lambda: os.path.exists(agent), "the agent")
        output_of(["ssh-add", "-q", KEY], env={**os.environ, "SSH_AUTH_SOCK": agent})
        machines = {SECOND[0]: {"address": SECOND[0], "port": SECOND[1], "user": "root", "visible": True}}
        touch("/etc/cockpit/machines.d/99-tests.json", json.dumps(machines))
        return {"address": f"{SECOND[0]}:{SECOND[1]}", "agent": agent}

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
        for server in self._servers.values():
            server.stop()
        if "smbd" in self._servers:
            write_file("/etc/samba/smb.conf", self._configuration)
        self._servers.clear()

    def _start_smb(self):
        if "smbd" not in self._servers:
            with open("/etc/samba/smb.conf", "rb") as file:
                self._configuration = file.read()
            write_file("/etc/samba/smb.conf", CONFIGURATION)
            for user in ("alice", "bob"):
                output_of(["smbpasswd", "-s", "-a", user], input=f"{PASSWORD}\n{PASSWORD}\n")
            self._servers["smbd"] = Server("smbd", ["/usr/sbin/smbd", "--foreground", "--no-process-group"], 445)

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
