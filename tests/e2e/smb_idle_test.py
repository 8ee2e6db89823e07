"""An SMB client that has said nothing for so long that its server has turned back into root.

A module of its own, as that takes a minute.
"""

import os
import pwd
import signal

from harness.listing import open_files
from harness.processes import await_holder
from harness.waiting import wait_until
from smb_test import SmbTest, setUpModule  # unittest calls setUpModule


def effective_user(pid):
    with open(f"/proc/{pid}/status", encoding="utf-8") as file:
        return int(next(line for line in file if line.startswith("Uid:")).split()[2])


class IdleSmbClient(SmbTest):
    def test_it_still_has_its_address_and_user(self):
        client = self.hold("alice", "127.0.0.2", "file-0")
        # A stopped client sends no keep-alive either.
        os.kill(client.pid, signal.SIGSTOP)
        server = await_holder("/volume1/share/file-0", "smbd")
        self.assertEqual(effective_user(server), pwd.getpwnam("alice").pw_uid)
        wait_until(lambda: effective_user(server) == 0, "the idle server to become root",
                   patience=120)
        self.assertEqual(open_files().client("/volume1/share/file-0"),
                         ("SMB", "127.0.0.2", "alice"))
