"""Files that clients hold over SSH with dropbear as the server: from where, and by whom."""

import os
import pwd
import shlex
import shutil
import socket
import subprocess
import unittest

from harness.files import write_file
from harness.listing import open_files
from harness.processes import await_holder, output_of, parent_of, start, stop
from harness.sample_host import login_of, needs, set_up_host
from harness.servers import Server

KEY = "/root/e2e-key"
PORT = 2224
HOST_KEY = "/etc/dropbear/e2e-key"


def setUpModule():
    needs("dropbear", "dropbearkey", "ssh")
    set_up_host()
    output_of(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", KEY])
    set_up_dropbear()


def set_up_dropbear():
    """Users may log in by the key."""
    os.makedirs("/etc/dropbear", exist_ok=True)
    output_of(["dropbearkey", "-t", "ed25519", "-f", HOST_KEY])
    for user, home in (("alice", "/home/alice"), ("bob", "/home/bob"), ("root", "/root")):
        os.makedirs(f"{home}/.ssh", mode=0o700, exist_ok=True)
        shutil.copy(KEY + ".pub", f"{home}/.ssh/authorized_keys")
        output_of(["chown", "-R", f"{user}:", f"{home}/.ssh"])
        os.chmod(f"{home}/.ssh/authorized_keys", 0o600)
        os.chmod(home, 0o755)


class DropbearTest(unittest.TestCase):
    def setUp(self, **options):
        self.server = Server("dropbear", ["/usr/sbin/dropbear", "-E", "-F", "-s", "-r", HOST_KEY,
                                          "-p", str(PORT)], PORT, **options)
        self.addCleanup(self.server.stop)

    def ssh(self, user, address, command):
        client = start(["ssh", "-F", "none", "-o", f"Port={PORT}", "-o", f"User={user}",
                        "-o", f"BindAddress={address}", "-o", f"IdentityFile={KEY}",
                        "-o", "StrictHostKeyChecking=no", "-o", "UserKnownHostsFile=/dev/null",
                        "-o", "LogLevel=ERROR", "-o", "BatchMode=yes", "127.0.0.1", command],
                       stdin=subprocess.PIPE)
        self.addCleanup(stop, client)

    def hold(self, path, user, address):
        self.ssh(user, address, f"exec 9>{shlex.quote(path)}; while read -r _; do :; done")
        return await_holder(path)


class Clients(DropbearTest):
    def test_clients_have_their_address_and_user(self):
        rows = (("alice", "127.0.0.2"), ("bob", "127.0.0.3"), ("root", "127.0.0.4"))
        for user, address in rows:
            self.assertIsNone(login_of(self.hold(f"/volume1/share/by-{user}", user, address)))
        listing = open_files()
        for user, address in rows:
            self.assertEqual(listing.client(f"/volume1/share/by-{user}"), ("SSH", address, user))

    def test_a_child_of_a_child_belongs_to_the_same_client(self):
        self.ssh("alice", "127.0.0.5", "sh -c 'sh -c \"exec 9>/volume1/share/deep; read _; :\"; :'")
        await_holder("/volume1/share/deep")
        self.assertEqual(open_files().client("/volume1/share/deep"), ("SSH", "127.0.0.5", "alice"))

    def test_a_program_that_runs_as_its_owner_speaks_for_nobody(self):
        # In place of the shell, it is all that there is to tell the user by.
        write_file("/usr/local/bin/lends-rights", mode=0o755)
        shutil.copy("/usr/bin/sleep", "/usr/local/bin/lends-rights")
        os.chmod("/usr/local/bin/lends-rights", 0o4755)
        path = "/volume1/share/by-lent-rights"
        self.ssh("alice", "127.0.0.6", f"exec 9>{path}; exec /usr/local/bin/lends-rights 1000")
        holder = await_holder(path, "lends-rights")
        # A server that has given up root's rights tells the user by itself.
        with open(f"/proc/{parent_of(holder)}/status", encoding="utf-8") as status:
            uid = next(line.split()[2] for line in status if line.startswith("Uid:"))
        server = pwd.getpwuid(int(uid)).pw_name
        self.assertIn(server, ("root", "alice"))
        self.assertEqual(open_files().client(path),
                         ("SSH", "127.0.0.6", "unknown" if server == "root" else "alice"))

    def test_a_connection_without_a_session_is_not_listed(self):
        client = socket.create_connection(("127.0.0.1", PORT), source_address=("127.0.0.7", 0))
        self.addCleanup(client.close)
        client.recv(4)
        self.assertNotIn("127.0.0.7", {file["host"] for file in open_files().files})
