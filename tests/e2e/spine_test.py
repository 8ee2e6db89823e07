"""Which open files are listed, and as what."""

import base64
import os
import resource
import subprocess
import sys
import unittest

from harness.files import write_file
from harness.listing import open_files
from harness.processes import Holder, holders, output_of, start, stop
from harness.sample_host import set_up_host


def setUpModule():
    set_up_host()


class SpineTest(unittest.TestCase):
    def hold(self, files, **options):
        holder = Holder(files, **options)
        self.addCleanup(holder.stop)
        return holder

    def write(self, path, content=b""):
        self.addCleanup(lambda: os.path.lexists(path) and os.unlink(path))
        return write_file(path, content)


class WhatIsListed(SpineTest):
    def test_a_file_on_descriptor_0_is_not_listed_but_on_3_it_is(self):
        on_0 = self.hold({0: "/volume1/share/on-zero"})
        on_3 = self.hold({3: "/volume1/share/on-three"})
        listing = open_files()
        self.assertEqual(listing.of("/volume1/share/on-zero"), [])
        self.assertEqual(holders("/volume1/share/on-zero"), {on_0.pid})
        self.assertEqual(listing.one("/volume1/share/on-three")["pid"], str(on_3.pid))

    def test_two_descriptors_of_one_process_give_one_record(self):
        path = "/volume1/share/twice"
        holder = self.hold({20: path, 21: path})
        self.assertEqual(os.readlink(f"/proc/{holder.pid}/fd/20"), path)
        self.assertEqual(os.readlink(f"/proc/{holder.pid}/fd/21"), path)
        self.assertEqual(len(open_files().of(path)), 1)

    def test_two_processes_give_two_records_of_one_file(self):
        path = "/volume1/share/shared"
        pids = {str(self.hold(path).pid), str(self.hold(path).pid)}
        self.assertEqual({file["pid"] for file in open_files().of(path)}, pids)

    def test_a_record_has_path_name_and_flags(self):
        os.makedirs("/volume1/share/folder", exist_ok=True)
        holder = self.hold("/volume1/share/folder/plan.ods")
        self.assertEqual(open_files().one("/volume1/share/folder/plan.ods"), {
            "service": "Internal service", "pid": str(holder.pid), "user": "-", "host": "-",
            "path": "share/folder/plan.ods", "filename": "plan.ods",
            "full_path": "/volume1/share/folder/plan.ods",
            "hidden": 0, "folder": False, "deleted": False})

    def test_a_folder_is_marked(self):
        os.makedirs("/volume1/share/open-folder", exist_ok=True)
        self.hold("/volume1/share/open-folder")
        self.hold("/volume1/share/open-file")
        listing = open_files()
        self.assertIs(listing.one("/volume1/share/open-folder")["folder"], True)
        self.assertIs(listing.one("/volume1/share/open-file")["folder"], False)

    def test_a_deleted_file_stays_listed_as_deleted(self):
        path = self.write("/volume1/share/gone")
        self.hold(path)
        self.assertIs(open_files().one(path)["deleted"], False)
        os.unlink(path)
        deleted = [file for file in open_files().files if file["filename"].startswith("gone")]
        self.assertEqual([file["deleted"] for file in deleted], [True])
        self.assertEqual(open_files().of(path), [])
        self.assertEqual(open_files("--deleted", "only").files, deleted)

    def test_files_in_hidden_folders_are_marked(self):
        for folder in (".snapshot/daily", "lost+found", "visible"):
            os.makedirs(f"/volume1/share/{folder}", exist_ok=True)
            self.hold(f"/volume1/share/{folder}/file")
        listing = open_files()
        marks = {folder: listing.one(f"/volume1/share/{folder}/file")["hidden"]
                 for folder in (".snapshot/daily", "lost+found", "visible")}
        self.assertEqual(marks, {".snapshot/daily": 1, "lost+found": 1, "visible": 0})

    def test_the_administrator_decides_what_is_hidden(self):
        self.write("/etc/vorn/hidden-directories", "# ours\n\n/secret\n")
        for folder in ("secret", "lost+found"):
            os.makedirs(f"/volume1/share/{folder}", exist_ok=True)
            self.hold(f"/volume1/share/{folder}/kept")
        listing = open_files()
        self.assertEqual(listing.one("/volume1/share/secret/kept")["hidden"], 1)
        self.assertEqual(listing.one("/volume1/share/lost+found/kept")["hidden"], 0)

    def test_hostile_names_come_through_json(self):
        names = [b"new\nline", b"\x1b[2J\x1b[31mred", b"latin-\xe4\xf6\xfc\xff", b'quo"te\\back',
                 "\u202egnp.exe".encode(), b"tab\tand\rreturn"]
        for name in names:
            self.hold(b"/volume1/share/hostile-" + name)
        listed = {base64.b64decode(file["filename_b64"]) if "filename_b64" in file
                  else file["filename"].encode() for file in open_files().files}
        self.assertEqual({name for name in listed if name.startswith(b"hostile-")},
                         {b"hostile-" + name for name in names})

    def test_hostile_names_do_nothing_to_a_terminal(self):
        self.hold(b"/volume1/share/\x1b[2Jclear\nroot")
        shown = subprocess.run(["vorn-openfiles"], stdout=subprocess.PIPE, check=True).stdout
        self.assertIn(b"clear", shown)
        self.assertNotRegex(shown, rb"[\x00-\x09\x0b-\x1f\x7f]")
        self.assertIn(rb"clear\nroot", shown)

    def test_last_access_times_are_given_on_request(self):
        path = self.write("/volume1/share/timed")
        os.utime(path, (86400 * 365, 86400 * 365))
        self.hold(path)
        self.assertNotIn("time", open_files().one(path))
        in_utc = open_files("--time", environment={"TZ": "UTC"}).one(path)["time"]
        in_tokyo = open_files("--time", environment={"TZ": "Asia/Tokyo"}).one(path)["time"]
        self.assertRegex(in_utc, r"1971.01.01 00:00:00")
        self.assertRegex(in_tokyo, r"1971.01.01 09:00:00")

    def test_all_descriptors_of_a_process_with_10000_are_listed(self):
        limit = resource.getrlimit(resource.RLIMIT_NOFILE)
        self.addCleanup(resource.setrlimit, resource.RLIMIT_NOFILE, limit)
        resource.setrlimit(resource.RLIMIT_NOFILE, (20000, max(limit[1], 20000)))
        os.makedirs("/volume1/share/many", exist_ok=True)
        program = ("import os, sys\n"
                   "for i in range(10000): os.open(f'/volume1/share/many/{i}', os.O_CREAT)\n"
                   "print('ready', flush=True); sys.stdin.read()")
        process = start([sys.executable, "-c", program], stdin=subprocess.PIPE,
                        stdout=subprocess.PIPE)
        self.addCleanup(stop, process)
        self.assertEqual(process.stdout.readline(), b"ready\n")
        listed = [file["full_path"] for file in open_files().files
                  if file["pid"] == str(process.pid)]
        self.assertEqual(sorted(listed), sorted(f"/volume1/share/many/{i}" for i in range(10000)))


class WhoMayLook(SpineTest):
    def test_root_sees_the_files_of_other_users(self):
        holder = self.hold("/volume1/share/of-alice", user="alice")
        listing = open_files()
        self.assertEqual(listing.one("/volume1/share/of-alice")["pid"], str(holder.pid))
        self.assertIs(listing.complete, True)

    def test_a_user_sees_what_is_hers_and_is_told_that_it_is_not_all(self):
        self.hold("/volume1/share/of-alice", user="alice")
        self.hold("/volume1/share/of-bob", user="bob")
        listing = open_files(user="alice")
        self.assertEqual(len(listing.of("/volume1/share/of-alice")), 1)
        self.assertEqual(listing.of("/volume1/share/of-bob"), [])
        self.assertIs(listing.complete, False)
        self.assertIn("not running as root", listing.errors)


class SharesAndVolumes(SpineTest):
    """/volume1/share, /volume1/photo and /volume2/backup exist; none is exported at first."""

    def setUp(self):
        self.write("/etc/samba/smb.conf", "[global]\n")
        for path in ("/volume1/share/a", "/volume1/photo/b", "/volume2/backup/c", "/volume2/d"):
            self.hold(path)

    def listed(self, by):
        return {file["full_path"]: file["path"] for file in open_files("--by", by).files}

    def test_by_volume_everything_on_a_volume_is_listed(self):
        self.assertEqual(set(self.listed("volume")), {"/volume1/share/a", "/volume1/photo/b",
                                                      "/volume2/backup/c", "/volume2/d"})

    def test_where_nothing_is_exported_the_top_folders_are_the_shares(self):
        self.assertEqual(self.listed("share"), {
            "/volume1/share/a": "share/a", "/volume1/photo/b": "photo/b",
            "/volume2/backup/c": "backup/c"})

    def test_shares_of_samba_are_taken_with_its_includes(self):
        self.write("/etc/samba/more.conf", "[pictures]\n path = /volume1/photo\n")
        self.write("/etc/samba/smb.conf", "[global]\n include = /etc/samba/more.conf\n"
                   "[backup]\n path = /volume2/backup\n[homes]\n path = /volume1/share\n")
        self.assertEqual(set(self.listed("share")), {"/volume1/photo/b", "/volume2/backup/c"})

    def test_shares_that_users_made_are_taken(self):
        os.makedirs("/var/lib/samba/usershares", exist_ok=True)
        os.chmod("/var/lib/samba/usershares", 0o1770)
        self.write("/etc/samba/smb.conf", "[global]\n usershare max shares = 10\n"
                   " usershare path = /var/lib/samba/usershares\n usershare owner only = no\n")
        output_of(["net", "usershare", "add", "pics", "/volume1/photo", "", "S-1-1-0:R"])
        self.addCleanup(output_of, ["net", "usershare", "delete", "pics"])
        self.assertEqual(set(self.listed("share")), {"/volume1/photo/b"})

    def test_exports_of_nfs_are_shares(self):
        self.write("/etc/exports", "/volume2/backup 127.0.0.1(ro)\n")
        self.write("/etc/exports.d/more.exports", "/volume1/share *(rw)\n")
        self.assertEqual(set(self.listed("share")), {"/volume1/share/a", "/volume2/backup/c"})
