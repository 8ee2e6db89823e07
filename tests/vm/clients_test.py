"""What the installed command says of real clients on a host as Debian has it."""

import contextlib
import json
import unittest

from clients import (PORTS, CifsMount, FtpUpload, RsyncUpload, Sftp, SmbClient, SshCommand,
                     SshTerminal)
from harness.command import run
from harness.listing import UNKNOWN, open_files
from harness.processes import Holder, output_of
from harness.servers import listening
from harness.waiting import wait_until
from services import INTERNAL, NAMES, SLICES


def setUpModule():
    for protocol, port in PORTS.items():
        wait_until(lambda port=port: listening(port), f"the server of {protocol}")


class Clients(unittest.TestCase):
    """All at once, in one list."""

    CLIENTS = (
        SmbClient("alice", "127.0.0.2", "/volume1/photo/smbclient"),
        CifsMount("bob", "127.0.0.3", "/volume2/projects/cifs"),
        SshCommand("alice", "127.0.0.4", "/volume1/photo/command"),
        SshTerminal("bob", "127.0.0.5", "/volume2/projects/terminal"),
        Sftp("bob", "127.0.0.6", "/volume1/photo/sftp"),
        FtpUpload("alice", "127.0.0.7", "/volume1/photo/ftp"),
        RsyncUpload("alice", "127.0.0.8", "/volume2/projects/rsync"),
    )
    LOCAL = "/volume2/projects/local"

    @classmethod
    def setUpClass(cls):
        with contextlib.ExitStack() as running:
            for client in cls.CLIENTS:
                running.enter_context(client)
            cls.local = running.enter_context(Holder(cls.LOCAL))
            cls.listing = open_files("--by", "volume")
            cls.addClassCleanup(running.pop_all().close)

    def test_each_has_its_process_service_host_and_user(self):
        for client in self.CLIENTS:
            with self.subTest(str(client)):
                self.assertEqual(self.listing.client(client.path, client.pid),
                                 (NAMES[client.protocol], client.host, client.user))

    def test_a_local_process_has_no_client(self):
        self.assertEqual(self.listing.client(self.LOCAL, self.local.pid), (INTERNAL, *UNKNOWN))

    def test_nobody_else_holds_their_files(self):
        expected = {(client.path, str(client.pid)) for client in self.CLIENTS}
        expected.add((self.LOCAL, str(self.local.pid)))
        listed = {(file["path"], file["pid"]) for file in self.listing.files
                  if not file["folder"]}
        self.assertEqual(listed, expected)

    def test_the_list_is_complete(self):
        self.assertTrue(self.listing.complete)


class Host(unittest.TestCase):
    def test_daemons_run_in_the_slices_of_their_drop_ins(self):
        slices = {unit: output_of(["systemctl", "show", "--value", "--property=Slice", unit]).strip()
                  for unit in SLICES}
        self.assertEqual(slices, SLICES)

    def test_only_control_groups_v2_are_there(self):
        with open("/proc/self/cgroup", encoding="ascii") as groups:
            self.assertEqual([line.partition("/")[0] for line in groups], ["0::"])


class Check(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.report = json.loads(run("check", "--json").stdout)
        cls.findings = {each["subject"]: each for each in cls.report["checks"]}

    def test_it_finds_all_that_a_storage_host_has(self):
        states = {subject: each["state"] for subject, each in self.findings.items()
                  if subject != "control groups"}
        self.assertEqual(set(states.values()), {"ok"}, self.findings)

    def test_control_groups_v2_lack_nothing(self):
        self.assertEqual((self.findings["control groups"]["state"], self.report["ready"]), ("ok", True))
        self.assertIn("v2 alone", self.findings["control groups"]["text"])

    def test_it_names_volumes_and_shares(self):
        for name in ("/volume1", "/volume2"):
            self.assertIn(name, self.findings["volumes"]["text"])
        for name in ("photo", "projects"):
            self.assertIn(name, self.findings["shares"]["text"])
