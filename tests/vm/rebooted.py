"""After a reboot with vorn-slices and the metrics timer enabled; the last to run, as it takes both out again."""

import os
import unittest

from clients import one_of_each
from harness.processes import output_of
from named import SERVICES, await_group, hierarchies, said_by_library
from harness.waiting import wait_until
from services import NAMES, SLICES, await_servers, main_process, property_of

UNITS = "/usr/lib/systemd/system"
OWN = ("run-vorn-services.mount", "vorn-slices-undo.service", "vorn-slices.service")


class Rebooted(unittest.TestCase):
    def test_1_servers_have_groups(self):
        await_servers()
        for unit, slice_ in SLICES.items():
            await_group(main_process(unit), "/" + slice_)

    def test_2_clients_have_names(self):
        for client in one_of_each("rebooted-", 80):
            with client:
                self.assertEqual(said_by_library().get((client.path, client.pid)), NAMES[client.protocol],
                                 str(client))

    def test_3_units_are_well(self):
        self.assertEqual({unit: property_of(unit, "ActiveState") for unit in OWN}, dict.fromkeys(OWN, "active"))
        self.assertEqual(property_of("vorn-openfiles-metrics.timer", "ActiveState"), "active")

    def test_4_removal_leaves_nothing(self):
        before = {unit: main_process(unit) for unit in SLICES}
        output_of(["systemctl", "disable", "--now", "vorn-slices.service"])
        output_of(["systemctl", "stop", *OWN])
        for unit in OWN:
            os.remove(f"{UNITS}/{unit}")
        output_of(["systemctl", "daemon-reload"])
        self.assertFalse(os.path.ismount(SERVICES))
        wait_until(lambda: hierarchies() == [""], "the hierarchy to end")
        self.assertEqual({unit: main_process(unit) for unit in SLICES}, before)
