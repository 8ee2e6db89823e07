"""Real things that keep a volume in use: each a block that begins and ends one, and says which rows
it makes."""

import contextlib
import ctypes
import os
import shutil
import subprocess
import sys

from harness.files import touch
from harness.processes import Announced, Holder, output_of, stop
from harness.waiting import wait_until

# Standard input moves out of the way, as for a Holder.
HOLD = """
import ctypes, fcntl, mmap, os, socket, sys, threading
path, END = sys.argv[1], 200
os.dup2(0, END)
os.dup2(os.open("/dev/null", os.O_RDONLY), 0)
libc = ctypes.CDLL(None, use_errno=True)

def begin(): os.write(1, b"ready\\n")
def end(): os.read(END, 1)

{hold}
"""

SNIPPETS = {
    "folder": "os.chdir(path); begin(); end()",
    "root": "os.chroot(path); os.chdir('/'); begin(); end()",
    "mapping": """
file = open(path, 'rb')
held = mmap.mmap(file.fileno(), 0, prot=mmap.PROT_READ)
file.close()
os.closerange(3, END)
begin(); end()""",
    "library": "held = ctypes.CDLL(path); begin(); end()",
    "socket": """
held = socket.socket(socket.AF_UNIX)
held.bind(path)
held.listen()
begin(); end()""",
    "lock": """
held = os.open(path, os.O_RDWR)
fcntl.flock(held, fcntl.LOCK_EX)
begin(); end()""",
    "deleted": """
held = os.open(path, os.O_RDWR)
os.unlink(path)
begin(); end()""",
    "descriptor of a thread": """
def hold():
    assert libc.unshare(0x400) == 0
    held = os.open(path, os.O_RDONLY)
    begin(); end()
thread = threading.Thread(target=hold)
thread.start()
thread.join()""",
    "folder of a thread": """
def hold():
    assert libc.unshare(0x200) == 0
    os.chdir(path)
    begin(); end()
thread = threading.Thread(target=hold)
thread.start()
thread.join()""",
    "first thread has ended": """
held = os.open(path, os.O_RDONLY)
def hold():
    with open('/proc/self/stat') as file: pass
    while open(f'/proc/{os.getpid()}/stat').read().rpartition(')')[2].split()[0] != 'Z': pass
    begin(); end(); os._exit(0)
threading.Thread(target=hold).start()
libc.syscall(60, 0)""",
}


def held(snippet, path, prefix=()):
    return Announced([*prefix, sys.executable, "-c", HOLD.format(hold=SNIPPETS[snippet]), path])


class Reasons:
    """The reasons on one volume; each begins with its name as its key."""

    def __init__(self, volume, swap=False):
        self.volume = volume
        self.kinds = {
            "file": self.file, "stdin": self.stdin, "folder": self.folder, "root": self.root,
            "program": self.program, "mapping": self.mapping, "library": self.library, "socket": self.socket,
            "lock": self.lock, "deleted": self.deleted, "loop": self.loop, "mount": self.mount,
            "descriptor of a thread": self.descriptor_of_a_thread, "folder of a thread": self.folder_of_a_thread,
            "first thread has ended": self.first_thread_has_ended, "bind mount": self.bind_mount, "jail": self.jail,
            "other mount namespace": self.other_namespace, "lazily unmounted": self.lazily_unmounted,
        }
        if swap:
            self.kinds["swap"] = self.swap
    # Those that keep the file system in use, but not the mount that is asked about.
    ELSEWHERE = {"bind mount", "jail", "other mount namespace", "lazily unmounted"}

    def path(self, name):
        return f"{self.volume}/{name}"

    def touched(self, name):
        return touch(self.path(name), b"x" * 4096)

    def folder_at(self, name):
        os.makedirs(self.path(name), exist_ok=True)
        return self.path(name)

    @contextlib.contextmanager
    def file(self):
        with Holder(self.touched("file")):
            yield {("file", self.path("file"))}

    @contextlib.contextmanager
    def stdin(self):
        with Holder({0: self.touched("stdin")}):
            yield {("file", self.path("stdin"))}

    @contextlib.contextmanager
    def folder(self):
        with held("folder", self.folder_at("folder")):
            yield {("working directory", self.path("folder"))}

    @contextlib.contextmanager
    def root(self):
        with held("root", self.folder_at("root")):
            yield {("working directory", self.path("root")), ("root directory", self.path("root"))}

    @contextlib.contextmanager
    def program(self):
        shutil.copy("/bin/cat", self.path("program"))
        process = subprocess.Popen([self.path("program")], stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0)
        try:
            process.stdin.write(b"\n")
            process.stdout.read(1)  # So it runs.
            yield {("program", self.path("program"))}
        finally:
            stop(process)
            os.unlink(self.path("program"))

    @contextlib.contextmanager
    def mapping(self):
        with held("mapping", self.touched("mapping")):
            yield {("mapping", self.path("mapping"))}

    @contextlib.contextmanager
    def library(self):
        with open("/proc/self/maps", encoding="ascii") as maps:
            libraries = [line.split()[-1] for line in maps if "/libexpat.so" in line or "/libz.so" in line]
        shutil.copy(libraries[0], self.path("library.so"))
        with held("library", self.path("library.so")):
            yield {("mapping", self.path("library.so"))}

    @contextlib.contextmanager
    def socket(self):
        with contextlib.suppress(FileNotFoundError):
            os.unlink(self.path("socket"))
        with held("socket", self.path("socket")):
            yield {("socket", self.path("socket"))}

    @contextlib.contextmanager
    def lock(self):
        with held("lock", self.touched("lock")):
            yield {("file", self.path("lock"))}

    @contextlib.contextmanager
    def deleted(self):
        with held("deleted", self.touched("deleted")):
            yield {("file", self.path("deleted") + " (deleted)")}

    @contextlib.contextmanager
    def descriptor_of_a_thread(self):
        with held("descriptor of a thread", self.touched("thread-file")):
            yield {("file", self.path("thread-file"))}

    @contextlib.contextmanager
    def folder_of_a_thread(self):
        with held("folder of a thread", self.folder_at("thread-folder")):
            yield {("working directory", self.path("thread-folder"))}

    @contextlib.contextmanager
    def first_thread_has_ended(self):
        with held("first thread has ended", self.touched("orphan")):
            yield {("file", self.path("orphan"))}

    @contextlib.contextmanager
    def loop(self):
        touch(self.path("image"), bytes(1 << 20))
        device = output_of(["losetup", "--find", "--show", self.path("image")]).strip()
        try:
            yield {("loop device", self.path("image"))}
        finally:
            output_of(["losetup", "--detach", device])
            wait_until(lambda: not os.path.exists(f"/sys/block/{os.path.basename(device)}/loop"), f"the end of {device}")

    @contextlib.contextmanager
    def swap(self):
        touch(self.path("swap"), bytes(1 << 20))
        os.chmod(self.path("swap"), 0o600)
        output_of(["mkswap", self.path("swap")])
        output_of(["swapon", self.path("swap")])
        try:
            yield {("swap", self.path("swap"))}
        finally:
            output_of(["swapoff", self.path("swap")])

    @contextlib.contextmanager
    def mount(self):
        output_of(["mount", "-t", "tmpfs", "below", self.folder_at("below")])
        try:
            yield {("mount", self.path("below"))}
        finally:
            output_of(["umount", self.path("below")])

    def bound(self, name):
        os.makedirs(f"/srv{self.volume}-{name}", exist_ok=True)
        return f"/srv{self.volume}-{name}"

    @contextlib.contextmanager
    def bind_mount(self):
        self.touched("shown/file")
        point = self.bound("bind")
        output_of(["mount", "--bind", self.path("shown"), point])
        try:
            with Holder(f"{point}/file"):
                yield {("file", self.path("shown/file"))}
        finally:
            output_of(["umount", point])

    @contextlib.contextmanager
    def jail(self):
        """A private root in a mount namespace of its own that shows a folder of the volume."""
        self.touched("jailed/file")
        point = self.bound("jail")
        script = f"""
            mount --make-rprivate / && mount -t tmpfs jail {point} && mkdir {point}/usr {point}/data {point}/dev &&
            for folder in bin lib lib64; do ln -s usr/$folder {point}/$folder; done &&
            mount --bind /usr {point}/usr && mount --bind /dev {point}/dev &&
            mount --bind {self.path("jailed")} {point}/data && umount --recursive {self.volume} && exec chroot {point} "$@" """
        with Announced(["unshare", "--mount", "sh", "-c", script, "sh", "/bin/sh", "-c",
                        "exec 3</data/file; echo ready; read end || :"]):
            yield {("file", self.path("jailed/file"))}

    @contextlib.contextmanager
    def other_namespace(self):
        self.touched("elsewhere")
        script = f"exec 3<{self.path('elsewhere')}; echo ready; read end || :"
        with Announced(["unshare", "--mount", "sh", "-c", script]):
            yield {("file", self.path("elsewhere"))}

    @contextlib.contextmanager
    def lazily_unmounted(self):
        """No mount table has it any more, and its name begins where it was mounted."""
        self.folder_at("left behind")
        point = self.bound("lazy")
        output_of(["mount", "--bind", self.volume, point])
        with held("folder", f"{point}/left behind"):
            output_of(["umount", "--lazy", point])
            yield {("working directory", "/left behind")}


libc = ctypes.CDLL(None, use_errno=True)


def unmount(volume):
    """Whether it can be unmounted; it is then."""
    return libc.umount2(os.fsencode(volume), 0) == 0
