"""Processes that hold files in every way there is; for test_sources.py.

    holders.py SEED

Plays tricks that the seed chooses, says "ready" and holds on until standard input ends. What it
needs it makes below /volume1/SEED, /volume2/SEED and in namespaces of its own.
"""

import ctypes
import os
import platform
import random
import resource
import socket
import sys
import threading

CLONE_FILES, CLONE_NEWNS, CLONE_NEWPID = 0x400, 0x20000, 0x20000000
MNT_DETACH, MS_BIND, MS_REC, MS_PRIVATE = 2, 4096, 16384, 1 << 18
PATH_MAX = 4096
SYS_EXIT = 60 if platform.machine() == "x86_64" else 93
END = 1000  # Where standard input is: 0 may be a file.

libc = ctypes.CDLL(None, use_errno=True)
held = []


def must(result):
    if result < 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))
    return result


def hold_on():
    os.read(END, 1)
    os._exit(0)


def hold(path, flags=os.O_CREAT | os.O_RDWR, folder=None):
    held.append(os.open(path, flags, 0o644, dir_fd=folder))
    return held[-1]


def hostile_name(chance):
    end = chance.choice([b"", b"", b" (deleted)", b"\n", b"\\012", b" "])
    allowed = [byte for byte in range(1, 256) if byte != ord("/")]
    return bytes(chance.choices(allowed, k=chance.randint(1, 240))) + b"x" + end


# Each gets chance and two folders of its own, on volume 1 and on volume 2.

def plain(chance, one, two):
    for number in range(chance.randint(1, 60)):
        hold(chance.choice([one, two]) + b"/plain-%d" % (number % 40))


def hostile_names(chance, one, _):
    for _ in range(20):
        hold(one + b"/" + hostile_name(chance))


def folders(chance, one, two):
    for number in range(4):
        path = chance.choice([one, two]) + b"/folder-%d" % number
        os.mkdir(path)
        hold(path, os.O_RDONLY | chance.choice([0, os.O_PATH]))
        if chance.random() < 0.5:
            os.rmdir(path)


def deleted(chance, one, _):
    for number in range(10):
        path = one + b"/gone-%d" % number
        hold(path)
        os.unlink(path)
        if chance.random() < 0.3:
            hold(path + b" (deleted)")
        if chance.random() < 0.3:
            hold(path)
    hold(one, os.O_TMPFILE | os.O_RDWR)


def duplicates(chance, one, _):
    first = hold(one + b"/dup")
    for _ in range(5):
        held.append(os.dup(first))
    os.dup2(first, chance.randint(300, 900))
    hold(one + b"/dup")
    os.rename(one + b"/dup", one + b"/renamed")
    os.link(one + b"/renamed", one + b"/dup")
    hold(one + b"/dup")


def standard_descriptors(_, one, __):
    for number in (0, 2):
        os.dup2(hold(one + b"/as-number-%d" % number), number)
        os.close(held.pop())


def not_files(chance, one, _):
    held.extend(os.pipe())
    held.append(os.memfd_create("/volume1/memory"))
    held.append(os.eventfd(0))
    listener = socket.socket(socket.AF_UNIX)
    listener.bind("/tmp/%d-%d" % (os.getpid(), chance.randint(0, 1 << 30)))
    held.append(listener)
    os.mkfifo(one + b"/fifo")
    hold(one + b"/fifo", os.O_RDWR)
    hold("/dev/null", os.O_RDONLY)
    hold("/", os.O_RDONLY)
    for name in ("/volumes", "/volume"):
        os.makedirs(name, exist_ok=True)
        hold(name, os.O_RDONLY)
    os.makedirs("/volumes/x", exist_ok=True)
    hold("/volumes/x/file")
    hold("/volume/file")
    hold("/volume1", os.O_RDONLY)
    hold("/volume-file")


def long_paths(chance, one, _):
    """Up to what readlink can give, one byte less and one more, with the mark of deletion too."""
    longest = PATH_MAX - 1
    for length in (longest - 10, longest - 9, longest - 1, longest, longest + 1, longest + 40,
                   chance.randint(1000, longest)):
        folder, path = os.open(one, os.O_RDONLY), one
        while length - len(path) > 256:
            name = b"d" * chance.randint(60, 120)
            try:
                os.mkdir(name, dir_fd=folder)
            except FileExistsError:
                pass
            inner = os.open(name, os.O_RDONLY, dir_fd=folder)
            os.close(folder)
            folder, path = inner, path + b"/" + name
        name = chance.choice([b"f", b"g"]) * (length - len(path) - 1)
        hold(name, folder=folder)
        if chance.random() < 0.5:
            os.unlink(name, dir_fd=folder)
        os.close(folder)


def many(chance, one, two):
    """More than the kernel gives in one read."""
    for number in range(chance.randint(800, 2500)):
        hold(chance.choice([one, two]) + b"/" + b"m" * (number % 200) + b"-%d" % number)


def bind_mounts(chance, one, two):
    must(libc.unshare(CLONE_NEWNS))
    must(libc.mount(None, b"/", None, MS_REC | MS_PRIVATE, None))
    for target in (two + b"/bound", b"/mnt", b"/volume2"):
        os.makedirs(target, exist_ok=True)
        must(libc.mount(one, target, None, MS_BIND, None))
        hold(target + b"/through-a-bind-mount")
        os.makedirs(target + b"/volume1/inner", exist_ok=True)
        hold(target + b"/volume1/inner/file")
        hold(target, os.O_RDONLY)
        if chance.random() < 0.5:
            must(libc.umount2(target, MNT_DETACH))


def own_mounts(_, one, __):
    must(libc.unshare(CLONE_NEWNS))
    must(libc.mount(None, b"/", None, MS_REC | MS_PRIVATE, None))
    for target in (b"/volume2", b"/mnt", one):
        must(libc.mount(b"own", target, b"tmpfs", 0, None))
        os.makedirs(target + b"/volume1/own")
        os.mkdir(target + b"/volume")
        hold(target + b"/volume1/own/file")
        hold(target + b"/file")
        hold(target + b"/volume", os.O_RDONLY)
        must(libc.umount2(target, MNT_DETACH))


def changed_root(_, one, __):
    os.makedirs(one + b"/root/volume1/inner")
    hold(one + b"/root/before")
    os.chroot(one + b"/root")
    os.chdir("/")
    hold("/volume1/inner/after")
    hold("/", os.O_RDONLY)


def own_numbers(_, one, __):
    """A child in a PID namespace of its own, which is what holds the file."""
    must(libc.unshare(CLONE_NEWPID))
    back, front = os.pipe()
    if os.fork() == 0:
        hold(one + b"/numbered-anew")
        os.write(front, b".")
        hold_on()
    os.read(back, 1)


def in_thread(work):
    """Runs it in a thread that goes on until the process ends."""
    done = threading.Event()

    def run():
        work()
        done.set()
        hold_on()

    threading.Thread(target=run, daemon=True).start()
    done.wait()


def threads(_, one, __):
    hold(one + b"/leader")

    def own_table():
        must(libc.unshare(CLONE_FILES))
        hold(one + b"/in-a-table-of-a-thread")

    in_thread(own_table)
    in_thread(lambda: hold(one + b"/in-the-table-of-all"))


def leader_ends(_, one, __):
    """What is left of the process is a thread; its /proc/<pid>/fd is empty."""
    back, front = os.pipe()
    if os.fork() == 0:
        hold(one + b"/of-a-leader-that-ends")
        in_thread(lambda: os.write(front, b"."))
        libc.syscall(SYS_EXIT, 0)
    os.read(back, 1)


def ended(_, one, __):
    """Nobody waits for it."""
    if os.fork() == 0:
        hold(one + b"/of-a-process-that-has-ended")
        os._exit(0)


def other_user(_, one, __):
    hold(one + b"/opened-as-root")
    os.setgroups([])
    os.setgid(65534)
    os.setuid(65534)


TRICKS = [plain, hostile_names, folders, deleted, duplicates, standard_descriptors, not_files,
          long_paths, many, bind_mounts, own_mounts, changed_root, own_numbers, threads,
          leader_ends, ended, other_user]
# These change what the others stand on.
LAST = {changed_root, bind_mounts, own_mounts, own_numbers, other_user, leader_ends, threads}


def main(seed):
    resource.setrlimit(resource.RLIMIT_NOFILE, (8192, 8192))
    chance = random.Random(seed)
    chosen = chance.sample(TRICKS, chance.randint(1, 5))
    standing = [trick for trick in chosen if trick not in LAST]
    last = [trick for trick in chosen if trick in LAST][:1]
    os.dup2(0, END)
    for trick in standing + last:
        one, two = (b"/volume%d/%s/%s" % (volume, seed.encode(), trick.__name__.encode())
                    for volume in (1, 2))
        os.makedirs(one)
        os.makedirs(two)
        trick(chance, one, two)
    os.write(1, b"ready\n")
    hold_on()


if __name__ == "__main__":
    main(sys.argv[1])
