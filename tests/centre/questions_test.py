"""The five questions on small data; what readers may do, what is kept and what is forgotten."""

import time
import unittest

import psycopg

from centre_host import RUN, Host, ask, connect, do, load, loader, new_centre, set_up_centre, USER

NOON = (int(time.time()) // 86400 * 86400 - 43200) * 1_000_000
PROJECT = "/volume1/projects/x"


def setUpModule():
    set_up_centre()


def moment(seconds):
    """Of Host's clock, after so many of its events."""
    return f"{NOON // 1_000_000 + seconds} seconds"


def at(seconds):
    return ask("select timestamptz 'epoch' + %s::interval", moment(seconds))[0][0]


class Questions(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        new_centre()
        alpha = Host("alpha", at=NOON).tell("started", VOLUMES="/volume1")                # 1
        alpha.opened(f"{PROJECT}/plan.ods").opened(f"{PROJECT}/budget.ods", USER="bob")   # 2, 3
        alpha.closed(f"{PROJECT}/plan.ods").opened("/volume1/projects/x-y/a")             # 4, 5
        alpha.written("/volume1/photo/unopened", USER="carol", PID=5)                     # 6
        for number in range(30):                                                          # 7 ...
            alpha.opened(f"/volume1/photo/{number}", USER="bob", PID=6, HOST="192.0.2.11")
            alpha.written(f"/volume1/photo/{number}", USER="bob", PID=6, HOST="192.0.2.11")
        alpha.opened("/volume1/photo/0").closed("/volume1/photo/0").write()               # 67, 68
        beta = Host("beta", at=NOON).tell("started").opened(f"{PROJECT}/plan.ods", USER="dora")
        beta.opened(PROJECT, USER="dora").tell("stopped").write()
        Host("gamma", at=NOON).tell("started").opened(f"{PROJECT}/" + "long/" * 400, USER="erin").write()
        load()

    def test_who_has_a_project(self):
        rows = ask("select node, user_name, path from vorn.who_has(%s)", PROJECT, user="reader")
        self.assertEqual(rows, [("alpha", "bob", f"{PROJECT}/budget.ods"),
                                ("gamma", "erin", f"{PROJECT}/" + "long/" * 400)])
        self.assertEqual(ask("select node from vorn.who_has(%s)", PROJECT + "/"), [("alpha",), ("gamma",)])
        self.assertEqual(ask("select node from vorn.who_has(%s)", f"{PROJECT}/budget.ods"), [("alpha",)])
        self.assertEqual(ask("select node from vorn.who_has(%s)", PROJECT + "/" + "long/" * 300), [("gamma",)])
        self.assertEqual(ask("select node from vorn.who_has('/volume1/projects/%')"), [])

    def test_who_had_a_file(self):
        def who(path, seconds, node=None):
            return ask("select node, user_name, end_known, certain from vorn.who_had(%s, %s, %s)", path, at(seconds),
                       node, user="reader")
        self.assertEqual(who(f"{PROJECT}/plan.ods", 3), [("alpha", "alice", True, True), ("beta", "dora", False, True)])
        self.assertEqual(who(f"{PROJECT}/plan.ods", 3, "beta"), [("beta", "dora", False, True)])
        self.assertEqual(who(f"{PROJECT}/plan.ods", 10), [])
        self.assertEqual(who(f"{PROJECT}/budget.ods", 10), [("alpha", "bob", False, True)])
        self.assertEqual(who("/volume1/photo/unopened", 3), [("alpha", "carol", True, False)])
        self.assertEqual(who("/volume1/photo/unopened", 0), [])

    def test_whether_anybody_watched(self):
        self.assertEqual(ask("select node, watched from vorn.watched(%s)", at(3), user="reader"),
                         [("alpha", True), ("beta", True), ("gamma", False)])
        self.assertEqual(ask("select node, watched, volumes from vorn.watched(%s, 'alpha')", at(0)),
                         [("alpha", False, None)])

    def test_the_top_users_of_a_share(self):
        rows = ask("select user_name, files, opens from vorn.top_users('/volume1/photo', %s, %s)", at(0), at(3600),
                   user="reader")
        self.assertEqual(rows, [("bob", 30, 30), ("alice", 1, 1), ("carol", 1, 1)])
        self.assertEqual(ask("select user_name, hours > 0 from vorn.top_users(%s, %s, now(), 1)", PROJECT, at(0)),
                         [("bob", True)])
        self.assertEqual(ask("select * from vorn.top_users('/volume1/photo', %s, %s)", at(-3600), at(0)), [])

    def test_who_changed_files(self):
        rows = ask("select node, user_name, client, files from vorn.who_changed(%s, %s, '/volume1/photo')", at(0),
                   at(3600), user="reader")
        self.assertEqual(rows, [("alpha", "bob", "192.0.2.11", 30), ("alpha", "carol", "192.0.2.10", 1)])
        paths = [f"/volume1/photo/{number}" for number in (3, 4, 77)]
        self.assertEqual(ask("select user_name, files from vorn.who_changed(%s, now(), paths => %s)", at(0), paths),
                         [("bob", 2)])
        self.assertEqual(ask("select * from vorn.who_changed(%s, %s)", at(0), at(6)), [])

    def test_readers_read_views_alone(self):
        for query in ("select * from vorn_data.history", "select * from vorn_data.nodes", "delete from vorn.settings",
                      "update vorn.settings set personal_days = 9999", "create table vorn.x ()",
                      "create table public.x ()", "select vorn_data.maintain()",
                      "insert into vorn.refused values ('a', now(), 'b', '{}')", "create schema x"):
            with self.subTest(query), self.assertRaises(psycopg.errors.InsufficientPrivilege):
                ask(query, user="reader")
        for view in ("nodes", "runs", "open_now", "intervals", "gaps", "refused", "settings"):
            ask(f"select * from vorn.{view}", user="reader")

    def test_the_loader_may_not_make_or_drop(self):
        for query in ("drop table vorn_data.history", "create table vorn_data.x ()", "truncate vorn_data.history"):
            with self.subTest(query), self.assertRaises(psycopg.errors.InsufficientPrivilege):
                with connect(USER) as connection:
                    connection.execute(query)

    def test_nobody_else_gets_in(self):
        with connect(database="postgres") as connection:
            connection.execute("drop role if exists stranger")
            connection.execute("create role stranger login")
        loader("--setup")
        with self.assertRaises(psycopg.OperationalError) as caught:
            connect("stranger")
        self.assertIn("does not have CONNECT privilege", str(caught.exception))


class Keeping(unittest.TestCase):
    def setUp(self):
        new_centre()

    def months(self):
        return [row[0] for row in ask("select relname from pg_class where relname ~ '^history_.{7}$' order by 1")]

    def test_months_are_made_ahead_and_dropped(self):
        self.assertEqual(len(self.months()), 3)
        Host(at=NOON).tell("started").opened("/volume1/a").closed("/volume1/a").opened("/volume1/b").write()
        load()
        do("update vorn_data.settings set retention_months = 1")
        do("create table vorn_data.history_2020_01 (like vorn_data.history including all)")
        do("alter table vorn_data.history attach partition vorn_data.history_2020_01"
           " for values from ('2020-01-01') to ('2020-02-01')")
        do("insert into vorn_data.history"
           " values (99, '2019-12-31', '2020-01-02', 1, 1, false, true, false, false, '/old')")
        do("insert into vorn_data.holders values (99, '2020-01-02', 1, 1, 1, 1)")
        self.assertEqual(ask("select count(*) from vorn.intervals"), [(3,)])
        self.assertIn("months dropped 1", loader("--maintain", user=USER))
        self.assertEqual(ask("select path from vorn.intervals order by 1"), [("/volume1/a",), ("/volume1/b",)])
        self.assertEqual(ask("select count(*) from vorn_data.holders where id = 99"), [(0,)])
        self.assertNotIn("history_2020_01", self.months())
        self.assertIn("months made 0, months dropped 0", loader("--maintain", user=USER))

    def test_a_month_is_made_when_it_is_needed(self):
        do("drop table " + ", ".join(f"vorn_data.{month}" for month in self.months()))
        Host().opened("/volume1/a").closed("/volume1/a").write()
        load()
        self.assertEqual(ask("select count(*) from vorn.intervals"), [(1,)])
        self.assertEqual(len(self.months()), 1)

    def test_what_is_too_old_to_be_kept_is_put_aside(self):
        do("update vorn_data.settings set retention_months = 1")
        Host(at=NOON - 70 * 86_400_000_000).opened("/volume1/a").write()
        load()
        self.assertEqual(ask("select reason from vorn.refused"), [("VORN_AT is too old or in the future",)])

    def test_users_are_forgotten_and_counts_remain(self):
        old = Host("old", at=NOON - 3 * 86_400_000_000).opened("/volume1/a").closed("/volume1/a")
        old.opened("/volume1/b", USER="bob", PID=5).closed("/volume1/b", USER="bob", PID=5).write()
        Host("new", at=NOON).opened("/volume1/a").closed("/volume1/a").write()
        load()
        do("update vorn_data.settings set personal_days = 2, refused_days = 0")
        Host("bad").tell("moved").write()
        load()
        self.assertIn("holders expired 2", loader("--maintain", user=USER))
        self.assertEqual(ask("select node, user_name, client, service from vorn.intervals order by node desc, path"),
                         [("old", None, None, "SMB"), ("old", None, None, "SMB"),
                          ("new", "alice", "192.0.2.10", "SMB")])
        self.assertEqual(ask("select count(distinct holder) from vorn.intervals"), [(3,)])
        self.assertEqual(ask("select count(*) from vorn.refused"), [(0,)])
        self.assertIn("holders expired 0", loader("--maintain", user=USER))

    def test_setting_up_anew_keeps_everything(self):
        Host().opened("/volume1/a").write()
        load()
        do("update vorn_data.settings set retention_months = 3")
        loader("--setup")
        self.assertEqual(ask("select retention_months from vorn.settings", user="reader"), [(3,)])
        self.assertEqual(ask("select path from vorn.open_now", user="reader"), [("/volume1/a",)])
        self.assertEqual(ask("select run from vorn.runs")[0][0].hex, RUN)
