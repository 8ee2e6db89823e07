"""The command and what it prints."""

import os
import re
import subprocess

from harness.processes import plain_environment

COMMAND = os.environ.get("VORN_OPENFILES", "/usr/sbin/vorn-openfiles")
PHOTO = b"/volume1/photo"


def run(*arguments, env=None, **options):
    """Runs the command in a UTF-8 locale and collects what it says, as bytes."""
    options.setdefault("stdout", subprocess.PIPE)
    options.setdefault("stderr", subprocess.PIPE)
    options.setdefault("timeout", 120)
    return subprocess.run([COMMAND, *arguments], env=plain_environment(**(env or {})), check=False, **options)


ESCAPE = re.compile(rb"\\(?:x([0-9A-F]{2})|u\{([0-9A-F]+)\}|([\\ntr]))")


def unescape(text):
    """The bytes that a cell of a table stands for."""

    def meaning(match):
        byte, codepoint, letter = match.groups()
        if byte:
            return bytes([int(byte, 16)])
        if codepoint:
            return chr(int(codepoint, 16)).encode()
        return {b"\\": b"\\", b"n": b"\n", b"t": b"\t", b"r": b"\r"}[letter]

    return ESCAPE.sub(meaning, text)
