"""A centre of the tests' own: PostgreSQL in a temporary folder, journals as the receiver writes them, the loader."""

import array
import contextlib
import fcntl
import glob
import os
import pwd
import shutil
import signal
import subprocess
import sys
import termios
import time
import unittest

import psycopg

from harness.processes import output_of, plain_environment, start, stop
from harness.waiting import wait_until

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
CENTRE = os.path.join(ROOT, "centre")
LOAD = os.path.join(CENTRE, "vorn-openfiles-load")
REMOTE = "/lib/systemd/systemd-journal-remote"
USER = "vorn-openfiles-load"
FOLDER = "/tmp/centre"
JOURNALS = f"{FOLDER}/journals"
SOCKETS = f"{FOLDER}/sockets"
DATABASE = f"host={SOCKETS} dbname=vornopenfiles"
PROGRAMS = sorted(glob.glob("/usr/lib/postgresql/*/bin"))[-1]

# Tests are root, and ask as whom they like; everybody else is who he is.
HBA = "local all all peer map=tests\n"
IDENT = "tests root postgres\ntests root reader\ntests root stranger\ntests root vorn-openfiles-load\ntests /^(.*)$ \\1\n"

sys.path.insert(0, CENTRE)


# Quick, and safe as long as the machine goes on: what the tests kill is processes.
QUICK = ("fsync=off", "shared_buffers=16MB", "max_wal_size=64MB", "autovacuum=off")


class PostgreSQL:
    def __init__(self, data, settings=QUICK):
        self.data = data
        self._settings = [word for setting in settings for word in ("-c", setting)]
        self._process = None

    def create(self):
        for folder in (FOLDER, SOCKETS, JOURNALS, self.data):
            os.makedirs(folder, exist_ok=True)
            os.chmod(folder, 0o755)
        shutil.chown(SOCKETS, "postgres")
        shutil.chown(self.data, "postgres")
        output_of(["runuser", "-u", "postgres", "--", f"{PROGRAMS}/initdb", "-D", self.data, "-A", "peer",
                   "--no-sync", "--encoding=UTF8", "--locale=C"])
        for name, text in (("pg_hba.conf", HBA), ("pg_ident.conf", IDENT)):
            with open(f"{self.data}/{name}", "w", encoding="ascii") as file:
                file.write(text)

    def start(self):
        self._process = start(
            [f"{PROGRAMS}/postgres", "-D", self.data, "-k", SOCKETS, "-c", "listen_addresses=", *self._settings],
            user="postgres", stderr=subprocess.DEVNULL)
        wait_until(self.answers, "PostgreSQL to answer")

    def answers(self):
        try:
            connect("postgres", "postgres").close()
            return True
        except psycopg.OperationalError:
            return False

    @property
    def pid(self):
        return self._process.pid

    def kill(self):
        """As a power cut would: the postmaster and all that it has started, which share its memory."""
        children = children_of(self._process.pid)
        for pid in (self._process.pid, *children):
            with contextlib.suppress(ProcessLookupError):  # some come and go by themselves
                os.kill(pid, signal.SIGKILL)
        self._process.wait()
        wait_until(lambda: not any(os.path.exists(f"/proc/{pid}") for pid in children), "PostgreSQL to be gone")

    def stop(self):
        self._process.send_signal(signal.SIGINT)
        self._process.wait()


def children_of(pid):
    with open(f"/proc/{pid}/task/{pid}/children", encoding="ascii") as file:
        return [int(child) for child in file.read().split()]


def connect(user="postgres", database="vornopenfiles"):
    return psycopg.connect(host=SOCKETS, dbname=database, user=user, autocommit=True)


def ask(query, *values, user="postgres"):
    """Rows of a query to the centre's database."""
    with connect(user) as connection:
        return connection.execute(query, values or None).fetchall()


def do(query, *values):
    with connect() as connection:
        connection.execute(query, values or None)


def set_up_centre(data=f"{FOLDER}/data", settings=QUICK):
    """For setUpModule(): PostgreSQL, and an empty centre that new_centre() copies."""
    try:
        pwd.getpwnam(USER)
    except KeyError:
        output_of(["useradd", "--system", USER])
    postgresql = PostgreSQL(data, settings)
    postgresql.create()
    postgresql.start()
    unittest.addModuleCleanup(postgresql.stop)
    loader("--setup")
    with connect(database="postgres") as connection:
        connection.execute("alter database vornopenfiles rename to empty_centre")
        connection.execute("create role reader login in role vorn_reader")
    new_centre()
    return postgresql


def new_centre():
    """An empty database and no journals."""
    with connect(database="postgres") as connection:
        connection.execute("drop database if exists vornopenfiles with (force)")
        connection.execute("create database vornopenfiles owner vorn_owner template empty_centre")
    shutil.rmtree(JOURNALS)
    os.mkdir(JOURNALS)
    shutil.chown(JOURNALS, USER, USER)
    os.chmod(JOURNALS, 0o2770)  # as it is installed: what the receiver writes is the loader's to read


def loader(*arguments, user=None):
    """Runs the loader to its end; gives what it said on standard error."""
    if user is not None:
        arguments = ("--journals", JOURNALS, *arguments)
    prefix = ["runuser", "-u", user, "--"] if user else []
    done = subprocess.run([*prefix, LOAD, "--database", DATABASE, *arguments], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, env=plain_environment(), text=True, check=False, timeout=120)
    if done.returncode != 0:
        raise AssertionError(f"the loader ended with {done.returncode}: {done.stderr}")
    return done.stdout + done.stderr


def load():
    return loader("--once", user=USER)


def start_loader(**options):
    return start([LOAD, "--database", DATABASE, "--journals", JOURNALS], user=USER, env=plain_environment(),
                 **options)


RUN = "0123456789abcdef" * 2
DEFAULTS = {"_UID": "0", "VORN_SCHEMA": "2", "SYSLOG_IDENTIFIER": "vorn-openfiles", "PRIORITY": "6",
            "MESSAGE_ID": "f1b3b7a0c56d4f0f9a0a7a4c8f2e6d15"}


class Host:
    """A storage host's events in the form of its journal; its clock goes a second with each event."""

    def __init__(self, node="alpha", run=RUN, at=None):
        self.node = node
        self.run = run
        self.seq = 0
        # Never two seconds that fall into different days.
        self.at = at if at is not None else (int(time.time()) // 86400 * 86400 - 43200) * 1_000_000
        self.entries = []

    def tell(self, event, **fields):
        """Fields without VORN_ before them; None takes one away."""
        self.seq += 1
        self.at += 1_000_000
        own = {"VORN_NODE": self.node, "VORN_RUN": self.run, "VORN_SEQ": self.seq, "VORN_AT": self.at,
               "VORN_EVENT": event, **DEFAULTS}
        if event in ("opened", "closed", "closed-written"):
            own.update(VORN_PID=4711, VORN_PROCESS_START=100, VORN_VOLUME="/volume1", VORN_SERVICE="SMB",
                       VORN_USER="alice", VORN_HOST="192.0.2.10", VORN_COMMAND="smbd")
        own.update({name if name in DEFAULTS else f"VORN_{name}": value for name, value in fields.items()})
        self.entries.append(entry({name: value for name, value in own.items() if value is not None},
                                  len(self.entries) + 1, self.at))
        return self

    def opened(self, path, **fields):
        return self.tell("opened", PATH=path, **fields)

    def closed(self, path, **fields):
        return self.tell("closed", PATH=path, **fields)

    def written(self, path, **fields):
        return self.tell("closed-written", PATH=path, **fields)

    def write(self):
        """Into the node's journal, by the receiver's own program; that goes on where it was."""
        write_entries(self.entries, f"{JOURNALS}/remote-{self.node}.journal")
        self.entries = []
        return self


def as_bytes(value):
    return value if isinstance(value, bytes) else str(value).encode()


def entry(fields, monotonic, at):
    """In the journal's export format, with lengths: values may be any bytes. A list is a repeated field."""
    text = f"__REALTIME_TIMESTAMP={at}\n__MONOTONIC_TIMESTAMP={monotonic}\n_BOOT_ID={'b' * 32}\n".encode()
    for name, values in fields.items():
        for value in values if isinstance(values, list) else [values]:
            value = as_bytes(value)
            text += name.encode() + b"\n" + len(value).to_bytes(8, "little") + value + b"\n"
    return text + b"\n"


def write_entries(entries, path, kill=False):
    """Kill: when all has been written, the receiver's program is ended so that it can't close the journal."""
    writer = start([REMOTE, "--output", path, "-"], stdin=subprocess.PIPE, stderr=subprocess.PIPE)
    text = b"".join(entries)
    if kill:
        writer.stdin.write(text)
        writer.stdin.flush()
        wait_until(lambda: waits_for_input(writer), "the journal to be written")
        stop(writer)
    elif writer.communicate(text)[1] is None or writer.returncode != 0:
        raise AssertionError(f"the journal could not be written: {writer.returncode}")
    shutil.chown(path, USER)


def waits_for_input(process):
    """True when it has read all that there was, and sleeps."""
    unread = array.array("i", [0])
    fcntl.ioctl(process.stdin.fileno(), termios.FIONREAD, unread)
    with open(f"/proc/{process.pid}/stat", encoding="ascii") as file:
        return unread[0] == 0 and file.read().rpartition(")")[2].split()[0] == "S"


def intervals():
    """What is known of files, in order."""
    return ask("select path, opened_at, closed_at, began_before, end_known, opens, written from vorn.intervals"
               " order by opened_at, path")
