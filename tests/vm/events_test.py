"""The record of opens and closes: its unit, its journal, its clients."""

import contextlib
import json
import subprocess
import unittest

from clients import one_of_each
from harness.processes import output_of
from harness.waiting import wait_until
from services import NAMES, await_servers, property_of

SERVICE = "vorn-openfiles-events.service"
JOURNAL = ["journalctl", "--namespace=vorn-openfiles", "--output=json", "--all", "--quiet"]


def entries(*matches):
    done = subprocess.run([*JOURNAL, *matches], stdout=subprocess.PIPE, check=True, timeout=120)
    return [json.loads(line) for line in done.stdout.splitlines()]


def opened(client):
    """Who the record says has opened a client's file."""
    return {(entry.get("VORN_SERVICE"), entry.get("VORN_HOST"), entry.get("VORN_USER"))
            for entry in entries("VORN_EVENT=opened", f"VORN_PID={client.pid}", f"VORN_PATH={client.path}")}


class Record(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        await_servers()
        output_of(["systemctl", "start", SERVICE])
        cls.addClassCleanup(output_of, ["systemctl", "stop", SERVICE])
        wait_until(lambda: entries("VORN_EVENT=started"), "the record to begin", patience=150)

    def test_1_both_volumes_are_watched_by_the_kernel(self):
        [*_, started] = entries("VORN_EVENT=started")
        self.assertEqual((sorted(started["VORN_VOLUMES"]), "VORN_LOOKED_AT" in started, "VORN_UNWATCHED" in started),
                         (["/volume1", "/volume2"], False, False))

    def test_2_clients_of_each_kind_are_named(self):
        with contextlib.ExitStack() as running:
            for client in one_of_each("recorded-", 100):
                running.enter_context(client)
                with self.subTest(str(client)):
                    wait_until(lambda client=client: opened(client), "the open to be recorded", patience=150)
                    self.assertIn((NAMES[client.protocol], client.host, client.user), opened(client))

    def test_3_stopping_is_recorded_and_no_number_is_missing(self):
        output_of(["systemctl", "stop", SERVICE])
        self.assertEqual(property_of(SERVICE, "Result"), "success")
        recorded = entries("SYSLOG_IDENTIFIER=vorn-openfiles")
        run = [entry for entry in recorded if entry["VORN_RUN"] == recorded[-1]["VORN_RUN"]]
        self.assertEqual([int(entry["VORN_SEQ"]) for entry in run], list(range(1, len(run) + 1)))
        self.assertEqual((run[0]["VORN_EVENT"], run[-1]["VORN_EVENT"]), ("started", "stopped"))

    def test_4_its_journal_has_its_size(self):
        output = output_of(["systemd-analyze", "cat-config", "systemd/journald@vorn-openfiles.conf"])
        self.assertIn("SystemMaxUse=1G", output)
