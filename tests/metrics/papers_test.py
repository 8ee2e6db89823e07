"""Rules, routes and dashboard are what the engines take, and say what they are to say."""

import json
import os
import subprocess
import unittest

from harness.processes import output_of
from harness.sample_host import PROJECT, needs

DATA = os.path.join(PROJECT, "data")
TESTS = os.path.join(PROJECT, "tests", "metrics")
RULES = [f"{DATA}/prometheus/vorn-openfiles{name}.rules.yml" for name in ("", "-migration")]
ALERTMANAGER = f"{DATA}/prometheus/alertmanager.yml"
DASHBOARD = f"{DATA}/grafana/vorn-openfiles.json"


def setUpModule():
    needs("promtool", "amtool")


class Rules(unittest.TestCase):
    def test_are_what_prometheus_takes(self):
        output_of(["promtool", "check", "rules", "--lint-fatal", *RULES])

    def test_say_what_their_own_tests_expect(self):
        output_of(["promtool", "test", "rules", f"{TESTS}/rules.test.yml"])


class Routes(unittest.TestCase):
    def receiver(self, alert):
        return output_of(["amtool", "config", "routes", "test", f"--config.file={ALERTMANAGER}", f"alertname={alert}",
                          "instance=a", "share=photo"]).splitlines()[-1]

    def test_are_what_alertmanager_takes(self):
        output_of(["amtool", "check-config", ALERTMANAGER])

    def test_bring_shares_in_use_to_those_who_migrate_them(self):
        self.assertEqual(self.receiver("VornOpenfilesShareInUse"), "migration")

    def test_bring_everything_else_to_those_who_look_after_the_storage(self):
        self.assertEqual(self.receiver("VornOpenfilesIncomplete"), "storage")


def dashboard():
    with open(DASHBOARD, encoding="utf-8") as file:
        return json.load(file)


class Dashboard(unittest.TestCase):
    """Grafana is not in Debian: the schema is written by hand after its documented model."""

    def validate(self, document):
        with open("/tmp/dashboard.json", "w", encoding="utf-8") as file:
            json.dump(document, file)
        return subprocess.run(["/usr/bin/python3", "-W", "ignore", "-m", "jsonschema", "-i", "/tmp/dashboard.json",
                               f"{TESTS}/dashboard.schema.json"], capture_output=True, check=False)

    def test_is_as_the_schema_has_it(self):
        result = self.validate(dashboard())
        self.assertEqual((result.returncode, result.stderr), (0, b""))

    def test_schema_refuses_what_is_misspelt(self):
        for change in ({"panles": []}, {"panels": [{**dashboard()["panels"][0], "type": "graf"}]},
                       {"schemaVersion": "38"}, {"templating": {"list": [{"name": "x", "type": "query"}]}}):
            self.assertEqual(self.validate({**dashboard(), **change}).returncode, 1, change)

    def test_panels_have_numbers_of_their_own_and_do_not_overlap(self):
        panels = dashboard()["panels"]
        self.assertEqual(len({panel["id"] for panel in panels}), len(panels))
        places = [(x, y) for panel in panels for position in [panel["gridPos"]]
                  for x in range(position["x"], position["x"] + position["w"])
                  for y in range(position["y"], position["y"] + position["h"])]
        self.assertEqual(len(set(places)), len(places))
        self.assertLessEqual(max(x for x, _ in places), 23)
