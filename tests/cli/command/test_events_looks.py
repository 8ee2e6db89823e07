"""What looks at the list of open files add to the events of the kernel."""

import json
import os
import unittest

import jsonschema

from harness.files import touch
from harness.fuse_volume import FILE, FuseVolume
from harness.processes import Holder, output_of
from harness.recording import Recording
from harness.sample_host import needs
from harness.volumes import btrfs
from harness.waiting import wait_until

SCHEMA = os.path.join(os.environ["VORN_SOURCE"], "data/schema/vorn-openfiles-events-2.schema.json")
OFTEN = ("--interval", "0.1")


def setUpModule():
    needs("mkfs.btrfs", "btrfs")
    btrfs("/volume6")


def start_of(pid):
    with open(f"/proc/{pid}/stat", encoding="ascii") as file:
        return int(file.read().rpartition(")")[2].split()[19])


class LookTest(unittest.TestCase):
    def setUp(self):
        with open(SCHEMA, encoding="utf-8") as file:
            self.schema = jsonschema.Draft202012Validator(json.load(file))

    def check(self, lines):
        for line in lines:
            self.schema.validate(line)
        self.assertEqual([line["seq"] for line in lines], list(range(1, len(lines) + 1)))


class FirstLook(LookTest):
    def test_tells_what_was_open_before(self):
        path = touch("/volume1/photo/before")
        holder = Holder([path])
        with Recording() as recording:
            [told] = recording.wait_for(path, "opened")
            holder.stop()
            recording.wait_for(path, "closed")
            lines = recording.stop()[0]
        self.check(lines)
        self.assertEqual((told["initial"], told["process_start"] > 0, told["file"]["pid"], told["volume"]),
                         (True, True, holder.pid, "/volume1"))
        self.assertEqual([(line["event"], line["initial"]) for line in lines
                          if line.get("file", {}).get("full_path") == path], [("opened", True), ("closed", False)])

    def test_tells_a_deleted_file_by_the_name_that_it_had(self):
        path = touch("/volume1/photo/gone")
        with Holder([path]) as holder:
            os.unlink(path)
            with Recording() as recording:
                [told] = recording.wait_for(path, "opened")
                expected = (True, start_of(holder.pid), True, "gone")
        self.assertEqual((told["initial"], told["process_start"], told["file"]["deleted"], told["file"]["filename"]),
                         expected)

    def test_leaves_out_folders_and_what_nobody_asked_about(self):
        wanted, other = touch("/volume1/wanted/a"), touch("/volume1/other")
        folder = os.open("/volume1/wanted", os.O_RDONLY)
        with Holder([wanted, other]), Recording("/volume1/wanted") as recording:
            recording.wait_for(wanted, "opened")
            lines = recording.stop()[0]
        os.close(folder)
        self.assertEqual({line["file"]["full_path"] for line in lines if "file" in line}, {wanted})

    def test_tells_many(self):
        os.makedirs("/volume1/many")
        for number in range(900):
            touch(f"/volume1/many/{number}")
        with Holder(folder="/volume1/many"), Recording("/volume1/many") as recording:
            wait_until(lambda: len([line for line in recording.lines() if line["event"] == "opened"]) == 900, "all")
            self.check(recording.stop()[0])


class Volumes(LookTest):
    """Volumes that the kernel doesn't tell of."""

    def test_are_followed_by_looks(self):
        early, late = touch("/volume6/early"), "/volume6/late"
        first = Holder([early])
        with Recording(*OFTEN) as recording:
            [initial] = recording.wait_for(early, "opened")
            with Holder([late]) as second:
                [opened] = recording.wait_for(late, "opened")
            recording.wait_for(late, "closed")
            first.stop()
            recording.wait_for(early, "closed")
            lines, said = recording.stop()
        self.check(lines)
        self.assertEqual((lines[0]["looked_at"], lines[0]["unwatched"]), (["/volume6"], []))
        self.assertIn("can't watch /volume6, looks at it every 0.1 s: it is a subvolume of btrfs", said)
        self.assertEqual([(line["initial"], line["volume"], line["file"]["pid"]) for line in (initial, opened)],
                         [(True, "/volume6", first.pid), (False, "/volume6", second.pid)])
        for path in (early, late):
            told = [line for line in lines if line.get("file", {}).get("full_path") == path]
            self.assertEqual([line["event"] for line in told], ["opened", "closed"])
            self.assertEqual(len({(line["file"]["pid"], line["process_start"]) for line in told}), 1)

    def test_may_be_all_that_is_asked_about(self):
        with Recording(*OFTEN, "/volume6") as recording, Holder(["/volume6/alone"]):
            recording.wait_for("/volume6/alone", "opened")
            self.assertEqual(recording.lines()[0]["volumes"], [])

    def test_have_files_that_stay_open_when_they_are_deleted(self):
        path = touch("/volume6/deleted")
        with Recording(*OFTEN, "/volume6") as recording:
            with Holder([path]):
                recording.wait_for(path, "opened")
                os.unlink(path)
                with Holder(["/volume6/a look later"]):
                    recording.wait_for("/volume6/a look later", "opened")
                self.assertEqual([line["event"] for line in recording.of(path)], ["opened"])
            recording.wait_for(path, "closed")

    def test_of_which_a_look_may_lack_something_say_so_once(self):
        os.makedirs("/volume1/inner", exist_ok=True)
        os.makedirs("/mnt/outside", exist_ok=True)
        holder = Holder(["/volume6/held"])
        with Recording(*OFTEN) as recording:
            recording.wait_for("/volume6/held", "opened")
            output_of(["mount", "--bind", "/volume1/inner", "/mnt/outside"])
            wait_until(lambda: any(line["event"] == "incomplete" for line in recording.lines()), "the lack")
            with Holder(["/volume6/during"]):
                recording.wait_for("/volume6/during", "opened")
            # The process itself tells that it holds the file no longer.
            recording.wait_for("/volume6/during", "closed")
            self.assertEqual([line["event"] for line in recording.of("/volume6/held")], ["opened"])
            output_of(["umount", "/mnt/outside"])
            holder.stop()
            recording.wait_for("/volume6/held", "closed")
            lines = recording.stop()[0]
        self.check(lines)
        self.assertEqual(len([line for line in lines if line["event"] == "incomplete"]), 1)


class DeadVolume(LookTest):
    def test_of_which_nothing_is_answered_keeps_no_event_of_others(self):
        volume = FuseVolume()
        self.addCleanup(volume.close)
        self.addCleanup(volume.revive)
        path = FILE.decode()
        with Recording(*OFTEN) as recording:
            self.assertIn("/volume9", recording.lines()[0]["looked_at"])
            with Holder([path]):
                recording.wait_for(path, "opened")
                volume.die()
                touch("/volume1/alive")
                recording.wait_for("/volume1/alive", "closed-written")
                with Holder(["/volume6/meanwhile"]):
                    recording.wait_for("/volume6/meanwhile", "opened")
                volume.revive()
            recording.wait_for(path, "closed")
