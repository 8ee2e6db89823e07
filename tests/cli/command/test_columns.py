"""What the kernel knows of an open file, as columns, conditions, order, sections and sums."""

import csv
import json
import os
import shutil
import sys
import time
import unittest

from harness.command import run
from harness.files import touch
from harness.processes import Announced, Holder
from harness.terminal import Terminal
from harness.waiting import wait_until

FOLDER = b"/volume1/facts"

# Holds files in all the ways that are told apart, and says so.
HOLD = """
import ctypes, fcntl, os, struct
os.chdir("/volume1/facts")
END = 200
os.dup2(0, END)

def hold(number, name, flags):
    opened = os.open(name, flags | os.O_CREAT, 0o644)
    os.dup2(opened, number)
    if opened != number:
        os.close(opened)

hold(50, "read", os.O_RDONLY)
hold(51, "write", os.O_WRONLY)
hold(52, "both", os.O_RDWR)
hold(53, "append", os.O_WRONLY | os.O_APPEND)
hold(54, "twice", os.O_RDONLY)
hold(55, "twice", os.O_RDONLY)
hold(57, "twice", os.O_RDWR | os.O_APPEND)
hold(60, "sparse", os.O_RDWR)
os.ftruncate(60, 3 << 30)
hold(61, "gone", os.O_RDWR)
os.write(61, b"x" * 10000)
os.unlink("gone")
hold(62, "gone", os.O_RDWR)
os.write(62, b"x" * 5000)
os.unlink("gone")
hold(70, "posix", os.O_RDWR)
fcntl.lockf(70, fcntl.LOCK_EX, 20, 10)
hold(71, "flock", os.O_RDONLY)
fcntl.flock(71, fcntl.LOCK_SH)
hold(72, "ofd", os.O_RDWR)
fcntl.fcntl(72, 37, struct.pack("hhqqi4x", fcntl.F_RDLCK, os.SEEK_SET, 100, 0, 0))
hold(73, "lease", os.O_RDONLY)
fcntl.fcntl(73, fcntl.F_SETLEASE, fcntl.F_RDLCK)
folder = os.open("/volume1/facts", os.O_RDONLY)
ctypes.CDLL(None).prctl(15, b"keeper", 0, 0, 0)  # PR_SET_NAME
os.write(1, b"ready\\n")
os.read(END, 1)
"""

WAIT = """
import ctypes, fcntl, os
file = os.open("/volume1/facts/posix", os.O_RDWR)
ctypes.CDLL(None).prctl(15, b"eager", 0, 0, 0)  # PR_SET_NAME
os.write(1, b"ready\\n")
fcntl.lockf(file, fcntl.LOCK_EX)
"""


def table(*arguments):
    """Rows of CSV as dictionaries."""
    result = run("--by", "volume", "--format", "csv", *arguments)
    assert result.stderr == b"", result.stderr
    return list(csv.DictReader(result.stdout.decode().splitlines()))


def names(*arguments):
    return [row["filename"] for row in table(FOLDER, "--columns", "filename", "--folders", "no", *arguments)]


class Columns(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        os.makedirs(FOLDER, exist_ok=True)
        os.chmod(FOLDER, 0o777)
        touch(FOLDER + b"/read", b"x" * 4097)
        os.utime(FOLDER + b"/read", (0, 1_000_000_000))
        for name in (b"posix", b"flock"):
            touch(FOLDER + b"/" + name)
            os.chmod(FOLDER + b"/" + name, 0o666)
        cls.holder = Announced([sys.executable, "-c", HOLD], user="nobody")
        cls.addClassCleanup(cls.holder.stop)

    def of(self, name, *columns):
        rows = [row for row in table(FOLDER, "--columns", ",".join(["filename", *columns])) if row["filename"] == name]
        self.assertEqual(len(rows), 1, name)
        return tuple(rows[0][column] for column in columns)

    def test_tell_who_holds(self):
        with open(f"/proc/{self.holder.pid}/cgroup", encoding="ascii") as file:
            groups = file.read()
        command, owner, login, unit, pid = self.of("read", "command", "owner", "login", "unit", "pid")
        self.assertEqual((command, owner, pid), ("keeper", "nobody", str(self.holder.pid)))
        with open(f"/proc/{self.holder.pid}/loginuid", encoding="ascii") as file:
            self.assertEqual(login == "-", file.read() == "4294967295")
        self.assertTrue(unit == "-" or unit in groups, unit)

    def started(self):
        """By the kernel's own count, of which the time of day may have moved on a little since."""
        with open(f"/proc/{self.holder.pid}/stat", encoding="ascii") as file:
            ticks = int(file.read().rpartition(")")[2].split()[19])
        return time.time() - time.clock_gettime(time.CLOCK_BOOTTIME) + ticks / os.sysconf("SC_CLK_TCK")

    def test_tell_since_when(self):
        wait_until(lambda: time.time() > self.started() + 3, "some seconds since the start")
        told = time.mktime(time.strptime(self.of("read", "started")[0], "%Y/%m/%d %H:%M:%S"))
        self.assertLess(abs(told - self.started()), 1.5)

    def test_tell_descriptors_and_modes(self):
        for name, fd, mode in (("read", "50", "r"), ("write", "51", "w"), ("both", "52", "rw"), ("append", "53", "wa"),
                               ("twice", "54,55,57", "r,rwa"), ("gone (deleted)", "61,62", "rw")):
            self.assertEqual(self.of(name, "fd", "mode"), (fd, mode), name)

    def test_tell_sizes(self):
        status = os.stat(FOLDER + b"/read")
        self.assertEqual(self.of("read", "size", "space", "inode", "device"),
                         ("4097", str(status.st_blocks * 512), str(status.st_ino),
                          f"{os.major(status.st_dev)}:{os.minor(status.st_dev)}"))
        self.assertEqual(self.of("sparse", "size"), (str(3 << 30),))
        self.assertLess(int(self.of("sparse", "space")[0]), 1 << 20)
        # Two deleted files of one name.
        self.assertEqual(self.of("gone (deleted)", "size"), ("15000",))
        self.assertEqual(self.of("read", "modified"),
                         (time.strftime("%Y/%m/%d %H:%M:%S", time.localtime(1_000_000_000)),))
        self.assertEqual(self.of("facts", "size", "mode"), ("-", "r"))
        # What is deleted still takes its space, of both.
        self.assertEqual(self.of("gone (deleted)", "space"), (str(sum(self.space_of(fd) for fd in (61, 62))),))

    def space_of(self, descriptor):
        return os.stat(f"/proc/{self.holder.pid}/fd/{descriptor}").st_blocks * 512

    def test_tell_locks(self):
        for name, locks in (("posix", "POSIX write 10-29"), ("flock", "flock read"), ("ofd", "OFD read 100-"),
                            ("lease", "lease read"), ("read", "-")):
            self.assertEqual(self.of(name, "locks"), (locks,), name)

    def test_tell_who_waits_for_a_lock(self):
        waiter = Announced([sys.executable, "-c", WAIT])
        try:
            wanted = f"POSIX write 10-29, awaited by {waiter.pid} (eager)"
            wait_until(lambda: self.holders_locks() == wanted, "the waiter at the lock")
        finally:
            waiter.process.kill()
            waiter.stop()

    def holders_locks(self):
        return table(FOLDER + b"/posix", "--columns", "locks", "--where", f"pid={self.holder.pid}")[0]["locks"]

    def test_select_by_comparison(self):
        self.assertEqual(names("--where", "size>1G"), ["sparse"])
        self.assertEqual(names("--where", "size>=4097", "--where", "size<5K"), ["read"])
        self.assertEqual(names("--where", "size=4097"), ["read"])
        self.assertEqual(names("--where", "size=15000", "--where", "size=4097"), ["gone (deleted)", "read"])
        self.assertEqual(names("--where", "modified<2002-01-01"), ["read"])
        self.assertEqual(names("--where", "modified>1w"), ["read"])
        self.assertEqual(names("--where", "fd>=70", "--where", "fd<72"), ["flock", "posix"])
        self.assertEqual(names("--where", "fd=57"), ["twice"])
        self.assertEqual(names("--match", "locks=LEASE"), ["lease"])
        self.assertEqual(names("--where", "space<0"), [])

    def test_select_by_mode(self):
        self.assertEqual(names("--where", "mode=a"), ["append", "twice"])
        self.assertEqual(names("--where", "mode=w", "--not-where", "mode=r"), ["append", "write"])
        self.assertEqual(names("--where", "mode=rwa"), ["twice"])
        self.assertNotIn("read", names("--where", "mode=w"))

    def test_select_by_start(self):
        everything = names()
        self.assertIn("read", everything)
        wait_until(lambda: time.time() > self.started() + 3, "some seconds since the start")
        for arguments in (["--since", "1d"], ["--where", "started<1d"], ["--not-where", "started>1d"],
                          ["--where", "started>1"]):
            self.assertEqual(names(*arguments), everything, arguments)
        for arguments in (["--since", "1"], ["--where", "started<1s"], ["--where", "started>1d"]):
            self.assertEqual(names(*arguments), [], arguments)
        self.assertEqual(names("--where", "command=keeper", "--where", "owner=nobody"), everything)

    def test_order_by_several_and_by_number(self):
        rows = table(FOLDER, "--columns", "mode,size,filename", "--sort", "mode,size", "--folders", "no")
        keys = [(row["mode"], int(row["size"])) for row in rows]
        self.assertEqual(keys, sorted(keys))
        self.assertEqual(names("--sort", "size", "--reverse")[:3], ["sparse", "gone (deleted)", "read"])

    def test_make_sections(self):
        folder = b"/volume1/sections/"
        with Holder([touch(folder + b"a", b"x" * 4097), touch(folder + b"c")]) as first, \
                Holder([touch(folder + b"b")]) as second:
            sections = {first.pid: ["a         4.1K", "c            0"], second.pid: ["b            0"]}
            for more, pids in (([], sorted(sections)), (["--reverse"], sorted(sections, reverse=True))):
                result = run(folder, "--by", "volume", "--group-by", "pid", "--columns", "pid,filename", "-o", "+size", *more)
                expected = ["FILENAME  SIZE"]
                for pid in pids:
                    expected += [f"pid {pid}", *sorted(sections[pid], reverse=bool(more))]
                self.assertEqual(result.stdout.decode().splitlines(), expected)

    def test_are_added_and_are_wide_on_request(self):
        added = run(FOLDER + b"/read", "--by", "volume", "--no-header", "-o", "+size,+mode").stdout.split()
        self.assertEqual(added[-3:], [FOLDER + b"/read", b"4.1K", b"r"])
        deep = FOLDER + b"/" + b"deep" * 30
        with Holder([touch(deep)]):
            shown = {}
            for arguments in ((), ("--wide",)):
                shown[arguments] = "\n".join(Terminal(*self.command(), *arguments, columns=80).finish()[1])
            os.unlink(deep)
        self.assertNotIn(deep.decode(), shown[()])
        self.assertIn("\N{HORIZONTAL ELLIPSIS}", shown[()])
        self.assertIn(deep.decode(), shown[("--wide",)])

    @staticmethod
    def command():
        return (os.environ["VORN_OPENFILES"], "--by", "volume", FOLDER)


class Sums(unittest.TestCase):
    def test_count_a_file_in_each_line_that_it_belongs_to(self):
        path = touch(b"/volume1/sums/both", b"x" * 5000)
        with Holder([path]) as one, Holder([path, touch(b"/volume1/sums/more", b"x" * 10)]) as two:
            rows = table(b"/volume1/sums", "--count-by", "pid", "--sum", "size")
        self.assertEqual({row["pid"]: (row["files"], row["total_size"]) for row in rows},
                         {str(one.pid): ("1", "5000"), str(two.pid): ("2", "5010")})

    def test_count_each_file_once(self):
        path = touch(b"/volume1/sums/a", b"x" * 5000)
        with Holder([path]), Holder([path]), Holder([touch(b"/volume1/sums/b", b"x" * 1000)]):
            [row] = table(b"/volume1/sums", "--count-by", "owner", "--sum", "size,space")
            self.assertEqual((row["files"], row["total_size"]), ("3", "6000"))
            status = [os.stat(f"/volume1/sums/{name}") for name in "ab"]
            self.assertEqual(int(row["total_space"]), sum(each.st_blocks * 512 for each in status))
            document = json.loads(run(b"/volume1/sums", "--by", "volume", "--json", "--count-by", "filename", "--sum", "size").stdout)
        self.assertEqual(document["counts"], [{"filename": "a", "files": 2, "total_size": 5000},
                                              {"filename": "b", "files": 1, "total_size": 1000}])

    def test_put_the_largest_first(self):
        with Holder([touch(b"/volume1/sums/few", b"x" * 90000)]), Holder([touch(b"/volume1/sums/%d" % i) for i in range(5)]):
            rows = table(b"/volume1/sums", "--count-by", "pid", "--sum", "size")
        self.assertEqual([row["total_size"] for row in rows], ["90000", "0"])

    def test_tell_metrics_of_deleted_space(self):
        path = touch(b"/volume1/sums/log", b"x" * 5000)
        with Holder([path]), Holder([path]):
            space = os.stat(path).st_blocks * 512
            os.unlink(path)
            text = run("metrics", "--by", "volume").stdout.decode()
            sized = run("metrics", "--by", "volume", "--sum", "size").stdout.decode()
        [line] = [line for line in text.splitlines() if line.startswith("vorn_openfiles_deleted_space_bytes{")]
        self.assertRegex(line, rf'volume="/volume1",.* {space}$')
        self.assertNotIn("vorn_openfiles_size_bytes", text)
        self.assertRegex(sized, r'vorn_openfiles_size_bytes\{volume="/volume1",.*\} 5000\n')


class Language(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        for prefix in ("/usr", "/usr/local"):
            shutil.copytree(os.environ["VORN_SOURCE"] + "/data/texts", f"{prefix}/share/vornplatform1/texts", dirs_exist_ok=True)

    def test_changes_no_counts(self):
        with Holder([touch(b"/volume1/photo/a")]):
            told = {run("--count-by", "service", "--format", "csv", env={"LANGUAGE": language}).stdout
                    for language in ("en", "de", "fr")}
        self.assertEqual(told, {b"files,service\r\n1,Internal service\r\n"})


if __name__ == "__main__":
    unittest.main()
