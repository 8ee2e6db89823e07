"""vorn-slices under a live systemd, for programs that link the library."""

import contextlib
import os
import subprocess
import unittest

from clients import SshCommand, SshTerminal, one_of_each
from harness.files import write_file
from harness.listing import complete_list
from harness.processes import Holder, output_of
from harness.waiting import wait_until
from named import (SERVICES, await_group, group_of, hierarchies, said_by_library, start_naming,
                   stop_naming)
from services import INTERNAL, NAMES, SLICES, await_servers, main_process, property_of

UNITS = "/run/systemd/system"

# Its first process ends when its child is there.
FORKING = """
[Service]
Type=forking
Slice=ftpd.slice
ExecStart=/bin/sh -c 'sleep 1000 &'
TimeoutStopSec=5
"""

# What systemd starts beside others in a group.
COMPANIONS = """
[Service]
Slice=ftpd.slice
ExecStart=/bin/sleep 1000
ExecStartPost=/bin/sh -c 'sleep 1001 &'
ExecReload=/bin/sh -c 'sleep 1002 &'
"""


def setUpModule():
    await_servers()


def members_of(group):
    """Of v2, with those of groups below."""
    pids = []
    for folder, _, _ in os.walk(f"/sys/fs/cgroup/{group}"):
        with open(folder + "/cgroup.procs", encoding="ascii") as file:
            pids += [int(line) for line in file]
    return pids


def all_main_processes(units, number):
    pids = output_of(["systemctl", "show", "--value", "--property=MainPID", units]).split()
    if len(pids) != number or "0" in pids:
        raise AssertionError(f"{number} units were to run: {pids}")
    return pids


def install_unit(test, name, text):
    write_file(f"{UNITS}/{name}", text.encode())
    output_of(["systemctl", "daemon-reload"])
    test.addClassCleanup(output_of, ["systemctl", "daemon-reload"])
    test.addClassCleanup(os.remove, f"{UNITS}/{name}")


class Naming(unittest.TestCase):
    """With vorn-slices running."""

    @classmethod
    def setUpClass(cls):
        start_naming()
        cls.addClassCleanup(stop_naming)

    def open_session(self, host):
        client = SshCommand("alice", host, f"/volume1/photo/session-{host}")
        client.__enter__()
        self.addCleanup(client.__exit__)
        return client

    def assert_named(self, *clients):
        said = said_by_library()
        for client in clients:
            self.assertEqual(said.get((client.path, client.pid)), NAMES[client.protocol], str(client))


class Sessions(unittest.TestCase):
    """Those that were there before vorn-slices, and those that came after."""

    LOCAL = "/volume2/projects/local"

    @classmethod
    def setUpClass(cls):
        cls.before, cls.after = one_of_each("before-", 20), one_of_each("after-", 40)
        with contextlib.ExitStack() as running:
            for client in cls.before:
                running.enter_context(client)
            cls.local = running.enter_context(Holder(cls.LOCAL))
            cls.said_without, cls.listed_without = said_by_library(), complete_list("--by", "volume")
            running.callback(stop_naming)
            start_naming()
            cls.said_at_once = said_by_library()
            for client in cls.after:
                running.enter_context(client)
            cls.said_with, cls.listed_with = said_by_library(), complete_list("--by", "volume")
            cls.addClassCleanup(running.pop_all().close)

    def names(self, said, clients):
        return {str(client): said.get((client.path, client.pid)) for client in clients}

    def expected(self, clients):
        return {str(client): NAMES[client.protocol] for client in clients}

    def test_are_the_internal_service_without_it(self):
        self.assertEqual(set(self.said_without.values()), {INTERNAL})

    def test_from_before_have_names_as_soon_as_it_runs(self):
        self.assertEqual(self.names(self.said_at_once, self.before), self.expected(self.before))

    def test_have_names(self):
        clients = self.before + self.after
        self.assertEqual(self.names(self.said_with, clients), self.expected(clients))
        self.assertEqual(self.said_with[self.LOCAL, self.local.pid], INTERNAL)

    def test_are_listed_by_the_command_with_it_and_without(self):
        for listing, clients in ((self.listed_without, self.before), (self.listed_with, self.before + self.after)):
            for client in clients:
                with self.subTest(str(client)):
                    self.assertEqual(listing.client(client.path, client.pid),
                                     (NAMES[client.protocol], client.host, client.user))


class Units(Naming):
    @classmethod
    def setUpClass(cls):
        install_unit(cls, "companions.service", COMPANIONS)
        super().setUpClass()

    def test_processes_beside_others_are_found(self):
        output_of(["systemctl", "start", "companions.service"])
        self.addCleanup(output_of, ["systemctl", "stop", "companions.service"])
        output_of(["systemctl", "reload", "companions.service"])
        wait_until(lambda: [group_of(pid) for pid in members_of("ftpd.slice/companions.service")]
                   == ["/ftpd.slice"] * 3, "all three to be in their slice")

    def test_what_leaves_its_slice_goes_back(self):
        process = subprocess.Popen(["systemd-run", "--quiet", "--scope", "--slice=ftpd.slice", "sleep", "1000"])
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        await_group(process.pid, "/ftpd.slice")
        output_of(["busctl", "call", "org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                   "org.freedesktop.systemd1.Manager", "StartTransientUnit", "ssa(sv)a(sa(sv))",
                   "elsewhere.scope", "fail", "1", "PIDs", "au", "1", str(process.pid), "0"])
        await_group(process.pid, "/")


class Restarts(Naming):
    """Names stay, and are right for what comes after."""

    @classmethod
    def setUpClass(cls):
        install_unit(cls, "companions.service", COMPANIONS)
        super().setUpClass()
        cls.session = SshTerminal("alice", "127.0.0.60", "/volume1/photo/session")
        cls.session.__enter__()
        cls.addClassCleanup(cls.session.__exit__)

    def test_of_services(self):
        output_of(["systemctl", "restart", *SLICES])
        await_servers()
        for unit, slice_ in SLICES.items():
            await_group(main_process(unit), "/" + slice_)
        self.assert_named(self.session, self.open_session("127.0.0.61"))

    def test_of_the_manager(self):
        for verb in ("daemon-reload", "daemon-reexec"):
            output_of(["systemctl", verb])
        self.assert_named(self.session, self.open_session("127.0.0.62"))
        output_of(["systemctl", "start", "companions.service"])
        self.addCleanup(output_of, ["systemctl", "stop", "companions.service"])
        wait_until(lambda: [group_of(pid) for pid in members_of("ftpd.slice/companions.service")]
                   == ["/ftpd.slice"] * 2, "both to be in their slice")

    def test_of_the_login_manager(self):
        output_of(["systemctl", "restart", "systemd-logind"])
        self.assert_named(self.session, self.open_session("127.0.0.63"))

    def test_of_its_own(self):
        before = main_process("vorn-slices")
        restart = subprocess.Popen(["systemctl", "restart", "vorn-slices"])
        groups = {group_of(self.session.pid)}
        while restart.poll() is None:
            groups.add(group_of(self.session.pid))
        self.assertEqual((restart.returncode, groups), (0, {"/sshd.slice"}))
        self.assertNotEqual(main_process("vorn-slices"), before)
        self.assert_named(self.session)

    def test_of_its_own_after_it_was_killed(self):
        killed = main_process("vorn-slices")
        output_of(["kill", "-KILL", str(killed)])
        wait_until(lambda: main_process("vorn-slices") not in (0, killed), "it to be started again")
        self.assert_named(self.session, self.open_session("127.0.0.64"))


class Stop(unittest.TestCase):
    def test_leaves_nothing(self):
        start_naming()
        self.assertEqual(set(hierarchies()), {"", "name=systemd"})
        self.assertIn("sshd.slice", os.listdir(SERVICES))
        stop_naming()
        self.assertEqual(os.listdir(SERVICES), [])
        for unit in ("vorn-slices.service", "vorn-slices-undo.service", "run-vorn-services.mount"):
            self.assertEqual((unit, property_of(unit, "ActiveState"), property_of(unit, "Result")),
                             (unit, "inactive", "success"))

    def test_leaves_the_daemons_alone(self):
        before = {unit: main_process(unit) for unit in SLICES}
        start_naming()
        stop_naming()
        self.assertEqual({unit: main_process(unit) for unit in SLICES}, before)


class UnitsInNumbers(Naming):
    """The last, as these end with the machine: to stop them all takes a while."""

    @classmethod
    def setUpClass(cls):
        install_unit(cls, "fork@.service", FORKING)
        super().setUpClass()

    def test_leave_none_outside_when_200_fork(self):
        units = [f"fork@{number}.service" for number in range(200)]
        subprocess.run(["systemctl", "start", *units], check=True, timeout=400)
        pids = all_main_processes("fork@*.service", len(units))
        wait_until(lambda: {group_of(pid) for pid in pids} == {"/ftpd.slice"}, "all to be in their slice")
