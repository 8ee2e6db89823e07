"""Times of the centre's questions; questions.sh runs it."""

import argparse
import os
import statistics
import sys
import time

TESTS = os.path.join(os.path.dirname(os.path.realpath(__file__)), "..", "..", "tests")
sys.path[:0] = [TESTS, os.path.join(TESTS, "centre")]

from centre_host import ask, connect, set_up_centre  # noqa: E402

NODES, DAYS, USERS, PROJECTS = 80, 30, 200, 100
A_DAY = 2000  # holders, of all nodes

# Files of five shares, some much used; intervals from moments to hours; a fifth writes.
FILL = f"""
insert into vorn_data.nodes select n, 'host' || n, now(), now() from generate_series(1, {NODES}) n;
insert into vorn_data.runs (id, node, run, started_at, last_at, last_seq, events)
    select n, n, gen_random_uuid(), now() - interval '{DAYS} days', now(), 1, 1 from generate_series(1, {NODES}) n;
insert into vorn_data.holders
    select d * {A_DAY} + h + 1, current_date - {DAYS} + d, 1 + h % {NODES}, 1 + h % {NODES}, 1000 + h, 100,
        '/volume1', 'SMB', 'user' || (h * 7 + d) % {USERS}, '192.0.2.' || h % 250, 'smbd'
    from generate_series(0, {DAYS} - 1) d, generate_series(0, {A_DAY} - 1) h;
create function pg_temp.path(r double precision) returns text language sql as $$
    select '/volume1/' || (array['photo', 'projects', 'home', 'media', 'backup'])[1 + (r * 4999999)::int % 5]
        || '/folder' || (r * 1000000)::int % {PROJECTS} || '/file' || (r * r * 300000)::int || '.dat' $$;
insert into vorn_data.history
    select d * {A_DAY} + (k % 25) * {NODES} + g % {NODES} + 1, closed - (random() ^ 6) * interval '2 hours', closed,
        1 + g % {NODES}, 1, false, true, random() < 0.2, false, pg_temp.path(random())
    from (select g, (random() * 1000)::int as k, (g - 1) * {DAYS} / %(intervals)s as d,
              date_trunc('day', now()) - interval '{DAYS} days' + (g - 1) * (interval '{DAYS} days' / %(intervals)s)
              as closed
          from generate_series(1, %(intervals)s::bigint) g) e;
insert into vorn_data.open_files
    select g, 1 + g % {NODES}, 1 + g % {NODES}, 1000 + g, 100, now() - random() * interval '8 hours', false, 1, 1,
        false, false, '/volume1', 'SMB', 'user' || g % {USERS}, '192.0.2.1', 'smbd', pg_temp.path(random())
    from generate_series(1, 20000) g;
"""

NIGHT = "date_trunc('day', now()) - interval '6 hours', date_trunc('day', now())"
QUESTIONS = [
    ("who has something in a folder, on 80 hosts", "select * from vorn.who_has('/volume1/projects/folder7')"),
    ("who had a file open yesterday at 14:00, on all hosts",
     "select * from vorn.who_had(%(file)s, date_trunc('day', now()) - interval '10 hours')"),
    ("the same, the host being named",
     "select * from vorn.who_had(%(file)s, date_trunc('day', now()) - interval '10 hours', %(node)s)"),
    ("top users of a share over the month",
     f"select * from vorn.top_users('/volume1/projects', date_trunc('day', now()) - interval '{DAYS} days', now())"),
    ("who changed a folder's files last night", f"select * from vorn.who_changed({NIGHT}, '/volume1/projects/folder7')"),
    ("who changed these 3,000 files last night", f"select * from vorn.who_changed({NIGHT}, paths => %(files)s)"),
    ("state of all hosts", "select * from vorn.nodes"),
]


def fill(intervals):
    with connect() as connection:
        for month in range(3):
            connection.execute("select vorn_data.make_month(now() - make_interval(months => %s))", (month,))
        cursor = connection.cursor(binary=False)
        for statement in FILL.split(";\n"):
            if statement.strip():
                cursor.execute(statement.replace("%(intervals)s", str(intervals)))
        connection.execute("vacuum analyze")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--intervals", type=int, default=3_000_000)
    parser.add_argument("--calls", type=int, default=15)
    options = parser.parse_args()
    # Debian's own settings.
    set_up_centre(settings=("shared_buffers=128MB",))
    fill(options.intervals)
    size = ask("select pg_size_pretty(pg_database_size('vornopenfiles'))")[0][0]
    print(f"{options.intervals} intervals of {NODES} hosts, {DAYS} days: {size}")
    print(ask("select version()")[0][0].partition(",")[0])
    used = ask("select n.name, h.path from vorn_data.history h join vorn_data.nodes n on n.id = h.node"
               " where closed_at >= date_trunc('day', now()) - interval '10 hours'"
               " and opened_at < date_trunc('day', now()) - interval '10 hours' limit 1")[0]
    files = [row[0] for row in ask("select distinct path from vorn_data.history"
                                   " where closed_at > date_trunc('day', now()) - interval '6 hours' limit 3000")]
    with connect("reader") as connection:
        for name, query in QUESTIONS:
            times = []
            for _ in range(options.calls):
                started = time.perf_counter()
                rows = connection.execute(query, {"node": used[0], "file": used[1], "files": files}).fetchall()
                times.append(1000 * (time.perf_counter() - started))
            print(f"{statistics.median(times):9.1f} ms  longest {max(times):9.1f} ms  {len(rows):5} rows  {name}")


main()
