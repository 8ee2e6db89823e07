"""What a user does who may create files and start processes, and nothing else.

    hostile.py TRICK [ARGUMENT]

Has logged in as VORN_LOGIN_UID, where that is set, and becomes the user nobody, plays the trick,
says "ready" and waits until standard input ends.
"""

import ctypes
import itertools
import os
import random
import socket
import sys

CLONE_NEWNS, CLONE_NEWUSER = 0x20000, 0x10000000
MNT_DETACH, MS_BIND = 2, 4096
AT_FDCWD, RENAME_EXCHANGE = -100, 2
PR_SET_DUMPABLE, PR_SET_NAME = 4, 15
NOBODY = 65534

libc = ctypes.CDLL(None, use_errno=True)
held = []


def must(result):
    if result < 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))
    return result


def write(path, text):
    with open(path, "w", encoding="ascii") as file:
        file.write(text)


def enter_user_namespace():
    """As any user may: with root's rights over nothing but what is made inside."""
    must(libc.prctl(PR_SET_DUMPABLE, 1, 0, 0, 0))
    must(libc.unshare(CLONE_NEWUSER | CLONE_NEWNS))
    write("/proc/self/setgroups", "deny")
    write("/proc/self/uid_map", f"0 {NOBODY} 1")
    write("/proc/self/gid_map", f"0 {NOBODY} 1")


def hold(path, flags=os.O_RDONLY):
    held.append(os.open(path, flags))


def hold_in_own_root(path, folder=False):
    """Opens PATH in a file system of one's own and takes that off the tree."""
    must(libc.mount(b"own", b"/tmp", b"tmpfs", 0, None))
    inside = "/tmp" + path
    os.makedirs(inside if folder else os.path.dirname(inside))
    hold(inside, os.O_RDONLY if folder else os.O_CREAT | os.O_RDWR)
    must(libc.umount2(b"/tmp", MNT_DETACH))


def forge_path(path):
    enter_user_namespace()
    hold_in_own_root(path)


def bare_volume(_):
    enter_user_namespace()
    hold_in_own_root("/volume", folder=True)


def restless_volume(count):
    """So many descriptors, each "/volume" or something else by chance, all the time."""
    enter_user_namespace()
    hold_in_own_root("/volume", folder=True)
    other = os.open("/dev/null", os.O_RDONLY)
    numbers = [os.dup(other) for _ in range(int(count))]
    # Not one after the other: a reader in step with that would always see the same.
    sources = itertools.cycle(random.choices([held[0], other], k=4099))
    back, front = os.pipe()
    for _ in range(4):
        if os.fork() == 0:
            os.write(front, b".")
            while os.getppid() != 1:
                for number, source in zip(numbers, sources):
                    os.dup2(source, number)
            os._exit(0)
        os.read(back, 1)


def own_volume2(_):
    """A volume of one's own over the host's, where nobody else sees it."""
    enter_user_namespace()
    must(libc.mount(b"own", b"/tmp", b"tmpfs", 0, None))
    must(libc.mount(b"own", b"/volume2", b"tmpfs", 0, None))
    hold("/volume2/mine", os.O_CREAT | os.O_RDWR)


def hide_behind_bind_mount(path):
    enter_user_namespace()
    os.mkdir("/tmp/elsewhere")
    must(libc.mount(os.path.dirname(path).encode(), b"/tmp/elsewhere", None, MS_BIND, None))
    hold("/tmp/elsewhere/" + os.path.basename(path))


def memory_file(name):
    held.append(os.memfd_create(name))


def no_name(_):
    hold("/volume1/photo", os.O_TMPFILE | os.O_RDWR)


def process_name(name):
    must(libc.prctl(PR_SET_NAME, os.fsencode(name), 0, 0, 0))
    serve(None)


def serve(_):
    """Serves a connection from itself, under the name that it was started by."""
    listener = socket.create_server(("127.0.0.1", 0))
    client = socket.create_connection(listener.getsockname(), source_address=("127.0.0.77", 0))
    held.extend([listener, client, listener.accept()[0]])
    hold("/volume1/photo/served", os.O_CREAT | os.O_RDWR)


def hold_in_child(path, closed=()):
    back, front = os.pipe()
    if os.fork() == 0:
        os.setsid()
        for inherited in closed:
            inherited.close()
        hold(path, os.O_CREAT | os.O_RDWR)
        os.write(front, b".")
        os.read(0, 1)
        os._exit(0)
    os.read(back, 1)


def serve_in_two_halves(_):
    """The same with a child that holds the connection too, as one half of an SSH server does."""
    serve(None)
    hold_in_child("/volume1/photo/half")


def serve_with_session(_):
    """The same with what looks like the shell of a session."""
    serve(None)
    hold_in_child("/volume1/photo/session", closed=held[:3])


def serve_apart(_):
    """The same without the parent that it shares the session with, beside another process of it."""
    hold_in_child("/volume1/photo/beside")
    back, front = os.pipe()
    if os.fork() == 0:
        if os.fork() == 0:
            os.setsid()
            while os.getppid() != 1:
                pass
            serve(None)
            os.write(front, b".")
            os.read(0, 1)
        os._exit(0)
    os.wait()
    os.read(back, 1)


def process_title(title):
    """A process started under the title, which is all that a command line is."""
    serve(None)
    for file in held:
        os.set_inheritable(file if isinstance(file, int) else file.fileno(), True)
    code = "import sys; print('ready', flush=True); sys.stdin.read()"
    os.execv(sys.executable, [title, "-c", code])


def rename_others(both):
    """What anyone may who can write to the folders, whoever holds it open."""
    os.rename(*both.split(":"))


def rename_race(folder):
    """Swaps a folder with an open file and a link to /etc, all the time."""
    os.mkdir(folder)
    hold(folder + "/aim", os.O_CREAT | os.O_RDWR)
    os.symlink("/etc", folder + ".link")
    if os.fork() == 0:
        while os.getppid() != 1:
            exchange(folder, folder + ".link")
        os._exit(0)


def exchange(one, other):
    must(libc.renameat2(AT_FDCWD, one.encode(), AT_FDCWD, other.encode(), RENAME_EXCHANGE))


def link_to(path):
    """A link of one's own in a share, opened as far as it can be: it, and what it leads to."""
    os.symlink(path, "/volume1/photo/link")
    hold("/volume1/photo/link", os.O_PATH | os.O_NOFOLLOW)
    hold("/volume1/photo/link")


def link_after_rename(path):
    hold(path, os.O_CREAT | os.O_RDWR)
    os.unlink(path)
    os.symlink("/etc", path)


def deep_path(_):
    """A folder whose path is longer than any text of a path may be."""
    os.chdir("/volume1/photo")
    for _ in range(30):
        os.mkdir("d" * 255)
        os.chdir("d" * 255)
    hold("file", os.O_CREAT | os.O_RDWR)


def main():
    if "VORN_LOGIN_UID" in os.environ:
        write("/proc/self/loginuid", os.environ["VORN_LOGIN_UID"])
    os.setgroups([])
    os.setresgid(NOBODY, NOBODY, NOBODY)
    os.setresuid(NOBODY, NOBODY, NOBODY)
    globals()[sys.argv[1]](sys.argv[2] if len(sys.argv) > 2 else None)
    print("ready", flush=True)
    sys.stdin.read()


if __name__ == "__main__":
    main()
