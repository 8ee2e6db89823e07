"""The rules by which events become intervals, in memory alone.

A Node takes its events in their order and notes in a Changes what the database has to be told. The rules
are those of docs/fleet.md, "What an interval is".
"""

from vorn_centre.entry import FILE_EVENTS

BACKWARDS = 1_000_000  # microseconds that a clock may go back without a note


class Interval:
    """A file that a process holds open."""

    __slots__ = ("id", "run", "pid", "process_start", "opened_at", "began_before", "opens", "held", "written",
                 "deleted", "volume", "service", "user", "client", "command", "path", "stored")

    def __init__(self, number, run, event, *, began_before):
        self.id = number
        self.run = run
        self.pid = event.pid
        self.process_start = event.process_start
        self.opened_at = event.at
        self.began_before = began_before
        self.opens = self.held = 1
        self.written = self.deleted = False
        self.volume = self.service = self.user = self.client = self.command = None
        self.path = event.path
        self.stored = False
        self.learn(event)

    def learn(self, event):
        """Later events of a process may know what earlier ones didn't."""
        if self.process_start is None:
            self.process_start = event.process_start
        self.volume = self.volume or event.volume
        self.service = self.service or event.service
        self.user = self.user or event.user
        self.client = self.client or event.client
        self.command = self.command or event.command
        self.written = self.written or event.kind == "closed-written"
        self.deleted = self.deleted or event.deleted


class Process:
    """What a process of a run holds, by path."""

    __slots__ = ("start", "files")

    def __init__(self, start):
        self.start = start
        self.files = {}

    def is_another(self, start):
        return None not in (start, self.start) and start != self.start


class Run:
    """A run of the command on a node."""

    def __init__(self, number, name, at):
        self.id = number
        self.name = name
        self.started_at = self.last_at = at
        self.last_seq = self.events = self.repeated = self.pathless = 0
        self.ended_at = None
        self.stopped = False
        self.volumes = self.unwatched = None
        self.processes = {}


class Changes:
    """What a batch has changed, for one transaction."""

    def __init__(self):
        self.opened = {}     # id: Interval that the database doesn't have
        self.changed = {}    # id: Interval that it has
        self.removed = []    # ids of such
        self.closed = []     # (Node, Interval, closed_at, end_known)
        self.nodes = {}      # id: Node
        self.runs = {}       # id: (Node, Run)
        self.gaps = []       # (Node, Run, kind, at_from, at_to, seq_from, seq_to, reason)
        self.refused = []    # (Node, identity, reason, fields)


class Numbers:
    """Numbers of what is new; this loader is the only one who gives any."""

    def __init__(self, runs=0, intervals=0):
        self.runs = runs
        self.intervals = intervals

    def run(self):
        self.runs += 1
        return self.runs

    def interval(self):
        self.intervals += 1
        return self.intervals


class Node:
    def __init__(self, number, name):
        self.id = number
        self.name = name
        self.last_at = None
        self.runs = {}

    def take(self, event, numbers, changes):
        run = self._numbered(event, numbers, changes)
        if run is None:
            return
        run.events += 1
        if event.at < run.last_at - BACKWARDS:
            changes.gaps.append((self, run, "clock", run.last_at, event.at, event.seq, event.seq, None))
        run.last_at = self.last_at = event.at
        if event.kind in FILE_EVENTS:
            self._revive(run)
            self._take_file(run, event, numbers, changes)
        else:
            self._take_sign(run, event, changes)

    def skip(self, malformed, changes):
        """A refused entry of a run has come all the same: its number isn't missing."""
        run = self.runs.get(malformed.run)
        if run is not None:
            self._count(run, malformed.seq, run.last_at, changes)

    def _numbered(self, event, numbers, changes):
        """The run of the event; nothing when it came before, as entries do whose arrival wasn't confirmed."""
        run = self.runs.get(event.run)
        if run is None:
            run = self.runs[event.run] = Run(numbers.run(), event.run, event.at)
        return run if self._count(run, event.seq, event.at, changes) else None

    def _count(self, run, seq, at, changes):
        changes.runs[run.id] = (self, run)
        changes.nodes[self.id] = self
        if seq <= run.last_seq:
            run.repeated += 1
            return False
        if seq > run.last_seq + 1:
            since = run.last_at if run.last_seq else None
            changes.gaps.append((self, run, "missing", since, at, run.last_seq + 1, seq - 1, None))
        run.last_seq = seq
        return True

    def _take_sign(self, run, event, changes):
        if event.kind == "started":
            run.volumes, run.unwatched = list(event.volumes), list(event.unwatched)
            for other in self.runs.values():
                if other is not run and other.ended_at is None:
                    self._end_run(other, other.last_at, changes)
        elif event.kind == "stopped":
            run.stopped = True
            self._end_run(run, event.at, changes)
        elif event.kind in ("lost", "incomplete"):
            reason = "; ".join(event.reasons) or None
            changes.gaps.append((self, run, event.kind, None, event.at, event.seq, event.seq, reason))

    def _end_run(self, run, at, changes):
        run.ended_at = at
        changes.runs[run.id] = (self, run)
        for process in run.processes.values():
            self._end_process(process, at, changes)
        run.processes.clear()

    def _revive(self, run):
        run.ended_at = None
        run.stopped = False

    def _take_file(self, run, event, numbers, changes):
        process = run.processes.get(event.pid)
        if process is None:
            process = run.processes[event.pid] = Process(event.process_start)
        elif process.is_another(event.process_start):
            self._end_process(process, event.at, changes)
            process.start = event.process_start
        elif process.start is None:
            process.start = event.process_start
        if event.kind == "opened":
            self._open(run, process, event, numbers, changes)
        else:
            self._close(run, process, event, numbers, changes)
        if not process.files:
            del run.processes[event.pid]

    def _open(self, run, process, event, numbers, changes):
        if event.path is None:
            run.pathless += 1
            return
        interval = process.files.get(event.path)
        if interval is None:
            interval = Interval(numbers.interval(), run, event, began_before=event.initial)
            process.files[event.path] = interval
            changes.opened[interval.id] = interval
        elif not event.initial:
            interval.opens += 1
            interval.held += 1
            interval.learn(event)
            self._note(interval, changes)

    def _close(self, run, process, event, numbers, changes):
        interval = self._closed_interval(process, event)
        if interval is not None:
            interval.learn(event)
            interval.held -= 1
            if interval.held > 0:
                self._note(interval, changes)
                return
            del process.files[interval.path]
            self._end(interval, event.at, True, changes)
        elif event.path is None:
            run.pathless += 1
        else:
            unopened = Interval(0, run, event, began_before=True)
            changes.closed.append((self, unopened, event.at, True))

    @staticmethod
    def _closed_interval(process, event):
        """By the path; where the folder is gone, by the name, if that is one file's only."""
        if event.path is not None or event.filename is None:
            return process.files.get(event.path)
        named = [interval for path, interval in process.files.items()
                 if path.rpartition("/")[2] == event.filename]
        return named[0] if len(named) == 1 else None

    def _end_process(self, process, at, changes):
        for interval in process.files.values():
            self._end(interval, at, False, changes)
        process.files.clear()

    def _end(self, interval, at, known, changes):
        if interval.stored:
            changes.changed.pop(interval.id, None)
            changes.removed.append(interval.id)
        else:
            del changes.opened[interval.id]
        changes.closed.append((self, interval, max(at, interval.opened_at), known))

    @staticmethod
    def _note(interval, changes):
        if interval.stored:
            changes.changed[interval.id] = interval
