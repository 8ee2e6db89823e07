"""What uses a volume, a folder or a file, with the real thing for each reason."""

import contextlib
import ctypes
import errno
import json
import os
import socket
import subprocess
import sys
import threading
import unittest

from harness.command import COMMAND, run
from harness.files import touch
from harness.processes import Announced, Holder, output_of, plain_environment, start, stop
from harness.reasons import Reasons, held, libc, unmount
from harness.sample_host import needs
from harness.terminal import Terminal
from harness.volumes import btrfs, ext4, looped, overlay, Volume
from harness.waiting import wait_until

HIDDEN = (b"vorn-openfiles: can't tell: this is a PID namespace, which hides the processes outside of it "
          b"(with --inside they are left out of account)\n")


SOURCES = ("iterator", "walk")


def told_by(source, *paths):
    """The document; the namespace of the sample host is all that matters here."""
    result = run("busy", "--inside", "--json", "--source", source, *paths)
    document = json.loads(result.stdout)
    statuses = {"busy": 0, "free": 1, "unknown": 2}
    assert result.returncode == statuses[document["state"]], result
    return document


def busy(*paths):
    """The same, whichever source it is from."""
    document, walked = (told_by(source, *paths) for source in SOURCES)
    assert document == walked, (document, walked)
    return document


def rows(document):
    return {(row["reason"], file["path"]) for row in document["holders"] for file in row["files"]}


def setUpModule():
    needs("btrfs", "mkfs.btrfs", "mkfs.ext4", "losetup", "mkswap", "fuser", "lsof")
    global EXT4, BTRFS, OVERLAY
    EXT4, BTRFS, OVERLAY = ext4(), btrfs(), overlay()


class EachReason(unittest.TestCase):
    def check_all(self, reasons):
        for name, begin in reasons.kinds.items():
            with self.subTest(name, volume=reasons.volume):
                with begin() as expected:
                    self.assertEqual(rows(busy(reasons.volume)), expected)
                after = busy(reasons.volume)
                self.assertEqual((after["state"], after["reasons"]), ("free", []))

    def test_is_found_on_tmpfs(self):
        self.check_all(Reasons("/volume1"))

    def test_is_found_on_ext4(self):
        self.check_all(Reasons(EXT4.point, swap=True))

    def test_is_found_on_btrfs(self):
        self.check_all(Reasons(BTRFS.point))

    def test_is_found_in_a_subvolume(self):
        inner = Reasons(BTRFS.point + "/sub")
        for name in ("file", "folder", "program", "mapping", "socket", "loop", "deleted", "bind mount"):
            with self.subTest(name), inner.kinds[name]() as expected:
                self.assertEqual(rows(busy(BTRFS.point)), expected)
                self.assertEqual(rows(busy(inner.volume)), expected)

    def test_is_found_on_overlay(self):
        self.check_all(Reasons(OVERLAY.point))

    def test_is_found_in_a_lower_layer(self):
        folder = OVERLAY.point + "/lower"
        for snippet, reason, path in (("mapping", "mapping", folder + "/file"), ("lock", "file", folder + "/file"),
                                      ("folder", "working directory", folder)):
            with held(snippet, path):
                self.assertEqual(rows(busy(OVERLAY.point)), {(reason, path)})
                self.assertEqual(busy("/volume1")["state"], "free")


class Other(unittest.TestCase):
    def test_subvolume_of_the_same_file_system_is_no_reason(self):
        other = Volume("/mnt/other", BTRFS.source, ["-o", "subvol=other"])
        self.addCleanup(output_of, ["umount", other.point])
        with Holder(touch("/mnt/other/file")), held("mapping", touch("/mnt/other/mapped", b"x" * 4096)):
            self.assertEqual(busy(BTRFS.point)["state"], "free")
            self.assertEqual(len(rows(busy(other.point))), 2)

    def test_subvolume_that_was_unmounted_lazily_is_no_reason(self):
        other = Volume("/mnt/left", BTRFS.source, ["-o", "subvol=other"])
        with Holder(touch(other.point + "/file")):
            output_of(["umount", "--lazy", other.point])
            self.assertEqual(busy(BTRFS.point)["state"], "free")

    def test_file_with_the_same_number_is_no_reason(self):
        for name in ("one", "two"):
            output_of(["btrfs", "subvolume", "create", f"{BTRFS.point}/{name}"])
            self.addCleanup(output_of, ["btrfs", "subvolume", "delete", f"{BTRFS.point}/{name}"])
            touch(f"{BTRFS.point}/{name}/file")
        one, two = (f"{BTRFS.point}/{name}/file" for name in ("one", "two"))
        self.assertEqual(os.stat(one).st_ino, os.stat(two).st_ino)
        with Holder(two):
            self.assertEqual(busy(one)["state"], "free")
            self.assertEqual(rows(busy(two)), {("file", two)})

    def test_volume_is_no_reason(self):
        with Holder(touch("/volume2/file")):
            self.assertEqual(busy("/volume1")["state"], "free")
            self.assertEqual(rows(busy("/volume1", "/volume2")) & {("file", "/volume2/file")},
                             {("file", "/volume2/file")})


class Path(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        touch("/volume1/photo/2024/beach.jpg")
        touch("/volume1/photos")
        os.symlink("photo/2024", "/volume1/link")

    def test_below_a_volume_has_what_lies_there(self):
        expected = {("file", "/volume1/photo/2024/beach.jpg")}
        with Holder("/volume1/photo/2024/beach.jpg"), Holder("/volume1/photos"):
            for path in ("/volume1/photo", "/volume1/photo/", "/volume1/photo/2024/beach.jpg", "/volume1/link"):
                self.assertEqual(rows(busy(path)), expected, path)
            self.assertEqual(len(rows(busy("/volume1"))), 2)

    def test_is_found_through_a_bind_mount(self):
        os.makedirs("/srv/jail", exist_ok=True)
        output_of(["mount", "--bind", "/volume1/photo", "/srv/jail"])
        self.addCleanup(output_of, ["umount", "/srv/jail"])
        with Holder("/srv/jail/2024/beach.jpg"):
            for path in ("/volume1", "/volume1/photo/2024", "/volume1/photo/2024/beach.jpg"):
                self.assertEqual(rows(busy(path)), {("file", "/volume1/photo/2024/beach.jpg")}, path)
            self.assertEqual(rows(busy("/srv/jail")), {("file", "/srv/jail/2024/beach.jpg")})
        with Holder("/volume1/photos"):
            self.assertEqual(busy("/srv/jail")["state"], "free")

    def test_of_a_file_is_the_file_whatever_its_name(self):
        os.link("/volume1/photos", "/volume1/another name")
        self.addCleanup(os.unlink, "/volume1/another name")
        with Holder("/volume1/another name"):
            self.assertEqual(rows(busy("/volume1/photos")), {("file", "/volume1/another name")})

    def test_that_does_not_exist_is_an_error(self):
        for command in ("busy", "idle"):
            result = run(command, "--inside", "/volume1/phto")
            self.assertEqual((result.returncode, result.stdout, result.stderr), (
                2, b"", b"vorn-openfiles: can't tell about '/volume1/phto': No such file or directory\n"))

    def test_with_every_kind_of_byte_is_shown_as_it_is(self):
        path = b"/volume1/a \\ \n\t\"\xff\x1b[31m (deleted)"
        with Holder(touch(path)):
            (row,) = busy("/volume1")["holders"]
            self.assertEqual(row["files"][0]["deleted"], False)
            self.assertIn("path_b64", row["files"][0])
            for answer in (run("busy", "--inside", "/volume1"), run("busy", "--inside", path)):
                self.assertEqual(len(answer.stdout.splitlines()), 2)
                self.assertNotIn(b"\x1b", answer.stdout)
        os.unlink(path)

    def test_with_the_mark_of_deleted_ones_is_shown_as_it_is_on_btrfs(self):
        with Holder(touch(BTRFS.point + "/file (deleted)")):
            (row,) = busy(BTRFS.point)["holders"]
            self.assertEqual(row["files"], [{"descriptor": 3, "path": BTRFS.point + "/file (deleted)",
                                             "deleted": False}])

    def test_is_told_of_a_root_that_was_left_behind(self):
        """No table has its mount any more, but the same name leads to the same file."""
        os.makedirs("/opt/in/deep", exist_ok=True)
        os.makedirs("/opt/out", exist_ok=True)
        os.makedirs("/srv/old", exist_ok=True)
        output_of(["mount", "--bind", "/", "/srv/old"])
        with held("folder", "/srv/old/opt/in/deep"):
            output_of(["umount", "--lazy", "/srv/old"])
            self.assertEqual(rows(busy("/opt/in")), {("working directory", "/opt/in/deep")})
            document = json.loads(run("busy", "--inside", "--json", "/opt/out").stdout)
            self.assertNotIn("/opt/in/deep", str(document))
            os.rename("/opt/in/deep", "/opt/in/moved")
            self.assertEqual(rows(busy("/opt/in")), {("working directory", "/opt/in/moved")})
            os.rmdir("/opt/in/moved")
            document = json.loads(run("busy", "--inside", "--json", "/opt/in").stdout)
            self.assertIn("whose place can't be told: /opt/in/moved (deleted)", str(document["reasons"]))

    def test_in_a_folder_with_a_blank_is_found_in_another_namespace(self):
        touch("/volume1/my photos/file")
        os.makedirs("/srv/my jail", exist_ok=True)
        script = "mount --bind '/volume1/my photos' '/srv/my jail'; exec 3<'/srv/my jail/file'; echo ready; read end || :"
        with Announced(["unshare", "--mount", "sh", "-c", script]):
            self.assertEqual(rows(busy("/volume1/my photos")), {("file", "/volume1/my photos/file")})


class Row(unittest.TestCase):
    def test_names_process_owner_and_descriptors(self):
        path = touch("/volume1/file")
        with Holder({number: path for number in (0, 3, 4, 5, 17)}) as holder:
            (row,) = busy("/volume1")["holders"]
            self.assertEqual({file["descriptor"] for file in row["files"]}, {0, 3, 4, 5, 17})
            self.assertEqual((row["pid"], row["owner"], row["service"], row["user"], row["host"]),
                             (str(holder.pid), "root", "Internal service", "-", "-"))
            self.assertTrue(row["command"].startswith("python3"))
            table = run("busy", "--inside").stdout.decode().splitlines()
            self.assertEqual(table[0].split(), "REASON PID COMMAND OWNER SERVICE USER HOST FD PATH".split())
            self.assertIn("  0,3-5,17  /volume1/file +4", table[1])

    def test_names_the_user_that_it_runs_as(self):
        os.chmod(touch("/volume1/file"), 0o666)
        with open("/volume1/file", "rb") as file:
            process = start(["sleep", "1000"], stdin=file, user="nobody")
        self.addCleanup(stop, process)
        wait_until(lambda: busy("/volume1")["holders"][0]["command"] == "sleep", "sleep to run")
        self.assertEqual(busy("/volume1")["holders"][0]["owner"], "nobody")

    def test_without_a_process_names_the_device(self):
        device = looped("row", "ext4", 8)
        self.addCleanup(output_of, ["losetup", "--detach", device])
        (row,) = [row for row in busy("/volume2")["holders"] if row["files"][0]["path"] == "/volume2/row.img"]
        self.assertEqual((row["device"], row["pid"]), (os.path.basename(device), "-"))

    def test_is_one_a_process_for_pids(self):
        with Holder([touch("/volume1/a"), touch("/volume1/b")]) as one, held("folder", "/volume1") as other:
            result = run("busy", "--inside", "--pids", "/volume1")
            self.assertEqual(result.stdout.decode().split(), sorted((str(one.pid), str(other.pid)), key=int))

    def test_is_not_that_of_the_command_itself(self):
        for extra in ([], ["--timeout", "60"]):
            script = 'cd /volume1 && exec "$@" >out'
            result = subprocess.run(["sh", "-c", script, "sh", COMMAND, "busy", "--inside", *extra, "/volume1"],
                                    check=False, timeout=60)
            self.assertEqual(result.returncode, 1)

    def test_of_a_socket_on_its_way_has_no_process(self):
        server = socket.socket(socket.AF_UNIX)
        server.bind("/volume1/sent")
        ends = socket.socketpair()
        socket.send_fds(ends[0], [b"x"], [server.fileno()])
        server.close()
        (row,) = busy("/volume1")["holders"]
        self.assertEqual((row["reason"], row["pid"], row["files"][0]["path"]), ("socket", "-", "/volume1/sent"))
        for end in ends:
            end.close()
        self.assertEqual(busy("/volume1")["state"], "free")

    def test_of_a_socket_in_another_network_namespace_is_found(self):
        code = ("import socket; s = socket.socket(socket.AF_UNIX); s.bind('/volume1/other'); "
                "print('ready', flush=True); __import__('sys').stdin.read()")
        with Announced(["unshare", "--net", sys.executable, "-c", code]):
            self.assertEqual(rows(busy("/volume1")), {("socket", "/volume1/other")})


class Source(unittest.TestCase):
    """Of what is asked of the kernel beside /proc; all other tests compare both."""
    ONLY_BPF = ["setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups", "--inh-caps=-all,+bpf,+perfmon",
                "--ambient-caps=-all,+bpf,+perfmon"]

    def test_tells_nothing_of_a_process_that_cannot_be_examined(self):
        with Holder(touch("/volume1/file")):
            for source in SOURCES:
                result = subprocess.run([*self.ONLY_BPF, COMMAND, "idle", "--inside", "--source", source, "/volume1"],
                                        capture_output=True, check=False, env=plain_environment(), timeout=60)
                self.assertEqual((result.returncode, result.stdout), (2, b""), result)
                self.assertIn(b"can't be examined (Permission denied): 1 (", result.stderr)

    def test_is_the_walk_where_the_kernel_cannot_be_asked(self):
        without = ["setpriv", "--bounding-set=-bpf,-sys_admin", "--inh-caps=-all"]
        with Holder(touch("/volume1/file")):
            for source, status in (("auto", 0), ("walk", 0), ("iterator", 2)):
                result = subprocess.run([*without, COMMAND, "busy", "--inside", "--source", source, "/volume1"],
                                        capture_output=True, check=False, env=plain_environment(), timeout=60)
                self.assertEqual(result.returncode, status, result)
        self.assertIn(b"it takes CAP_BPF and CAP_PERFMON", result.stderr)

    def test_finds_what_stays_while_tables_change(self):
        code = """
import os, sys
os.write(1, b'ready\\n')
kept = os.open('/volume1/kept', os.O_RDONLY)
while os.getppid() != 1:
    for number in range(3, 200):
        os.dup2(os.open('/volume1/changing', os.O_RDONLY), number + 300)
    os.closerange(4, 1000)
"""
        touch("/volume1/kept"), touch("/volume1/changing")
        with Holder("/volume1/kept"), contextlib.ExitStack() as stack:
            for _ in range(3):
                process = subprocess.Popen([sys.executable, "-c", code], stdout=subprocess.PIPE)
                stack.callback(stop, process)
                process.stdout.readline()
            wait_until(lambda: len([row for row in told_by("walk", "/volume1")["holders"] if "/volume1/kept" in
                                    (file["path"] for file in row["files"])]) == 4, "all to hold it")
            for source in SOURCES * 10:
                document = told_by(source, "/volume1")
                kept = [row for row in document["holders"]
                        if "/volume1/kept" in (file["path"] for file in row["files"])]
                self.assertEqual((len(kept), document["complete"]), (4, True), source)

    def test_knows_files_whose_names_are_too_long(self):
        folder = os.getcwd()
        self.addCleanup(os.chdir, folder)
        os.chdir("/volume1")
        for _ in range(20):
            os.mkdir("x" * 250)
            os.chdir("x" * 250)
        with open("deep", "wb") as file:
            process = start(["sleep", "1000"], stdin=file)
            self.addCleanup(stop, process)
        os.chdir(folder)
        for source in SOURCES:
            self.assertIn(str(process.pid), [row["pid"] for row in told_by(source, "/volume1")["holders"]])


class Status(unittest.TestCase):
    def test_of_idle_is_the_other_way_round(self):
        with Holder(touch("/volume1/file")):
            self.assertEqual([run(command, "--inside", *quiet).returncode for command in ("busy", "idle")
                              for quiet in ([], ["-q"], ["--pids"])], [0, 0, 0, 1, 1, 1])
        self.assertEqual([run(command, "--inside", "/volume1", *quiet).returncode for command in ("busy", "idle")
                          for quiet in ([], ["-q"], ["--pids"])], [1, 1, 1, 0, 0, 0])

    def test_is_that_nobody_can_tell_where_a_namespace_hides_processes(self):
        for command in ("busy", "idle"):
            result = run(command, "/volume1")
            self.assertEqual((result.returncode, result.stdout, result.stderr), (2, b"", HIDDEN))
            self.assertEqual(run(command, "-q", "/volume1").returncode, 2)
        with Holder(touch("/volume1/file")):
            self.assertEqual(run("busy", "-q", "/volume1").returncode, 0)
            self.assertEqual(run("idle", "-q", "/volume1").returncode, 1)

    def unprivileged(self, *prefix):
        return subprocess.run([*prefix, COMMAND, "idle", "--inside", "/volume1"], capture_output=True, check=False,
                              env=plain_environment(), timeout=60)

    def test_is_that_nobody_can_tell_where_processes_cannot_be_examined(self):
        as_nobody = ["setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups", "--inh-caps=-all"]
        for prefix in (as_nobody, ["setpriv", "--bounding-set=-sys_ptrace", "--inh-caps=-all"]):
            result = self.unprivileged(*prefix)
            if prefix is not as_nobody and result.returncode == 0:
                continue  # Everybody has the same rights as root without that one.
            self.assertEqual(result.returncode, 2)
            self.assertIn(b"can't be examined (Permission denied): 1 (", result.stderr)

    def test_is_that_nobody_can_tell_in_a_user_namespace(self):
        result = self.unprivileged("setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups",
                                   "--inh-caps=-all", "unshare", "--user", "--map-root-user")
        self.assertEqual(result.returncode, 2)
        self.assertIn(b"can't be examined (Permission denied)", result.stderr)

    def test_is_that_nobody_can_tell_where_proc_hides_processes(self):
        script = 'mount -t proc -o hidepid=invisible proc /proc && exec "$@"'
        result = self.unprivileged("unshare", "--mount", "sh", "-c", script, "sh", "setpriv", "--reuid", "65534",
                                   "--regid", "65534", "--clear-groups", "--inh-caps=-all")
        self.assertEqual(result.returncode, 2)
        self.assertIn(b"hidepid", result.stderr)

    def test_is_that_nobody_can_tell_where_a_source_is_lost(self):
        for path in ("/sys/block", "/proc/swaps"):
            script = f'mount --bind /dev/full-of-nothing {path}; mount -t tmpfs none /sys && exec "$@"'
            if path == "/proc/swaps":
                script = 'mkdir -p /tmp/no && mount --bind /proc/self/mem /proc/swaps && exec "$@"'
            result = self.unprivileged("unshare", "--mount", "sh", "-c", script, "sh")
            self.assertEqual(result.returncode, 2, path)
            self.assertIn(f"can't read {path}".encode(), result.stderr)

    def test_is_that_nobody_can_tell_of_files_registered_with_io_uring(self):
        """The kernel then holds a file that is no process's."""
        code = """
import ctypes, os, sys
libc = ctypes.CDLL(None, use_errno=True)
ring = libc.syscall(425, 1, ctypes.create_string_buffer(120))
assert ring >= 0
file = os.open('/volume1/registered', os.O_RDONLY)
if len(sys.argv) > 1:
    assert libc.syscall(427, ring, 2, (ctypes.c_int * 1)(file), 1) == 0
os.close(file)
os.write(1, b'ready\\n')
sys.stdin.read()
"""
        if libc.syscall(425, 0, None) < 0 and ctypes.get_errno() in (errno.ENOSYS, errno.EPERM):
            self.skipTest("the kernel lets nobody use io_uring")
        touch("/volume1/registered")
        with Announced([sys.executable, "-c", code]):
            self.assertEqual(busy("/volume1")["state"], "free")
        with Announced([sys.executable, "-c", code, "registered"]):
            document = busy("/volume1")
            self.assertEqual(document["state"], "unknown")
            self.assertIn("registered with io_uring", document["reasons"][0])

    def test_of_wrong_use(self):
        for arguments in (["busy", "--wait=x"], ["busy", "--by", "volume"], ["idle", "--pids", "--json"]):
            self.assertEqual(run(*arguments).returncode, 2, arguments)


class Wait(unittest.TestCase):
    def test_ends_when_it_is_free(self):
        holder = Holder(touch("/volume1/file"))
        waiting = subprocess.Popen([COMMAND, "idle", "--inside", "--wait", "/volume1"], stdout=subprocess.PIPE)
        threading.Timer(1, holder.stop).start()
        self.assertEqual((waiting.communicate(timeout=60)[0], waiting.returncode), (b"", 0))

    def test_ends_when_the_time_is_up(self):
        with Holder(touch("/volume1/file")):
            for command in ("busy", "idle"):
                result = run(command, "--inside", "--wait=0.2", "/volume1")
                self.assertEqual(result.returncode, 2)
                self.assertIn(b"/volume1/file", result.stdout)
                self.assertEqual(result.stderr, b"vorn-openfiles: still in use after 0.2 s\n")

    def test_of_what_is_free_takes_no_time(self):
        self.assertEqual(run("busy", "--inside", "--wait", "/volume1").returncode, 1)

    def test_is_ended_by_a_signal(self):
        with Holder(touch("/volume1/file")):
            terminal = Terminal("bash", "-c", f"{COMMAND} idle --inside --wait --timeout 60 /volume1; echo [$?]")
            wait_until(lambda: terminal.process.poll() is None, "it to run")
            terminal.type("\x03")
            self.assertNotEqual(terminal.finish()[0], None)


class Peers(unittest.TestCase):
    def test_find_nothing_that_is_missing(self):
        reasons = Reasons(EXT4.point, swap=True)
        with contextlib.ExitStack() as stack:
            for begin in reasons.kinds.values():
                stack.enter_context(begin())
            ours = set(run("busy", "--inside", "--pids", EXT4.point).stdout.decode().split())
            for peer in (["fuser", "-m", EXT4.point], ["lsof", "-t", "-K", "+f", "--", EXT4.point]):
                found = subprocess.run(peer, capture_output=True, check=False, text=True).stdout.split()
                self.assertGreaterEqual(len(found), 8, peer)
                self.assertLessEqual(set(found), ours, peer)
            self.assertFalse(unmount(EXT4.point))


class Recipe(unittest.TestCase):
    def test_unmounts_what_is_free_and_nothing_else(self):
        script = f"{COMMAND} idle --inside --quiet {EXT4.point} && umount {EXT4.point}"
        with held("folder", EXT4.point):
            self.assertEqual(subprocess.run(["sh", "-c", script], check=False).returncode, 1)
        self.assertEqual(subprocess.run(["sh", "-c", script], check=False).returncode, 0)
        EXT4.mount()


if __name__ == "__main__":
    unittest.main()
