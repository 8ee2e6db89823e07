"""Over random combinations of reasons, the command says free exactly when the kernel lets the volume go."""

import contextlib
import json
import os
import random
import unittest

from harness.command import run
from harness.processes import output_of
from harness.reasons import Reasons, unmount
from harness.sample_host import needs
from harness.volumes import btrfs, ext4, overlay
from harness.waiting import wait_until

ROUNDS = int(os.environ.get("VORN_BUSY_ROUNDS", "12"))


class KeptVolume:
    """A volume whose file system stays when it is unmounted, as another mount of it does."""

    def __init__(self, point):
        self.point = point
        self.keep = "/mnt/keep" + point
        os.makedirs(self.keep)
        output_of(["mount", "--bind", point, self.keep])
        self.reasons = Reasons(point, swap=point == "/volume3")

    def can_be_unmounted(self):
        """Asked of the kernel; afterwards it is mounted again."""
        if not unmount(self.point):
            return False
        output_of(["mount", "--bind", self.keep, self.point])
        return True


def look(point):
    """What the kernel tells in one pass is what its folders tell."""
    result, walked = (run("busy", "--inside", "--json", "--source", source, point) for source in ("iterator", "walk"))
    document = json.loads(result.stdout)
    assert document == json.loads(walked.stdout), (result, walked)
    found = {(row["reason"], file["path"]) for row in document["holders"] for file in row["files"]}
    return result.returncode, found


def setUpModule():
    needs("btrfs", "mkfs.btrfs", "mkfs.ext4", "losetup", "mkswap")


class Busy(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        ext4(), btrfs(), overlay()
        cls.volumes = [KeptVolume(point) for point in ("/volume1", "/volume3", "/volume4", "/volume5")]
        for volume in cls.volumes:
            output_of(["mount", "--make-private", volume.point])

    def setUp(self):
        self.seed = os.environ.get("VORN_BUSY_SEED", str(random.randrange(1 << 32)))
        self.random = random.Random(self.seed)

    def test_says_free_exactly_when_it_can_be_unmounted(self):
        for number in range(ROUNDS):
            volume = self.volumes[number % len(self.volumes)]
            names = self.random.sample(sorted(volume.reasons.kinds), self.random.randrange(1, 6))
            with self.subTest(seed=self.seed, volume=volume.point, reasons=names):
                self.try_out(volume, names)

    def try_out(self, volume, names):
        active = {}
        try:
            for name in names:
                block = volume.reasons.kinds[name]()
                active[name] = (block, block.__enter__())
                self.compare(volume, active)
            for name in self.random.sample(names, len(names)):
                active.pop(name)[0].__exit__(None, None, None)
                self.compare(volume, active)
        finally:
            for block, _ in active.values():
                with contextlib.suppress(Exception):
                    block.__exit__(None, None, None)

    def compare(self, volume, active):
        expected = set().union(*(rows for _, rows in active.values()))
        self.assertEqual(look(volume.point), (0 if active else 1, expected), sorted(active))
        if set(active) - volume.reasons.ELSEWHERE:
            self.assertFalse(volume.can_be_unmounted(), sorted(active))
        else:
            # Of processes that have just ended the kernel lets go a little later.
            wait_until(volume.can_be_unmounted, f"{volume.point} to be let go by {sorted(active)}")


if __name__ == "__main__":
    unittest.main()
