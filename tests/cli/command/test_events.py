"""Opens and closes as they happen, on real file systems."""

import json
import os
import shutil
import signal
import subprocess
import sys
import unittest

import jsonschema

from harness.command import COMMAND, run
from harness.files import touch
from harness.processes import Announced, Holder, output_of, plain_environment, start_as, stop
from harness.recording import Recording
from harness.sample_host import needs
from harness.volumes import Volume
from harness.waiting import wait_until

SCHEMA = os.path.join(os.environ["VORN_SOURCE"], "data/schema/vorn-openfiles-events-2.schema.json")
QUEUE = "/proc/sys/fs/fanotify/max_queued_events"
RAW = b"\xff\n name"

# Opens each of some files once, when it is told to.
OPENER = """
import os, sys
os.write(1, b"ready\\n")
sys.stdin.readline()
for number in range(int(sys.argv[2])):
    os.close(os.open(f"{sys.argv[1]}/{number}", os.O_CREAT | os.O_WRONLY))
os.write(1, b"done\\n")
sys.stdin.readline()
"""


def setUpModule():
    needs("mkfs.ext4", "mkfs.xfs", "mkfs.btrfs", "btrfs", "setpriv")
    for kind, size, point in (("ext4", 32, "/volume3"), ("xfs", 300, "/volume4"), ("btrfs", 120, "/volume5")):
        image = f"/volume2/{kind}.img"
        with open(image, "wb") as file:
            file.truncate(size << 20)
        output_of([f"mkfs.{kind}", "-q", image])
        Volume(point, image, ["-o", "loop"])
    output_of(["btrfs", "subvolume", "create", "/volume5/sub"])


class Opener(Announced):
    def __init__(self, folder, files):
        os.makedirs(folder, exist_ok=True)
        super().__init__([sys.executable, "-c", OPENER, folder, str(files)])

    def open(self):
        self.process.stdin.write(b"go\n")
        said = b""
        while b"done\n" not in said:
            said += self.process.stdout.read(100)


class Kinds(unittest.TestCase):
    def check(self, folder, volume):
        path = f"{folder}/a"
        with Recording() as recording:
            with open(touch(path), encoding="ascii"):
                told = recording.wait_for(path, "opened", "closed-written")
                os.unlink(path)
            told = recording.wait_for(path, "closed")
        [closed] = [line for line in told if line["event"] == "closed"]
        self.assertEqual({(line["volume"], line["file"]["pid"], line["file"]["filename"]) for line in told},
                         {(volume, os.getpid(), "a")})
        self.assertTrue(closed["file"]["deleted"])

    def test_tmpfs(self):
        self.check("/volume1/photo/below", "/volume1")

    def test_ext4(self):
        self.check("/volume3", "/volume3")

    def test_xfs(self):
        self.check("/volume4/below", "/volume4")

    def test_btrfs_with_its_subvolumes(self):
        self.check("/volume5", "/volume5")
        self.check("/volume5/sub", "/volume5")

    def test_a_subvolume_by_itself_is_named_with_the_reason_where_nobody_is_to_look_at_it(self):
        device = output_of(["findmnt", "--noheadings", "--output", "SOURCE", "/volume5"]).split()[0]
        volume = Volume("/volume6", device, ["-o", "subvol=sub"])
        self.addCleanup(output_of, ["umount", volume.point])
        reason = "vorn-openfiles: can't watch /volume6: it is a subvolume of btrfs"
        with Recording("--interval", "never") as recording:
            (started, *_), said = recording.stop()
        self.assertEqual((started["unwatched"], started["volumes"][:2]), (["/volume6"], ["/volume1", "/volume2"]))
        self.assertIn(reason, said)
        alone = run("events", "--interval", "never", "/volume6")
        self.assertEqual((alone.returncode, alone.stdout), (2, b""))
        self.assertIn(reason.encode(), alone.stderr)
        self.assertIn(b"none of the volumes can be watched", alone.stderr)

    def test_a_watched_volume_can_be_unmounted(self):
        volume = Volume("/volume7", "volume7", ["-t", "tmpfs"])
        with Recording("/volume7") as recording:
            touch(volume.point + "/below/a")
            recording.wait_for("/volume7/below/a", "closed-written")
            output_of(["umount", volume.point])


class Paths(unittest.TestCase):
    def test_only_those_that_are_asked_about(self):
        os.makedirs("/volume1/wanted", exist_ok=True)
        with Recording("/volume1/../volume1/wanted") as recording:
            for path in ("/volume1/wanted2/a", "/volume2/a", "/volume1/wanted/a"):
                touch(path)
            recording.wait_for("/volume1/wanted/a", "closed-written")
            lines = recording.stop()[0]
        self.assertEqual({line["file"]["full_path"] for line in lines if "file" in line}, {"/volume1/wanted/a"})

    def test_a_renamed_folder_has_its_new_name(self):
        with Recording("/volume1") as recording:
            touch("/volume1/old/below/a")
            recording.wait_for("/volume1/old/below/a", "closed-written")
            os.rename("/volume1/old", "/volume1/new")
            touch("/volume1/new/below/a")
            recording.wait_for("/volume1/new/below/a", "closed-written")

    def delete_folder(self, held):
        with Recording("/volume1") as recording:
            recording.pause()
            touch("/volume1/gone/a")
            folder = os.open("/volume1/gone", os.O_RDONLY)
            if not held:
                os.close(folder)
            os.unlink("/volume1/gone/a")
            os.rmdir("/volume1/gone")
            recording.go_on()
            lines = recording.stop()[0]
            if held:
                os.close(folder)
        return lines

    def test_of_a_deleted_folder_the_name_alone_remains(self):
        self.check_deleted(self.delete_folder(held=False))

    def test_of_a_deleted_folder_that_is_still_open_the_name_alone_remains(self):
        self.check_deleted(self.delete_folder(held=True))

    def check_deleted(self, lines):
        files = [line["file"] for line in lines if line.get("file", {}).get("filename") == "a"]
        self.assertTrue(files)
        self.assertEqual({(file["full_path"], file["deleted"], file["pid"]) for file in files},
                         {(None, None, os.getpid())})

    def test_a_path_that_is_on_no_volume_is_an_error(self):
        result = run("events", "/tmp")
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        self.assertIn(b"'/tmp' is on no volume", result.stderr)


class Processes(unittest.TestCase):
    def test_one_that_ended_before_it_could_be_asked_is_unknown(self):
        touch("/volume1/short")
        with Recording("/volume1/short") as recording:
            recording.pause()
            output_of(["cat", "/volume1/short"])
            recording.go_on()
            told = recording.wait_for("/volume1/short", "opened", "closed")
        for line in told:
            self.assertGreater(line["file"]["pid"], 0)
            self.assertEqual([line["process_start"], *(line["file"][key] for key in
                                                       ("service", "user", "host", "command"))], [None] * 5)

    def test_one_that_has_the_id_of_another_is_itself(self):
        path = touch(b"/volume1/reused")
        with Recording("/volume1/reused") as recording:
            first = Holder([path])
            recording.wait_for("/volume1/reused", "opened")
            stop(first.process)
            other = start_as(first.pid, ["tail", "-f", path])
            self.addCleanup(stop, other)
            told = wait_until(lambda: [line for line in recording.of("/volume1/reused") if line["event"] == "opened"
                                       and line["file"]["command"] == "tail"], "the second one's open")
            before = recording.of("/volume1/reused")[0]
        self.assertEqual({told[0]["file"]["pid"], before["file"]["pid"]}, {first.pid})
        self.assertNotEqual(told[0]["process_start"], before["process_start"])
        with open(f"/proc/{other.pid}/stat", encoding="ascii") as stat:
            self.assertEqual(told[0]["process_start"], int(stat.read().rpartition(")")[2].split()[19]))

    def test_the_command_itself_is_left_out(self):
        shutil.copy("/etc/localtime", "/volume1/zone")  # which it opens to tell times
        output_of(["mount", "--bind", "/volume1/zone", "/etc/localtime"])
        self.addCleanup(output_of, ["umount", "/etc/localtime"])
        with Recording("/volume1/zone") as recording:
            lines = recording.stop()[0]
        # The file is in sight by another path, so that the look isn't the whole truth.
        self.assertEqual([line["event"] for line in lines], ["started", "incomplete", "stopped"])

    def test_has_what_the_list_says_of_it(self):
        path = touch(b"/volume1/photo/held")
        with Recording("/volume1/photo") as recording, Holder([path]) as holder:
            [told] = recording.wait_for("/volume1/photo/held", "opened")
            [listed] = json.loads(run("--json", "--schema", "2", "/volume1/photo/held").stdout)["files"]
        self.assertEqual(holder.pid, listed["pid"])
        shared = set(told["file"]) & set(listed)
        self.assertEqual(len(shared), 8)
        self.assertEqual({key: told["file"][key] for key in shared}, {key: listed[key] for key in shared})


class Lines(unittest.TestCase):
    def test_are_as_the_schema_has_them_and_numbered(self):
        with Recording("--heartbeat", "0.1") as recording:
            touch(b"/volume1/photo/" + RAW)
            os.unlink(touch("/volume1/away/a"))
            os.rmdir("/volume1/away")
            wait_until(lambda: len([line for line in recording.lines() if line["event"] == "heartbeat"]) > 1,
                       "two signs of life")
            lines, said = recording.stop()
        with open(SCHEMA, encoding="utf-8") as file:
            schema = jsonschema.Draft202012Validator(json.load(file))
        for line in lines:
            schema.validate(line)
        self.assertFalse(schema.is_valid({**lines[0], "event": "opened"}))
        self.assertEqual([line["seq"] for line in lines], list(range(1, len(lines) + 1)))
        self.assertEqual((lines[0]["event"], lines[-1]["event"], said), ("started", "stopped", ""))
        self.assertEqual({line["node"] for line in lines}, {os.uname().nodename})
        self.assertEqual(len({line["run"] for line in lines}), 1)
        self.assertIn("L3ZvbHVtZTEvcGhvdG8v/wogbmFtZQ==",
                      {line.get("file", {}).get("full_path_b64") for line in lines})

    def test_each_run_has_its_own_name(self):
        runs = set()
        for _ in range(2):
            with Recording() as recording:
                runs.add(recording.stop()[0][0]["run"])
        self.assertEqual(len(runs), 2)

    def test_end_with_each_signal_after_what_had_happened(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with Recording("/volume1") as recording:
                recording.pause()
                touch("/volume1/last")
                recording.process.send_signal(number)
                recording.go_on()
                lines = recording.stop(number)[0]
            self.assertEqual((recording.status, lines[-1]["event"]), (0, "stopped"))
            self.assertIn("/volume1/last", {line["file"]["full_path"] for line in lines if "file" in line})

    def test_that_nobody_reads_any_more_end_it_quietly(self):
        process = subprocess.Popen([COMMAND, "events"], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   env=plain_environment())
        process.stdout.readline()
        process.stdout.close()
        self.assertEqual((process.wait(20), process.stderr.read()), (0, b""))
        process.stderr.close()

    def test_that_can_not_be_written_are_an_error(self):
        with open("/dev/full", "wb") as full:
            result = run("events", stdout=full)
        self.assertEqual(result.returncode, 2)
        self.assertIn(b"can't write the output: No space left on device", result.stderr)


class Floods(unittest.TestCase):
    def setUp(self):
        with open(QUEUE, encoding="ascii") as file:
            self.files = int(file.read()) + 1000

    def test_that_run_over_the_queue_are_told_as_lost(self):
        with Recording("/volume1/flood") as recording, Opener("/volume1/flood", self.files) as opener:
            recording.pause()
            opener.open()
            recording.go_on()
            wait_until(lambda: any(line["event"] == "lost" for line in recording.lines()), "the loss")
            touch("/volume1/flood/after")
            recording.wait_for("/volume1/flood/after", "closed-written")
            lines = recording.stop()[0]
        self.assertEqual([line["seq"] for line in lines], list(range(1, len(lines) + 1)))
        opened = [line["file"]["full_path"] for line in lines if line["event"] == "opened"]
        self.assertLess(len(opened), self.files)
        self.assertGreater(len(opened), self.files // 2)
        self.assertEqual({line["file"]["command"] for line in lines
                          if "file" in line and line["file"]["pid"] == opener.pid}, {os.path.basename(sys.executable)})

    def test_keep_nobody_waiting_where_nobody_reads_the_lines(self):
        process = subprocess.Popen([COMMAND, "events", "/volume1/flood"], stdout=subprocess.PIPE,
                                   env=plain_environment())
        self.addCleanup(stop, process)
        process.stdout.readline()
        with Opener("/volume1/flood", self.files) as opener:
            opener.open()
        process.terminate()
        self.assertEqual(process.wait(20), 0)


class Rights(unittest.TestCase):
    def said_without(self, *missing):
        bounding = ",".join(f"-{name}" for name in missing)
        result = subprocess.run(["setpriv", f"--bounding-set={bounding}", "--inh-caps=-all", COMMAND, "events"],
                                env=plain_environment(), capture_output=True, check=False, timeout=20)
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        return result.stderr.decode()

    def test_that_are_missing_are_named(self):
        for missing in (["sys_admin"], ["dac_read_search"], ["sys_admin", "dac_read_search"]):
            names = "".join(f" CAP_{name.upper()}" for name in missing)
            self.assertEqual(self.said_without(*missing),
                             f"vorn-openfiles: to watch opens and closes takes{names}: run it as root\n")

    def test_that_are_named_suffice(self):
        prefix = ["setpriv", "--bounding-set=-all,+sys_admin,+dac_read_search,+sys_ptrace", "--inh-caps=-all"]
        with Recording("/volume1", prefix=prefix) as recording:
            touch("/volume1/least/a")
            [told, *_] = recording.wait_for("/volume1/least/a", "opened")
        self.assertEqual(told["file"]["pid"], os.getpid())
