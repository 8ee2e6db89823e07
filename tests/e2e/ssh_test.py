"""Files that clients hold over SSH: from where, and by whom."""

import os
import pwd
import shlex
import shutil
import signal
import socket
import subprocess
import sys
import unittest

from harness.files import write_file
from harness.listing import UNKNOWN, open_files
from harness.processes import Holder, await_holder, output_of, parent_of, program_of, start, stop
from harness.sample_host import login_of, needs, set_up_host
from harness.servers import Server, connected, listening
from harness.waiting import wait_until

KEY = "/root/e2e-key"
#: What serves a client; from OpenSSH 9.8 on a program of its own.
SERVERS = ("sshd", "sshd-session")


def setUpModule():
    needs("sshd", "ssh", "sftp")
    set_up_host()
    set_up_ssh()


def set_up_ssh():
    os.makedirs("/run/sshd", exist_ok=True)
    output_of(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", KEY])
    output_of(["ssh-keygen", "-A"])
    with open(KEY + ".pub", encoding="ascii") as file:
        public = file.read()
    for user in ("alice", "bob", "root"):
        write_file(f"/etc/ssh/e2e-keys/{user}", public)


class SshTest(unittest.TestCase):
    PORT = 2222
    START = ["/usr/sbin/sshd"]
    KEYS = "AuthorizedKeysFile /etc/ssh/e2e-keys/%u"
    USE_PAM = "yes"
    SFTP = "internal-sftp"

    @classmethod
    def setUpClass(cls):
        config = write_file("/etc/ssh/sshd_config.e2e", f"""
            Port {cls.PORT}
            UsePAM {cls.USE_PAM}
            PermitRootLogin prohibit-password
            {cls.KEYS}
            StrictModes no
            Subsystem sftp {cls.SFTP}
            """)
        cls.server = Server("ssh", [*cls.START, "-D", "-e", "-f", config], cls.PORT)
        cls.addClassCleanup(cls.server.stop)
        cls.upload = write_file("/root/upload", bytes(1 << 20))

    def options(self, user, address, *more):
        return ["-F", "none", "-o", f"Port={self.PORT}", "-o", f"User={user}",
                "-o", f"BindAddress={address}", "-o", f"IdentityFile={KEY}",
                "-o", "StrictHostKeyChecking=no", "-o", "UserKnownHostsFile=/dev/null",
                "-o", "LogLevel=ERROR", "-o", "BatchMode=yes", *more]

    def server_address(self, address):
        return "::1" if ":" in address else "127.0.0.1"

    def ssh(self, user, address, command, *more):
        """Leaves a command running on the server."""
        client = start(["ssh", *self.options(user, address, *more), self.server_address(address),
                        command], stdin=subprocess.PIPE)
        self.addCleanup(stop, client)
        return client

    def hold(self, path, user, address, *more):
        """Has a shell on the server hold a file; gives the client."""
        return self.ssh(user, address, f"exec 9>{shlex.quote(path)}; while read -r _; do :; done",
                        *more)

    def sftp(self, user, address, path, *more):
        """Has the file server of SFTP hold a file: an upload at a bit more than no speed."""
        client = start(["sftp", "-q", "-l", "8", *self.options(user, address, *more), "-b", "-",
                        self.server_address(address)], stdin=subprocess.PIPE)
        self.addCleanup(stop, client)
        client.stdin.write(f"put {self.upload} {path}\n".encode())
        client.stdin.flush()


class SshCommands(SshTest):
    def test_a_shell_command_has_the_address_and_user_of_its_client(self):
        self.hold("/volume1/share/shell", "alice", "127.0.0.2")
        await_holder("/volume1/share/shell")
        self.assertEqual(open_files().client("/volume1/share/shell"),
                         ("SSH", "127.0.0.2", "alice"))

    def test_two_clients_are_told_apart(self):
        self.hold("/volume1/share/first", "alice", "127.0.0.2")
        self.hold("/volume1/share/second", "bob", "127.0.0.3")
        await_holder("/volume1/share/first")
        await_holder("/volume1/share/second")
        listing = open_files()
        self.assertEqual(listing.client("/volume1/share/first"), ("SSH", "127.0.0.2", "alice"))
        self.assertEqual(listing.client("/volume1/share/second"), ("SSH", "127.0.0.3", "bob"))

    def test_a_client_over_ipv6_has_its_address(self):
        self.hold("/volume1/share/v6", "bob", "::1")
        await_holder("/volume1/share/v6")
        self.assertEqual(open_files().client("/volume1/share/v6"), ("SSH", "::1", "bob"))

    def test_root_is_shown_as_root(self):
        self.hold("/volume1/share/root", "root", "127.0.0.4")
        await_holder("/volume1/share/root")
        self.assertEqual(open_files().client("/volume1/share/root"), ("SSH", "127.0.0.4", "root"))

    def test_a_child_of_a_child_belongs_to_the_same_client(self):
        self.ssh("alice", "127.0.0.5", "sh -c 'sh -c \"exec 9>/volume1/share/deep; read _; :\"; :'")
        await_holder("/volume1/share/deep")
        self.assertEqual(open_files().client("/volume1/share/deep"), ("SSH", "127.0.0.5", "alice"))

    def test_all_files_of_one_command_belong_to_its_client(self):
        self.ssh("alice", "127.0.0.6",
                 "exec 8>/volume1/share/both-1 9>/volume1/photo/both-2; read _; :")
        await_holder("/volume1/photo/both-2")
        listing = open_files()
        for path in ("/volume1/share/both-1", "/volume1/photo/both-2"):
            self.assertEqual(listing.client(path), ("SSH", "127.0.0.6", "alice"))

    def test_a_terminal_session_belongs_to_its_client(self):
        self.hold("/volume1/share/tty", "alice", "127.0.0.7", "-o", "RequestTTY=force")
        await_holder("/volume1/share/tty")
        self.assertEqual(open_files().client("/volume1/share/tty"), ("SSH", "127.0.0.7", "alice"))


class SharedConnections(SshTest):
    """Several sessions over one TCP connection."""

    def test_every_session_has_the_address_and_user_of_the_connection(self):
        control = ("-o", "ControlPath=/run/e2e-control")
        master = self.ssh("alice", "127.0.0.8", "read _", *control, "-o", "ControlMaster=yes")
        wait_until(lambda: os.path.exists("/run/e2e-control"), "the shared connection")
        paths = [f"/volume1/share/session-{number}" for number in range(3)]
        for path in paths:
            # Were they connections of their own, they would come from another address.
            self.hold(path, "alice", "127.0.0.99", *control)
        for path in paths:
            await_holder(path)
        self.assertFalse(connected(self.PORT, "127.0.0.99"))
        self.assertIsNone(master.poll())
        listing = open_files()
        self.assertEqual({listing.client(path) for path in paths}, {("SSH", "127.0.0.8", "alice")})

    def test_sftp_over_it_too(self):
        control = ("-o", "ControlPath=/run/e2e-control-2")
        self.ssh("bob", "127.0.0.9", "read _", *control, "-o", "ControlMaster=yes")
        wait_until(lambda: os.path.exists("/run/e2e-control-2"), "the shared connection")
        self.sftp("bob", "127.0.0.99", "/volume1/share/shared-sftp", *control)
        await_holder("/volume1/share/shared-sftp")
        self.assertEqual(open_files().client("/volume1/share/shared-sftp"),
                         ("SSH", "127.0.0.9", "bob"))


class DetachedProcesses(SshTest):
    def test_a_process_whose_parent_is_1_still_belongs_to_its_client(self):
        path = "/volume1/share/detached"
        self.ssh("alice", "127.0.0.10", f"(setsid sh -c 'exec 9>{path}; exec sleep 1000' "
                 "</dev/null >/dev/null 2>&1 &); read _; :")
        pid = await_holder(path, "sleep")
        wait_until(lambda: parent_of(pid) == 1, "the process to be adopted")
        self.assertEqual(open_files().client(path), ("SSH", "127.0.0.10", "alice"))

    def test_a_process_that_was_moved_to_another_slice_still_has_its_client(self):
        path = "/volume1/share/moved"
        self.ssh("alice", "127.0.0.11", f"exec 9>{path}; read _; :")
        pid = await_holder(path)
        group = "/sys/fs/cgroup/systemd/user.slice/user-1001.slice/session-5.scope"
        write_file(f"{group}/cgroup.procs", str(pid))
        self.assertEqual(open_files().client(path), ("Internal service", "127.0.0.11", "alice"))


class InternalSftp(SshTest):
    def test_an_upload_has_the_address_and_user_of_its_client(self):
        self.sftp("alice", "127.0.0.12", "/volume1/share/internal")
        pid = await_holder("/volume1/share/internal")
        self.assertIn(program_of(pid), SERVERS)
        self.assertEqual(open_files().client("/volume1/share/internal"),
                         ("SSH", "127.0.0.12", "alice"))


class ExternalSftp(SshTest):
    SFTP = "/usr/lib/openssh/sftp-server"

    def test_an_upload_has_the_address_and_user_of_its_client(self):
        self.sftp("bob", "127.0.0.13", "/volume1/share/external")
        await_holder("/volume1/share/external", "sftp-server")
        self.assertEqual(open_files().client("/volume1/share/external"),
                         ("SSH", "127.0.0.13", "bob"))


class WithoutPam(SshTest):
    """The kernel knows of no login then."""

    USE_PAM = "no"

    def test_a_shell_command_has_the_address_and_user_of_its_client(self):
        self.hold("/volume1/share/plain", "alice", "127.0.0.14")
        pid = await_holder("/volume1/share/plain")
        self.assertIsNone(login_of(pid))
        self.assertEqual(open_files().client("/volume1/share/plain"),
                         ("SSH", "127.0.0.14", "alice"))

    def test_an_upload_has_the_address_and_user_of_its_client(self):
        self.sftp("bob", "127.0.0.15", "/volume1/share/plain-sftp")
        await_holder("/volume1/share/plain-sftp")
        self.assertEqual(open_files().client("/volume1/share/plain-sftp"),
                         ("SSH", "127.0.0.15", "bob"))

    def test_root_is_shown_as_root(self):
        self.hold("/volume1/share/plain-root", "root", "127.0.0.16")
        await_holder("/volume1/share/plain-root")
        self.assertEqual(open_files().client("/volume1/share/plain-root"),
                         ("SSH", "127.0.0.16", "root"))


class NotAClient(SshTest):
    def test_a_local_process_has_neither_address_nor_user(self):
        self.hold("/volume1/share/remote", "alice", "127.0.0.17")
        await_holder("/volume1/share/remote")
        local = Holder("/volume1/share/local", user="alice")
        self.addCleanup(local.stop)
        self.assertEqual(open_files().client("/volume1/share/local")[1:], UNKNOWN)

    def test_a_process_of_the_slice_that_serves_nobody_has_neither(self):
        local = Holder("/volume1/share/in-slice", self.server.group)
        self.addCleanup(local.stop)
        self.assertEqual(open_files().client("/volume1/share/in-slice"), ("SSH", *UNKNOWN))

    def test_a_client_that_has_gone_is_not_listed(self):
        client = self.hold("/volume1/share/leaving", "alice", "127.0.0.19")
        await_holder("/volume1/share/leaving")
        stop(client)
        wait_until(lambda: not connected(self.PORT, "127.0.0.19"), "the end of the connection")
        hosts = {file["host"] for file in open_files().files}
        self.assertNotIn("127.0.0.19", hosts)


class LoggingIn(SshTest):
    """A connection is nobody's until its client has proved who it is."""

    HELD = "/volume1/share/looked-up"
    KEYS = """AuthorizedKeysFile none
            AuthorizedKeysCommand /usr/local/bin/e2e-keys
            AuthorizedKeysCommandUser root"""

    def test_a_connection_that_has_not_logged_in_is_not_listed(self):
        # The server itself runs this below the connection, to ask for the user's keys.
        write_file("/usr/local/bin/e2e-keys", "#!/bin/sh\n"
                   f"exec 9>{self.HELD}\nuntil [ -e /run/go ]; do sleep 0.02; done\n"
                   "exec cat /etc/ssh/e2e-keys/alice\n", 0o755)
        self.hold("/volume1/share/logged-in", "alice", "127.0.0.18")
        pid = await_holder(self.HELD, "dash")
        self.assertIn(program_of(parent_of(pid)), SERVERS)
        self.assertTrue(connected(self.PORT, "127.0.0.18"))
        self.assertEqual(open_files().client(self.HELD, pid), ("SSH", *UNKNOWN))

        write_file("/run/go")
        await_holder("/volume1/share/logged-in")
        self.assertEqual(open_files().client("/volume1/share/logged-in"),
                         ("SSH", "127.0.0.18", "alice"))


# How OpenSSH 10 serves root without PAM: two halves, both of root, the second of which starts the
# session. It begins when the client says so.
TWO_HALVES_OF_ROOT = """
import os, signal, socket, sys
listener = socket.create_server(("127.0.0.1", int(sys.argv[1])))
client, _ = listener.accept()
if os.fork():
    client.close()
    signal.pause()
listener.close()
if os.fork():
    signal.pause()
held = open(sys.argv[2], "w")
client.recv(1)
if os.fork():
    signal.pause()
client.close()
session = open(sys.argv[3], "w")
signal.pause()
"""


class SessionsOfLaterReleases(unittest.TestCase):
    PORT = 2223

    def test_root_without_pam_is_shown_as_root(self):
        program = shutil.copy(os.path.realpath(sys.executable), "/usr/local/bin/sshd-session")
        paths = ["/volume1/share/of-half", "/volume1/share/of-session"]
        server = Server("ssh", [program, "-c", TWO_HALVES_OF_ROOT, str(self.PORT), *paths], self.PORT)
        self.addCleanup(server.stop)
        client = socket.create_connection(("127.0.0.1", self.PORT),
                                          source_address=("127.0.0.24", 0))
        self.addCleanup(client.close)
        half = await_holder(paths[0], "sshd-session")
        self.assertEqual(open_files().client(paths[0]), ("SSH", *UNKNOWN))
        client.sendall(b".")
        await_holder(paths[1])
        listing = open_files()
        self.assertEqual(listing.client(paths[1]), ("SSH", "127.0.0.24", "root"))
        self.assertEqual(listing.client(paths[0], half), ("SSH", "127.0.0.24", "root"))


class ServerGone(SshTest):
    """Sessions go on while the server is stopped, or listens elsewhere since its restart."""

    def stop_listening(self):
        os.kill(self.server.process.pid, signal.SIGKILL)
        self.server.process.wait()
        wait_until(lambda: not listening(self.PORT), "the port to be closed")

    def test_its_sessions_still_have_their_clients(self):
        # The port that alice's half listens on makes it no server.
        self.hold("/volume1/share/goes-on", "alice", "127.0.0.21",
                  "-o", "RemoteForward=127.0.0.1:7999 127.0.0.1:9")
        self.hold("/volume1/share/root-goes-on", "root", "127.0.0.22")
        self.sftp("bob", "127.0.0.23", "/volume1/share/upload-goes-on")
        for name in ("goes-on", "root-goes-on", "upload-goes-on"):
            await_holder(f"/volume1/share/{name}")
        wait_until(lambda: listening(7999), "the forwarded port")
        self.stop_listening()
        listing = open_files()
        for name, host, user in (("goes-on", "127.0.0.21", "alice"),
                                 ("root-goes-on", "127.0.0.22", "root"),
                                 ("upload-goes-on", "127.0.0.23", "bob")):
            self.assertEqual(listing.client(f"/volume1/share/{name}"), ("SSH", host, user))


class ServerGoneWithoutPam(ServerGone):
    USE_PAM = "no"


class ServerOfSomebodysLogin(SshTest):
    """The server was started by hand from bob's login, so the kernel counts it as bob's."""

    USE_PAM = "no"
    START = ["sh", "-c", "echo $(id -u bob) >/proc/self/loginuid; exec /usr/sbin/sshd \"$@\"", "sh"]

    def test_its_clients_are_not_taken_for_him(self):
        self.assertEqual(login_of(self.server.process.pid), pwd.getpwnam("bob").pw_uid)
        self.hold("/volume1/share/not-his", "alice", "127.0.0.20")
        await_holder("/volume1/share/not-his")
        self.assertEqual(open_files().client("/volume1/share/not-his"),
                         ("SSH", "127.0.0.20", "alice"))
