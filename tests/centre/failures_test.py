"""Each part killed in the middle of a load, and a full disk: what was sent is stored, once."""

import os
import select
import subprocess
import unittest

from centre_host import FOLDER, JOURNALS, Host, ask, new_centre, set_up_centre, start_loader, write_entries
from harness.files import write_file
from harness.processes import output_of, stop
from harness.waiting import wait_until

SMALL = f"{FOLDER}/small"
EVENTS = 20_000
LEFT = 6 * 1024 * 1024  # bytes of the disk, for which the load is too large
postgresql = None  # of the module


def setUpModule():
    global postgresql  # pylint: disable=global-statement
    os.makedirs(SMALL)
    output_of(["mount", "-t", "tmpfs", "-o", "size=256m,mode=755", "tmpfs", SMALL])
    postgresql = set_up_centre(f"{SMALL}/data")


class KilledWhileLoading(unittest.TestCase):
    def setUp(self):
        new_centre()
        self.loader = None
        self.sent = 0
        self.addCleanup(lambda: self.loader and stop(self.loader))

    def write(self, length=20):
        """As many opens as closes; each open file is held over hundreds of other events."""
        for node in ("alpha", "beta"):
            host, held = Host(node).tell("started"), []
            while host.seq < EVENTS // 2:
                path = f"/volume1/{'x' * length}/{host.seq}"
                host.opened(path)
                held.append(path)
                if len(held) > 300:
                    host.closed(held.pop(0))
            self.sent += host.seq
            host.write()

    def start(self, **options):
        self.loader = start_loader(stderr=subprocess.PIPE, **options)

    def stored(self):
        return ask("select coalesce(sum(events), 0)::int from vorn.runs")[0][0]

    def await_all(self):
        wait_until(lambda: self.stored() == self.sent, "all events to be stored")
        intervals, distinct = ask("select count(*)::int, count(distinct (node, path))::int from vorn.intervals")[0]
        opens = ask("select sum(opens)::int from vorn.intervals")[0][0]
        # Of each node: started, as many opens as intervals, closes of all but the last 300.
        self.assertEqual((intervals, opens), (distinct, distinct))
        self.assertEqual(2 * intervals - ask("select count(*)::int from vorn.open_now")[0][0] + 2, self.sent)
        self.assertEqual(ask("select count(*) from vorn.gaps"), [(0,)])
        self.assertEqual(ask("select sum(repeated)::int from vorn.runs"), [(0,)])
        self.assertEqual(ask("select count(*) from vorn.intervals where began_before"), [(0,)])

    def test_loader(self):
        self.write()
        stored = kills = 0
        while True:
            self.start()
            wait_until(lambda: self.stored() > stored, "some events to be stored")
            stored = self.stored()
            if stored == self.sent:
                break
            stop(self.loader)
            kills += 1
        self.assertGreater(kills, 2)
        self.await_all()

    def test_database(self):
        self.write()
        self.start()
        for share in (3, 2):
            wait_until(lambda: self.stored() > EVENTS // share, "some events to be stored")
            postgresql.kill()
            self.assertIn(b"waiting for it", self.said())
            postgresql.start()
        self.await_all()

    def test_disk_of_the_database(self):
        self.write(length=1000)
        write_file(f"{SMALL}/ballast", b"")
        self.addCleanup(os.unlink, f"{SMALL}/ballast")
        free = os.statvfs(SMALL)
        os.truncate(f"{SMALL}/ballast", 0)
        with open(f"{SMALL}/ballast", "wb") as ballast:
            os.posix_fallocate(ballast.fileno(), 0, free.f_bavail * free.f_bsize - LEFT)
            self.start()
            self.assertIn(b"waiting for it", self.said())
            os.ftruncate(ballast.fileno(), 0)
        # Where its log had no room either, it has ended and is started again, as any service.
        if not postgresql.answers():
            postgresql.start()
        self.await_all()

    def said(self):
        """What the loader says next, but for where it loads from."""
        text = b""
        while b"waiting" not in text:
            if not select.select([self.loader.stderr], [], [], 60)[0]:
                raise AssertionError(f"the loader said nothing but {text!r}")
            text += os.read(self.loader.stderr.fileno(), 4096)
        return text


class TheReceiverKilled(unittest.TestCase):
    def test_while_it_writes(self):
        """It puts its journal aside and begins another; the host sends again what wasn't confirmed."""
        new_centre()
        host = Host().tell("started")
        for number in range(1000):
            host.opened(f"/volume1/{number}").closed(f"/volume1/{number}")
        first, again = host.entries[:1500], host.entries[1000:]
        loader = start_loader(stderr=subprocess.DEVNULL)
        self.addCleanup(stop, loader)
        write_entries(first, f"{JOURNALS}/remote-alpha.journal", kill=True)
        wait_until(lambda: ask("select coalesce(sum(events), 0)::int from vorn.runs")[0][0] == 1500, "1,500 events")
        write_entries(again, f"{JOURNALS}/remote-alpha.journal")
        wait_until(lambda: ask("select last_seq::int from vorn.runs") == [(host.seq,)], "the last event")
        self.assertEqual(ask("select events::int, repeated::int from vorn.runs"), [(host.seq, 500)])
        self.assertEqual(ask("select count(*)::int from vorn.intervals"), [(1000,)])
        self.assertTrue([name for name in os.listdir(JOURNALS) if name.endswith(".journal~")])
