"""Bytes as the database can hold them."""

import codecs
import re


def _escape_undecodable(error):
    return "".join(f"\\x{byte:02X}" for byte in error.object[error.start:error.end]), error.end


codecs.register_error("vorn-escape", _escape_undecodable)
ESCAPE = re.compile(rb"\\(?:x([0-9A-F]{2})|\\)")


def text_of(raw):
    """UTF-8 as it is; a byte that is none of it as \\xNN, NUL too, and a backslash as two: no two names meet."""
    text = raw.replace(b"\\", b"\\\\").decode("utf-8", "vorn-escape")
    return text.replace("\0", "\\x00") if "\0" in text else text


def bytes_of(text):
    """The bytes that text_of() has made a text of."""
    return ESCAPE.sub(lambda match: bytes.fromhex(match[1].decode()) if match[1] else b"\\", text.encode())
