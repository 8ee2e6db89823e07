"""A process table to measure on: processes that hold files on a volume, in services, with clients."""

import contextlib
import glob
import os
import shutil
import signal
import socket
import subprocess

HIERARCHY = "/sys/fs/cgroup/systemd"
SLICES = ("SMBService.slice", "ftpd.slice", "sshd.slice")
UNIT_FOLDER = "/usr/lib/systemd/system"

# Descriptors of a client's socket: where most servers have it, and where they are all looked through.
LOW, FURTHER_UP = 3, 100


def make_groups(units):
    groups = []
    for unit in units:
        group = f"{HIERARCHY}/{unit}/bench.service"
        os.makedirs(group, exist_ok=True)
        groups.append(group)
    return groups


def install_units(project, named):
    os.makedirs(UNIT_FOLDER, exist_ok=True)
    for path in glob.glob(f"{project}/data/systemd/*.slice"):
        target = f"{UNIT_FOLDER}/{os.path.basename(path)}"
        if named:
            shutil.copy(path, target)
        elif os.path.exists(target):
            os.remove(target)


def serve(connection, descriptor):
    """A process that serves one client, with its socket at a descriptor."""
    pid = os.fork()
    if pid == 0:
        os.dup2(connection.fileno(), descriptor)
        os.closerange(LOW, descriptor)
        os.closerange(descriptor + 1, 1 << 16)
        signal.pause()
        os._exit(0)
    return pid


@contextlib.contextmanager
def clients(count, descriptor=LOW):
    """Established connections to a server of our own, a process each, at the descriptor where most
    servers have their clients or further up."""
    servers = []
    with contextlib.ExitStack() as stack:
        listener = stack.enter_context(socket.create_server(("127.0.0.1", 0), backlog=count + 1))
        for _ in range(count):
            stack.enter_context(socket.create_connection(listener.getsockname()))
            with listener.accept()[0] as connection:
                servers.append(serve(connection, descriptor))
        try:
            yield
        finally:
            for pid in servers:
                os.kill(pid, signal.SIGKILL)
                os.waitpid(pid, 0)


@contextlib.contextmanager
def populated(binaries, processes, descriptors, outside=0, groups=(), folder="/volume1/photo"):
    """Holds the process table while the body runs. The processes spread over the groups."""
    os.makedirs(folder)
    process = subprocess.Popen(
        [f"{binaries}/populate", str(processes), str(descriptors), str(outside), folder, *groups],
        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    try:
        if process.stdout.readline() != "ready\n":
            raise SystemExit("populate did not get ready")
        yield
    finally:
        process.stdin.close()
        process.wait()
        shutil.rmtree(folder)
