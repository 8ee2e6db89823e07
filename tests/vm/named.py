"""The hierarchy name=systemd of this host, and what a program says that links the library."""

import contextlib
import os

from harness.processes import output_of
from harness.waiting import wait_until

SERVICES = "/run/vorn/services"


def hierarchies():
    with open("/proc/self/cgroup", encoding="ascii") as groups:
        return [line.split(":")[1] for line in groups]


def group_of(pid):
    """A process's path in name=systemd; None without that, or without the process."""
    with contextlib.suppress(FileNotFoundError, ProcessLookupError), \
            open(f"/proc/{pid}/cgroup", encoding="ascii") as groups:
        for line in groups:
            _, hierarchy, path = line.rstrip("\n").split(":", 2)
            if hierarchy == "name=systemd":
                return path
    return None


def await_group(pid, path):
    wait_until(lambda: group_of(pid) == path, f"process {pid} to come to {path}, and not {group_of(pid)}")


def said_by_library():
    """Service by path of a file and process."""
    lines = [line.split("\t") for line in output_of(["/usr/local/bin/vorn-linked"]).splitlines()]
    return {(path, int(pid)): service for pid, service, path in lines}


def start_naming():
    output_of(["systemctl", "start", "vorn-slices.service"])


def stop_naming():
    """What must be undone is so a little later, and there must have been no trouble."""
    output_of(["systemctl", "stop", "vorn-slices.service"])
    wait_until(lambda: not os.path.ismount(SERVICES), "the hierarchy to be unmounted")
    wait_until(lambda: hierarchies() == [""], "the hierarchy to end")
    said = output_of(["journalctl", "--boot", "--output=cat", "--identifier=vorn-slices"])
    if said:
        raise AssertionError(f"vorn-slices has said: {said}")
