"""Real metrics of the real command in a real Prometheus: what rules and dashboard ask has an answer,
and an alert reaches those whom it concerns."""

import os
import re
import unittest

from harness.command import run
from harness.files import touch
from harness.monitoring import TEXTFILES, Alertmanager, NodeExporter, Prometheus
from harness.processes import Holder
from harness.sample_host import needs
from harness.waiting import wait_until
from papers_test import ALERTMANAGER, RULES, dashboard

OUTPUT = TEXTFILES + "/vorn_openfiles.prom"
PRIVATE_VOLUMES = "/etc/vorn/private-volumes"
IN_USE = "VornOpenfilesShareInUse"
#: One share each, more than there are series.
SHARES = 1100


def setUpModule():
    needs("prometheus", "prometheus-node-exporter", "prometheus-alertmanager")


def count(*arguments):
    """As the timer's service does."""
    result = run("metrics", *arguments, "--output", OUTPUT)
    assert (result.returncode, result.stderr) == (0, b""), result


class Engines(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        deleted = touch(b"/volume1/photo/deleted", b"content" * 1000)
        cls.addClassCleanup(Holder([touch(b"/volume1/photo/a"), touch(b"/volume2/music/b"), deleted]).stop)
        os.unlink(deleted)
        os.makedirs(TEXTFILES)
        count()
        exporter, cls.alertmanager = NodeExporter(), Alertmanager(ALERTMANAGER)
        cls.prometheus = Prometheus(exporter, RULES, cls.alertmanager)
        for server in (exporter, cls.alertmanager, cls.prometheus):
            cls.addClassCleanup(server.stop)
        wait_until(lambda: cls.prometheus.query("share:vorn_openfiles_to_migrate:sum"), "the records")

    def setUp(self):
        """Whatever another test has left, Prometheus knows a whole answer."""
        count()
        wait_until(lambda: self.prometheus.query('vorn_openfiles_files{share="photo"} and on () vorn_openfiles_complete == 1'),
                   "a whole answer")

    def await_alert(self, name, **labels):
        """Waits until the rule has something to say; what it says then."""
        def said():
            return [alert for alert in self.prometheus.ask("alerts")["alerts"]
                    if labels.items() | {("alertname", name)} <= alert["labels"].items()]
        return wait_until(said, name)[0]

    def test_every_query_of_the_dashboard_has_an_answer(self):
        count("--sum", "size")
        for panel in dashboard()["panels"]:
            for target in panel["targets"]:
                expression = re.sub(r"\$(instance|share)\b", ".*", target["expr"])
                self.assertNotIn("$", expression)
                self.assertNotEqual(self.prometheus.query(expression), [], panel["title"])

    def test_every_variable_of_the_dashboard_has_values(self):
        for variable in dashboard()["templating"]["list"][1:]:
            metric, label = re.fullmatch(r"label_values\((\w+), (\w+)\)", variable["query"]["query"]).groups()
            self.assertEqual(label, variable["name"])
            self.assertNotEqual(self.prometheus.query(f'{metric}{{{label}!=""}}'), [])

    def test_every_rule_is_in_health_and_every_record_has_an_answer(self):
        rules = [rule for group in self.prometheus.ask("rules")["groups"] for rule in group["rules"]]
        self.assertEqual(len(rules), 9)
        for rule in rules:
            self.assertEqual(rule["health"], "ok", rule)
            if rule["type"] == "recording":
                self.assertNotEqual(self.prometheus.query(rule["name"]), [], rule["name"])

    def test_a_share_in_use_is_told_to_those_who_migrate_it(self):
        self.assertEqual(self.await_alert(IN_USE)["labels"]["share"], "photo")
        told = wait_until(self.alertmanager.alerts, "the alert in Alertmanager")
        self.assertEqual([(alert["labels"]["share"], [each["name"] for each in alert["receivers"]])
                          for alert in told if alert["labels"]["alertname"] == IN_USE], [("photo", ["migration"])])

    def test_a_share_in_use_is_told_without_users_as_well(self):
        with Holder([touch(b"/volume1/projects/plan.ods")]):
            count("--no-user")
            self.await_alert(IN_USE, share="projects")
            self.assertEqual(self.prometheus.query('vorn_openfiles_files{share="projects",user!=""}'), [])

    def test_an_incomplete_answer_is_told(self):
        os.rename(PRIVATE_VOLUMES, PRIVATE_VOLUMES + ".away")
        self.addCleanup(os.rename, PRIVATE_VOLUMES + ".away", PRIVATE_VOLUMES)
        self.assertEqual(run("metrics", "--output", OUTPUT).returncode, 0)
        self.await_alert("VornOpenfilesIncomplete")

    def test_an_old_file_is_told(self):
        os.utime(OUTPUT, (0, 0))
        self.await_alert("VornOpenfilesStale", file=OUTPUT)

    def test_a_file_that_is_gone_is_told(self):
        os.unlink(OUTPUT)
        self.await_alert("VornOpenfilesMissing")

    def test_shares_that_are_added_up_are_told(self):
        files = [touch(b"/volume1/share%d/a" % number) for number in range(SHARES)]
        with Holder(files[:SHARES // 2]), Holder(files[SHARES // 2:]):
            count()
            self.await_alert("VornOpenfilesSharesAddedUp")
