"""Files that clients hold over the rsync daemon: from where, and by whom."""

import glob
import os
import unittest

from harness.files import write_file
from harness.listing import open_files
from harness.processes import start, stop
from harness.sample_host import needs, set_up_host
from harness.servers import Server
from harness.waiting import wait_until

CONFIGURATION = """
port = 873
use chroot = no
[share]
    path = /volume1/share
    read only = no
    uid = alice
    gid = alice
"""


def setUpModule():
    needs("rsync")
    set_up_host()
    write_file("/etc/rsyncd.conf", CONFIGURATION)
    write_file("/root/incompressible", os.urandom(1 << 24))
    for name in ("uploaded", "first", "second"):
        write_file(f"/root/{name}", os.urandom(1 << 24))


class RsyncTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = Server("rsync", ["/usr/bin/rsync", "--daemon", "--no-detach"], 873)
        cls.addClassCleanup(cls.server.stop)

    def start_client(self, address, *arguments):
        client = start(["rsync", "--bwlimit=4", f"--address={address}", *arguments])
        self.addCleanup(stop, client)

    def upload(self, address, name):
        self.start_client(address, f"/root/{name}", "rsync://127.0.0.1/share/")
        return wait_until(lambda: glob.glob(f"/volume1/share/.{name}.*"), f"upload of {name}")[0]

    def clients(self, path):
        def listed():
            return open_files().of(path)
        return {(file["service"], file["host"], file["user"])
                for file in wait_until(listed, f"{path} to be listed")}

    def test_an_upload_has_the_address_of_its_client_and_the_user_of_the_module(self):
        path = self.upload("127.0.0.2", "uploaded")
        self.assertEqual(self.clients(path), {("rsync", "127.0.0.2", "alice")})

    def test_a_download_has_the_address_of_its_client_and_the_user_of_the_module(self):
        write_file("/volume1/share/download", os.urandom(1 << 24))
        self.start_client("127.0.0.3", "rsync://127.0.0.1/share/download", "/root/downloaded")
        self.assertEqual(self.clients("/volume1/share/download"), {("rsync", "127.0.0.3", "alice")})

    def test_two_clients_are_told_apart(self):
        first, second = self.upload("127.0.0.4", "first"), self.upload("127.0.0.5", "second")
        self.assertEqual(self.clients(first), {("rsync", "127.0.0.4", "alice")})
        self.assertEqual(self.clients(second), {("rsync", "127.0.0.5", "alice")})
