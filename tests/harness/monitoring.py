"""Prometheus, node_exporter and Alertmanager, as Debian has them."""

import json
import os
import socket
import subprocess
import urllib.error
import urllib.parse
import urllib.request

from harness.files import write_file
from harness.processes import stop
from harness.waiting import wait_until

TEXTFILES = "/tmp/textfiles"


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Monitor:
    """A server with a port of its own, which answers where it is ready."""

    READY = "/-/ready"

    def __init__(self, *argv):
        self.port = free_port()
        self.address = f"127.0.0.1:{self.port}"
        self.log = f"/tmp/{argv[0]}.log"
        with open(self.log, "wb") as log:
            self.process = subprocess.Popen([*argv, f"--web.listen-address={self.address}"], stdout=log, stderr=log)
        wait_until(self._is_ready, argv[0])

    def _is_ready(self):
        if self.process.poll() is not None:
            with open(self.log, encoding="utf-8") as log:
                raise AssertionError(f"{self.process.args[0]} has ended: {log.read()}")
        try:
            with urllib.request.urlopen(f"http://{self.address}{self.READY}") as answer:
                return answer.status == 200
        except OSError:
            return False

    def stop(self):
        stop(self.process)


class NodeExporter(Monitor):
    """Gives what lies in TEXTFILES."""

    READY = "/metrics"

    def __init__(self):
        os.makedirs(TEXTFILES, exist_ok=True)
        super().__init__("prometheus-node-exporter", "--collector.disable-defaults", "--collector.textfile",
                         f"--collector.textfile.directory={TEXTFILES}")


class Alertmanager(Monitor):
    def __init__(self, config):
        super().__init__("prometheus-alertmanager", f"--config.file={config}", "--storage.path=/tmp/alerts",
                         "--cluster.listen-address=")

    def alerts(self):
        with urllib.request.urlopen(f"http://{self.address}/api/v2/alerts") as answer:
            return json.load(answer)


class Prometheus(Monitor):
    """Looks at a node_exporter each second."""

    def __init__(self, exporter, rules=(), alertmanager=None):
        config = {"global": {"scrape_interval": "1s", "evaluation_interval": "1s"}, "rule_files": list(rules),
                  "scrape_configs": [{"job_name": "node", "static_configs": [{"targets": [exporter.address]}]}]}
        if alertmanager:
            config["alerting"] = {"alertmanagers": [{"static_configs": [{"targets": [alertmanager.address]}]}]}
        write_file("/tmp/prometheus.yml", json.dumps(config))
        super().__init__("prometheus", "--config.file=/tmp/prometheus.yml", "--storage.tsdb.path=/tmp/tsdb")

    def ask(self, what, **parameters):
        """What its interface says; wrong questions fail."""
        url = f"http://{self.address}/api/v1/{what}?{urllib.parse.urlencode(parameters)}"
        try:
            with urllib.request.urlopen(url) as answer:
                return json.load(answer)["data"]
        except urllib.error.HTTPError as error:
            raise AssertionError(f"{url}: {error.read().decode()}") from error

    def query(self, expression):
        """The series that an expression gives at this moment."""
        return self.ask("query", query=expression)["result"]
