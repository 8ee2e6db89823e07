"""A volume whose file system dies on demand, as that of a lost server does.

It is a FUSE file system of one folder with one file, answered by a thread. Once dead it still takes
every question and answers none: whoever has asked waits for good and can't even be killed.
"""

import ctypes
import errno
import os
import stat
import struct
import threading

PATH = "/volume9"
FILE = b"/volume9/folder/file"
MNT_FORCE, MNT_DETACH = 1, 2

LOOKUP, FORGET, GETATTR, OPEN, STATFS, RELEASE = 1, 2, 3, 14, 17, 18
FLUSH, INIT, OPENDIR, READDIR, RELEASEDIR, INTERRUPT, BATCH_FORGET = 25, 26, 27, 28, 29, 36, 42
ROOT_NODE, FOLDER_NODE, FILE_NODE = 1, 2, 3

libc = ctypes.CDLL(None, use_errno=True)


def attributes(node):
    """struct fuse_attr"""
    mode = stat.S_IFREG | 0o644 if node == FILE_NODE else stat.S_IFDIR | 0o755
    return struct.pack("<6Q10I", node, 0, 0, 0, 0, 0, 0, 0, 0, mode, 1, 0, 0, 0, 4096, 0)


def answer(opcode, node):
    """What the living file system says; nothing is to be cached, so that each look asks again."""
    if opcode == INIT:
        return struct.pack("<4I2H2I2H8I", 7, 31, 0, 0, 1, 1, 4096, 1, 1, *[0] * 9)
    if opcode == LOOKUP:
        return struct.pack("<4Q2I", node + 1, *[0] * 5) + attributes(node + 1)
    if opcode == GETATTR:
        return bytes(16) + attributes(node)
    if opcode in (OPEN, OPENDIR):
        return bytes(16)
    if opcode == STATFS:
        return bytes(80)
    if opcode in (READDIR, RELEASE, RELEASEDIR, FLUSH):
        return b""
    return None


class FuseVolume:
    """Mounted on /volume9 until it is closed, which frees everybody who waits for it."""

    def __init__(self):
        os.makedirs(PATH, exist_ok=True)
        self._alive = True
        self._pending = []
        self._lock = threading.Lock()
        self._device = os.open("/dev/fuse", os.O_RDWR | os.O_CLOEXEC)
        self._server = threading.Thread(target=self._serve, daemon=True)
        options = f"fd={self._device},rootmode=40000,user_id=0,group_id=0,allow_other"
        self._check(libc.mount(b"volume9", PATH.encode(), b"fuse", 0, options.encode()))
        self._server.start()

    def close(self):
        # Force makes the kernel break the connection off: every pending question fails.
        self._check(libc.umount2(PATH.encode(), MNT_FORCE | MNT_DETACH))
        self._server.join()
        os.close(self._device)

    def die(self):
        with self._lock:
            self._alive = False

    def keeps_somebody_waiting(self):
        return bool(self._pending)

    def revive(self):
        """Answers everybody who waits."""
        with self._lock:
            self._alive = True
            for unique, opcode, node in self._pending:
                self._say(unique, answer(opcode, node))
            self._pending.clear()

    @staticmethod
    def _check(result):
        if result != 0:
            raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()), PATH)

    def _serve(self):
        while True:
            try:
                request = os.read(self._device, 1 << 17)
            except OSError as error:
                if error.errno == errno.ENODEV:
                    return
                continue  # A question that was withdrawn meanwhile.
            _, opcode, unique, node = struct.unpack_from("<IIQQ", request)
            if opcode in (FORGET, BATCH_FORGET, INTERRUPT):
                continue
            with self._lock:
                if self._alive:
                    self._say(unique, answer(opcode, node))
                else:
                    self._pending.append((unique, opcode, node))

    def _say(self, unique, text):
        error = 0 if text is not None else -errno.ENOSYS
        text = text or b""
        try:
            os.write(self._device, struct.pack("<IiQ", 16 + len(text), error, unique) + text)
        except FileNotFoundError:
            pass  # Whoever asked has ended meanwhile.
