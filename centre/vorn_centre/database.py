"""What the loader keeps in PostgreSQL: read whole at the start, written a batch at a time."""

import json
from datetime import datetime, timedelta, timezone

import psycopg

from vorn_centre.intervals import Interval, Node, Numbers, Process, Run

EPOCH = datetime(1970, 1, 1, tzinfo=timezone.utc)
MICROSECOND = timedelta(microseconds=1)
DAY = 86_400_000_000
THIS_LOADER = 0x766f726e  # a lock of this database: a second loader would number anew what the first has
MOST_HOLDERS = 200_000
MOST_REFUSED = 1000       # rows of a node a day; the rest is counted


def moment(at):
    return None if at is None else EPOCH + timedelta(microseconds=at)


def microseconds(time):
    return None if time is None else (time - EPOCH) // MICROSECOND


class AnotherLoader(psycopg.OperationalError):
    pass


class Database:
    """A connection with the state that its last commit has left."""

    def __init__(self, conninfo):
        self._connection = psycopg.connect(conninfo, autocommit=True, application_name="vorn-openfiles-load")
        self._holders = {}
        self._new_holders = []
        self._months = set()
        self._stored_today = {}
        try:
            self._load()
        except BaseException:
            self.close()
            raise

    def _load(self):
        if not self._value("select pg_try_advisory_lock(%s)", THIS_LOADER):
            raise AnotherLoader("another loader writes to this database")
        self.nodes = self._load_nodes()
        self.numbers = Numbers(self._value("select coalesce(max(id), 0) from vorn_data.runs"),
                               self._value("select coalesce(max(id), 0) from vorn_data.open_files"))
        self._last_holder = self._value("select coalesce(max(id), 0) from vorn_data.holders")
        self._last_node = max((node.id for node in self.nodes.values()), default=0)
        self._load_runs()
        self.cursors = dict(self._rows("select inode, cursor from vorn_data.positions"))

    def close(self):
        self._connection.close()

    def _rows(self, query, *values):
        return self._connection.execute(query, values).fetchall()

    def _value(self, query, *values):
        return self._rows(query, *values)[0][0]

    # --- Reading -------------------------------------------------------------------------------------

    def settings(self):
        """The earliest moment that is kept, in microseconds, and the days for journal files."""
        oldest, days = self._rows("select vorn_data.oldest_month(), journal_days from vorn_data.settings")[0]
        return microseconds(oldest), days

    def _load_nodes(self):
        nodes = {}
        for number, name, last_at in self._rows("select id, name, last_at from vorn_data.nodes"):
            node = nodes[name] = Node(number, name)
            node.last_at = microseconds(last_at)
        return nodes

    def _load_runs(self):
        nodes, runs = {node.id: node for node in self.nodes.values()}, {}
        for row in self._rows("select node, id, run, started_at, last_at, last_seq, events, repeated, pathless,"
                              " ended_at, stopped from vorn_data.runs"):
            run = Run(row[1], row[2].hex, microseconds(row[3]))
            run.last_at, run.ended_at = microseconds(row[4]), microseconds(row[9])
            run.last_seq, run.events, run.repeated, run.pathless, run.stopped = *row[5:9], row[10]
            nodes[row[0]].runs[run.name] = runs[run.id] = run
        with self._connection.transaction(), self._connection.cursor(name="open_files") as cursor:
            cursor.itersize = 10_000
            cursor.execute("select run, id, pid, process_start, opened_at, began_before, opens, held, written,"
                           " deleted, volume, service, user_name, client, command, path from vorn_data.open_files")
            for row in cursor:
                _put_back(runs[row[0]], row[1:])

    # --- Writing -------------------------------------------------------------------------------------

    def node(self, name):
        if name not in self.nodes:
            self._last_node += 1
            self.nodes[name] = Node(self._last_node, name)
        return self.nodes[name]

    def store(self, changes, cursors):
        """All of it or nothing; whoever gets an exception forgets this object."""
        with self._connection.transaction(), self._connection.cursor() as cursor:
            self._store_nodes(cursor, changes)
            self._store_runs(cursor, changes)
            self._store_open(cursor, changes)
            self._store_history(cursor, changes.closed)
            self._store_notes(cursor, changes)
            cursor.execute("insert into vorn_data.positions (inode, node, cursor)"
                           " select * from unnest(%s::bigint[], %s::int[], %s::text[])"
                           " on conflict (inode) do update set node = excluded.node, cursor = excluded.cursor",
                           _columns([(inode, self.nodes[name].id, at) for inode, name, at in cursors], 3))
        for interval in changes.opened.values():
            interval.stored = True

    def _store_nodes(self, cursor, changes):
        rows = [(node.id, node.name, moment(node.last_at)) for node in changes.nodes.values()]
        cursor.execute("insert into vorn_data.nodes (id, name, last_at, last_heard)"
                       " select *, now() from unnest(%s::int[], %s::text[], %s::timestamptz[])"
                       " on conflict (id) do update set last_at = coalesce(excluded.last_at, nodes.last_at),"
                       " last_heard = excluded.last_heard", _columns(rows, 3))

    def _store_runs(self, cursor, changes):
        rows = [(run.id, node.id, run.name, moment(run.started_at), moment(run.last_at), run.last_seq, run.events,
                 run.repeated, run.pathless, moment(run.ended_at), run.stopped)
                for node, run in changes.runs.values()]
        cursor.execute(
            "insert into vorn_data.runs (id, node, run, started_at, last_at, last_seq, events, repeated, pathless,"
            " ended_at, stopped) select * from unnest(%s::int[], %s::int[], %s::uuid[], %s::timestamptz[],"
            " %s::timestamptz[], %s::bigint[], %s::bigint[], %s::bigint[], %s::bigint[], %s::timestamptz[],"
            " %s::bool[])"
            " on conflict (id) do update set last_at = excluded.last_at, last_seq = excluded.last_seq,"
            " events = excluded.events, repeated = excluded.repeated, pathless = excluded.pathless,"
            " ended_at = excluded.ended_at, stopped = excluded.stopped", _columns(rows, 11))
        for _, run in changes.runs.values():
            if run.volumes is not None:
                cursor.execute("update vorn_data.runs set volumes = %s, unwatched = %s where id = %s",
                               (run.volumes, run.unwatched, run.id))
                run.volumes = run.unwatched = None

    @staticmethod
    def _store_open(cursor, changes):
        if changes.removed:
            cursor.execute("delete from vorn_data.open_files where id = any(%s)", (changes.removed,))
        if changes.changed:
            rows = [(one.id, one.process_start, one.opens, one.held, one.written, one.deleted, one.service, one.user,
                     one.client, one.command) for one in changes.changed.values()]
            cursor.execute(
                "update vorn_data.open_files o set process_start = n.process_start, opens = n.opens, held = n.held,"
                " written = n.written, deleted = n.deleted, service = n.service, user_name = n.user_name,"
                " client = n.client, command = n.command from unnest(%s::bigint[], %s::bigint[], %s::int[], %s::int[],"
                " %s::bool[], %s::bool[], %s::text[], %s::text[], %s::text[], %s::text[]) n (id, process_start, opens,"
                " held, written, deleted, service, user_name, client, command) where o.id = n.id", _columns(rows, 10))
        if changes.opened:
            with cursor.copy("copy vorn_data.open_files (id, node, run, pid, process_start, opened_at, began_before,"
                             " opens, held, written, deleted, volume, service, user_name, client, command, path)"
                             " from stdin") as copy:
                node_of = {run.id: node.id for node, run in changes.runs.values()}
                for one in changes.opened.values():
                    copy.write_row((one.id, node_of[one.run.id], one.run.id, one.pid, one.process_start,
                                    moment(one.opened_at), one.began_before, one.opens, one.held, one.written,
                                    one.deleted, one.volume, one.service, one.user, one.client, one.command,
                                    one.path))

    def _store_history(self, cursor, closed):
        if not closed:
            return
        self._make_months(cursor, {at // DAY for _, _, at, _ in closed})
        rows = [(self._holder(node, one, at), moment(one.opened_at), moment(at), node.id, one.opens,
                 one.began_before, known, one.written, one.deleted, one.path) for node, one, at, known in closed]
        with cursor.copy("copy vorn_data.holders (id, day, node, run, pid, process_start, volume, service, user_name,"
                         " client, command) from stdin") as copy:
            for row in self._new_holders:
                copy.write_row(row)
        self._new_holders.clear()
        with cursor.copy("copy vorn_data.history (holder, opened_at, closed_at, node, opens, began_before,"
                         " end_known, written, deleted, path) from stdin") as copy:
            for row in rows:
                copy.write_row(row)

    def _make_months(self, cursor, days):
        months = {moment(day * DAY).replace(day=1) for day in days} - self._months
        for month in months:
            cursor.execute("select vorn_data.make_month(%s)", (month,))
        self._months |= months

    def _holder(self, node, one, at):
        key = (at // DAY, node.id, one.run.id, one.pid, one.process_start, one.volume, one.service, one.user,
               one.client, one.command)
        number = self._holders.get(key)
        if number is None:
            if len(self._holders) >= MOST_HOLDERS:
                self._holders.clear()
            self._last_holder += 1
            number = self._holders[key] = self._last_holder
            self._new_holders.append((number, moment(at).date(), *key[1:]))
        return number

    def _store_notes(self, cursor, changes):
        if changes.gaps:
            cursor.executemany("insert into vorn_data.gaps (node, run, kind, at_from, at_to, seq_from, seq_to, reason)"
                               " values (%s, %s, %s, %s, %s, %s, %s, %s)",
                               [(node.id, run.id, kind, moment(since), moment(until), *rest)
                                for node, run, kind, since, until, *rest in changes.gaps])
        for node, identity, reason, fields in changes.refused:
            if self._stored_today.get(node.id, 0) >= MOST_REFUSED:
                cursor.execute("update vorn_data.nodes set refused = refused + 1 where id = %s", (node.id,))
                continue
            self._stored_today[node.id] = self._stored_today.get(node.id, 0) + 1
            cursor.execute("with stored as (insert into vorn_data.refused (node, entry, heard, reason, fields)"
                           " values (%s, %s, now(), %s, %s) on conflict do nothing returning 1)"
                           " update vorn_data.nodes set refused = refused + (select count(*) from stored)"
                           " where id = %s",
                           (node.name, identity, reason, json.dumps(fields), node.id))

    # --- Now and then --------------------------------------------------------------------------------

    def a_day_has_passed(self):
        self._stored_today.clear()

    def forget_positions_but(self, inodes):
        self._rows("delete from vorn_data.positions where inode <> all(%s) returning inode", inodes)


def _columns(rows, count):
    """Rows as the lists that unnest() takes."""
    return [list(column) for column in zip(*rows)] if rows else [[] for _ in range(count)]


def _put_back(run, row):
    """An interval that was open when the loader ended, where its events look for it."""
    one = Interval.__new__(Interval)
    one.run, one.stored = run, True
    one.id, one.pid, one.process_start, opened_at, one.began_before, one.opens, one.held = row[:7]
    one.written, one.deleted, one.volume, one.service, one.user, one.client, one.command, one.path = row[7:]
    one.opened_at = microseconds(opened_at)
    process = run.processes.setdefault(one.pid, Process(one.process_start))
    process.start = process.start if one.process_start is None else one.process_start
    process.files[one.path] = one
