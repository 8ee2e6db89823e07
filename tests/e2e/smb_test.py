"""Files that clients hold over SMB: from where, and by whom."""

import os
import pwd
import re
import subprocess
import unittest

from harness.files import write_file
from harness.listing import UNKNOWN, open_files
from harness.processes import Holder, await_holder, holders, output_of, start, stop
from harness.sample_host import BUILD, PASSWORD, needs, set_up_host
from harness.servers import Server, SystemLog, from_address
from harness.waiting import wait_until

CONFIGURATION = """
[global]
    server role = standalone server
    map to guest = never
    load printers = no
    disable spoolss = yes
    smb ports = 445
    bind interfaces only = no
    log level = 0
    deadtime = 0
[share]
    path = /volume1/share
    read only = no
[photo]
    path = /volume1/photo
    read only = no
"""


FILES = [f"/volume1/share/file-{number}" for number in range(3)]


def setUpModule():
    needs("smbd", "smbclient", "smbpasswd", "smbstatus")
    set_up_host()
    set_up_smb(CONFIGURATION)
    for path in FILES:
        write_file(path, b"content", 0o666)


def set_up_smb(configuration):
    write_file("/etc/samba/smb.conf", configuration)
    for user in ("alice", "bob"):
        output_of(["smbpasswd", "-s", "-a", user], input=f"{PASSWORD}\n{PASSWORD}\n")


class SmbTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = Server("smbd", ["/usr/sbin/smbd", "--foreground", "--no-process-group"], 445)
        cls.addClassCleanup(cls.server.stop)

    def setUp(self):
        # A server whose client has just gone would be taken for that of the next one.
        wait_until(lambda: not any(map(holders, FILES)), "the files of earlier clients to be closed")

    def hold(self, user, client, *names, share="share", machine=None):
        """Has a client (of a machine that has others) open files and keep them open; gives it."""
        process = start(["smbclient", f"//{from_address(client)}/{share}", "-U",
                         f"{user}%{PASSWORD}",
                         *([f"--option=libsmb:client_guid={machine}"] if machine else [])],
                        stdin=subprocess.PIPE)
        self.addCleanup(stop, process)
        self.open(process, *names)
        for name in names:
            await_holder(f"/volume1/{share}/{name}", "smbd")
        return process

    def open(self, client, *names):
        for name in names:
            client.stdin.write(f"open {name}\n".encode())
        client.stdin.flush()


class SmbClients(SmbTest):
    def test_a_client_has_its_address_and_user(self):
        self.hold("alice", "127.0.0.2", "file-0")
        self.assertEqual(open_files().client("/volume1/share/file-0"),
                         ("SMB", "127.0.0.2", "alice"))

    def test_two_users_on_two_connections_are_told_apart(self):
        self.hold("alice", "127.0.0.3", "file-1")
        self.hold("bob", "127.0.0.4", "file-2")
        listing = open_files()
        self.assertEqual(listing.client("/volume1/share/file-1"), ("SMB", "127.0.0.3", "alice"))
        self.assertEqual(listing.client("/volume1/share/file-2"), ("SMB", "127.0.0.4", "bob"))

    def test_one_file_of_two_clients_has_a_record_for_each(self):
        self.hold("alice", "127.0.0.5", "file-0")
        self.hold("bob", "127.0.0.6", "file-0")
        wait_until(lambda: len(open_files().of("/volume1/share/file-0")) == 2, "both clients")
        clients = {(file["host"], file["user"]) for file in
                   open_files().of("/volume1/share/file-0")}
        self.assertEqual(clients, {("127.0.0.5", "alice"), ("127.0.0.6", "bob")})

    def test_a_client_over_ipv6_has_its_address(self):
        self.hold("bob", "::1", "file-1")
        self.assertEqual(open_files().client("/volume1/share/file-1"), ("SMB", "::1", "bob"))


class ConnectionsOfOneMachine(SmbTest):
    """One server has all channels of a machine, which tells its own by a number."""

    MACHINE = "6112f7d3-9528-4a2a-8861-0ca129aae6c4"

    def setUp(self):
        super().setUp()
        self.servers = set()

    def hold(self, *arguments):
        super().hold(*arguments, machine=self.MACHINE)
        for name in arguments[2:]:
            self.servers.add(await_holder(f"/volume1/share/{name}", "smbd"))
        self.assertEqual(len(self.servers), 1)

    def expect(self, **clients):
        listing = open_files()
        for name, client in clients.items():
            self.assertEqual(listing.client(f"/volume1/share/{name.replace('_', '-')}"),
                             ("SMB", *client))

    def log_in(self, user, client):
        """A session of a further user, over a connection of its own, which opens nothing."""
        self.hold(user, client)
        wait_until(lambda: f'"username": "{user}"' in output_of(["smbstatus", "--json", "-p"]),
                   f"the session of {user}")

    def test_several_users_at_one_address_have_no_name(self):
        self.hold("alice", "127.0.0.11", "file-0")
        self.hold("bob", "127.0.0.11", "file-1")
        self.expect(file_0=("127.0.0.11", "unknown"), file_1=("127.0.0.11", "unknown"))

    def test_of_several_users_the_one_who_has_files_open_has(self):
        self.hold("alice", "127.0.0.12", "file-0")
        self.log_in("bob", "127.0.0.12")
        self.expect(file_0=("127.0.0.12", "alice"))

    def test_several_users_at_several_addresses_have_neither(self):
        self.hold("alice", "127.0.0.13", "file-0")
        self.hold("bob", "127.0.0.14", "file-1")
        self.expect(file_0=("unknown", "unknown"), file_1=("unknown", "unknown"))

    def test_one_user_at_several_addresses_has_one_of_them(self):
        self.hold("alice", "127.0.0.15", "file-0")
        self.hold("alice", "127.0.0.16", "file-1")
        first = open_files().client("/volume1/share/file-0")
        self.assertIn(first, [("SMB", "127.0.0.15", "alice"), ("SMB", "127.0.0.16", "alice")])
        self.expect(file_0=first[1:], file_1=first[1:])


class CallerThatRaisesItsRights(SmbTest):
    """smbstatus refuses to work where it believes itself to be set-user-id."""

    CALLER = os.path.join(BUILD, "bin", "vornfilehandle_raised_caller")

    def test_it_sees_the_users_of_smb_clients(self):
        self.hold("alice", "127.0.0.7", "file-0")
        environment = {**os.environ, "ASAN_OPTIONS": "detect_leaks=0"}
        for caller in ("alice", "bob"):
            printed = output_of([self.CALLER, str(pwd.getpwnam(caller).pw_uid)], env=environment)
            self.assertIn("/volume1/share/file-0 127.0.0.7 alice\n", printed)


class RightsOfTheMetricsService(SmbTest):
    UNIT = "/usr/lib/systemd/system/vorn-openfiles-metrics.service"

    def test_suffice_for_the_users_of_smb_clients(self):
        self.hold("alice", "127.0.0.8", "file-0")
        with open(self.UNIT, encoding="utf-8") as unit:
            rights = re.search("^CapabilityBoundingSet=(.+)$", unit.read(), re.MULTILINE).group(1)
        bounding = ",".join(["-all", *(f"+{name[len('CAP_'):].lower()}" for name in rights.split())])
        printed = output_of(["setpriv", "--no-new-privs", "--bounding-set", bounding, "--inh-caps", "-all",
                       "/usr/sbin/vorn-openfiles", "metrics"],
                      env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0"})
        self.assertIn('{share="share",service="SMB",user="alice"} 1\n', printed)


class SmbStatusThatFails(SmbTest):
    """The users of SMB clients are asked of smbstatus, which may be anything."""

    STATUS = "/usr/bin/smbstatus"

    def setUp(self):
        super().setUp()
        self.log = SystemLog()
        self.addCleanup(self.log.close)
        os.rename(self.STATUS, self.STATUS + ".real")
        self.addCleanup(os.rename, self.STATUS + ".real", self.STATUS)
        self.hold("alice", "127.0.0.10", "file-0")

    def expect_unknown_user_and_one_line(self):
        listing = open_files()
        self.assertEqual(listing.client("/volume1/share/file-0"),
                         ("SMB", "127.0.0.10", "unknown"))
        self.assertLess(listing.seconds, 10)
        lines = self.log.take()
        self.assertEqual([self.STATUS in line for line in lines], [True], lines)

    def replace(self, command):
        write_file(self.STATUS, f"#!/bin/sh\n{command}\n", 0o755)

    def test_one_that_works_gives_the_user(self):
        self.replace(f'exec {self.STATUS}.real "$@"')
        self.assertEqual(open_files().client("/volume1/share/file-0"),
                         ("SMB", "127.0.0.10", "alice"))
        self.assertEqual(self.log.take(), [])

    def test_one_that_is_absent_costs_the_user_and_one_line(self):
        self.expect_unknown_user_and_one_line()

    def test_one_that_hangs_costs_the_user_and_one_line(self):
        self.replace("exec sleep 98765")
        self.expect_unknown_user_and_one_line()
        self.assertNotIn("98765", output_of(["ps", "-e", "-o", "args"]))

    def test_one_that_prints_garbage_costs_the_user_and_one_line(self):
        self.replace("head -c 4096 /dev/urandom")
        self.expect_unknown_user_and_one_line()

    def test_one_that_prints_a_gigabyte_costs_the_user_and_one_line(self):
        self.replace("exec head -c 1G /dev/zero")
        self.expect_unknown_user_and_one_line()

    def test_one_that_fails_costs_the_user_and_one_line(self):
        self.replace("echo '{}'; exit 1")
        self.expect_unknown_user_and_one_line()


class NotAnSmbClient(SmbTest):
    def test_without_a_client_smbstatus_is_not_run(self):
        local = Holder("/volume1/share/local", self.server.group)
        self.addCleanup(local.stop)
        os.rename("/usr/bin/smbstatus", "/usr/bin/smbstatus.real")
        self.addCleanup(os.rename, "/usr/bin/smbstatus.real", "/usr/bin/smbstatus")
        write_file("/usr/bin/smbstatus", "#!/bin/sh\necho >>/run/smbstatus-ran\n", 0o755)
        self.assertEqual(open_files().client("/volume1/share/local"), ("SMB", *UNKNOWN))
        self.assertFalse(os.path.exists("/run/smbstatus-ran"))
