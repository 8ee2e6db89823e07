"""Programs to run, processes in control groups and as users, holders of files."""

import glob
import os
import pwd
import select
import signal
import subprocess
import sys

from harness.waiting import PATIENCE, wait_until

GROUPS = "/sys/fs/cgroup/systemd"


def plain_environment(**more):
    """Nothing of the caller's but the path, so that its language and options change no answer."""
    return {"PATH": os.environ["PATH"], "LANG": "C.UTF-8", **more}


def output_of(argv, **options):
    """Runs a program that must succeed and gives its output."""
    done = subprocess.run(argv, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False, timeout=PATIENCE, **options)
    if done.returncode != 0:
        raise AssertionError(f"{argv} ended with {done.returncode}: {done.stdout}")
    return done.stdout


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


def start(argv, group=None, user=None, **options):
    """Starts a process in a control group (that of the caller) and as a user."""
    def prepare():
        if group is not None:
            join_group(group)
        if user is not None:
            become(user)
    options.setdefault("stdin", subprocess.DEVNULL)
    options.setdefault("stdout", subprocess.DEVNULL)
    options.setdefault("start_new_session", True)
    return subprocess.Popen(argv, preexec_fn=prepare, **options)


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


def start_as(pid, argv):
    """Starts a program that gets the id of a process that has ended; not in the host's own PID namespace."""
    def attempt():
        with open("/proc/sys/kernel/ns_last_pid", "w", encoding="ascii") as file:
            file.write(str(pid - 1))
        process = start(argv)
        if process.pid == pid:
            return process
        stop(process)
        return None
    return wait_until(attempt, f"process {pid} to be another one")


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


class Announced:
    """Processes that say "ready" when they are, one or as many as there are forks of it, and end
    with their standard input: at stop(), or with the block that they are opened for."""

    def __init__(self, argv, group=None, processes=1, patience=PATIENCE, **options):
        self.process = start(argv, group, stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0,
                             **options)
        self.pid = self.process.pid
        try:
            self._wait_until_ready(processes, patience)
        except BaseException:
            stop(self.process)
            raise

    def _wait_until_ready(self, processes, patience):
        said = b""
        while said.count(b"ready\n") < processes:
            if not select.select([self.process.stdout], [], [], patience)[0]:
                raise AssertionError(f"{processes} processes were to get ready; heard: {said!r}")
            chunk = self.process.stdout.read(4096)
            if not chunk:
                raise AssertionError(f"{self.process.args} ended with {self.process.wait()}")
            said += chunk

    def stop(self):
        self.process.stdin.close()
        self.process.stdout.read()  # Its children have that as well, and end a little later.
        self.process.stdout.close()
        self.process.wait()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()


# Standard input moves out of the way: the descriptor may be one that is asked for.
HOLD = """
import os, sys
END = 200
os.dup2(0, END)
forks, folder, *files = sys.argv[1:]
if folder:
    files = [":" + os.path.join(folder, name) for name in os.listdir(folder)]
for number, path in (file.split(":", 1) for file in files):
    create = 0 if os.path.exists(path) else os.O_CREAT
    opened = os.open(path, os.O_RDONLY | create, 0o644)
    if number and opened != int(number):
        os.dup2(opened, int(number))
        os.close(opened)
for _ in range(int(forks)):
    if os.fork() == 0:
        break
os.write(1, b"ready\\n")  # in one piece: others write as well
os.read(END, 1)
"""


class Holder(Announced):
    """A process that holds files open: one path, a list of them, {descriptor: path}, or all that a
    folder contains. With forks, as many more processes hold the same files."""

    def __init__(self, files=(), group=None, *, folder="", forks=0, **options):
        if isinstance(files, (str, bytes)):
            files = [files]
        if not isinstance(files, dict):
            files = [("", path) for path in files]
        else:
            files = files.items()
        super().__init__([sys.executable, "-c", HOLD, str(forks), folder,
                          *(os.fsencode(f"{number}:") + os.fsencode(path) for number, path in files)],
                         group, forks + 1, **options)
