"""A volume that doesn't answer costs no more than the time limit."""

import json
import os
import resource
import signal
import subprocess
import sys
import time
import unittest

from harness.command import COMMAND, run
from harness.files import touch
from harness.fuse_volume import FILE, FuseVolume
from harness.processes import Holder, plain_environment
from harness.terminal import Terminal
from harness.waiting import wait_until

PATIENCE = 20
# Asks the volume which of its files are folders; the kernel's iterator knows without.
ASKS = ("--by", "volume", "--source", "walk")
NO_ANSWER = b"vorn-openfiles: no answer within 0.5 s; volumes that don't answer: /volume9\n"


def setUpModule():
    if not os.path.exists("/dev/fuse"):
        print("skipped: the kernel has no FUSE (/dev/fuse)")
        sys.exit(77)


class AnswerInTime(unittest.TestCase):
    def test_is_the_usual_one(self):
        with Holder([touch(b"/volume1/photo/a.jpg")]):
            limited, usual = run("--json", "--timeout", "60"), run("--json")
            self.assertEqual((limited.returncode, limited.stdout), (0, usual.stdout))
        for arguments in (["/etc"], ["--strict", "/volume2"], ["metrics"], ["check"],
                          ["disconnect", "--dry-run", "/volume2"]):
            self.assertEqual(run(*arguments, "--timeout", "60").returncode, run(*arguments).returncode)


class Work(unittest.TestCase):
    """The time limit's own calls fail."""

    def said(self, prepare, *arguments):
        script = f'{prepare}; exec "$@"'
        # LeakSanitizer would need at its end what is short here.
        result = subprocess.run(["unshare", "--mount", "sh", "-c", script, "sh", COMMAND, *arguments],
                                capture_output=True, check=False, timeout=PATIENCE,
                                env=plain_environment(ASAN_OPTIONS="detect_leaks=0"))
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        return result.stderr.decode()

    def test_that_cannot_let_its_output_go_says_so(self):
        said = self.said("mount -t tmpfs none /dev", "--timeout", "60")
        self.assertEqual(said, "vorn-openfiles: can't open /dev/null: No such file or directory\n")

    def test_that_cannot_be_started_says_so(self):
        said = self.said("ulimit -n 4", "--timeout", "60")
        self.assertEqual(said, "vorn-openfiles: can't start a process for the work: socketpair: Too many open files\n")


class DeadVolume(unittest.TestCase):
    def setUp(self):
        self.addCleanup(self.nothing_is_left)
        self.volume = FuseVolume()
        self.enterContext(Holder([FILE, touch(b"/volume1/photo/a.jpg")]))
        # Before the holder is asked to end: it can't while its volume is dead.
        self.addCleanup(self.volume.close)

    def nothing_is_left(self):
        """Once nothing blocks them any more, even workers that couldn't be killed end."""
        wait_until(lambda: not commands(), "the last process of the command to end", PATIENCE)

    def test_is_listed_while_it_lives(self):
        result = run("--by", "volume", "--print0", "full_path", "--timeout", "60")
        self.assertEqual((result.returncode, result.stdout), (0, b"/volume1/photo/a.jpg\0" + FILE + b"\0"))

    def test_is_named_in_time(self):
        self.volume.die()
        for arguments in ([], [*ASKS, "--json"], ["--count-by", "user"], ["-q", FILE], ["metrics"],
                          ["check"], ["disconnect", "--yes", FILE], ["disconnect", "--dry-run", *ASKS, "--folders", "no"]):
            begin = time.monotonic()
            result = run(*arguments, "--timeout", "0.5", timeout=PATIENCE)
            self.assertGreaterEqual(time.monotonic() - begin, 0.5)
            self.assertEqual((result.returncode, result.stdout, result.stderr), (2, b"", NO_ANSWER), arguments)
        self.assertTrue(any(state_of(pid) == "D" for pid in commands()), "every worker could be killed")

    def test_is_no_obstacle_to_what_uses_it(self):
        """Nobody has to be asked: the kernel alone knows."""
        with Holder([FILE]) as holder:
            self.volume.die()
            for limit in ([], ["--source", "walk"], ["--timeout", "60"]):
                for quiet in ([], ["--quiet"], ["--pids"], ["--json"]):
                    said = self.answer_without_help(0, "busy", "--inside", "/volume9", *quiet, *limit)
                    if quiet == ["--pids"]:
                        self.assertIn(str(holder.pid).encode(), said.split())
            self.answer_without_help(0, "idle", "--inside", "/volume2")
            self.assertFalse(self.volume.keeps_somebody_waiting())
            self.volume.revive()

    def answer_without_help(self, status, *arguments):
        """Of a command that can't even be killed where it waits for the volume."""
        asking = subprocess.Popen([COMMAND, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        wait_until(lambda: asking.poll() is not None or self.volume.keeps_somebody_waiting(),
                   "an answer", PATIENCE)
        waits = self.volume.keeps_somebody_waiting()
        if waits:
            self.volume.revive()
        said, complaint = asking.communicate(timeout=PATIENCE)
        self.assertEqual((waits, asking.returncode, complaint), (False, status, b""), arguments)
        return said

    def test_is_named_in_time_where_a_path_below_it_is_asked_about(self):
        self.volume.die()
        for command in ("busy", "idle"):
            result = run(command, "--inside", FILE, "--timeout", "0.5", timeout=PATIENCE)
            self.assertEqual((result.returncode, result.stdout, result.stderr), (2, b"", NO_ANSWER))

    def test_is_not_asked_where_nobody_wants_to_know(self):
        self.volume.die()
        for arguments in ([], ["--count-by", "user"], ["--print0", "path"], ["-q"]):
            self.assertEqual(run("--by", "volume", *arguments, "--timeout", "60").returncode, 0, arguments)

    def test_is_not_asked_for_folders_where_the_kernel_tells_them(self):
        if run("--source", "iterator").returncode == 2:
            raise unittest.SkipTest(run("--source", "iterator").stderr.decode())
        with Holder("/volume1/photo"):
            self.volume.die()
            result = run("--by", "volume", "--source", "iterator", "--json", "--timeout", "60")
        files = {file["full_path"]: file["folder"] for file in json.loads(result.stdout)["files"]}
        self.assertEqual(files, {os.fsdecode(FILE): False, "/volume1/photo": True, "/volume1/photo/a.jpg": False})

    def test_has_a_worker_whose_end_is_told(self):
        self.volume.die()
        parent = subprocess.Popen([COMMAND, "--timeout", "60"], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        wait_until(self.volume.keeps_somebody_waiting, "a look to be kept waiting", PATIENCE)
        for worker in commands() - {parent.pid}:
            os.kill(worker, signal.SIGKILL)
        self.volume.revive()
        said = b"vorn-openfiles: the process that did the work was ended by signal 9\n"
        self.assertEqual((parent.communicate(timeout=PATIENCE), parent.returncode), ((b"", said), 2))

    def test_has_a_worker_that_says_when_it_cannot_have_its_output_back(self):
        self.volume.die()
        parent = subprocess.Popen([COMMAND, "--timeout", "60"], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        wait_until(self.volume.keeps_somebody_waiting, "a look to be kept waiting", PATIENCE)
        for worker in commands() - {parent.pid}:
            resource.prlimit(worker, resource.RLIMIT_NOFILE, (0, 0))
        self.volume.revive()
        said = b"vorn-openfiles: the process that did the work couldn't get its output back\n"
        self.assertEqual((parent.communicate(timeout=PATIENCE), parent.returncode), ((b"", said), 2))

    def test_ends_a_watch(self):
        watch = subprocess.Popen([COMMAND, *ASKS, "--watch", "0.1", "--format", "jsonl", "--timeout", "0.5"],
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        events = [json.loads(watch.stdout.readline()) for _ in range(2)]
        self.volume.die()
        self.assertEqual(watch.communicate(timeout=PATIENCE), (b"", NO_ANSWER))
        self.assertEqual((watch.returncode, [each["file"]["filename"] for each in events]), (2, ["a.jpg", "file"]))

    def test_ends_a_watch_on_a_terminal_which_is_then_as_it_was(self):
        terminal = Terminal(COMMAND, *ASKS, "--folders", "no", "--watch", "0.1", "--timeout", "0.5")
        terminal.wait_for(b" open, ")
        self.volume.die()
        status, lines = terminal.finish()
        self.assertEqual((status, terminal.settings_after), (2, terminal.settings_before))
        said = NO_ANSWER.decode().rstrip()
        self.assertTrue("\n".join(lines).endswith(f"\x1b[?25h\x1b[?1049l{said}\n"), lines[-3:])

    def test_keeps_no_watch_from_ending(self):
        for end in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, "q"):
            for limit in ([], ["--timeout", "60"]):
                with self.subTest(end, limit=limit):
                    self.watch_ends_by(end, limit)
        self.volume.die()
        watch = subprocess.Popen([COMMAND, "--watch", "0.1", "--format", "jsonl"], stdout=subprocess.PIPE)
        wait_until(self.volume.keeps_somebody_waiting, "a look to be kept waiting", PATIENCE)
        watch.stdout.close()
        self.assertEqual(watch.wait(PATIENCE), 1)

    def watch_ends_by(self, end, limit):
        terminal = Terminal(COMMAND, *ASKS, "--folders", "no", "--watch", "0.1", *limit)
        terminal.wait_for(b" open, ")
        self.volume.die()
        wait_until(self.volume.keeps_somebody_waiting, "a look to be kept waiting", PATIENCE)
        if end == "q":
            terminal.type(end)
        else:
            os.killpg(terminal.process.pid, end)
        status, lines = terminal.finish()
        self.volume.revive()
        self.assertEqual((status, terminal.settings_after), (0, terminal.settings_before))
        self.assertTrue("\n".join(lines).endswith("\x1b[?25h\x1b[?1049l"), lines[-3:])

    def test_keeps_nobody_waiting_for_the_end_of_the_output(self):
        self.volume.die()
        result = subprocess.run(["sh", "-c", '"$VORN_OPENFILES" --timeout 0.5 2>&1 | cat'],
                                capture_output=True, check=False, timeout=PATIENCE)
        self.assertEqual(result.stdout, NO_ANSWER)

    def test_has_a_worker_that_holds_neither_input_nor_output(self):
        self.volume.die()
        parent = subprocess.Popen([COMMAND, "--timeout", "60"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT)
        wait_until(lambda: standard_descriptors(commands() - {parent.pid}) == ["/dev/null"] * 3,
                   "all of them to be let go of", PATIENCE)
        parent.terminate()
        parent.communicate(timeout=PATIENCE)


def commands():
    """Pids of the command's processes that have not ended."""
    return {int(entry) for entry in filter(str.isdigit, os.listdir("/proc")) if link(entry, "exe") == COMMAND}


def standard_descriptors(pids):
    return [link(pid, f"fd/{fd}") for pid in pids for fd in (0, 1, 2)]


def link(pid, name):
    try:
        return os.readlink(f"/proc/{pid}/{name}")
    except OSError:
        return None  # It has just ended.


def state_of(pid):
    try:
        with open(f"/proc/{pid}/stat", "rb") as file:
            return file.read().rpartition(b")")[2].split()[0].decode()
    except OSError:
        return ""
