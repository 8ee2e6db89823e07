"""Events on their way from a node's journal into the database."""

import os
import unittest
from unittest import mock

from centre_host import JOURNALS, SOCKETS, USER, Host, ask, connect, do, intervals, load, new_centre, set_up_centre
from vorn_centre import journals as journals_module
from vorn_centre.database import AnotherLoader, Database
from vorn_centre.journals import Journals
from vorn_centre.text import bytes_of

OTHER_RUN = "f" * 32


def setUpModule():
    set_up_centre()


class Loading(unittest.TestCase):
    def setUp(self):
        new_centre()

    def stored(self):
        return ask("select coalesce(sum(events), 0)::int from vorn.runs")[0][0]

    def test_makes_an_interval_of_an_open_and_a_close(self):
        host = Host().tell("started", VOLUMES=["/volume1", "/volume2"]).opened("/volume1/a").written("/volume1/a")
        host.write()
        load()
        [row] = ask("select node, run::text, pid, process_start, volume, service, user_name, client, command, path,"
                    " extract(epoch from closed_at - opened_at)::int, began_before, end_known, written, deleted, opens"
                    " from vorn.intervals")
        self.assertEqual(row, ("alpha", "01234567-89ab-cdef-0123-456789abcdef", 4711, 100, "/volume1", "SMB", "alice",
                               "192.0.2.10", "smbd", "/volume1/a", 1, False, True, True, False, 1))
        self.assertEqual(ask("select volumes from vorn.nodes"), [(["/volume1", "/volume2"],)])

    def test_goes_on_where_it_was(self):
        host = Host().tell("started").opened("/volume1/a").write()
        load()
        self.assertEqual(ask("select path, user_name from vorn.open_now"), [("/volume1/a", "alice")])
        host.opened("/volume1/a").closed("/volume1/a").write()
        load()
        self.assertEqual(ask("select path, opens from vorn.open_now"), [("/volume1/a", 2)])
        host.closed("/volume1/a").write()
        load()
        load()
        self.assertEqual(ask("select path, opens from vorn.intervals where closed_at is not null"), [("/volume1/a", 2)])
        self.assertEqual(self.stored(), 5)

    def test_takes_what_was_sent_again_once(self):
        host = Host().tell("started").opened("/volume1/a").closed("/volume1/a").opened("/volume1/b", SCHEMA="3")
        again = list(host.entries)
        host.write()
        load()
        os.rename(f"{JOURNALS}/remote-alpha.journal", f"{JOURNALS}/remote-alpha@0001-0001.journal~")
        host.entries = again
        host.opened("/volume1/c").write()
        load()
        self.assertEqual([row[0] for row in intervals()], ["/volume1/a", "/volume1/c"])
        self.assertEqual(ask("select events, repeated, last_seq from vorn.runs"), [(4, 3, 5)])
        self.assertEqual(ask("select refused from vorn.nodes"), [(1,)])

    def test_reads_full_journals_before_the_one_that_is_written(self):
        host = Host()
        for part in range(3):
            for _ in range(50):
                host.opened(f"/volume1/{host.seq}")
            host.write()
            name = f"remote-alpha@{'a' * 32}-{part + 1:016x}-{3 - part:016x}.journal"
            os.rename(f"{JOURNALS}/remote-alpha.journal", f"{JOURNALS}/{name}")
        host.opened("/volume1/last").write()
        load()
        self.assertEqual(ask("select events, repeated from vorn.runs"), [(151, 0)])
        self.assertEqual(ask("select count(*) from vorn.gaps"), [(0,)])

    def test_loads_what_a_slow_node_sends_late(self):
        fast, slow = Host("fast"), Host("slow", at=Host().at - 3_600_000_000)
        fast.opened("/volume1/a").write()
        load()
        slow.opened("/volume1/b").write()
        load()
        self.assertEqual([row[0] for row in intervals()], ["/volume1/b", "/volume1/a"])

    def test_keeps_every_byte_of_a_name(self):
        names = [b"/volume1/\xff\xfe\n\t", rb"/volume1/a\x41", "/volume1/ünïcödé".encode(),
                 b"/volume1/" + b"\xe9/" * 1995 + b"x", b"/volume1/\xed\xa0\x80"]
        host = Host()
        for name in names:
            host.opened(name).closed(name)
        host.write()
        load()
        self.assertEqual([bytes_of(row[0]) for row in intervals()], names)
        self.assertIn(r"/volume1/\xFF\xFE" + "\n\t", [row[0] for row in intervals()])
        self.assertIn(r"/volume1/a\\x41", [row[0] for row in intervals()])

    def test_puts_aside_what_is_malformed_and_goes_on(self):
        cases = [({"PID": "-1"}, "VORN_PID"), ({"PID": None}, "VORN_PID"), ({"PATH": "a"}, "VORN_PATH"),
                 ({"PATH": b"/" + b"x" * 40000}, "VORN_PATH"), ({"USER": ["a", "b"]}, "VORN_USER"),
                 ({"AT": "soon"}, "VORN_AT"), ({"AT": "99999999999999999"}, "VORN_AT"), ({"AT": "0"}, "VORN_AT"),
                 ({"SEQ": "0"}, "VORN_SEQ"), ({"RUN": "x"}, "VORN_RUN"), ({"SCHEMA": "3"}, "VORN_SCHEMA"),
                 ({"EVENT": "moved"}, "VORN_EVENT"), ({"EVENT": b"\xff"}, "VORN_EVENT"), ({"_UID": "1000"}, "root"),
                 ({"DELETED": "perhaps"}, "VORN_DELETED"), ({"NODE": "beta"}, "certificate"),
                 ({"PROCESS_START": "9" * 30}, "VORN_PROCESS_START"), ({"COMMAND": b"x" * 5000}, "VORN_COMMAND")]
        host = Host()
        for fields, _ in cases:
            host.tell("opened", **{"PATH": "/volume1/bad", **fields})
        host.opened("/volume1/good").write()
        load()
        self.assertEqual([row[0] for row in intervals()], ["/volume1/good"])
        reasons = [row[0] for row in ask("select reason from vorn.refused")]
        self.assertEqual(len(reasons), len(cases))
        for _, word in cases:
            self.assertTrue(any(word in reason for reason in reasons), word)
        self.assertEqual(ask("select max(length(fields::text)) < 10000 from vorn.refused"), [(True,)])

    def test_shows_who_forged_a_name(self):
        Host("alpha").opened("/volume1/a", NODE="beta").write()
        Host("beta").opened("/volume1/b").write()
        load()
        self.assertEqual(ask("select node, fields->>'VORN_NODE', reason from vorn.refused"),
                         [("alpha", "beta", "VORN_NODE is not the name in the certificate")])
        self.assertEqual(ask("select node, path from vorn.open_now"), [("beta", "/volume1/b")])

    def test_puts_aside_what_the_database_refuses(self):
        do("alter table vorn_data.open_files add check (path <> '/volume1/7')")
        host = Host()
        for number in range(20):
            host.opened(f"/volume1/{number}")
        host.write()
        load()
        self.assertEqual(len(intervals()), 19)
        self.assertEqual(ask("select events, last_seq from vorn.runs"), [(19, 20)])
        self.assertEqual(ask("select count(*) from vorn.refused where reason like 'the database refused it%'"), [(1,)])
        self.assertEqual(ask("select count(*) from vorn.gaps"), [(0,)])

    def test_leaves_a_journal_alone_that_is_none(self):
        for name in ("remote-alpha.journal", "remote-a@b.journal", "other"):
            with open(f"{JOURNALS}/{name}", "wb") as file:
                file.write(b"no journal" * 1000)
        Host("beta").opened("/volume1/b").write()
        said = load()
        self.assertEqual([row[0] for row in intervals()], ["/volume1/b"])
        self.assertIn("remote-alpha.journal: ", said)
        self.assertIn("remote-a@b.journal: no journal of a node", said)

    def test_believes_an_entry_that_is_being_written_when_it_is_read_again(self):
        class Hasty(journals_module._Reader):  # pylint: disable=protected-access
            """Sees the last entry, at first, as it is while its writer links its fields."""

            seen = set()

            def get_next(self, skip=1):
                fields = super().get_next(skip)
                if fields and fields["VORN_SEQ"] == b"3" and fields["__CURSOR"] not in self.seen:
                    self.seen.add(fields["__CURSOR"])
                    del fields["VORN_USER"]
                return fields
        Host().opened("/volume1/a").opened("/volume1/b").opened("/volume1/c").write()
        with mock.patch.object(journals_module, "_Reader", Hasty):
            journals = Journals(JOURNALS, {})
            looks = [[fields["VORN_USER"] for _, _, fields in journals.read(100)] for _ in range(3)]
        self.assertEqual(looks, [[b"alice", b"alice"], [b"alice"], []])

    def test_reads_no_more_than_it_is_asked_for(self):
        host = Host()
        for number in range(10):
            host.opened(f"/volume1/{number}")
        host.write()
        journals = Journals(JOURNALS, {})
        looks = [[fields["VORN_SEQ"] for _, _, fields in journals.read(4)] for _ in range(12)]
        self.assertEqual(looks, [[b"%d" % number] for number in range(1, 10)] + [[], [b"10"], []])

    def test_removes_journals_that_are_loaded_and_old(self):
        host = Host().opened("/volume1/a").write()
        old = f"{JOURNALS}/remote-alpha@0001-0001.journal~"
        os.rename(f"{JOURNALS}/remote-alpha.journal", old)
        host.opened("/volume1/b").write()
        journals = Journals(JOURNALS, {})
        journals.remove_older_than(0)
        self.assertTrue(os.path.exists(old))
        self.assertEqual([len(journals.read(100)) for _ in range(2)], [1, 1])
        journals.remove_older_than(1000)
        self.assertTrue(os.path.exists(old))
        journals.remove_older_than(0)
        self.assertEqual(os.listdir(JOURNALS), ["remote-alpha.journal"])


class Noticing(unittest.TestCase):
    def setUp(self):
        new_centre()

    def test_missing_numbers_and_what_the_host_has_lost(self):
        host = Host().tell("started").tell("lost").tell("incomplete", REASON=["no /proc", "no shares"])
        host.seq += 5
        host.tell("heartbeat").write()
        Host("late", run=OTHER_RUN).opened("/volume1/a", SEQ=3).write()
        load()
        self.assertEqual(ask("select node, kind, seq_from, seq_to, reason from vorn.gaps order by node, seq_from"),
                         [("alpha", "lost", 2, 2, None), ("alpha", "incomplete", 3, 3, "no /proc; no shares"),
                          ("alpha", "missing", 4, 8, None), ("late", "missing", 1, 2, None)])
        self.assertEqual(ask("select missing::int, lost::int from vorn.nodes where node = 'alpha'"), [(5, 1)])

    def test_a_clock_that_goes_back(self):
        host = Host().tell("started").opened("/volume1/a")
        host.at -= 3_600_000_000
        host.closed("/volume1/a").opened("/volume1/b").closed("/volume1/b").write()
        load()
        self.assertEqual(ask("select path, closed_at - opened_at < interval '2 s', closed_at >= opened_at"
                             " from vorn.intervals order by path"),
                         [("/volume1/a", True, True), ("/volume1/b", True, True)])
        self.assertEqual(ask("select kind, at_from > at_to from vorn.gaps"), [("clock", True)])

    def test_a_node_that_has_fallen_silent(self):
        host = Host().tell("started").opened("/volume1/a").write()
        load()
        do("update vorn_data.nodes set last_at = now()")
        self.assertEqual(ask("select state, open_files from vorn.nodes"), [("watching", 1)])
        do("update vorn_data.nodes set last_heard = now() - interval '4 minutes'")
        self.assertEqual(ask("select state from vorn.nodes"), [("silent",)])
        self.assertEqual(ask("select silent from vorn.who_has('/volume1')"), [(True,)])
        host.tell("stopped").write()
        load()
        self.assertEqual(ask("select state, open_files from vorn.nodes"), [("stopped", 0)])

    def test_another_loader(self):
        with connect() as other:
            other.execute("select pg_advisory_lock(%s)", (0x766f726e,))
            with self.assertRaises(AnotherLoader):
                Database(f"host={SOCKETS} dbname=vornopenfiles user={USER}")
        Database(f"host={SOCKETS} dbname=vornopenfiles user={USER}").close()
