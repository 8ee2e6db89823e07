"""The unit that records events: its rights, and the settings of its journal."""

import json
import os
import subprocess
import unittest

from harness.command import COMMAND
from harness.files import touch
from harness.journal import NAMESPACE, Journal, output_bytes, parse_export
from harness.processes import Holder, plain_environment
from harness.waiting import PATIENCE, wait_until

DATA = os.path.join(os.environ["VORN_SOURCE"], "data")


def capabilities():
    """Those of the unit, as setpriv names them."""
    with open(f"{DATA}/systemd/vorn-openfiles-events.service", encoding="utf-8") as file:
        [names] = [line.partition("=")[2] for line in file if line.startswith("CapabilityBoundingSet=")]
    return [name.removeprefix("CAP_").lower() for name in names.split()]


class Rights(unittest.TestCase):
    def told_with(self, names):
        """The exit status, what is said, and the events, while another user's process has a file open."""
        bounding = ",".join(["-all", *(f"+{name}" for name in names)])
        prefix = ["setpriv", f"--bounding-set={bounding}", "--inh-caps=-all"]
        with Holder([touch("/volume1/photo/held")], user="nobody"):
            done = run_for_a_look([*prefix, COMMAND, "events"])
        return done

    def test_of_the_unit_suffice(self):
        self.assertEqual(self.told_with(capabilities()), (0, "", ["started", "opened", "stopped"]))

    def test_of_the_unit_are_all_needed(self):
        lacking = {name: self.told_with([other for other in capabilities() if other != name])
                   for name in capabilities()}
        self.assertEqual({name: status for name, (status, _, _) in lacking.items()},
                         {"sys_admin": 2, "dac_read_search": 2, "sys_ptrace": 0})
        self.assertIn("incomplete", lacking["sys_ptrace"][2])


def run_for_a_look(argv):
    """Ends it once it has taken its first look, where it doesn't end by itself."""
    with open("/tmp/told", "wb") as out:
        process = subprocess.Popen(argv, stdout=out, stderr=subprocess.PIPE, env=plain_environment())

    def events():
        with open("/tmp/told", "rb") as file:
            return [json.loads(line)["event"] for line in file if line.endswith(b"\n")]
    wait_until(lambda: process.poll() is not None or len(events()) > 1, "a look")
    if process.poll() is None:
        process.terminate()
    said = process.communicate(timeout=PATIENCE)[1].decode()
    return process.returncode, said, events()


class Settings(unittest.TestCase):
    def test_of_its_journal_are_read_by_journald(self):
        folder = f"/usr/lib/systemd/journald@{NAMESPACE}.conf.d"
        os.makedirs(folder)
        with open(f"{DATA}/journald/50-vorn-openfiles.conf", encoding="utf-8") as file:
            settings = file.read()
        self.assertIn("SystemMaxUse=1G\n", settings)
        with open(f"{folder}/50-vorn-openfiles.conf", "w", encoding="utf-8") as file:
            file.write(settings.replace("=1G\n", "=24M\n"))  # which any disk has room for
        journal = Journal(settings="")
        self.addCleanup(journal.close)
        said = ["journalctl", "--directory", journal.folder, "--output", "export", "--quiet",
                "MESSAGE_ID=ec387f577b844b8fa948f33cad9a75e6"]
        [entry, *_] = wait_until(lambda: parse_export(output_bytes(said)), "what journald says of its size")
        self.assertEqual(entry["MAX_USE"], [b"%d" % (24 << 20)])
