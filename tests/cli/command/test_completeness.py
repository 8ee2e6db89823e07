"""What an answer lacks is said the same by lists, metrics and check: "nothing found" is a claim."""

import contextlib
import glob
import json
import os
import shutil
import socket
import subprocess
import unittest

from harness.command import COMMAND, run
from harness.files import touch, write_file
from harness.processes import Announced, Holder, plain_environment
from harness.sample_host import needs

PRIVATE_VOLUMES = "/etc/vorn/private-volumes"
TESTPARM = "/usr/bin/testparm"
UNITS = "/usr/lib/systemd/system"
NOBODY = "setpriv --reuid 65534 --regid 65534 --clear-groups --inh-caps=-all"


def setUpModule():
    for share in ("/volume1/photo", "/volume2/music"):
        os.makedirs(share)


def run_after(script, *arguments, unshare=("--mount",)):
    """Runs the command in namespaces of its own, after a script; it keeps the script's pid."""
    return subprocess.run(["unshare", *unshare, "sh", "-c", f'{script}; exec {COMMAND} "$@"', "sh", *arguments],
                          env=plain_environment(), capture_output=True, check=False, timeout=60)


def findings(result):
    """States and texts by subject; of several the last."""
    return {each["subject"]: (each["state"], each["text"]) for each in json.loads(result.stdout)["checks"]}


class CompletenessTest(unittest.TestCase):
    def put_in_place(self, path, content, mode=0o755):
        """Until the test ends."""
        os.rename(path, path + ".real")
        self.addCleanup(os.rename, path + ".real", path)
        write_file(path, content, mode)

    def write(self, path, content):
        self.addCleanup(os.unlink, path)
        write_file(path, content)

    def lacks(self, ask, why, subject, *, check=None):
        """That every command says so, each in its own way; ask and check run it."""
        listed = ask("--json")
        document = json.loads(listed.stdout)
        self.assertIs(document["complete"], False)
        self.assertIn(why, document["reason"])
        for form in ("table", "json", "jsonl", "csv"):
            result = ask("--format", form)
            self.assertLess(result.returncode, 2)
            self.assertIn(b"vorn-openfiles: incomplete: ", result.stderr)
            self.assertIn(why.encode(), result.stderr)
            strict = ask("--format", form, "--strict")
            self.assertEqual(strict.returncode, 2)
            self.assertIn(why.encode(), strict.stderr)
        quiet = ask("-q", "--strict")
        self.assertEqual((quiet.returncode, quiet.stdout), (2, b""))
        self.assertIn(b"vorn_openfiles_complete 0\n", ask("metrics").stdout)
        checked = (check or ask)("check", "--json")
        state, text = findings(checked)[subject]
        self.assertEqual((checked.returncode, state), (1, "missing"), text)
        self.assertIn(why, text)

    def is_whole(self, *arguments):
        result = run("--json", *arguments)
        self.assertEqual((json.loads(result.stdout)["complete"], result.stderr), (True, b""))
        self.assertLess(run("-q", "--strict", *arguments).returncode, 2)


class Sources(CompletenessTest):
    def test_that_give_all_they_have_are_complete(self):
        self.is_whole()
        self.is_whole("--by", "volume")
        self.assertIn(b"vorn_openfiles_complete 1\n", run("metrics").stdout)

    def test_testparm_that_hangs_while_nfs_exports_another_folder(self):
        needs("testparm")
        self.write("/etc/exports", "/volume2/music *(ro)\n")
        self.put_in_place("/etc/samba/smb.conf", "[photo]\npath = /volume1/photo\n", 0o644)
        self.assertEqual(findings(run("check", "--json"))["shares"],
                         ("ok", "2 found: photo (Samba), music (NFS); exported by NFS, Samba"))
        self.put_in_place(TESTPARM, "#!/bin/sh\nexec sleep 100\n")
        with Holder([touch(b"/volume1/photo/a")]):
            self.assertIn("testparm takes longer than 2 s", json.loads(run("--json").stdout)["reason"])
            # By volume no share is asked for, so nothing is missing.
            self.is_whole("--by", "volume")

    def test_testparm_that_fails(self):
        needs("testparm")
        self.put_in_place("/etc/samba/smb.conf", "[photo]\npath = /volume1/photo\n", 0o644)
        self.put_in_place(TESTPARM, "#!/bin/sh\nkill -SEGV $$\n")
        self.lacks(run, "testparm ended by signal 11, so Samba's shares are left out", "shares")

    def test_exports_that_cannot_be_read(self):
        os.mkdir("/etc/exports")
        self.addCleanup(os.rmdir, "/etc/exports")
        self.lacks(run, "Failed to read /etc/exports", "shares")

    def test_mount_table_that_cannot_be_read(self):
        with socket.socket(socket.AF_UNIX) as nobody:
            nobody.bind("/tmp/no-table")
            hide = "mount --bind /tmp/no-table /proc/$$/mounts"
            listed = run_after(hide, "--json")
            checked = run_after(hide, "check", "--json")
        os.unlink("/tmp/no-table")
        self.assertEqual((listed.returncode, listed.stdout), (2, b""))
        self.assertIn(b"can't tell the data volumes: the mount table (/proc/self/mounts) can't be read", listed.stderr)
        said = findings(checked)
        self.assertEqual((checked.returncode, said["volumes"][0], said["shares"][0]), (1, "missing", "missing"))
        self.assertIn("can't be read", said["volumes"][1])

    def test_folder_that_two_servers_export_is_one_share(self):
        needs("testparm")
        self.write("/etc/exports", "/volume1/photo *(ro)\n/volume2/music *\n")
        self.put_in_place("/etc/samba/smb.conf", "[photo]\npath = /volume1/photo\n", 0o644)
        self.assertEqual(findings(run("check", "--json"))["shares"],
                         ("ok", "2 found: photo (NFS, Samba), music (NFS); exported by NFS, Samba"))

    def test_exported_links_lead_to_their_files(self):
        os.makedirs("/volume1/data/pictures")
        os.symlink("data/pictures", "/volume1/pictures")
        os.symlink("/volume1/pictures", "/srv/pictures")
        self.write("/etc/exports", "/volume2/music *\n/srv/pictures *\n")
        with Holder([touch(b"/volume1/data/pictures/a.jpg")]):
            self.assertEqual(run("--print0", "full_path").stdout, b"/volume1/data/pictures/a.jpg\0")


class Sight(CompletenessTest):
    def test_is_short_in_a_user_namespace(self):
        def ask(*arguments):
            return run_after("true", *arguments, unshare=("--user", "--map-root-user"))
        self.lacks(ask, "root of a user namespace is not root over the processes outside it", "processes")

    def test_is_short_in_a_namespace_of_processes(self):
        os.rename(PRIVATE_VOLUMES, PRIVATE_VOLUMES + ".away")
        self.addCleanup(os.rename, PRIVATE_VOLUMES + ".away", PRIVATE_VOLUMES)
        self.lacks(run, "this is a PID namespace of its own: processes outside it are not seen", "processes")

    def test_is_whole_where_the_container_says_that_its_volumes_are_its_own(self):
        self.assertEqual(findings(run("check", "--json"))["processes"], ("ok", "every process can be examined"))

    def test_is_short_where_processes_are_hidden(self):
        result = run_after(f"mount -t proc -o hidepid=2 proc /proc; set -- {NOBODY} {COMMAND} \"$@\"; exec \"$@\"",
                           "--json")
        reason = json.loads(result.stdout)["reason"]
        self.assertIn("processes of others are hidden: /proc is mounted with hidepid", reason)

    def test_is_short_where_a_volume_is_bound_elsewhere(self):
        bind = "mkdir -p /srv/jail && mount --bind /volume1/photo /srv/jail"

        def ask(*arguments):
            return run_after(bind, *arguments)
        self.lacks(ask, "files that are opened there are not listed: /volume1 on /srv/jail", "bind mounts")

    def test_is_short_where_another_process_has_a_volume_elsewhere(self):
        script = "mkdir -p /srv/jail && mount --bind /volume1/photo /srv/jail && echo ready && read line"
        with Announced(["unshare", "--mount", "sh", "-c", script]) as other:
            self.lacks(run, f"/volume1 on /srv/jail (for process {other.pid} and others)", "bind mounts")
        self.is_whole()

    def test_tells_of_hostile_places_in_one_harmless_line(self):
        bind = 'place=$(printf "/srv/\\033[2J\\nx\\377"); mkdir -p "$place" && mount --bind /volume1/photo "$place"'
        said = run_after(bind).stderr
        self.assertEqual((said.count(b"\n"), said.count(b"\x1b")), (1, 0))
        self.assertIn(b"/volume1 on /srv/\\x1B[2J\\nx\\xFF", said)
        self.assertIn("\ufffd", json.loads(run_after(bind, "--json").stdout)["reason"])

    def test_is_whole_where_others_have_volumes_at_the_same_place(self):
        script = "mount --bind /volume1/photo /volume1/photo && echo ready && read line"
        with Announced(["unshare", "--mount", "sh", "-c", script]):
            self.is_whole()


class Watch(CompletenessTest):
    def test_ends_at_the_first_look_that_lacks_something(self):
        watch = subprocess.Popen([COMMAND, "--watch", "0.1", "--format", "jsonl", "--strict"],
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        with Holder([touch(b"/volume1/photo/a")]):
            watch.stdout.readline()
            script = "mkdir -p /srv/jail && mount --bind /volume1/photo /srv/jail && echo ready && read line"
            with Announced(["unshare", "--mount", "sh", "-c", script]):
                said = watch.communicate(timeout=60)[1]
        self.assertEqual(watch.returncode, 2)
        self.assertIn(b"incomplete: volumes are mounted elsewhere", said)


class Platform(CompletenessTest):
    """One that lacks the operations that are ours."""

    @classmethod
    def setUpClass(cls):
        linked = subprocess.run(["ldd", COMMAND], capture_output=True, check=True, text=True).stdout
        library = next(line.split()[2] for line in linked.splitlines() if "libvornplatform" in line)
        with open(library, "rb") as file:
            content = file.read()
        cls.lean = "/tmp/lean"
        # Names of the same hash ("W." as "VO"), as the library may refer to its own operations.
        renamed = content.replace(b"VORNFindingGet", b"W.RNFindingGet")
        touch(f"{cls.lean}/libvornplatform.so.1", renamed.replace(b"VORNServiceStateGet", b"W.RNServiceStateGet"))

    def ask(self, *arguments, prefix=()):
        return subprocess.run([*prefix, COMMAND, *arguments], capture_output=True, check=False, timeout=60,
                              env=plain_environment(LD_LIBRARY_PATH=self.lean))

    def test_is_judged_by_the_rights_of_the_command(self):
        self.assertIs(json.loads(self.ask("--json").stdout)["complete"], True)
        poor = self.ask("--json", prefix=NOBODY.split())
        self.assertIn("not running as root", json.loads(poor.stdout)["reason"])
        said = findings(self.ask("check", "--json"))
        self.assertEqual(said["rights"][0], "ok")
        self.assertNotIn("shares", said)

    def test_leaves_states_of_services_out(self):
        for slice_file in glob.glob(os.environ["VORN_SOURCE"] + "/data/systemd/*.slice"):
            shutil.copy(slice_file, UNITS)
        services = json.loads(self.ask("services", "--json").stdout)["services"]
        self.assertEqual(services[0], {"service": "SMB", "unit": "SMBService.slice"})


class Services(CompletenessTest):
    @classmethod
    def setUpClass(cls):
        for unit in glob.glob(os.environ["VORN_SOURCE"] + "/data/systemd/*.slice"):
            shutil.copy(unit, UNITS)
        for unit in ("smbd", "samba-ad-dc", "ssh", "ssh@", "vsftpd", "proftpd", "pure-ftpd", "netatalk", "xinetd",
                     "inetd", "inetutils-inetd", "dropbear", "proftpd@"):
            for folder in (UNITS, "/etc/systemd/system"):
                with contextlib.suppress(FileNotFoundError):
                    os.unlink(f"{folder}/{unit}.service")
            shutil.rmtree(f"{UNITS}/{unit}.service.d", ignore_errors=True)
        for unit, slice_name in (("smbd", "SMBService"), ("ssh", "sshd"), ("vsftpd", "ftpd")):
            touch(f"{UNITS}/{unit}.service", "[Service]\n")
            touch(f"{UNITS}/{unit}.service.d/50-vorn-slice.conf", f"[Service]\nSlice={slice_name}.slice\n")

    def hold(self, group):
        self.enterContext(Holder([touch(b"/volume1/photo/a")], group))

    def test_are_told_with_their_states(self):
        self.hold("SMBService.slice/smbd.service")
        self.hold("system.slice/ssh.service")
        self.assertEqual(run("services").stdout.decode().splitlines(),
                         ["SERVICE                    UNIT              STATE",
                          "SMB                        SMBService.slice  running",
                          "AFP                        atalk.slice       not installed",
                          "FTP                        ftpd.slice        installed",
                          "SSH                        sshd.slice        running outside of its slice",
                          "Internet services (inetd)  inetd.slice       not installed"])
        states = {each["unit"]: (each["installed"], each["running"], each["elsewhere"])
                  for each in json.loads(run("services", "--json").stdout)["services"]}
        self.assertEqual(states, {"SMBService.slice": (True, True, False), "atalk.slice": (False, False, False),
                                  "ftpd.slice": (True, False, False), "sshd.slice": (True, False, True),
                                  "inetd.slice": (False, False, False)})

    def test_outside_of_their_slices_are_named_with_the_remedy(self):
        self.hold("SMBService.slice/smbd.service")
        self.assertEqual(findings(run("check", "--json"))["services"],
                         ("ok", "in slices of their own: SMBService.slice (1 process)"))
        self.hold("system.slice/ssh.service")
        said = run("check").stdout.decode()
        self.assertIn("warning  services: outside of the slice that names it: "
                      "ssh.service runs in system.slice, not in sshd.slice\n"
                      "         -> systemctl restart ssh, at a moment that suits its clients\n", said)


if __name__ == "__main__":
    unittest.main()
