"""An entry of a node's journal as an event, or why it is none. Pure: no clock, no database."""

import re
from typing import NamedTuple, Optional

from vorn_centre.text import text_of

MESSAGE_ID = "f1b3b7a0c56d4f0f9a0a7a4c8f2e6d15"
FILE_EVENTS = ("opened", "closed", "closed-written")
EVENTS = FILE_EVENTS + ("started", "lost", "incomplete", "heartbeat", "stopped")
SCHEMA = b"2"

RUN = re.compile(rb"[0-9a-f]{32}")
NUMBER = re.compile(rb"[0-9]{1,19}")
MOST_NUMBER = 2**63 - 1
MOST_PID = 2**31 - 1
MOST_PATH = 32768  # bytes; the kernel's own bound is 4,096 for what is named at once
MOST_TEXT = 4096

# What a reader of the table "refused" gets to see of an entry.
MOST_FIELDS = 32
MOST_FIELD = 400


class Event(NamedTuple):
    """Numbers as such, names as text_of() makes them, None for what isn't known; at in microseconds since 1970."""

    run: str
    seq: int
    at: int
    kind: str
    initial: bool = False
    deleted: bool = False
    pid: Optional[int] = None
    process_start: Optional[int] = None
    path: Optional[str] = None
    filename: Optional[str] = None
    volume: Optional[str] = None
    service: Optional[str] = None
    user: Optional[str] = None
    client: Optional[str] = None
    command: Optional[str] = None
    volumes: tuple = ()
    unwatched: tuple = ()
    reasons: tuple = ()


class Malformed(Exception):
    """run and seq are those of the entry where they can be told and are this node's own."""

    def __init__(self, reason, run=None, seq=None):
        super().__init__(reason)
        self.run = run
        self.seq = seq


def parse(fields, node, span):
    """Fields are bytes, or lists of them where a name comes more than once. The node is the certificate's
    name, the span the earliest and latest moment that is believed, in microseconds."""
    _check_origin(fields, node)
    run, seq = _run(fields), _number(fields, "VORN_SEQ", 1)
    try:
        return _event(fields, run, seq, span)
    except Malformed as malformed:
        raise Malformed(str(malformed), run, seq) from None


def _check_origin(fields, node):
    # The host's journal writes down who sent an entry; anybody there may send one.
    if _one(fields, "_UID") != b"0":
        raise Malformed("not written by root of its host")
    if _needed(fields, "VORN_NODE") != node.encode():
        raise Malformed("VORN_NODE is not the name in the certificate")
    if _needed(fields, "VORN_SCHEMA") != SCHEMA:
        raise Malformed("VORN_SCHEMA is not 2")


def _event(fields, run, seq, span):
    kind = _needed(fields, "VORN_EVENT").decode("latin-1")
    if kind not in EVENTS:
        raise Malformed("VORN_EVENT is none that is known")
    at = _number(fields, "VORN_AT", 0)
    if not span[0] <= at <= span[1]:
        raise Malformed("VORN_AT is too old or in the future")
    if kind in FILE_EVENTS:
        return _file_event(fields, Event(run, seq, at, kind))
    return Event(run, seq, at, kind, volumes=_texts(fields, "VORN_VOLUMES"),
                 unwatched=_texts(fields, "VORN_UNWATCHED"), reasons=_texts(fields, "VORN_REASON"))


def _file_event(fields, event):
    path = _text(fields, "VORN_PATH", MOST_PATH)
    if path is not None and not path.startswith("/"):
        raise Malformed("VORN_PATH is no full path")
    start = fields.get("VORN_PROCESS_START")
    return event._replace(
        pid=_number(fields, "VORN_PID", 1, MOST_PID),
        process_start=None if start is None else _number(fields, "VORN_PROCESS_START", 0),
        path=path, filename=_text(fields, "VORN_FILENAME"), volume=_text(fields, "VORN_VOLUME"),
        service=_text(fields, "VORN_SERVICE"), user=_text(fields, "VORN_USER"), client=_text(fields, "VORN_HOST"),
        command=_text(fields, "VORN_COMMAND"), deleted=_flag(fields, "VORN_DELETED"),
        initial=_flag(fields, "VORN_INITIAL"))


def _one(fields, name):
    value = fields.get(name)
    if isinstance(value, list):
        raise Malformed(f"{name} comes more than once")
    return value


def _needed(fields, name):
    value = _one(fields, name)
    if value is None:
        raise Malformed(f"{name} is missing")
    return value


def _run(fields):
    value = _needed(fields, "VORN_RUN")
    if not RUN.fullmatch(value):
        raise Malformed("VORN_RUN is not 32 hexadecimal digits")
    return value.decode()


def _number(fields, name, least, most=MOST_NUMBER):
    value = _needed(fields, name)
    if not NUMBER.fullmatch(value) or not least <= int(value) <= most:
        raise Malformed(f"{name} is not a number from {least} to {most}")
    return int(value)


def _flag(fields, name):
    value = _one(fields, name)
    if value not in (None, b"yes", b"no"):
        raise Malformed(f"{name} is neither yes nor no")
    return value == b"yes"


def _text(fields, name, most=MOST_TEXT):
    value = _one(fields, name)
    if value is None:
        return None
    if not value or len(value) > most:
        raise Malformed(f"{name} is empty or longer than {most} bytes")
    return text_of(value)


def _texts(fields, name):
    value = fields.get(name, [])
    values = value if isinstance(value, list) else [value]
    if len(values) > 1000 or any(len(one) > MOST_TEXT for one in values):
        raise Malformed(f"{name} is too much")
    return tuple(text_of(one) for one in values)


def bounded(fields):
    """What is shown of an entry that was refused."""
    shown = {}
    for name in sorted(fields, key=lambda name: (not name.startswith("VORN_"), name))[:MOST_FIELDS]:
        value = fields[name]
        if isinstance(value, list):
            value = b", ".join(value[:8])
        if isinstance(value, bytes):
            shown[name[:64]] = text_of(value[:MOST_FIELD]) + ("..." if len(value) > MOST_FIELD else "")
    return shown
