"""Processes in control groups, and the files that they hold."""

import glob
import os
import pwd
import signal
import subprocess
import sys

from harness import wait_until

GROUPS = "/sys/fs/cgroup/systemd"


def join_group(group, pid="0"):
    """Puts a process (the calling one) into a control group such as "sshd.slice/ssh.service"."""
    folder = os.path.join(GROUPS, group.lstrip("/"))
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, "cgroup.procs"), "w", encoding="ascii") as file:
        file.write(str(pid))


def kill_group(group):
    """Kills everything in and below a control group and waits until it is empty."""
    def members():
        folders = glob.glob(os.path.join(GROUPS, group, "**", "cgroup.procs"), recursive=True)
        pids = []
        for folder in folders:
            with open(folder, encoding="ascii") as file:
                pids += [int(line) for line in file]
        return pids

    def emptied():
        pids = members()
        for pid in pids:
            try:
                os.kill(pid, signal.SIGKILL)
                os.waitpid(pid, os.WNOHANG)
            except (ProcessLookupError, ChildProcessError):
                pass
        return not pids
    wait_until(emptied, f"the end of {group}")


def start(argv, group="", user=None, **options):
    """Starts a process in a control group; none means the root of the hierarchy."""
    def prepare():
        join_group(group)
        if user is not None:
            become(user)
    options.setdefault("stdin", subprocess.DEVNULL)
    options.setdefault("stdout", subprocess.DEVNULL)
    return subprocess.Popen(argv, start_new_session=True, preexec_fn=prepare, **options)


def become(user):
    entry = pwd.getpwnam(user)
    os.initgroups(user, entry.pw_gid)
    os.setgid(entry.pw_gid)
    os.setuid(entry.pw_uid)


def stop(process):
    process.kill()
    process.wait()
    for stream in (process.stdin, process.stdout, process.stderr):
        if stream is not None:
            stream.close()


def holders(path):
    """Pids of the processes that hold a file open, by the link of a descriptor."""
    wanted, found = os.fsencode(path), set()
    for link in glob.iglob("/proc/[0-9]*/fd/*"):
        try:
            if os.readlink(os.fsencode(link)) == wanted:
                found.add(int(link.split("/")[2]))
        except OSError:
            pass
    return found


def await_holder(path, program=None):
    """Waits until a process (of that program) holds the file; gives its pid."""
    def found():
        return [pid for pid in sorted(holders(path)) if program in (None, program_of(pid))]
    where = f"{program or 'a process'} to open {path!r}"
    return wait_until(found, where)[0]


def program_of(pid):
    try:
        return os.path.basename(os.readlink(f"/proc/{pid}/exe"))
    except OSError:
        return ""


def parent_of(pid):
    with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as file:
        return int(file.read().rpartition(")")[2].split()[1])


HOLD = """
import os, sys
os.dup2(int(sys.argv[1]), 200)
for text in sys.argv[2:]:
    number, path = text.split(":", 1)
    create = 0 if os.path.isdir(path) else os.O_CREAT
    opened = os.open(path, os.O_RDONLY | create, 0o644)
    if opened != int(number):
        os.dup2(opened, int(number))
        os.close(opened)
print("ready", flush=True)
os.read(200, 1)
"""


class Holder:
    """A process that holds files open, {descriptor: path} or one path, until stop()."""

    def __init__(self, files, group="", **options):
        if not isinstance(files, dict):
            files = {20: files}
        reading, self.lifeline = os.pipe()
        arguments = [os.fsencode(f"{number}:") + os.fsencode(path)
                     for number, path in files.items()]
        self.process = start([sys.executable, "-c", HOLD, str(reading), *arguments], group,
                             stdout=subprocess.PIPE, pass_fds=[reading], **options)
        os.close(reading)
        self.pid = self.process.pid
        if self.process.stdout.readline() != b"ready\n":
            raise AssertionError(f"{files} could not be opened")

    def stop(self):
        os.close(self.lifeline)
        stop(self.process)
