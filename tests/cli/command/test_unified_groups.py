"""Services have their names where control groups v2 are all that a host has.

This kernel shows its own hierarchies to every process, so what such a host would show is laid over
/proc/<pid>/cgroup.
"""

import contextlib
import glob
import json
import os
import shutil
import socket
import subprocess
import sys
import unittest

from harness.command import COMMAND
from harness.files import touch
from harness.processes import Announced, Holder, await_holder, plain_environment

UNITS = "/usr/lib/systemd/system"
SESSION = "/user.slice/user-1000.slice/session-7.scope"

CASES = {
    "smb": ("/SMBService.slice/smbd.service", "SMB"),
    "ftp": ("/ftpd.slice/vsftpd.service", "FTP"),
    "ssh": ("/sshd.slice/ssh.service", "SSH"),
    "session": (SESSION, "SSH"),
    "console": ("/user.slice/user-1000.slice/session-c1.scope", "Internal service"),
    "ended": ("/user.slice/user-1000.slice/session-99.scope", "Internal service"),
    "user": ("/user.slice/user-1000.slice/user@1000.service/app.slice/a.scope", "Internal service"),
    "cron": ("/system.slice/cron.service", "Internal service"),
    "root": ("/", "Internal service"),
}

# Serves a client like sshd, whose session holds a file. Without a login of its own the session is
# the client's only because its service is SSH.
SSH_SERVER = """
import socket, subprocess, sys
listener = socket.socket(fileno=int(sys.argv[1]))
client, _ = listener.accept()
session = "import sys; held = open(sys.argv[1]); print('ready', flush=True); sys.stdin.read()"
subprocess.run(["/usr/bin/python3", "-c", session, sys.argv[2]])
"""


def lay_over(pid, path):
    """Until the process ends."""
    text = f"/tmp/cgroup-{pid}"
    with open(text, "w", encoding="ascii") as file:
        file.write(f"0::{path}\n")
    subprocess.run(["mount", "--bind", text, f"/proc/{pid}/cgroup"], check=True)


def run(*arguments):
    script = 'mount --bind /tmp/own "/proc/$$/cgroup" && exec "$@"'
    return subprocess.run(["unshare", "--mount", "sh", "-c", script, "sh", COMMAND, *arguments],
                          env=plain_environment(), capture_output=True, check=False, timeout=60)


class UnifiedGroups(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        for slice_file in glob.glob(os.environ["VORN_SOURCE"] + "/data/systemd/*.slice"):
            shutil.copy(slice_file, UNITS)
        os.makedirs("/run/systemd/sessions")
        for session, service in (("7", "sshd"), ("c1", "login")):
            with open("/run/systemd/sessions/" + session, "w", encoding="ascii") as file:
                file.write(f"UID=1000\nUSER=alice\nACTIVE=1\nSERVICE={service}\n")
        with open("/tmp/own", "w", encoding="ascii") as file:
            file.write("0::/user.slice/user-0.slice/session-1.scope\n")

    def named(self, *arguments):
        """The service of each case's file."""
        with contextlib.ExitStack() as holders:
            for name, (path, _) in CASES.items():
                holder = holders.enter_context(Holder([touch(f"/volume1/photo/{name}".encode())]))
                lay_over(holder.pid, path)
            result = run("--json", *arguments)
            self.assertEqual((result.returncode, result.stderr), (0, b""))
        return {file["filename"]: file["service"] for file in json.loads(result.stdout)["files"]}

    def test_name_services(self):
        expected = {name: service for name, (_, service) in CASES.items()}
        self.assertEqual(self.named(), expected)
        self.assertEqual(self.named("--by", "volume"), expected)

    def test_can_be_asked_for(self):
        self.assertEqual(set(self.named("--where", "service=SSH")), {"ssh", "session"})

    def test_are_named_before_clients_are_looked_for(self):
        program = shutil.copy(os.path.realpath(sys.executable), "/usr/local/bin/sshd")
        path = touch("/volume1/photo/of-session")
        with socket.create_server(("127.0.0.1", 0)) as listener:
            client = socket.create_connection(listener.getsockname(), source_address=("127.0.0.2", 0))
            server = Announced([program, "-c", SSH_SERVER, str(listener.fileno()), path], user="nobody",
                               pass_fds=[listener.fileno()])
        with client, server:
            lay_over(await_holder(path), "/sshd.slice/ssh.service")
            said = json.loads(run("--json").stdout)["files"]
        self.assertEqual([(file["service"], file["host"], file["user"]) for file in said],
                         [("SSH", "127.0.0.2", "nobody")])

    def test_name_services_of_what_keeps_a_volume_in_use(self):
        with contextlib.ExitStack() as holders:
            expected = {}
            for name, (path, service) in CASES.items():
                holder = holders.enter_context(Holder([touch(f"/volume1/photo/{name}".encode())]))
                lay_over(holder.pid, path)
                expected[str(holder.pid)] = service
            rows = json.loads(run("busy", "--inside", "--json", "/volume1").stdout)["holders"]
        self.assertEqual({row["pid"]: row["service"] for row in rows}, expected)

    def test_are_well_for_check(self):
        said = run("check").stdout.decode().splitlines()
        self.assertIn("ok       control groups: v2 alone: this command names services by their units; programs that "
                      "link the library see the internal one", said)
