"""Files that a client overwrites over SMB, each named as it happens."""

import os
import subprocess
import unittest

from harness.files import write_file
from harness.processes import start, stop
from harness.recording import Recording
from harness.sample_host import PASSWORD, needs, set_up_host
from harness.servers import Server, from_address
from harness.waiting import wait_until
from smb_test import CONFIGURATION, set_up_smb

FILES = 3000
FOLDER = "/volume1/share/project"


def setUpModule():
    needs("smbd", "smbclient", "smbpasswd", "smbstatus")
    set_up_host()
    set_up_smb(CONFIGURATION)
    os.mkdir(FOLDER)
    os.chmod(FOLDER, 0o777)
    for number in range(FILES):
        write_file(f"{FOLDER}/file-{number}", b"before", 0o666)


class OverwrittenFiles(unittest.TestCase):
    def test_are_named_with_user_and_client(self):
        server = Server("smbd", ["/usr/sbin/smbd", "--foreground", "--no-process-group"], 445)
        self.addCleanup(server.stop)
        write_file("/tmp/new", b"after")
        with Recording("/volume1/share") as recording:
            client = start(["smbclient", f"//{from_address('127.0.0.2')}/share", "-U", f"alice%{PASSWORD}",
                            "-D", "project"], stdin=subprocess.PIPE, stderr=subprocess.DEVNULL)
            self.addCleanup(stop, client)
            for number in range(FILES):
                client.stdin.write(f"put /tmp/new file-{number}\n".encode())
            # It waits for input while it has lines of its buffer left: these may stay there.
            client.stdin.write(b"\n" * 8192)
            client.stdin.flush()
            names = {f"{FOLDER}/file-{number}" for number in range(FILES)}
            wait_until(lambda: self.named(recording, "closed-written") >= names, "all files to be named", 120)
            lines = recording.stop()[0]
        self.assertGreaterEqual(self.named(recording, "opened"), names)
        self.assertEqual({(line["file"]["service"], line["file"]["user"], line["file"]["host"])
                          for line in lines if line["event"] == "closed-written"}, {("SMB", "alice", "127.0.0.2")})
        self.assertNotIn("lost", {line["event"] for line in lines})

    def named(self, recording, event):
        return {line["file"]["full_path"] for line in recording.lines() if line["event"] == event
                and (line["file"]["user"], line["file"]["host"]) == ("alice", "127.0.0.2")}
