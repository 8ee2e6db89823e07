"""What the kernel uses by itself, where this kernel lacks it: its files are laid over those of /proc
and /sys, in the form that other kernels have been seen to write."""

import json
import os
import shutil
import unittest

from harness.command import run
from harness.files import touch
from harness.processes import output_of
from harness.sample_host import needs
from harness.volumes import looped

KEY = "b485016b2ef0ae83"
INFO = f'clientid: 0x83aef02e6b0185b4\naddress: "{{}}"\nstatus: confirmed\nname: "Linux NFSv4.2 storage"\n'
OWNER = ', owner: "open id:\\x00\\x00\\x00A\\x00>\\xeb\\x1a\\x93d" }'


def setUpModule():
    needs("mkfs.ext4", "losetup")


def busy(*paths):
    result = run("busy", "--inside", "--json", *paths)
    return result.returncode, json.loads(result.stdout)


def found(path):
    status, document = busy(path)
    return status, sorted((row["reason"], row["device"], row["host"], row["access"], row["files"][0]["path"])
                          for row in document["holders"])


def superblock(path):
    info = os.stat(path)
    return f"{os.major(info.st_dev):02x}:{os.minor(info.st_dev):02x}:{info.st_ino}"


def state(number, path, name, kind="open, access: rw, deny: --"):
    return f'- 0x00000001{KEY}{number:02x}000000: {{ type: {kind}, superblock: "{superblock(path)}", filename: "{name}"'


class Laid(unittest.TestCase):
    def lay_over(self, place, text=None):
        """A folder, or a file with a text."""
        mine = f"/tmp/laid{place}"
        if text is None:
            shutil.rmtree(mine, ignore_errors=True)
            os.makedirs(mine)
        else:
            touch(mine, text)
        output_of(["mount", "--bind", mine, place])
        self.addCleanup(output_of, ["umount", place])
        return mine


class Nfs(Laid):
    def setUp(self):
        self.folder = self.lay_over("/proc/fs") + "/nfsd"
        os.makedirs(self.folder)
        for name in ("a", "b"):
            touch(f"/volume1/photo/{name}")
            touch(f"/volume2/{name}")
        touch("/volume1/other")

    def client(self, address, *states):
        number = len(os.listdir(self.folder)) + 17
        touch(f"{self.folder}/clients/{number}/info", INFO.format(address))
        touch(f"{self.folder}/clients/{number}/states", "".join(line + "\n" for line in states))

    def test_server_that_does_not_run_is_no_reason(self):
        self.assertEqual(found("/volume1"), (1, []))

    def test_server_that_is_idle_is_no_reason(self):
        touch(self.folder + "/exports", "# Version 1.1\n")
        self.client("[fd09:3::2]:799")
        self.assertEqual(found("/volume1"), (1, []))

    def test_export_is_one(self):
        os.makedirs("/volume1/my photos", exist_ok=True)
        touch(self.folder + "/exports", "/volume1/my\\040photos\t10.0.0.0/8(rw,sync)\n/\t*(ro)\n")
        expected = [("NFS export", "-", "10.0.0.0/8", "-", "/volume1/my photos")]
        self.assertEqual(found("/volume1"), (0, expected))
        self.assertEqual(found("/volume1/my photos"), (0, expected))
        self.assertEqual(found("/volume2"), (1, []))
        touch(self.folder + "/exports", "/volume1/gone\t10.0.0.0/8(rw,sync)\n")
        self.assertEqual(found("/volume1"), (2, []))

    def test_open_is_one_with_host_and_access(self):
        self.client("10.9.2.2:764", state(1, "/volume1/photo/a", "photo/a") + OWNER,
                    state(2, "/volume1/photo/a", "photo/a", "deleg, access: r") + " }")
        inode = os.stat("/volume1/photo/a").st_ino
        expected = [("NFS client", "-", "10.9.2.2", "rw", f"inode {inode}")]
        self.assertEqual(found("/volume1"), (0, expected))
        self.assertEqual(found("/volume1/photo/a"), (0, expected))
        self.assertEqual(found("/volume1/other"), (1, []))
        self.assertEqual(found("/volume2"), (1, []))

    def test_open_somewhere_on_the_volume_leaves_a_folder_untold(self):
        self.client("10.9.2.2:764", state(1, "/volume1/photo/a", "photo/a") + OWNER)
        status, document = busy("/volume1/photo")
        self.assertEqual((status, document["state"], document["complete"]), (2, "unknown", False))
        self.assertIn("NFS client 10.9.2.2 has open, whose place", document["reasons"][0])

    def test_name_forges_nothing(self):
        forged = f'evil"\n{state(0x99, "/volume2/a", "x")}'
        short = 'evil"\n- 0x00000000: { type: open, superblock: "' + superblock("/volume2/a") + '", filename: "fake\x1b[31m'
        for name in (forged, short):
            self.client("10.9.2.2:764", state(1, "/volume1/photo/a", name) + OWNER,
                        state(2, "/volume1/photo/b", "photo/b") + OWNER)
            status, rows = found("/volume1")
            self.assertEqual((status, len(rows)), (0, 1), rows)
            # Whether the last one is an open file or a name, nobody can tell.
            self.assertEqual(found("/volume2"), (2 if name is forged else 1, []))
            shutil.rmtree(self.folder + "/clients")

    def test_lock_of_nobody_is_one(self):
        # Behind a bind mount /proc/locks is what this says.
        self.lay_over("/proc/locks", f"1: POSIX  ADVISORY  WRITE {os.getpid()} {superblock('/volume2/a')} 0 EOF\n"
                                     f"2: POSIX  ADVISORY  READ 0 {superblock('/volume1/other')} 0 EOF\n")
        inode = os.stat("/volume1/other").st_ino
        self.assertEqual(found("/volume1"), (0, [("NFS lock", "-", "-", "r", f"inode {inode}")]))
        self.assertEqual(found("/volume2"), (1, []))


class Devices(Laid):
    def test_upon_a_file_are_reasons(self):
        device = looped("lower", "ext4", 8)
        self.addCleanup(output_of, ["losetup", "--detach", device])
        name = os.path.basename(device)
        folder = self.lay_over("/sys/block")
        touch(f"{folder}/{name}/loop/backing_file", "/volume2/lower.img\n")
        os.makedirs(f"{folder}/{name}/holders/dm-0")
        os.makedirs(f"{folder}/{name}/{name}p1/holders/md127")
        touch(f"{folder}/dm-0/dm/name", "vg-data\n")
        os.makedirs(f"{folder}/dm-0/holders/dm-1")
        touch(f"{folder}/dm-1/dm/name", "crypt\n")
        os.makedirs(f"{folder}/dm-1/holders/dm-0")  # Going round in circles ends.
        os.makedirs(f"{folder}/md127/md")
        rows = [("device mapper", "dm-0 (vg-data)"), ("device mapper", "dm-1 (crypt)"), ("loop device", name),
                ("md", "md127")]
        self.assertEqual(found("/volume2"), (0, [(*row, "-", "-", "/volume2/lower.img") for row in rows]))
        self.assertEqual(found("/volume1"), (1, []))

    def test_whose_file_is_deleted_are_known_by_its_numbers(self):
        device = looped("gone", "ext4", 8)
        self.addCleanup(output_of, ["losetup", "--detach", device])
        os.unlink("/volume2/gone.img")
        self.assertEqual(found("/volume2"), (0, [("loop device", os.path.basename(device), "-", "-",
                                                  "/volume2/gone.img (deleted)")]))
        touch("/volume2/gone.img (deleted)")
        self.addCleanup(os.unlink, "/volume2/gone.img (deleted)")
        self.assertEqual(found("/volume2")[0], 0)
        self.assertEqual(found("/volume1"), (1, []))
        # In which folder it was, nobody knows any more.
        os.makedirs("/volume2/folder", exist_ok=True)
        self.assertEqual(found("/volume2/folder"), (2, []))


if __name__ == "__main__":
    unittest.main()
