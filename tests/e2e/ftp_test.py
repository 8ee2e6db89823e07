"""Files that clients hold over FTP: from where, and by whom."""

import os
import unittest

from harness.files import write_file
from harness.listing import open_files
from harness.processes import await_holder, start, stop
from harness.sample_host import PASSWORD, needs, set_up_host
from harness.servers import Server

CONFIGURATION = """
listen=NO
listen_ipv6=YES
background=NO
anonymous_enable=NO
local_enable=YES
write_enable=YES
local_umask=022
pam_service_name=vsftpd
secure_chroot_dir=/run/vsftpd/empty
local_root=/volume1/share
"""


def setUpModule():
    needs("vsftpd", "curl")
    set_up_host()
    os.makedirs("/run/vsftpd/empty", exist_ok=True)
    write_file("/etc/vsftpd.conf", CONFIGURATION)
    write_file("/root/upload", bytes(1 << 22))
    write_file("/volume1/share/download", bytes(1 << 26))


class FtpTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = Server("vsftpd", ["/usr/sbin/vsftpd", "/etc/vsftpd.conf"], 21)
        cls.addClassCleanup(cls.server.stop)

    def transfer(self, user, address, name, *more):
        """Has a client load a file so slowly that it is still open when the list is taken."""
        server = "[::1]" if ":" in address else "127.0.0.1"
        client = start(["curl", "--silent", "--show-error", "--limit-rate", "1k", "--interface",
                        address, "--user", f"{user}:{PASSWORD}", "--output", "/dev/null", *more,
                        f"ftp://{server}/{name}"])
        self.addCleanup(stop, client)
        await_holder(f"/volume1/share/{name}", "vsftpd")

    def clients(self, path):
        return {(file["service"], file["host"], file["user"]) for file in open_files().of(path)}

    def test_an_upload_has_the_address_and_user_of_its_client(self):
        self.transfer("alice", "127.0.0.2", "uploaded", "--upload-file", "/root/upload")
        self.assertEqual(self.clients("/volume1/share/uploaded"), {("FTP", "127.0.0.2", "alice")})

    def test_a_download_has_the_address_and_user_of_its_client(self):
        self.transfer("bob", "127.0.0.3", "download")
        self.assertEqual(self.clients("/volume1/share/download"), {("FTP", "127.0.0.3", "bob")})

    def test_two_clients_are_told_apart(self):
        self.transfer("alice", "127.0.0.4", "first", "--upload-file", "/root/upload")
        self.transfer("bob", "127.0.0.5", "second", "--upload-file", "/root/upload")
        self.assertEqual(self.clients("/volume1/share/first"), {("FTP", "127.0.0.4", "alice")})
        self.assertEqual(self.clients("/volume1/share/second"), {("FTP", "127.0.0.5", "bob")})

    def test_a_client_over_ipv6_has_its_address(self):
        self.transfer("alice", "::1", "over-v6", "--upload-file", "/root/upload")
        self.assertEqual(self.clients("/volume1/share/over-v6"), {("FTP", "::1", "alice")})
