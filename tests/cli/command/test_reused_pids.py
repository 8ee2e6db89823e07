"""A process id that was given again while the list was made is another process's."""

import csv
import json
import os
import subprocess
import sys
import unittest

from harness.command import COMMAND
from harness.files import touch
from harness.fuse_volume import FILE, FuseVolume
from harness.processes import Holder, plain_environment, start_as, stop
from harness.waiting import wait_until

PATIENCE = 20
FACTS = ("command", "owner", "login", "unit", "started", "fd", "mode", "size", "space", "modified", "inode", "device",
         "locks")
# Records are made, then volumes are asked for folders, then the kernel for facts.
ASKS = ("--by", "volume", "--source", "walk", "--folders", "no")
OTHER = """
import ctypes, time
held = open("/volume1/photo/other")
ctypes.CDLL(None).prctl(15, b"other", 0, 0, 0)  # PR_SET_NAME
time.sleep(1000)
"""


def setUpModule():
    if not os.path.exists("/dev/fuse"):
        print("skipped: the kernel has no FUSE (/dev/fuse)")
        sys.exit(77)


class ReusedPid(unittest.TestCase):
    def setUp(self):
        self.volume = FuseVolume()
        self.enterContext(Holder([FILE]))
        self.addCleanup(self.volume.close)
        touch(b"/volume1/photo/other")

    def listed_meanwhile(self, *arguments):
        """What is printed where the holder of a file has ended during the look and another process has its id."""
        holder = Holder([touch(b"/volume1/photo/a")])
        self.volume.die()
        asking = subprocess.Popen([COMMAND, *ASKS, *arguments], stdout=subprocess.PIPE, env=plain_environment())
        wait_until(self.volume.keeps_somebody_waiting, "the look to be kept waiting", PATIENCE)
        stop(holder.process)
        other = start_as(holder.pid, [sys.executable, "-c", OTHER])
        self.addCleanup(stop, other)
        self.volume.revive()
        printed = asking.communicate(timeout=PATIENCE)[0].decode()
        return holder.pid, asking.returncode, printed

    def test_has_no_facts(self):
        pid, status, printed = self.listed_meanwhile("--format", "csv", "--columns", ",".join(["pid", "filename", *FACTS]))
        rows = {row["filename"]: row for row in csv.DictReader(printed.splitlines())}
        self.assertEqual((status, set(rows)), (0, {"a", "file"}))
        self.assertEqual((rows["a"]["pid"], {rows["a"][column] for column in FACTS}), (str(pid), {"-"}))
        self.assertNotIn("-", [rows["file"][column] for column in ("command", "owner", "started", "fd", "mode", "inode")])

    def test_has_null_in_the_second_schema(self):
        pid, status, printed = self.listed_meanwhile("--json", "--schema", "2")
        records = {file["filename"]: file for file in json.loads(printed)["files"]}
        self.assertEqual((status, set(records)), (0, {"a", "file"}))
        self.assertEqual((records["a"]["pid"], [records["a"][column] for column in FACTS]), (pid, [None] * len(FACTS)))
        self.assertIsNotNone(records["file"]["started"])

    def test_is_selected_by_nothing_of_the_other_process(self):
        _, status, printed = self.listed_meanwhile("--format", "csv", "--columns", "filename", "--where", "command=other")
        self.assertEqual((status, printed), (1, "filename\r\n"))


if __name__ == "__main__":
    unittest.main()
