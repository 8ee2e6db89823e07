"""The kernel's iterator and the walk of /proc give the same records."""

import ctypes
import json
import os
import platform
import random
import resource
import struct
import subprocess
import sys
import unittest

from harness.command import run
from harness.files import touch
from harness.processes import Announced, Holder, become, output_of

LIST = os.environ["VORN_LIST_RECORDS"]
HOLDERS = os.path.join(os.path.dirname(os.path.realpath(__file__)), "holders.py")
REFUSAL = b"can't take the kernel's iterator: "
# Of capability.h
CAP_DAC_READ_SEARCH, CAP_SYS_PTRACE, CAP_PERFMON, CAP_BPF = 2, 19, 38, 39


def setUpModule():
    told = subprocess.run([LIST, "iterator"], stderr=subprocess.PIPE, stdout=subprocess.DEVNULL, check=False)
    if told.returncode != 0:
        print(f"skipped: {told.stderr.decode()}")
        sys.exit(77)
    output_of(["useradd", "alice"])


class Records:
    """What a source gives: of each process its paths, in the order of its descriptors."""

    def __init__(self, source, threads=1, before=(), **options):
        # Whoever looks for leaks needs rights of its own.
        options["env"] = {**os.environ, "ASAN_OPTIONS": f"detect_leaks={int(not before and not options)}"}
        done = subprocess.run([*before, LIST, source, str(threads)], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, stdin=subprocess.DEVNULL, check=False, timeout=120, **options)
        self.status, self.said = done.returncode, done.stderr
        self.of = {}
        for record in done.stdout.split(b"\0")[:-1]:
            pid, path = record.split(b" ", 1)
            self.of.setdefault(int(pid), []).append(path)


class Sources(unittest.TestCase):
    maxDiff = None

    def both(self, **options):
        """What both give, with one thread and with three; it must be the same."""
        walk = Records("walk", **options)
        self.assertEqual(walk.status, 0, walk.said)
        for source, threads in (("iterator", 1), ("iterator", 3), ("auto", 2)):
            told = Records(source, threads, **options)
            self.assertEqual((told.status, told.said), (0, walk.said))
            self.assertEqual(set(told.of), set(walk.of))
            for pid, paths in walk.of.items():
                self.assertEqual(told.of[pid], paths)
        return walk

    def walk_alone(self, reason, **options):
        """The iterator refuses, and says why; without being asked for it is done without."""
        refused = Records("iterator", **options)
        self.assertEqual(refused.status, 2)
        self.assertTrue(refused.said.startswith(REFUSAL), refused.said)
        self.assertIn(reason, refused.said)
        self.assertEqual(refused.said.count(b"\n"), 1, refused.said)
        walk = Records("walk", **options)
        auto = Records("auto", **options)
        self.assertEqual((auto.status, auto.said), (0, walk.said))
        self.assertEqual(auto.of, walk.of)
        return walk


class FrozenProcesses(Sources):
    """By chance, but the same chance in each run."""

    PROCESSES = 24

    def frozen(self, round_):
        running = []
        for number in range(self.PROCESSES):
            running.append(Announced([sys.executable, HOLDERS, f"{round_}.{number}"]))
            self.addCleanup(running[-1].stop)
        return running

    def test_every_record_is_the_same(self):
        found = set()
        for round_ in range(4):
            with self.subTest(round=round_):
                self.frozen(round_)
                walk = self.both()
                found |= {path for paths in walk.of.values() for path in paths}
                self.assertIn(b'named "/volume"', walk.said)
        lengths = {len(path) for path in found}
        self.assertGreater(len(found), 10000)
        self.assertIn(4095, lengths)
        self.assertLess(max(lengths), 4096)
        for part in (b" (deleted)", b"\n", b"hostile_names", b"own/file", b"of-all", b"inner", b"numbered", b"as-number-2"):
            self.assertTrue(any(part in path for path in found), part)
        for part in (b"table-of-a-thread", b"leader-that-ends", b"as-number-0", b"memory", b"ended"):
            self.assertFalse(any(part in path for path in found), part)

    def test_from_another_root(self):
        self.frozen("root")
        os.makedirs("/mnt/root")
        output_of(["mount", "--rbind", "/", "/mnt/root"])
        self.addCleanup(output_of, ["umount", "--lazy", "/mnt/root"])
        touch("/volume1/held")
        with Holder("/mnt/root/volume1/held") as holder:
            inside = self.both(before=["chroot", "/mnt/root"])
        self.assertEqual(inside.of[holder.pid], [b"/volume1/held"])

    def test_from_another_mount_namespace(self):
        self.frozen("namespace")
        self.both(before=["unshare", "--mount"])


class Rights(Sources):
    def setUp(self):
        for user in ("root", "alice"):
            folder = f"/volume1/{self.id()}/{user}"
            os.makedirs(folder)
            os.chmod(folder, 0o777)
            holder = Holder(f"{folder}/file", user=user)
            self.addCleanup(holder.stop)
            setattr(self, user, holder.pid)

    def alice_with(self, *capabilities):
        """Options to run something as alice, who lacks all capabilities but these."""
        return {"preexec_fn": lambda: become_with("alice", capabilities)}

    def test_of_root_see_all(self):
        self.assertEqual({self.root, self.alice} - set(self.both().of), set())

    def test_without_any_there_is_the_walk(self):
        walk = self.walk_alone(b"CAP_BPF and CAP_PERFMON", **self.alice_with())
        self.assertEqual(list(walk.of), [self.alice])

    def test_that_are_too_few_there_is_the_walk(self):
        for capability in (CAP_BPF, CAP_PERFMON):
            self.walk_alone(b"CAP_BPF and CAP_PERFMON", **self.alice_with(capability))

    def test_to_load_programs_show_no_more_than_the_walk(self):
        for more in ([], [CAP_SYS_PTRACE], [CAP_DAC_READ_SEARCH]):
            walk = self.both(**self.alice_with(CAP_BPF, CAP_PERFMON, *more))
            self.assertEqual(list(walk.of), [self.alice], more)

    def test_of_a_storage_service_see_all(self):
        walk = self.both(**self.alice_with(CAP_BPF, CAP_PERFMON, CAP_SYS_PTRACE, CAP_DAC_READ_SEARCH))
        self.assertEqual({self.root, self.alice} - set(walk.of), set())

    def test_do_not_reach_what_proc_hides(self):
        hidden = ["unshare", "--mount", "sh", "-c", 'mount -t proc -o hidepid=2 proc /proc && exec "$@"', "sh",
                  sys.executable, "-c", AS_ALICE, str(CAP_BPF), str(CAP_PERFMON), str(CAP_DAC_READ_SEARCH)]
        walk = self.both(before=hidden)
        self.assertEqual(list(walk.of), [self.alice])


class Namespaces(Sources):
    def test_processes_have_the_numbers_that_their_proc_shows(self):
        shown = Holder("/volume1/outside")
        self.addCleanup(shown.stop)
        before = ["unshare", "--pid", "--fork", "--mount-proc", sys.executable, "-c", HOLD_AND_LIST]
        walk = self.both(before=before)
        self.assertEqual(list(walk.of.values()), [[b"/volume1/inside"]])
        self.assertLess(*walk.of, 10)

    def test_where_proc_is_not_the_own_there_is_the_walk(self):
        shown = Holder("/volume1/outside")
        self.addCleanup(shown.stop)
        walk = self.walk_alone(b"PID namespace", before=["unshare", "--pid", "--fork"])
        self.assertIn(shown.pid, walk.of)

    def test_root_of_a_user_namespace_has_the_walk(self):
        self.walk_alone(b"user namespace", before=["unshare", "--user", "--map-root-user"])

    def test_a_filter_of_system_calls_leaves_the_walk(self):
        self.walk_alone(b"seccomp", preexec_fn=forbid_bpf)


class Check(unittest.TestCase):
    def told(self, **options):
        checks = json.loads(run("check", "--json", env={"ASAN_OPTIONS": "detect_leaks=0"}, **options).stdout)["checks"]
        return [(each["state"], each["text"]) for each in checks if each["subject"] == "source"]

    def test_says_which_source_there_is(self):
        self.assertEqual(self.told(), [("ok", "the kernel's iterator")])

    def test_says_why_it_is_not_the_better_one(self):
        [(state, text)] = self.told(preexec_fn=lambda: become("alice"))
        self.assertEqual(state, "ok")
        self.assertRegex(text, "^the walk of /proc, .*: it takes CAP_BPF and CAP_PERFMON")


class Turmoil(Sources):
    """What stays open is told once in each run, whatever else comes and goes."""

    def test_nothing_is_lost_and_nothing_told_twice(self):
        chance = random.Random(5)
        folder = b"/volume1/" + b"/".join([b"f" * 250] * 10)
        paths = [touch(folder + b"/%d-" % number + b"x" * chance.randint(0, 200)) for number in range(1000)]
        stays = Holder(folder=os.fsdecode(folder))
        self.addCleanup(stays.stop)
        restless = Announced([sys.executable, "-c", RESTLESS])
        self.addCleanup(restless.stop)
        for threads in (1, 3) * 10:
            told = Records("iterator", threads)
            self.assertEqual(told.status, 0, told.said)
            self.assertEqual(sorted(told.of[stays.pid]), sorted(paths))

    def test_many_files_of_which_none_is_asked_for(self):
        # The kernel lets go after a million.
        limit = resource.getrlimit(resource.RLIMIT_NOFILE)[1] - 10
        forks = 1100000 // min(limit, 1 << 20) + 1
        many = Announced([sys.executable, "-c", MANY, str(forks), str(limit)], processes=forks)
        self.addCleanup(many.stop)
        last = Holder("/volume1/behind-them")
        self.addCleanup(last.stop)
        told = Records("iterator")
        self.assertEqual((told.status, told.of[last.pid]), (0, [b"/volume1/behind-them"]))


HOLD_AND_LIST = """
import os, subprocess, sys
held = os.open("/volume1/inside", os.O_CREAT | os.O_RDWR)
sys.exit(subprocess.run(sys.argv[1:]).returncode)
"""

RESTLESS = """
import os, random
held = []
for child in range(3):
    if os.fork() == 0:
        while os.getppid() != 1:
            random.shuffle(held)
            for fd in held[len(held) // 2:]:
                os.close(fd)
            del held[len(held) // 2:]
            held += [os.open(f"/volume1/restless-{i}", os.O_CREAT | os.O_RDWR) for i in range(100)]
            if os.fork() == 0:
                os._exit(0)
            os.wait()
        os._exit(0)
os.write(1, b"ready\\n")
os.read(0, 1)
os._exit(0)
"""

MANY = """
import os, resource, sys
forks, limit = map(int, sys.argv[1:])
resource.setrlimit(resource.RLIMIT_NOFILE, (limit, limit))
for child in range(forks - 1):
    if os.fork() == 0:
        break
for i in range(limit - 10):
    os.dup(2)
os.write(1, b"ready\\n")
os.read(0, 1)
os._exit(0)
"""


# --- What a process does to itself before it lists -------------------------------------------------

libc = ctypes.CDLL(None, use_errno=True)


def must(result):
    if result < 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))


def become_with(user, capabilities):
    """Becomes a user with some capabilities, which go on to what is executed."""
    PR_SET_KEEPCAPS, PR_CAP_AMBIENT, RAISE = 8, 47, 2
    VERSION = 0x20080522
    must(libc.prctl(PR_SET_KEEPCAPS, 1, 0, 0, 0))
    become(user)
    low, high = (sum(1 << each % 32 for each in capabilities if each // 32 == word) for word in (0, 1))
    must(libc.capset(struct.pack("Ii", VERSION, 0), struct.pack("6I", low, low, low, high, high, high)))
    for each in capabilities:
        must(libc.prctl(PR_CAP_AMBIENT, RAISE, each, 0, 0))


AS_ALICE = f"""
import os, sys
sys.path[:0] = {sys.path!r}
os.environ["VORN_LIST_RECORDS"] = {LIST!r}
import test_sources
count = next(i for i, each in enumerate(sys.argv) if each.startswith("/"))
test_sources.become_with("alice", [int(each) for each in sys.argv[1:count]])
os.execv(sys.argv[count], sys.argv[count:])
"""


def forbid_bpf():
    """As the default filter of containers does it: with EPERM."""
    BPF = 321 if platform.machine() == "x86_64" else 280
    PR_SET_SECCOMP, SECCOMP_MODE_FILTER = 22, 2
    LOAD_NUMBER, JUMP_IF_EQUAL, RETURN = 0x20, 0x15, 0x06
    ALLOW, ERRNO_EPERM = 0x7FFF0000, 0x00050001
    program = b"".join(struct.pack("HBBI", *each) for each in (
        (LOAD_NUMBER, 0, 0, 0), (JUMP_IF_EQUAL, 0, 1, BPF), (RETURN, 0, 0, ERRNO_EPERM), (RETURN, 0, 0, ALLOW)))
    code = ctypes.create_string_buffer(program)
    header = struct.pack("HxxxxxxP", 4, ctypes.addressof(code))
    must(libc.prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, header, 0, 0))


if __name__ == "__main__":
    unittest.main()
