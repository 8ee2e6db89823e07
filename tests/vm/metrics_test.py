"""The metrics timer with node_exporter."""

import unittest
import urllib.request

from harness.processes import Holder, output_of
from harness.waiting import wait_until
from services import property_of

TIMER, SERVICE = "vorn-openfiles-metrics.timer", "vorn-openfiles-metrics.service"


def exported():
    with urllib.request.urlopen("http://127.0.0.1:9100/metrics", timeout=60) as answer:
        return [line for line in answer.read().decode().splitlines() if line.startswith("vorn_")]


def counting(service):
    """All lines, when one of them is of a service."""
    lines = exported()
    return lines if any(service in line for line in lines) else None


class Timer(unittest.TestCase):
    """Once a minute, so it waits for one."""

    @classmethod
    def setUpClass(cls):
        output_of(["systemctl", "start", TIMER])
        cls.addClassCleanup(output_of, ["systemctl", "stop", TIMER])
        output_of(["systemctl", "start", "prometheus-node-exporter"])
        cls.holder = Holder("/volume1/photo/counted")
        cls.addClassCleanup(cls.holder.stop)
        wait_until(lambda: property_of(TIMER, "LastTriggerUSec"), "the timer", patience=150)
        wait_until(lambda: property_of(SERVICE, "ActiveState") == "inactive", "the service to end", patience=150)
        cls.lines = wait_until(lambda: counting("Internal service"), "the file to be counted", patience=150)

    def test_has_run_the_service_well(self):
        self.assertEqual(property_of(SERVICE, "Result"), "success")

    def test_count_is_complete(self):
        self.assertIn("vorn_openfiles_complete 1", self.lines)

    def test_exporter_finds_no_fault(self):
        with urllib.request.urlopen("http://127.0.0.1:9100/metrics", timeout=60) as answer:
            faults = [line for line in answer.read().decode().splitlines()
                      if line.startswith("node_textfile_scrape_error ")]
        self.assertEqual(faults, ["node_textfile_scrape_error 0"])
