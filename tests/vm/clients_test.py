"""What the installed command says of real clients on a host as Debian has it."""

import contextlib
import json
import unittest

from clients import one_of_each
from harness.command import run
from harness.listing import UNKNOWN, complete_list
from harness.processes import Holder, output_of
from services import INTERNAL, NAMES, SLICES, await_servers

setUpModule = await_servers


class Clients(unittest.TestCase):
    """All at once, in one list."""

    CLIENTS = one_of_each("", 2)
    LOCAL = "/volume2/projects/local"

    @classmethod
    def setUpClass(cls):
        with contextlib.ExitStack() as running:
            for client in cls.CLIENTS:
                running.enter_context(client)
            cls.local = running.enter_context(Holder(cls.LOCAL))
            cls.listing = complete_list("--by", "volume")
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
