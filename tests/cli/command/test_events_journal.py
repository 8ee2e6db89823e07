"""Opens and closes as entries of systemd's journal, with a real journald."""

import contextlib
import os
import signal
import subprocess
import unittest

from harness.command import COMMAND
from harness.files import touch
from harness.journal import PROGRAM, SOCKET, Journal
from harness.processes import plain_environment
from harness.waiting import wait_until
from test_events import QUEUE, Opener

REFUSED = f"vorn-openfiles: the journal takes no events ({SOCKET}: "
WAITING = "); they wait, and what there is no room for is told as lost\n"
AGAIN = "vorn-openfiles: the journal takes events again\n"


def setUpModule():
    if not os.path.exists(PROGRAM):
        raise unittest.SkipTest("not installed: systemd-journald")


class Recorder:
    """The command at work for a journal."""

    def __init__(self, *arguments):
        self.process = subprocess.Popen([COMMAND, "events", "--journal", *arguments], env=plain_environment(),
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def stop(self, number=signal.SIGTERM):
        """Gives its status and what it has said."""
        if self.process.returncode is None:
            self.process.send_signal(number)
            self.out, said = self.process.communicate(timeout=60)
            self.said = said.decode()
        return self.process.returncode, self.said


class JournalTest(unittest.TestCase):
    def setUp(self):
        self.journal = Journal()
        self.addCleanup(self.journal.close)

    @contextlib.contextmanager
    def recording(self, *arguments):
        recorder = Recorder(*arguments)
        self.addCleanup(recorder.stop, signal.SIGKILL)
        self.wait_for_event("started")
        yield recorder

    def told(self):
        return self.journal.entries()

    def wait_for_event(self, event):
        return wait_until(lambda: self.journal.entries(f"VORN_EVENT={event}"), f"the event {event}")

    def of(self, path):
        # A match is a text of one line.
        return [entry for entry in self.journal.entries("VORN_PID=" + str(os.getpid()))
                if entry.get("VORN_PATH") == [os.fsencode(path)]]

    def wait_for(self, path, *events):
        def names():
            return {entry["VORN_EVENT"][0].decode() for entry in self.of(path)}
        wait_until(lambda: set(events) <= names(), f"{events} of {path}")
        return self.of(path)

    def assert_numbered(self, entries):
        self.assertEqual([int(entry["VORN_SEQ"][0]) for entry in entries], list(range(1, len(entries) + 1)))


class Entries(JournalTest):
    def test_have_each_event_with_all_that_is_known(self):
        with self.recording("--heartbeat", "0.1") as recorder:
            touch("/volume1/photo/a")
            opened = self.wait_for("/volume1/photo/a", "opened", "closed-written")[0]
            self.wait_for_event("heartbeat")
            self.assertEqual(recorder.stop(), (0, ""))
        entries = self.told()
        self.assert_numbered(entries)
        self.assertEqual(recorder.out, b"")
        self.assertEqual((entries[0]["VORN_EVENT"], entries[0]["VORN_VOLUMES"], entries[-1]["VORN_EVENT"]),
                         ([b"started"], [b"/volume1", b"/volume2"], [b"stopped"]))
        with open("/proc/self/comm", encoding="ascii") as file:
            command = file.read().strip()
        with open("/proc/self/stat", encoding="ascii") as file:
            start = file.read().rpartition(")")[2].split()[19]
        with open("/etc/machine-id", encoding="ascii") as file:
            machine = file.read().strip()
        expected = {"MESSAGE": f"opened /volume1/photo/a: Internal service, {command} {os.getpid()}",
                    "MESSAGE_ID": "f1b3b7a0c56d4f0f9a0a7a4c8f2e6d15", "PRIORITY": "6", "VORN_SCHEMA": "2",
                    "VORN_NODE": os.uname().nodename, "VORN_MACHINE_ID": machine, "VORN_EVENT": "opened",
                    "VORN_VOLUME": "/volume1", "VORN_PROCESS_START": start, "VORN_PID": str(os.getpid()),
                    "VORN_SERVICE": "Internal service", "VORN_COMMAND": command, "VORN_PATH": "/volume1/photo/a",
                    "VORN_FILENAME": "a", "VORN_DELETED": "no"}
        self.assertEqual({name: opened.get(name) for name in expected},
                         {name: [text.encode()] for name, text in expected.items()})
        self.assertEqual({name for name in opened if name.startswith("VORN_")} - set(expected),
                         {"VORN_RUN", "VORN_SEQ", "VORN_AT"})
        # The entry is written after the event was read, and soon.
        self.assertLess(int(opened["__REALTIME_TIMESTAMP"][0]) - int(opened["VORN_AT"][0]), 10_000_000)

    def test_have_all_bytes_of_names(self):
        path = b"/volume1/photo/\xff\n name=x\n\nMESSAGE=forged"
        with self.recording("/volume1"):
            touch(path)
            [opened, *_] = self.wait_for(path, "opened", "closed-written")
        self.assertEqual(opened["VORN_FILENAME"], [os.path.basename(path)])
        self.assertEqual(len(opened["MESSAGE"]), 1)
        self.assertNotIn(b"\n", opened["MESSAGE"][0])

    def make_deep(self, levels):
        """A file with a long name so far below /volume1 that no system call takes its path whole."""
        path = f"/volume1/{levels}"
        os.mkdir(path)
        folder = os.open(path, os.O_RDONLY)
        for _ in range(levels):
            os.mkdir("d" * 250, dir_fd=folder)
            below = os.open("d" * 250, os.O_RDONLY, dir_fd=folder)
            os.close(folder)
            folder, path = below, f"{path}/{'d' * 250}"
        os.close(os.open("f" * 255, os.O_CREAT | os.O_WRONLY, dir_fd=folder))
        os.close(folder)
        return f"{path}/{'f' * 255}"

    def test_have_paths_longer_than_any_system_call_takes(self):
        with self.recording("/volume1"):
            path = self.make_deep(16)
            self.assertGreater(len(path), 4096)
            [opened, *_] = self.wait_for(path, "opened", "closed-written")
        self.assertEqual(opened["VORN_FILENAME"], [b"f" * 255])

    def test_have_the_name_alone_where_the_folder_has_too_long_a_path(self):
        with self.recording("/volume1"):
            self.make_deep(18)
            [entry, *_] = wait_until(lambda: self.journal.entries("VORN_FILENAME=" + "f" * 255), "the file")
        self.assertEqual((entry["VORN_FILENAME"], "VORN_PATH" in entry), ([b"f" * 255], False))


class Trouble(JournalTest):
    def flood(self):
        with open(QUEUE, encoding="ascii") as file:
            files = int(file.read()) + 1000
        with Opener("/volume1/flood", files) as opener:
            opener.open()

    def test_of_a_journald_that_starts_anew_loses_nothing(self):
        with self.recording("/volume1") as recorder:
            touch("/volume1/before")
            self.wait_for("/volume1/before", "closed-written")
            self.journal.stop()
            for number in range(500):
                touch(f"/volume1/meanwhile/{number}")
            self.journal.start()
            touch("/volume1/after")
            self.wait_for("/volume1/after", "closed-written")
            self.assertEqual(recorder.stop(), (0, ""))
        self.assert_numbered(self.told())
        paths = {entry["VORN_PATH"][0] for entry in self.told() if entry["VORN_EVENT"] == [b"closed-written"]}
        self.assertLessEqual({b"/volume1/meanwhile/%d" % number for number in range(500)}, paths)

    def test_of_a_journald_that_stands_still_keeps_no_writer_waiting_and_tells_what_is_lost(self):
        with self.recording("/volume1/flood") as recorder:
            self.journal.pause()
            self.flood()
            self.assertIsNone(recorder.process.poll())
            self.journal.go_on()
            self.wait_for_event("lost")
            recorder.stop()
        self.assert_numbered(self.told())

    def test_of_a_journald_that_stands_still_does_not_keep_it_from_ending(self):
        with self.recording("/volume1/flood") as recorder:
            self.journal.pause()
            self.flood()
            status, said = recorder.stop()
        self.assertEqual(status, 2)
        self.assertRegex(said, r"vorn-openfiles: \d+ events have not reached the journal \(/run/")

    def test_of_a_queue_that_stays_full_is_told_once(self):
        with self.recording("/volume1/flood") as recorder:
            self.journal.pause()
            self.flood()
            said = recorder.process.stderr.readline().decode()
            self.journal.go_on()
            again = recorder.process.stderr.readline().decode()
            rest = recorder.stop()
        self.assertEqual((said, again, rest), (REFUSED + "its queue is full" + WAITING, AGAIN, (0, "")))

    def test_of_a_journald_that_is_not_there_is_told_once_and_waits_for_it(self):
        self.journal.vanish()
        recorder = Recorder("/volume1")
        self.addCleanup(recorder.stop, signal.SIGKILL)
        self.assertEqual(recorder.process.stderr.readline().decode(),
                         REFUSED + "No such file or directory" + WAITING)
        touch("/volume1/early")
        self.journal.listen()
        self.journal.start()
        self.assertEqual(recorder.process.stderr.readline().decode(), AGAIN)
        wait_until(lambda: self.journal.entries("VORN_PATH=/volume1/early"), "the file")
        self.assertEqual(recorder.stop(), (0, ""))

    def test_without_journald_it_ends_and_says_what_has_not_arrived(self):
        self.journal.vanish()
        recorder = Recorder("/volume1")
        recorder.process.stderr.readline()
        status, said = recorder.stop()
        self.journal.listen()
        self.journal.start()
        self.assertEqual((status, said), (2, "vorn-openfiles: 2 events have not reached the journal "
                                             f"({SOCKET}: No such file or directory)\n"))
