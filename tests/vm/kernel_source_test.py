"""Debian's own kernel lists the same open files as the walk of /proc, on file systems as they are."""

import json
import os
import unittest

from harness.command import run
from harness.files import touch
from harness.listing import open_files
from harness.processes import Holder, become, output_of

FOLDERS = ("/volume1/photo/iterated", "/volume2/projects/iterated")  # ext4 and btrfs
SUBVOLUME = "/volume2/projects/iterated/subvolume"
LONG = "/".join(["f" * 200] * 18)


def files_below(folder):
    yield from (touch(f"{folder}/plain-{number}") for number in range(400))
    yield touch(f"{folder}/a\nb\\012 (deleted)")
    yield touch(f"{folder}/{LONG}/file")
    yield folder


class KernelSource(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        os.makedirs(os.path.dirname(SUBVOLUME))
        output_of(["btrfs", "subvolume", "create", SUBVOLUME])
        cls.addClassCleanup(output_of, ["btrfs", "subvolume", "delete", SUBVOLUME])
        holders = []
        for folder in (*FOLDERS, SUBVOLUME):
            held = list(files_below(folder))
            gone = touch(f"{folder}/gone")
            holders += [Holder([*held, gone]) for _ in range(8)]
            os.unlink(gone)
        for holder in holders:
            cls.addClassCleanup(holder.stop)
        cls.pids = {str(holder.pid) for holder in holders}

    def listed(self, source, *arguments):
        listing = open_files("--by", "volume", "--source", source, *arguments)
        self.assertEqual((listing.status, listing.errors), (0, ""))
        return [file for file in listing.files if file["pid"] in self.pids]

    def test_both_sources_give_the_same_records_in_the_same_order(self):
        walk = self.listed("walk")
        self.assertEqual(len(walk), 3 * 8 * 404)
        self.assertEqual(self.listed("iterator"), walk)
        self.assertEqual(self.listed("auto"), walk)
        self.assertEqual({file["full_path"] for file in walk if file["deleted"]},
                         {f"{folder}/gone (deleted)" for folder in (*FOLDERS, SUBVOLUME)})
        self.assertEqual({file["full_path"] for file in walk if file["folder"]}, {*FOLDERS, SUBVOLUME})

    def test_the_check_names_the_iterator(self):
        checks = json.loads(run("check", "--json").stdout)["checks"]
        source = next(each for each in checks if each["subject"] == "source")
        self.assertEqual((source["state"], source["text"]), ("ok", "the kernel's iterator"))

    def test_a_user_has_the_walk_and_hears_why(self):
        refused = run("--source", "iterator", preexec_fn=lambda: become("alice"))
        self.assertEqual((refused.returncode, refused.stdout), (2, b""))
        self.assertIn(b"can't take the kernel's iterator: it takes CAP_BPF and CAP_PERFMON", refused.stderr)
        self.assertIn(run("--source", "auto", preexec_fn=lambda: become("alice")).returncode, (0, 1))


if __name__ == "__main__":
    unittest.main()
