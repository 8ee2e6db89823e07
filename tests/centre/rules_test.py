"""The rules by which events become intervals, one story a line."""

import unittest

import centre_host  # noqa: F401  it says where the modules are
from vorn_centre.entry import Event
from vorn_centre.intervals import Changes, Node, Numbers
from vorn_centre.text import bytes_of, text_of

SECOND = 1_000_000


def event(at, what, seq):
    """ "o 7.1 a": process 7 that started at 1 opens /a; c closes, w after writing, i finds it open; "c 7 a" where
    the start isn't known, "c 7.1 -/a" where the folder isn't. "start B", "stop A", "beat A" are of a run."""
    verb, *rest = what.split()
    if verb in ("start", "stop", "beat"):
        kind = {"start": "started", "stop": "stopped", "beat": "heartbeat"}[verb]
        return Event(rest[0], seq, at * SECOND, kind)
    kind = {"o": "opened", "i": "opened", "c": "closed", "w": "closed-written"}[verb]
    pid, _, start = rest[0].partition(".")
    name = rest[1].rpartition("/")[2]
    path = None if rest[1].startswith("-") else f"/{rest[1]}"
    return Event(rest[2] if len(rest) > 2 else "A", seq, at * SECOND, kind, verb == "i", pid=int(pid),
                 process_start=int(start) if start else None, path=path, filename=name)


def story(text, stored):
    """The intervals of a story, an event a second: path, begin ("?" when it began before), end ("+" when still
    open, "~" behind it when it isn't known), opens and "w" if it was written."""
    node, numbers, changes = Node(1, "alpha"), Numbers(), Changes()
    seqs, told = {}, []
    for at, what in enumerate(text.split(", "), 1):
        run = what.split()[-1] if what.split()[-1] in "AB" else "A"
        seqs[run] = seqs.get(run, 0) + 1
        node.take(event(at, what, seqs[run]), numbers, changes)
        if stored:  # as after a commit
            told += changes.closed
            for interval in changes.opened.values():
                interval.stored = True
            changes = Changes()
    told += changes.closed
    lines = [line(one, f"{end // SECOND}{'' if known else '~'}") for _, one, end, known in told]
    for run in node.runs.values():
        for process in run.processes.values():
            lines += [line(one, "+") for one in process.files.values()]
    return ", ".join(sorted(lines))


def line(interval, end):
    begin = f"{'?' if interval.began_before else ''}{interval.opened_at // SECOND}"
    return (f"{interval.path} {begin}-{end}" + (f" x{interval.opens}" if interval.opens > 1 else "")
            + (" w" if interval.written else ""))


STORIES = [
    # Opens and closes of a process are counted.
    ("o 7.1 a, c 7.1 a", "/a 1-2"),
    ("o 7.1 a, w 7.1 a", "/a 1-2 w"),
    ("o 7.1 a, o 7.1 a, c 7.1 a, w 7.1 a", "/a 1-4 x2 w"),
    ("o 7.1 a, o 7.1 a, c 7.1 a", "/a 1-+ x2"),
    ("o 7.1 a, o 7.1 b, c 7.1 a", "/a 1-3, /b 2-+"),
    ("o 7.1 a, c 7.1 a, o 7.1 a, c 7.1 a", "/a 1-2, /a 3-4"),
    ("o 7.1 a, o 8.1 a, c 7.1 a", "/a 1-3, /a 2-+"),
    # What was found open began before, and is one open however often it is found.
    ("i 7.1 a, c 7.1 a", "/a ?1-2"),
    ("o 7.1 a, i 7.1 a, c 7.1 a", "/a 1-3"),
    ("i 7.1 a, o 7.1 a, c 7.1 a, c 7.1 a", "/a ?1-4 x2"),
    # A close without an open.
    ("c 7.1 a", "/a ?1-1"),
    ("w 7.1 a", "/a ?1-1 w"),
    # A process that has ended doesn't tell its start any more.
    ("o 7.1 a, c 7 a", "/a 1-2"),
    ("o 7 a, c 7.1 a", "/a 1-2"),
    ("o 7 a, o 7.1 b, c 7.2 c", "/a 1-3~, /b 2-3~, /c ?3-3"),
    # Another process by the same pid: the first one has gone, with what it held.
    ("o 7.1 a, o 7.2 a, c 7.2 a", "/a 1-2~, /a 2-3"),
    ("o 7.1 a, c 7.2 a", "/a 1-2~, /a ?2-2"),
    ("o 7.1 a, o 7.2 b, c 7.1 a", "/a 1-2~, /a ?3-3, /b 2-3~"),
    # The folder is gone when the close is read: the name tells, if it is one file's.
    ("o 7.1 d/a, c 7.1 -/a", "/d/a 1-2"),
    ("o 7.1 d/a, o 7.1 e/a, c 7.1 -/a", "/d/a 1-+, /e/a 2-+"),
    ("o 7.1 -/a, c 7.1 -/a", ""),
    # The end of a run.
    ("start A, o 7.1 a, stop A", "/a 2-3~"),
    ("start A, o 7.1 a, beat A, o 8.1 b, c 8.1 b, start B, o 7.1 a B", "/a 2-5~, /a 7-+, /b 4-5"),
    ("start A, start B, o 7.1 a A, start A", "/a 3-+"),
    ("start A, start B, o 7.1 a A, c 7.1 a A", "/a 3-4"),
]


class Intervals(unittest.TestCase):
    def test_follow_from_events(self):
        for stored in (False, True):
            for events, expected in STORIES:
                with self.subTest(events, stored=stored):
                    self.assertEqual(story(events, stored), expected)

    def test_learn_what_later_events_know(self):
        node, changes = Node(1, "alpha"), Changes()
        node.take(Event("A", 1, 1, "opened", pid=7, path="/a"), Numbers(), changes)
        node.take(Event("A", 2, 2, "closed", pid=7, path="/a", process_start=5, user="alice", client="192.0.2.1"),
                  Numbers(), changes)
        [(_, one, _, _)] = changes.closed
        self.assertEqual((one.process_start, one.user, one.client), (5, "alice", "192.0.2.1"))

    def test_are_never_negative(self):
        node, changes = Node(1, "alpha"), Changes()
        node.take(Event("A", 1, 100 * SECOND, "opened", pid=7, path="/a"), Numbers(), changes)
        node.take(Event("A", 2, 50 * SECOND, "closed", pid=7, path="/a"), Numbers(), changes)
        [(_, one, end, _)] = changes.closed
        self.assertEqual((one.opened_at, end), (100 * SECOND, 100 * SECOND))


class Text(unittest.TestCase):
    def test_holds_every_byte_and_is_unambiguous(self):
        for raw, text in [(b"/a", "/a"), (b"\xff", r"\xFF"), (rb"\xFF", r"\\xFF"), (b"a\0b", r"a\x00b"),
                          ("\u00fc".encode(), "\u00fc"), (b"\xc3", r"\xC3"), (b"\xed\xa0\x80", r"\xED\xA0\x80"),
                          (b"\\", "\\\\"), (b"\n", "\n"), (b"\xf0\x9f\x98\x80\xf0", "\U0001f600\\xF0")]:
            with self.subTest(raw):
                self.assertEqual(text_of(raw), text)
                self.assertEqual(bytes_of(text), raw)
