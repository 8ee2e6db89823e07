"""What the tests of the whole command share. They run in a sample host: see run.sh."""

import os
import re
import select
import subprocess
import sys

COMMAND = os.environ["VORN_OPENFILES"]
PHOTO = b"/volume1/photo"
PATIENCE = 60

HOLDER = r"""
import os, sys
command, value = sys.argv[1], os.fsencode(sys.argv[2])
forks = int(sys.argv[3])
held = []
def hold(path):
    held.append(os.open(path, os.O_RDONLY))
if command == "all":
    for name in os.listdir(value):
        hold(os.path.join(value, name))
else:
    for path in value.split(b"/\n"):
        hold(path)
for _ in range(forks):
    if os.fork() == 0:
        break
print("ready", flush=True)
sys.stdin.read()
"""


class Holder:
    """A process that holds files open until it is closed: paths, or all that a folder contains.

    With forks, as many more processes hold the same files.
    """

    def __init__(self, paths=None, folder=None, forks=0, **popen):
        command, value = ("all", folder) if folder else ("these", b"/\n".join(paths))
        self._process = subprocess.Popen(
            [sys.executable, "-c", HOLDER, command, value, str(forks)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0, **popen)
        self._wait_until_ready(forks + 1)
        self.pid = self._process.pid

    def _wait_until_ready(self, processes):
        said = b""
        while said.count(b"\n") < processes:
            if not select.select([self._process.stdout], [], [], PATIENCE)[0]:
                raise AssertionError(f"{processes} processes were to get ready; heard of: {said!r}")
            chunk = self._process.stdout.read(4096)
            assert chunk, f"the holder ended with {self._process.wait()}"
            said += chunk

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.stdin.close()
        self._process.stdout.read()
        self._process.stdout.close()
        self._process.wait()


def touch(path, content=b""):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(content)
    return path


def run(*arguments, env=None, **options):
    """Runs the command in a UTF-8 locale and collects what it says, as bytes."""
    environment = {"PATH": os.environ["PATH"], "LANG": "C.UTF-8", **(env or {})}
    options.setdefault("stdout", subprocess.PIPE)
    options.setdefault("stderr", subprocess.PIPE)
    options.setdefault("timeout", 120)
    return subprocess.run([COMMAND, *arguments], env=environment, check=False, **options)


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
