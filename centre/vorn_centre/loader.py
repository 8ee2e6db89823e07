"""The loop: entries, events, intervals, commit."""

import signal
import sys
import time

import psycopg
from systemd import daemon

from vorn_centre.database import Database
from vorn_centre.entry import Malformed, bounded, parse
from vorn_centre.intervals import Changes
from vorn_centre.journals import Journals

BATCH = 5000
PAUSE = 0.5           # seconds between looks at files that have no news
LONGEST_WAIT = 30     # seconds between attempts to reach the database
HOUR = 3600
FUTURE = 86_400_000_000  # microseconds that a node's clock may be ahead
ENDING = {signal.SIGTERM, signal.SIGINT}


def ended(seconds):
    """Waits, and says whether it is to end."""
    return signal.sigtimedwait(ENDING, seconds) is not None


class Loader:
    def __init__(self, conninfo, folder):
        self._conninfo = conninfo
        self._folder = folder
        self._database = None
        self._journals = None
        self._poison = {}     # identity: why the database refused that entry
        self._careful = 0     # entries to be stored one by one, since one of them is poison
        self._said = None

    def run(self, once):
        """Until it is told to end, or, once, until nothing is left to load."""
        signal.pthread_sigmask(signal.SIG_BLOCK, ENDING)
        daemon.notify("READY=1")
        wait = PAUSE
        while not ended(0):
            try:
                loaded = self._step()
                wait = PAUSE
            except psycopg.Error as error:
                self._forget()
                self._say(f"the database: {str(error).strip()}; waiting for it")
                if ended(wait):
                    break
                wait = min(2 * wait, LONGEST_WAIT)
                continue
            if not loaded and (once and not self._journals.holds_back() or ended(PAUSE)):
                break
        self._forget()

    def _step(self):
        """A batch; how many entries it had."""
        self._connect()
        self._every_hour()
        entries = self._journals.read(1 if self._careful else BATCH)
        if not entries:
            self._careful = 0
            return 0
        try:
            self._store(entries)
        except (psycopg.DataError, psycopg.IntegrityError) as error:
            self._suspect(entries, error)
        self._careful = max(0, self._careful - len(entries))
        return len(entries)

    def _connect(self):
        if self._database is not None:
            return
        self._database = Database(self._conninfo)
        self._journals = Journals(self._folder, self._database.cursors)
        self._hour = None
        self._say(f"loading {self._folder}")

    def _forget(self):
        """Begins anew from what is committed."""
        for part in (self._journals, self._database):
            if part is not None:
                part.close()
        self._journals = self._database = None

    def _every_hour(self):
        hour = time.time() // HOUR
        if hour == self._hour:
            return
        before, self._hour = self._hour, hour
        self._oldest, journal_days = self._database.settings()
        if before is not None:
            self._journals.remove_older_than(journal_days * 24 * HOUR)
            self._database.forget_positions_but(self._journals.present())
        if before is not None and hour // 24 != before // 24:
            self._database.a_day_has_passed()

    def _store(self, entries):
        changes, cursors = Changes(), {}
        span = (self._oldest, time.time_ns() // 1000 + FUTURE)
        for file, cursor, fields in entries:
            self._take(self._database.node(file.node), cursor, fields, span, changes)
            cursors[file.inode] = (file.inode, file.node, cursor)
        self._database.store(changes, list(cursors.values()))

    def _take(self, node, cursor, fields, span, changes):
        identity = identity_of(cursor)
        try:
            event = parse(fields, node.name, span)
            if identity in self._poison:
                raise Malformed(self._poison[identity], event.run, event.seq)
            node.take(event, self._database.numbers, changes)
        except Malformed as malformed:
            changes.nodes[node.id] = node
            node.skip(malformed, changes)
            changes.refused.append((node, identity, str(malformed), bounded(fields)))

    def _suspect(self, entries, error):
        """Which entry it is that the database refuses is found out one by one; that one is put aside."""
        self._forget()
        if len(entries) > 1:
            self._careful = 2 * len(entries)
        else:
            self._poison[identity_of(entries[0][1])] = f"the database refused it: {str(error).strip()[:200]}"

    def _say(self, text):
        if text != self._said:
            print(text, file=sys.stderr, flush=True)
            self._said = text


def identity_of(cursor):
    """What is the same where an entry was sent again, into another file or place."""
    return ";".join(part for part in cursor.split(";") if part[:2] not in ("s=", "i="))
