"""A sample host made into one with control groups v2 alone, and vorn-slices on it.

What this host of tests has of v2 is everybody's, so the module gets a group of its own, which a
namespace shows it as the root.
"""

import contextlib
import ctypes
import glob
import os
import select
import shutil
import signal
import socket
import subprocess

from harness import processes
from harness.files import touch
from harness.processes import output_of, plain_environment
from harness.waiting import PATIENCE, wait_until

DAEMON = os.environ.get("VORN_SLICES", "/usr/sbin/vorn-slices")
UNIFIED, SERVICES = "/sys/fs/cgroup", "/run/vorn/services"
UNITS, LOCAL_UNITS = "/usr/lib/systemd/system", "/usr/local/lib/systemd/system"
#: The rights of its unit, which has no capability.
RIGHTLESS = ["setpriv", "--bounding-set=-all", "--inh-caps=-all"]
CLONE_NEWCGROUP = 0x02000000
SYS_CLONE3, CLONE_INTO_CGROUP = 435, 0x200000000

libc = ctypes.CDLL(None, use_errno=True)


def mount(*arguments):
    output_of(["mount", *arguments])


class UnifiedHost:
    """Between set_up() and tear_down() of a module."""

    def set_up(self):
        outside = "/run/unified"
        os.mkdir(outside)
        mount("-t", "cgroup2", "none", outside)
        remove_stale(outside)
        self.outside = os.open(outside, os.O_DIRECTORY)
        self.members = os.open(f"{outside}/cgroup.procs", os.O_WRONLY)
        self.own = f"vorn-slices-{os.urandom(8).hex()}"
        os.mkdir(self.own, dir_fd=self.outside)
        touch(f"{outside}/{self.own}/cgroup.procs", "0")
        if libc.unshare(CLONE_NEWCGROUP) != 0:
            raise OSError(ctypes.get_errno(), "unshare")
        output_of(["umount", "--lazy", outside])
        self.lay_out()
        processes.GROUPS = UNIFIED
        for name in os.listdir(os.environ["VORN_SOURCE"] + "/data/systemd"):
            if name.endswith(".slice"):
                shutil.copy(f"{os.environ['VORN_SOURCE']}/data/systemd/{name}", UNITS)

    @staticmethod
    def lay_out():
        os.makedirs(SERVICES)
        mount("--bind", UNIFIED + "/systemd", SERVICES)
        os.chmod(SERVICES, 0o555)  # As the root of a hierarchy is.
        output_of(["umount", UNIFIED + "/systemd"])
        mount("-t", "cgroup2", "none", UNIFIED)
        os.makedirs("/run/systemd/sessions")

    def tear_down(self):
        remove_below(UNIFIED)
        os.write(self.members, b"0")
        os.rmdir(self.own, dir_fd=self.outside)


def remove_stale(outside):
    """Groups of runs that were killed; those that live have processes."""
    for group in glob.glob(f"{outside}/vorn-slices-*"):
        for path, _, _ in os.walk(group, topdown=False):
            removed(path)


def remove_below(folder):
    for path, folders, _ in os.walk(folder, topdown=False):
        for name in folders:
            wait_until(lambda path=path, name=name: removed(f"{path}/{name}"), f"{name} to be empty")


def removed(group):
    """A process that was killed is still in its group for a moment."""
    try:
        os.rmdir(group)
    except OSError:
        return False
    return True


def service_of(pid):
    """The path in name=systemd."""
    with open(f"/proc/{pid}/cgroup", encoding="ascii") as file:
        for line in file:
            _, hierarchy, path = line.rstrip("\n").split(":", 2)
            if hierarchy == "name=systemd":
                return path
    raise AssertionError("there is no hierarchy name=systemd")


def await_service(pid, path):
    wait_until(lambda: service_of(pid) == path, f"process {pid} to come to {path}")


def open_session(number, service):
    """As logind keeps it."""
    touch(f"/run/systemd/sessions/{number}", f"UID=1000\nUSER=alice\nACTIVE=1\nSERVICE={service}\n")
    return f"user.slice/user-1000.slice/session-{number}.scope"


class CloneArguments(ctypes.Structure):
    _fields_ = [(name, ctypes.c_uint64) for name in (
        "flags", "pidfd", "child_tid", "parent_tid", "exit_signal", "stack", "stack_size", "tls", "set_tid",
        "set_tid_size", "cgroup")]


def born_in(group, argv):
    """Starts a process right in a group, as newer releases of systemd do: nothing is written."""
    folder = os.open(f"{UNIFIED}/{group}", os.O_DIRECTORY)
    arguments = CloneArguments(flags=CLONE_INTO_CGROUP, exit_signal=signal.SIGCHLD, cgroup=folder)
    pid = libc.syscall(SYS_CLONE3, ctypes.byref(arguments), ctypes.sizeof(arguments))
    if pid == 0:
        try:
            os.execvp(argv[0], argv)
        finally:
            os._exit(127)
    os.close(folder)
    if pid < 0:
        raise OSError(ctypes.get_errno(), "clone3")
    return pid


def end(pid):
    os.kill(pid, signal.SIGKILL)
    os.waitpid(pid, 0)


class Daemon:
    """vorn-slices, ready when its block is entered."""

    process = None

    def __enter__(self):
        path = f"/run/notify-{os.urandom(4).hex()}"
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as notified:
            notified.bind(path)
            self.process = subprocess.Popen([*RIGHTLESS, DAEMON], stderr=subprocess.PIPE,
                                            env=plain_environment(NOTIFY_SOCKET=path))
            if not select.select([notified], [], [], PATIENCE)[0]:
                raise AssertionError("vorn-slices did not get ready")
            assert notified.recv(100) == b"READY=1"
        return self

    def __exit__(self, *_):
        self.stop()

    def stop(self):
        """Gives the exit status and what it has said."""
        self.process.terminate()
        said = self.process.communicate(timeout=PATIENCE)[1].decode()
        return self.process.returncode, said

    def is_at_rest(self):
        """Whether it sleeps and nothing of its own will wake it."""
        before = self.status()
        return before["State"].startswith("S") and not self.has_timer() and self.status() == before

    def status(self):
        with open(f"/proc/{self.process.pid}/status", encoding="ascii") as file:
            fields = dict(line.rstrip("\n").split(":\t", 1) for line in file if ":\t" in line)
        return {name: fields[name] for name in ("State", "voluntary_ctxt_switches", "nonvoluntary_ctxt_switches")}

    def has_timer(self):
        timers = []
        for entry in os.scandir(f"/proc/{self.process.pid}/fdinfo"):
            with contextlib.suppress(FileNotFoundError), open(entry.path, encoding="ascii") as file:
                timers += [line for line in file if line.startswith("it_value:")]
        return any(line.split(":")[1].strip() != "(0, 0)" for line in timers)
