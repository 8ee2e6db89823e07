"""What a user who may only create files and start processes can do to the list."""

import ctypes
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

from harness.command import run
from harness.files import touch
from harness.processes import Announced, Holder

REAL = "/volume1/photo/real"
SOURCE = os.environ["VORN_RECORDS_FROM"]
TRICKS = os.path.join(os.path.dirname(os.path.realpath(__file__)), "hostile.py")


def setUpModule():
    source = run("--source", SOURCE)
    if source.returncode == 2:
        print(f"skipped: {source.stderr.decode()}")
        sys.exit(77)
    as_nobody = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]
    if subprocess.run([*as_nobody, "unshare", "--user", "true"], check=False).returncode != 0:
        raise unittest.SkipTest("the kernel refuses user namespaces to users, as by sysctl")
    os.mkdir("/volume1/photo")
    os.chmod("/volume1/photo", 0o1777)


class Hostile(Announced):
    """The user nobody at a trick of hostile.py."""

    def __init__(self, trick, *arguments, executable=sys.executable, login=None):
        environment = dict(os.environ)
        if login is not None:
            environment["VORN_LOGIN_UID"] = str(login)
        super().__init__([executable, TRICKS, trick, *arguments], env=environment)
        self.pid = str(self.pid)


class Opened:
    """Whether anybody opens a folder from now on."""

    IN_OPEN = 0x20

    def __init__(self, folder):
        libc = ctypes.CDLL(None, use_errno=True)
        self._queue = libc.inotify_init1(os.O_NONBLOCK | os.O_CLOEXEC)
        assert libc.inotify_add_watch(self._queue, folder.encode(), self.IN_OPEN) >= 0

    def ever(self):
        try:
            return os.read(self._queue, 4096) != b""
        except BlockingIOError:
            return False
        finally:
            os.close(self._queue)


class HostileUser(unittest.TestCase):
    def setUp(self):
        self._honest = Holder([touch(REAL.encode())])
        self._honest.__enter__()
        self.addCleanup(self._honest.__exit__)

    def listed(self, *arguments):
        """The records, the honest one among them and without it: nothing may touch that one."""
        result = run("--json", "--source", SOURCE, *arguments)
        self.assertIn(result.returncode, (0, 1), result.stderr)
        files = json.loads(result.stdout)["files"]
        honest = [file for file in files if file["pid"] == str(self._honest.pid)]
        self.assertEqual([file["full_path"] for file in honest], [REAL])
        self.assertEqual((honest[0]["user"], honest[0]["host"]), ("-", "-"))
        return [file for file in files if file not in honest], result.stderr.decode()

    # Mount and user namespaces

    def test_a_forged_path_bears_the_pid_of_who_forged_it(self):
        with Hostile("forge_path", "/volume1/photo/secret") as user:
            files, _ = self.listed()
            self.assertEqual([(file["full_path"], file["pid"], file["user"]) for file in files],
                             [("/volume1/photo/secret", user.pid, "-")])

    def test_a_forged_path_of_an_open_file_leaves_that_one_alone(self):
        with Hostile("forge_path", REAL) as user:
            files, _ = self.listed()
            self.assertEqual([(file["full_path"], file["pid"]) for file in files], [(REAL, user.pid)])

    def test_a_forged_path_on_no_volume_of_the_host_is_not_listed(self):
        with Hostile("forge_path", "/volume9/photo/secret"):
            for by in ("share", "volume"):
                self.assertEqual(self.listed("--by", by)[0], [])

    def test_the_bare_volume_is_left_out_and_named(self):
        with Hostile("bare_volume") as user:
            for arguments in ([], ["--by", "volume"], ["--timeout", "60"]):
                files, said = self.listed(*arguments)
                self.assertEqual(files, [])
                self.assertIn(f'named "/volume", which is in no volume; held open by: {user.pid}\n', said)
            self.assertEqual(run("metrics").returncode, 0)

    def test_the_bare_volume_coming_and_going_is_left_out_and_named(self):
        with Hostile("restless_volume", "64") as user:
            for _ in range(20):
                files, said = self.listed()
                self.assertEqual(files, [])
                self.assertRegex(said, rf'named "/volume", which is in no volume; held open by: {user.pid}(, \d+){{4}}\n')

    def test_a_volume_of_ones_own_is_no_volume_of_the_host(self):
        with Hostile("own_volume2"):
            before = run("check").stdout
            self.assertIn(b"2 mounted: /volume1, /volume2", before)
            # The path is that of their own mount; by its text it is the host's volume.
            files, _ = self.listed("--by", "volume")
            self.assertEqual([file["full_path"] for file in files], ["/volume2/mine"])

    def test_a_private_bind_mount_hides_ones_own_files_only(self):
        with Hostile("hide_behind_bind_mount", REAL):
            self.assertEqual(self.listed()[0], [])

    # Files without a name on a volume

    def test_memory_files_are_on_no_volume_whatever_their_name(self):
        for name in ("/volume1/photo/x", "../volume1/photo/x", "/../volume1/photo/x"):
            with Hostile("memory_file", name):
                self.assertEqual(self.listed("--by", "volume")[0], [])

    def test_files_without_a_name_are_shown_as_the_kernel_calls_them(self):
        with Hostile("no_name") as user:
            files, _ = self.listed()
            self.assertEqual([file["pid"] for file in files], [user.pid])
            self.assertRegex(files[0]["full_path"], r"^/volume1/photo/#\d+ \(deleted\)$")
            self.assertTrue(files[0]["deleted"])

    def test_a_path_longer_than_the_kernel_tells_is_left_out(self):
        with Hostile("deep_path") as user:
            self.assertEqual(self.listed()[0], [])
            with self.assertRaises(OSError):
                for number in os.listdir(f"/proc/{user.pid}/fd"):
                    os.readlink(f"/proc/{user.pid}/fd/{number}")
        shutil.rmtree("/volume1/photo/" + "d" * 255)

    # Processes

    def test_names_of_processes_change_nothing(self):
        for name in ("a\nb", ") R 1 1", "(sshd)", "\x1b[2J", "sshd: root@pts/0"):
            with Hostile("process_name", name) as user:
                files, _ = self.listed()
                self.assertEqual([(file["pid"], file["user"], file["host"]) for file in files],
                                 [(user.pid, "nobody", "127.0.0.77")])

    def test_titles_of_processes_change_nothing(self):
        for title in ("sshd: root@pts/0", "smbd: client [10.0.0.1]", ") R 1 1", "a\nb"):
            with Hostile("process_title", title) as user:
                with open(f"/proc/{user.pid}/cmdline", "rb") as file:
                    self.assertEqual(file.read().split(b"\0")[0].decode(), title)
                files, _ = self.listed()
                self.assertEqual([(file["pid"], file["user"], file["host"]) for file in files],
                                 [(user.pid, "nobody", "127.0.0.77")])

    def test_a_false_server_speaks_for_its_own_user_only(self):
        # The host is the true peer's, the user that of the process; only smbstatus, which knows
        # none of its sessions, may name another for an smbd.
        for server, user in (("sshd", "-"), ("dropbear", "-"), ("smbd", "unknown"), ("vsftpd", "nobody"), ("any", "nobody")):
            with self.subTest(server), tempfile.TemporaryDirectory() as folder:
                os.chmod(folder, 0o755)
                program = shutil.copy(os.path.realpath(sys.executable), os.path.join(folder, server))
                with Hostile("serve", executable=program) as hostile:
                    files, _ = self.listed()
                    host = "-" if user == "-" else "127.0.0.77"
                    self.assertEqual([(file["pid"], file["user"], file["host"]) for file in files],
                                     [(hostile.pid, user, host)])

    def list_false_sshd(self, trick, login, name="sshd"):
        """(path, user, host) of what a program of the user nobody named as sshd is holds."""
        with tempfile.TemporaryDirectory() as folder:
            os.chmod(folder, 0o755)
            program = shutil.copy(os.path.realpath(sys.executable), os.path.join(folder, name))
            with Hostile(trick, executable=program, login=login):
                return sorted((os.path.basename(file["full_path"]), file["user"], file["host"])
                              for file in self.listed()[0])

    def test_a_false_sshd_speaks_for_no_login(self):
        # Whoever has logged in, the user is that of the process or unknown.
        nobody = ("nobody", "127.0.0.77")
        unknown = ("-", "-")
        logins = [None]
        if os.path.exists("/proc/self/loginuid"):
            logins += [0, 1, 65534]
        for trick, expected in (
                ("serve_in_two_halves",
                 [("half", *unknown), ("served", *unknown), ("served", *unknown)]),
                ("serve_with_session",
                 [("served", *unknown), ("served", *nobody), ("session", *unknown)]),
                ("serve_apart", [("beside", *unknown), ("served", *unknown)])):
            for login in logins:
                for name in ("sshd", "sshd-session"):
                    with self.subTest(trick, login=login, name=name):
                        self.assertEqual(self.list_false_sshd(trick, login, name), expected)

    # Files that are not what they were

    def test_a_link_in_place_of_a_deleted_file_leads_nowhere(self):
        with Hostile("link_after_rename", "/volume1/photo/swapped"):
            files, _ = self.listed("--time")
            self.assertEqual([(file["full_path"], file["folder"], file["time"]) for file in files],
                             [("/volume1/photo/swapped (deleted)", False, "-")])
        os.unlink("/volume1/photo/swapped")

    def renamed(self, old, new):
        """The paths of an honest process in OLD once a hostile user has renamed that, by share and by volume."""
        with Holder([touch(f"{old}/file".encode())]) as holder:
            for folder in ("/volume1", "/volume1/common", old):
                os.chmod(folder, 0o777)
            with Hostile("rename_others", f"{old}:{new}"):
                lists = [json.loads(run("--json", "--by", by).stdout)["files"] for by in ("share", "volume")]
                self.assertEqual({file["user"] for files in lists for file in files}, {"-"})
        os.chmod("/volume1", 0o755)
        shutil.rmtree(new)
        return [[file["full_path"] for file in files if file["pid"] == str(holder.pid)] for files in lists]

    def test_who_may_rename_a_folder_changes_the_paths_of_all_who_hold_files_in_it(self):
        self.assertEqual(self.renamed("/volume1/common/old", "/volume1/common/new"),
                         [["/volume1/common/new/file"]] * 2)

    def test_a_folder_moved_out_of_all_shares_takes_its_files_off_the_list_by_share(self):
        self.assertEqual(self.renamed("/volume1/common/old", "/volume1/.moved"), [[], ["/volume1/.moved/file"]])

    def test_a_folder_and_a_link_that_change_places_change_flag_and_time_at_most(self):
        os.mkdir("/etc/aim")
        opened = Opened("/etc/aim")
        with Hostile("rename_race", "/volume1/photo/race") as user:
            seen, flags = set(), set()
            for _ in range(200):
                files = [file for file in self.listed("--time")[0] if file["pid"] == user.pid]
                self.assertEqual(len(files), 1)
                seen.update((file["full_path"], file["user"], file["host"], file["deleted"]) for file in files)
                flags.update(file["folder"] for file in files)
        # The kernel's path has one name or the other. The flag is that of what is there by then, or,
        # where the kernel tells it, of what is held.
        self.assertEqual(seen, {(f"/volume1/photo/race{name}/aim", "-", "-", False) for name in ("", ".link")})
        self.assertEqual(flags, {False, True} if SOURCE == "walk" else {False})
        self.assertFalse(opened.ever())

    def test_a_link_in_a_share_is_shown_as_itself_and_what_it_leads_to_as_that(self):
        os.chmod(touch(b"/volume1/others/file"), 0o644)
        for target, led_to in (("/etc/passwd", []), (REAL, [REAL]), ("/volume1/others/file", ["/volume1/others/file"])):
            with self.subTest(target), Hostile("link_to", target) as user:
                files, _ = self.listed()
                self.assertEqual([(file["full_path"], file["pid"], file["folder"]) for file in files],
                                 sorted((path, user.pid, False) for path in ["/volume1/photo/link", *led_to]))
            os.unlink("/volume1/photo/link")

    def test_a_file_system_of_a_user_that_never_answers_is_not_waited_for(self):
        # What fusermount does for a user: nobody but this user may ask the file system.
        os.makedirs("/volume1/photo/mnt")
        libc = ctypes.CDLL(None, use_errno=True)
        fuse = os.open("/dev/fuse", os.O_RDWR)
        options = f"fd={fuse},rootmode=40000,user_id=65534,group_id=65534".encode()
        if libc.mount(b"fuse", b"/volume1/photo/mnt", b"fuse", 0, options) != 0:
            self.skipTest("this kernel has no FUSE")
        self.addCleanup(libc.umount2, b"/volume1/photo/mnt", 2)
        self.addCleanup(os.close, fuse)
        held = os.open("/volume1/photo/mnt", os.O_PATH)
        self.addCleanup(os.close, held)
        files, _ = self.listed("--time", "--timeout", "20")
        self.assertEqual([(file["full_path"], file["time"]) for file in files],
                         [("/volume1/photo/mnt", "-")])
