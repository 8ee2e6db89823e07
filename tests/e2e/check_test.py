"""What check says of real servers and their clients, and lists of a source that is lost."""

import json
import os

import smb_test
import ssh_test
from harness.command import run
from harness.files import touch, write_file
from harness.listing import open_files
from harness.processes import await_holder
from harness.sample_host import needs, set_up_host

STATUS = "/usr/bin/smbstatus"


def setUpModule():
    needs("sshd", "ssh", "smbd", "smbclient", "smbpasswd", "smbstatus")
    set_up_host()
    ssh_test.set_up_ssh()
    smb_test.set_up_smb(smb_test.CONFIGURATION)
    write_file("/volume1/share/file", b"content", 0o666)


def said(subject):
    """State and text of a finding; of several the last."""
    report = json.loads(run("check", "--json").stdout)
    return {each["subject"]: (each["state"], each["text"]) for each in report["checks"]}[subject]


class Check(ssh_test.SshTest, smb_test.SmbTest):
    @classmethod
    def setUpClass(cls):
        for base in (ssh_test.SshTest, smb_test.SmbTest):
            base.setUpClass.__func__(cls)

    def hold_by_smb(self):
        smb_test.SmbTest.hold(self, "alice", "127.0.0.2", "file")

    def test_counts_logins_and_not_their_processes(self):
        self.assertEqual(said("SSH sessions"), ("ok", "0 logins"))
        for number, user in enumerate(("alice", "bob")):
            path = f"/volume1/share/login-{number}"
            command = f"exec 9>{path}; sleep 60 & sleep 61 & while read -r _; do :; done"
            self.ssh(user, f"127.0.0.{number + 3}", command)
            await_holder(path, "bash")
        self.assertEqual(said("SSH sessions"), ("ok", "2 logins"))
        self.assertIn("sshd.slice (", said("services")[1])

    def test_asks_smbstatus(self):
        self.hold_by_smb()
        self.assertEqual(said("SMB sessions"), ("ok", "smbstatus answers: 1 connection with a user"))
        self.assertTrue(open_files("--strict").complete)

    def test_says_that_smbstatus_hangs_as_lists_do(self):
        self.hold_by_smb()
        os.rename(STATUS, STATUS + ".real")
        self.addCleanup(os.rename, STATUS + ".real", STATUS)
        write_file(STATUS, "#!/bin/sh\nexec sleep 100\n", 0o755)
        why = f"{STATUS} takes longer than 2 s: users of SMB connections stay unknown"
        self.assertEqual(said("SMB sessions"), ("missing", why))
        self.assertEqual(open_files().document["reason"], why)
        self.assertEqual(run("--strict").returncode, 2)
        # Who asks for no user misses none.
        self.assertEqual(run("-q", "--strict").returncode, 0)

    def test_names_both_servers_of_a_folder(self):
        self.addCleanup(os.unlink, "/etc/exports")
        touch("/etc/exports", "/volume1/photo *(ro)\n")
        self.assertEqual(said("shares"), ("ok", "2 found: share (Samba), photo (NFS, Samba); exported by NFS, Samba"))
