"""The journal files of the receiver, followed: one node's in the order in which they were written.

Each file is read by itself. Read as one journal they would be put in order by their times, and what a host
sends late would lie before what has been read already.
"""

import os
import re
import sys
import time

from systemd import journal

from vorn_centre.entry import MESSAGE_ID

# As systemd-journal-remote names them: one that is written to, one that is full, one that wasn't closed.
NAME = re.compile(r"remote-(?P<node>[A-Za-z0-9][A-Za-z0-9._-]{0,252})"
                  r"(?P<archived>@[0-9a-f]+(-[0-9a-f]+){1,2})?\.journal(?P<unclean>~)?")
SETTLED = 2_000_000_000  # nanoseconds after which a file's time of change is believed
IDLE = 60                # seconds after which a file that nobody writes to is closed


class _Reader(journal.Reader):
    """Gives the fields as they are."""

    def _convert_entry(self, entry):
        return entry


class JournalFile:
    def __init__(self, node, inode, cursor):
        self.node = node
        self.inode = inode
        self.cursor = cursor  # of the last entry that was read
        self.path = None
        self.archived = False
        self.changed = 0      # nanoseconds
        self.finished = False
        self.held = None      # cursor of the last entry, until it has been read again
        self._seen = None
        self._reader = None
        self._used = 0

    def locate(self, path, status, archived):
        self.path = path
        self.archived = archived
        self.changed = status.st_mtime_ns
        self._stamp = (status.st_mtime_ns, status.st_size)

    def has_news(self):
        return not self.finished and (
            self.held is not None or self._seen != self._stamp or self.changed > time.time_ns() - SETTLED)

    def read(self, limit):
        """Up to so many entries, and whether these were the last."""
        stamp, archived = self._stamp, self.archived
        entries = []
        try:
            self._open()
            while len(entries) <= limit:
                fields = self._reader.get_next()
                if not fields:
                    break
                entries.append((self, fields["__CURSOR"], fields))
            at_end = len(entries) <= limit
            self._put_back(entries, at_end, archived)
        except OSError as error:
            at_end = self._give_up(error)
        if entries:
            self.cursor = entries[-1][1]
        if at_end:
            self._seen = stamp
            self.finished = archived
        if self.finished:
            self.close()
        return entries, at_end

    def _put_back(self, entries, at_end, archived):
        """One that was read beyond the limit; or the last one, which may lack fields: its writer links them one
        by one, and what isn't linked yet is passed over without a word. It is read again at the next look."""
        before, self.held = self.held, None
        if not entries or at_end and (archived or entries[-1][1] == before):
            return
        cursor = entries.pop()[1]
        self._reader.seek_cursor(cursor)
        if at_end:
            self.held = cursor

    def _open(self):
        self._used = time.monotonic()
        if self._reader is not None:
            return
        reader = _Reader(files=[self.path])
        reader.add_match(MESSAGE_ID=MESSAGE_ID)
        if self.cursor is not None:
            reader.seek_cursor(self.cursor)
            # A file that has got the number of one that was removed begins at its beginning.
            if not reader.get_next() or not reader.test_cursor(self.cursor):
                reader.seek_head()
        self._reader = reader

    def _give_up(self, error):
        """What can't be read is left until it changes, and what is missing then shows by its numbers."""
        self.close()
        self.held = None
        print(f"{self.path}: {error.strerror}, left as it is until it changes", file=sys.stderr, flush=True)
        return True

    def close_if_idle(self):
        if self._reader is not None and time.monotonic() > self._used + IDLE:
            self.close()

    def close(self):
        if self._reader is not None:
            self._reader.close()
            self._reader = None


class Journals:
    def __init__(self, folder, cursors):
        """Cursors are by inode, as they were committed."""
        self._folder = folder
        self._cursors = dict(cursors)
        self._files = {}
        self._turn = 0
        self._odd = set()

    def close(self):
        for file in self._files.values():
            file.close()

    def read(self, limit):
        """Entries as (file, cursor, fields); no node keeps the others waiting."""
        nodes = self._scan()
        self._turn += 1
        entries = []
        names = sorted(nodes)
        for place in range(len(names)):
            if len(entries) >= limit:
                break
            name = names[(self._turn + place) % len(names)]
            entries += self._read_node(nodes[name], min(max(limit // 4, 1), limit - len(entries)))
        return entries

    @staticmethod
    def _read_node(files, limit):
        entries = []
        for file in sorted(files, key=lambda file: (not file.archived, file.changed)):
            if file.has_news():
                found, at_end = file.read(limit - len(entries))
                entries += found
                if not at_end or len(entries) >= limit:
                    break
            file.close_if_idle()
        return entries

    def _scan(self):
        """Files that are there, by node."""
        nodes, present = {}, set()
        for entry in os.scandir(self._folder):
            match = NAME.fullmatch(entry.name)
            if match is None or match["unclean"] and not match["archived"]:
                self._note_odd(entry.name)
                continue
            try:
                status = os.stat(entry.path)
            except FileNotFoundError:
                continue
            present.add(status.st_ino)
            file = self._files.get(status.st_ino)
            if file is None or file.node != match["node"]:
                cursor = self._cursors.get(status.st_ino)
                file = self._files[status.st_ino] = JournalFile(match["node"], status.st_ino, cursor)
            file.locate(entry.path, status, match["archived"] is not None)
            nodes.setdefault(file.node, []).append(file)
        for inode in self._files.keys() - present:
            self._files.pop(inode).close()
            self._cursors.pop(inode, None)
        return nodes

    def _note_odd(self, name):
        if name not in self._odd and len(self._odd) < 1000:
            self._odd.add(name)
            print(f"{self._folder}/{name}: no journal of a node, left alone", file=sys.stderr, flush=True)

    def holds_back(self):
        return any(file.held is not None for file in self._files.values())

    def present(self):
        return list(self._files)

    def remove_older_than(self, seconds):
        """Files that won't grow and are committed to their end."""
        for file in list(self._files.values()):
            if file.finished and file.changed < time.time_ns() - seconds * 1_000_000_000:
                os.unlink(file.path)
