"""Sane answers on hosts and to readers that are not as one would like."""

import json
import os
import struct
import subprocess
import unittest

from harness.command import COMMAND, run
from harness.files import touch
from harness.processes import Holder

A = b"/volume1/photo/a.jpg"
CAP_DAC_READ_SEARCH, CAP_SYS_PTRACE = 1 << 2, 1 << 19
VFS_CAP_EFFECTIVE, VFS_CAP_REVISION_2 = 0x1, 0x02000000


def unmount_volumes():
    """In a mount namespace of the command's own."""
    return ["unshare", "--mount", "sh", "-c", 'umount /volume1 /volume2; exec "$@"', "sh"]


def empty_volumes():
    """In a mount namespace of the command's own, with a file open on one of them."""
    return ["unshare", "--mount", "sh", "-c", "mount -t tmpfs none /volume1; mount -t tmpfs none /volume2; "
            'exec 9>/volume1/file; exec "$@"', "sh"]


def run_under(prefix, *arguments):
    return subprocess.run([*prefix, COMMAND, *arguments], capture_output=True, check=False, timeout=60)


class Environment(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        os.makedirs("/volume2/music")  # a share, so that the volume is asked about by share
        cls.holder = Holder([touch(A)])

    @classmethod
    def tearDownClass(cls):
        cls.holder.__exit__()

    def test_found_and_nothing_found(self):
        self.assertEqual(run().returncode, 0)
        nothing = run("/volume2")
        self.assertEqual((nothing.returncode, nothing.stdout, nothing.stderr), (1, b"", b""))
        self.assertEqual(json.loads(run("--json", "/volume2").stdout)["files"], [])

    def test_quiet_answers_by_status_alone(self):
        for path, status in ((b"/volume1/photo", 0), (b"/volume2", 1), (b"/etc", 2)):
            result = run("-q", path)
            self.assertEqual((result.returncode, result.stdout), (status, b""))

    def test_no_line_of_a_table_ends_in_blanks(self):
        for arguments in ([], ["--columns", "path,user"], ["--count-by", "service,user"], ["--columns", "pid"]):
            lines = run(*arguments).stdout.splitlines()
            self.assertEqual(len(lines), 2)
            self.assertEqual([line for line in lines if line.endswith(b" ")], [])

    def test_time_is_fetched_wherever_it_is_named(self):
        os.utime(A, (0, 0))
        stamp = run("--columns", "time", "--no-header").stdout
        self.assertRegex(stamp, rb"\A19(70|69)/\d\d/\d\d \d\d:\d\d:\d\d\n\Z")
        stamp = stamp.strip()
        self.assertEqual(run("--print0", "time").stdout, stamp + b"\0")
        self.assertEqual(run("--count-by", "time", "--format", "csv").stdout, b"files,time\r\n1," + stamp + b"\r\n")
        self.assertEqual(run("--where", "time=" + stamp.decode(), "--print0", "filename").stdout, b"a.jpg\0")
        self.assertEqual(json.loads(run("--json", "--time").stdout)["files"][0]["time"], stamp.decode())

    def test_paths_are_resolved(self):
        os.symlink("/volume1/photo", "/tmp/pictures")
        for path, folder in (("/tmp/pictures", "/"), ("photo/../photo/a.jpg", "/volume1"), (".", "/volume1/photo"),
                             ("/volume1/photo/", "/")):
            result = run(path, cwd=folder)
            self.assertEqual((result.returncode, result.stdout.count(b"\n")), (0, 2), path)
        self.assertEqual(run("/volume1/phot").returncode, 1)
        with Holder([touch(b"/volume1/photo/gone/a.jpg")]):
            os.unlink("/volume1/photo/gone/a.jpg")
            os.rmdir("/volume1/photo/gone")
            self.assertEqual(run("gone", cwd="/volume1/photo").returncode, 0)

    def test_path_outside_every_volume(self):
        result = run("/etc/passwd")
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        self.assertIn(b"'/etc/passwd' is on no volume; the volumes are: /volume1, /volume2", result.stderr)

    def test_closed_pipe(self):
        for arguments in ([], ["--json"], ["--format", "csv"], ["--print0", "path"]):
            reader, writer = os.pipe()
            os.close(reader)
            result = run(*arguments, stdout=writer)
            os.close(writer)
            self.assertEqual((result.returncode, result.stderr), (0, b""))

    def test_full_disk(self):
        for arguments in ([], ["--json"], ["--format", "csv"], ["--pids"], ["--help"], ["services", "--json"],
                          ["check"], ["metrics"], ["--count-by", "user"]):
            with open("/dev/full", "wb") as full:
                result = run(*arguments, stdout=full)
            self.assertEqual(result.returncode, 2, arguments)
            self.assertIn(b"can't write the output: No space left on device", result.stderr)

    def test_closed_standard_output(self):
        result = subprocess.run(["sh", "-c", f"exec {COMMAND} >&-"], capture_output=True, check=False, timeout=60)
        self.assertEqual(result.returncode, 2)
        self.assertIn(b"can't write", result.stderr)

    def test_locales(self):
        with Holder([touch("/volume1/photo/\u5199.txt".encode())]):
            for locale, shown in (("C.UTF-8", "\u5199.txt"), ("xx_YY.UTF-8", "\u5199.txt"), ("C", "\\u{5199}.txt"),
                                  ("POSIX", "\\u{5199}.txt"), ("odd", "\\u{5199}.txt"), ("", "\\u{5199}.txt")):
                result = run(env={"LANG": locale})
                self.assertEqual((result.returncode, result.stderr), (0, b""))
                self.assertIn(shown.encode(), result.stdout, locale)

    def test_no_rights(self):
        prefix = ["setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups", "--inh-caps=-all"]
        result = run_under(prefix, "--json")
        document = json.loads(result.stdout)
        self.assertEqual((result.returncode, document["complete"], document["files"]), (1, False, []))
        self.assertIn("not running as root", document["reason"])
        self.assertIn(b"incomplete: not running as root", result.stderr)
        self.assertEqual(run_under(prefix, "--strict").returncode, 2)
        quiet = run_under(prefix, "-q")
        self.assertEqual((quiet.returncode, quiet.stderr), (1, b""))
        self.assertEqual(run_under(prefix, "check").returncode, 1)

    def test_root_without_capabilities_is_incomplete(self):
        result = run_under(["setpriv", "--bounding-set=-sys_ptrace", "--inh-caps=-all"], "--json")
        self.assertIs(json.loads(result.stdout)["complete"], False)

    def test_lent_identity_is_refused(self):
        with open(COMMAND, "rb") as file:
            instrumented = b"__asan_init" in file.read()
        # LeakSanitizer gives up where a process may not trace itself, and ends with a status of its own.
        for mode in (0o6755, 0o4755, *([] if instrumented else [0o2755])):
            with self.subTest(oct(mode)):
                self.refuses_lent_rights(lambda copy: os.chmod(copy, mode))

    def test_lent_capabilities_are_refused(self):
        for capabilities in (CAP_SYS_PTRACE | CAP_DAC_READ_SEARCH, CAP_DAC_READ_SEARCH):
            attribute = struct.pack("<5I", VFS_CAP_REVISION_2 | VFS_CAP_EFFECTIVE, capabilities, 0, 0, 0)
            self.refuses_lent_rights(lambda copy: os.setxattr(copy, "security.capability", attribute))

    def refuses_lent_rights(self, lend):
        # Neither beside a copy, nor where a file that lends rights says, are its libraries looked for.
        subprocess.run(["ldconfig", os.path.join(os.path.dirname(COMMAND), "..", "lib")], check=True)
        copy = "/tmp/vorn-openfiles"
        subprocess.run(["cp", "--remove-destination", COMMAND, copy], check=True)
        as_nobody = ["setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups", copy]
        self.assertEqual(subprocess.run(as_nobody, capture_output=True, check=False, timeout=60).returncode, 1)
        lend(copy)
        result = subprocess.run(as_nobody, capture_output=True, check=False, timeout=60)
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        self.assertIn(b"refuses to run with rights that its file lends", result.stderr)
        # To root, whose file it is, it lends nothing.
        self.assertEqual(subprocess.run([copy, "--version"], capture_output=True, check=False).returncode, 0)

    def test_capabilities_that_the_caller_has_are_used(self):
        prefix = ["setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups",
                  "--inh-caps=-all,+sys_ptrace,+dac_read_search", "--ambient-caps=-all,+sys_ptrace,+dac_read_search"]
        self.assertIs(json.loads(run_under(prefix, "--json").stdout)["complete"], True)

    def test_no_volumes(self):
        for arguments in ([], ["--by", "volume", "--json"]):
            result = run_under(unmount_volumes(), *arguments)
            self.assertEqual((result.returncode, result.stdout), (2, b""))
            self.assertIn(b"no data volume is mounted", result.stderr)
        check = run_under(unmount_volumes(), "check", "--json")
        states = {each["subject"]: each["state"] for each in json.loads(check.stdout)["checks"]}
        self.assertEqual((check.returncode, states["volumes"]), (1, "missing"))

    def test_no_shares(self):
        listing = run_under(empty_volumes(), "--json")
        self.assertEqual((listing.returncode, json.loads(listing.stdout)["files"], listing.stderr), (1, [], b""))
        check = run_under(empty_volumes(), "check", "--json")
        shares = [each for each in json.loads(check.stdout)["checks"] if each["subject"] == "shares"]
        self.assertEqual([(each["state"], each["text"].split(";")[0]) for each in shares],
                         [("warning", "no share found")])

    def test_file_beside_all_shares(self):
        with Holder([touch(b"/volume2/file beside all shares")]):
            self.assertNotIn(b"beside", run().stdout)
            self.assertIn(b"/volume2/file beside", run("--by", "volume").stdout)
            self.assertEqual(run("/volume2").returncode, 1)

    def test_object_named_like_no_volume(self):
        touch(b"/volume")
        usual = run("--format", "csv")
        with Holder([b"/volume"]) as holder:
            result = run("--format", "csv")
            metrics = run("metrics")
            watch = self.said_by_a_watch()
        os.unlink("/volume")
        notice = ('vorn-openfiles: left out an object named "/volume", which is in no '
                  f"volume; held open by: {holder.pid}\n").encode()
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, usual.stdout, notice))
        self.assertEqual((metrics.returncode, metrics.stderr), (0, notice))
        # Said at the first look, though there were more.
        self.assertEqual(watch, notice)

    def test_object_named_like_no_volume_that_comes_while_one_watches(self):
        touch(b"/volume")
        watch = self.start_watch()
        watch.stdout.readline()
        with Holder([b"/volume"]) as holder:
            said = watch.stderr.readline()
        os.unlink("/volume")
        watch.terminate()
        self.assertEqual((watch.communicate(timeout=60)[1], watch.returncode), (b"", 0))
        self.assertIn(f"held open by: {holder.pid}\n".encode(), said)

    def start_watch(self):
        return subprocess.Popen([COMMAND, "--watch", "0.1", "--format", "jsonl"],
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def said_by_a_watch(self):
        """What was said until a file that was opened after the first look is seen."""
        watch = self.start_watch()
        watch.stdout.readline()
        with Holder([touch(b"/volume1/photo/later")]):
            self.assertTrue(any(b"later" in line for line in iter(watch.stdout.readline, b"")))
        watch.terminate()
        return watch.communicate(timeout=60)[1]

    def test_deleted_file_keeps_its_place_with_times(self):
        gone = touch(b"/volume1/photo/gone")
        with Holder([gone]):
            os.unlink(gone)
            files = json.loads(run("--json", "--time", gone).stdout)["files"]
        self.assertEqual([(file["deleted"], file["time"]) for file in files], [(True, "-")])

    def test_100000_records(self):
        for number in range(10000):
            touch(b"/volume2/many/%05d" % number)
        with Holder(folder=b"/volume2/many", forks=9):
            result = run("--json", "/volume2/many")
            self.assertEqual((result.returncode, len(json.loads(result.stdout)["files"])), (0, 100000))
            self.assertEqual(run("--pids", "/volume2/many").stdout.count(b"\n"), 10)
            for arguments, lines in (([], 100001), (["--format", "csv"], 100001), (["--format", "jsonl"], 100000),
                                     (["--count-by", "user"], 2)):
                self.assertEqual(run("/volume2/many", *arguments).stdout.count(b"\n"), lines, arguments)
            self.reader_leaves_after_a_line("/volume2/many")

    def reader_leaves_after_a_line(self, path):
        for arguments in ([], ["--json"], ["--format", "csv"]):
            command = subprocess.Popen([COMMAND, path, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            self.assertTrue(command.stdout.readline())
            command.stdout.close()
            self.assertEqual((command.stderr.read(), command.wait(60)), (b"", 0), arguments)
            command.stderr.close()

    def test_selecting_ordering_and_limiting(self):
        paths = [touch(b"/volume1/photo/sel/" + name) for name in (b"b.JPG", b"a.png", b"c.jpg")]

        def names(*arguments):
            return run("/volume1/photo/sel", "--print0", "filename", *arguments).stdout.split(b"\0")[:-1]

        with Holder(paths):
            self.assertEqual(names(), [b"a.png", b"b.JPG", b"c.jpg"])
            self.assertEqual(names("--reverse"), [b"c.jpg", b"b.JPG", b"a.png"])
            self.assertEqual(names("--match", "filename=.jpg"), [b"b.JPG", b"c.jpg"])
            self.assertEqual(names("--where", "filename=a.png", "--where", "filename=c.jpg"), [b"a.png", b"c.jpg"])
            self.assertEqual(names("--not-match", "filename=.jpg"), [b"a.png"])
            self.assertEqual(names("--sort", "filename", "--reverse", "--limit", "1"), [b"c.jpg"])
            self.assertEqual(names("--folders", "only"), [])
