"""Connections of servers that are no file servers, and processes that have none."""

import os
import shutil
import socket
import struct
import subprocess
import sys
import unittest

from harness.listing import UNKNOWN, open_files
from harness.processes import Holder, start, stop
from harness.sample_host import set_up_host
from harness.servers import listening
from harness.waiting import wait_until

# Opens the file that a client asks for and keeps both. It may have other files before that, or move
# its clients out of the way.
SERVER = """
import fcntl, os, socket, sys
options = sys.argv[4:]
kept = [open("/dev/null") for _ in range(40)] if "files" in options else []
listener = socket.create_server((sys.argv[1], int(sys.argv[2])), family=int(sys.argv[3]),
                                dualstack_ipv6="dual" in options)
while True:
    client, _ = listener.accept()
    if "moves" in options:
        moved = socket.socket(fileno=fcntl.fcntl(client, fcntl.F_DUPFD_CLOEXEC, 500))
        client.close()
        client = moved
    kept.append(client)
    kept.append(open(client.recv(4096), "w"))
    client.sendall(b"open")
"""


def setUpModule():
    set_up_host()


class OtherServers(unittest.TestCase):
    PORT = 7777

    def serve(self, address="127.0.0.1", *more, user="alice", group="system.slice/own.service",
              program=sys.executable):
        family = socket.AF_INET6 if ":" in address else socket.AF_INET
        server = start([program, "-c", SERVER, address, str(self.PORT), str(int(family)),
                        *more], group, user=user)
        self.addCleanup(stop, server)
        wait_until(lambda: listening(self.PORT), "the server to listen")
        return server

    def ask(self, source, path, server="127.0.0.1"):
        client = socket.create_connection((server, self.PORT), timeout=20,
                                          source_address=(source, 0))
        self.addCleanup(client.close)
        client.sendall(path.encode())
        self.assertEqual(client.recv(4), b"open")
        return client

    def test_a_client_has_its_address_and_the_user_that_the_server_runs_as(self):
        self.serve()
        self.ask("127.0.0.2", "/volume1/share/other")
        self.assertEqual(open_files().client("/volume1/share/other"),
                         ("Internal service", "127.0.0.2", "alice"))

    def test_a_user_without_a_name_is_shown_as_number(self):
        server = start(["setpriv", "--reuid=4242", "--clear-groups", sys.executable, "-c", SERVER,
                        "127.0.0.1", str(self.PORT), str(int(socket.AF_INET))])
        self.addCleanup(stop, server)
        wait_until(lambda: listening(self.PORT), "the server to listen")
        self.ask("127.0.0.3", "/volume1/share/numeric")
        self.assertEqual(open_files().client("/volume1/share/numeric")[1:], ("127.0.0.3", "4242"))

    def test_of_several_hosts_of_one_process_none_is_shown(self):
        server = self.serve()
        paths = [f"/volume1/share/of-{number}" for number in range(100)]
        for path in paths[:2]:
            self.ask("127.0.0.4", path)
        listing = open_files()
        for path in paths[:2]:
            self.assertEqual(listing.client(path, server.pid)[1:], ("127.0.0.4", "alice"))
        for number, path in enumerate(paths[2:], 1):
            self.ask(f"127.0.1.{number}", path)
        listing = open_files()
        for path in paths:
            self.assertEqual(listing.client(path, server.pid)[1:], ("unknown", "alice"))

    def check_clients_further_up(self, option):
        path = f"/volume1/share/further-up-{option}"
        server = self.serve("127.0.0.1", option)
        self.ask("127.0.0.11", path)
        self.assertEqual(open_files().client(path, server.pid)[1:], ("127.0.0.11", "alice"))
        self.ask("127.0.0.12", f"{path}-2")
        listing = open_files()
        for of_two in (path, f"{path}-2"):
            self.assertEqual(listing.client(of_two, server.pid)[1:], ("unknown", "alice"))

    def test_clients_of_a_server_that_has_its_files_first_are_found(self):
        self.check_clients_further_up("files")

    def test_clients_that_their_server_moves_out_of_the_way_are_found(self):
        self.check_clients_further_up("moves")

    def test_a_server_that_is_root_for_all_its_users_names_none(self):
        program = shutil.copy(os.path.realpath(sys.executable), "/usr/local/bin/ganesha.nfsd")
        self.serve(user="root", program=program)
        self.ask("127.0.0.8", "/volume1/share/of-ganesha")
        self.assertEqual(open_files().client("/volume1/share/of-ganesha")[1:],
                         ("127.0.0.8", "unknown"))

    def test_an_ipv4_client_of_an_ipv6_socket_is_shown_as_ipv4(self):
        self.serve("::", "dual")
        self.ask("127.0.0.6", "/volume1/share/mapped")
        self.assertEqual(open_files().client("/volume1/share/mapped")[1:], ("127.0.0.6", "alice"))

    def test_an_ipv6_client_is_shown_as_ipv6(self):
        self.serve("::1")
        self.ask("::1", "/volume1/share/six", "::1")
        self.assertEqual(open_files().client("/volume1/share/six")[1:], ("::1", "alice"))

    def test_a_client_that_has_closed_its_half_is_still_shown(self):
        self.serve()
        client = self.ask("127.0.0.10", "/volume1/share/half-closed")
        client.shutdown(socket.SHUT_WR)
        self.assertEqual(open_files().client("/volume1/share/half-closed")[1:],
                         ("127.0.0.10", "alice"))

    def test_a_client_that_has_left_is_not_shown(self):
        self.serve()
        client = self.ask("127.0.0.7", "/volume1/share/left")
        self.assertEqual(open_files().client("/volume1/share/left")[1], "127.0.0.7")
        # A reset: this server would never see the end of what the client says.
        client.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        client.close()
        self.assertEqual(open_files().client("/volume1/share/left")[1:], UNKNOWN)


class NoConnections(unittest.TestCase):
    def test_a_process_that_is_itself_a_client_has_neither_address_nor_user(self):
        listener = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(listener.close)
        program = ("import socket, sys\n"
                   "kept = socket.create_connection(('127.0.0.1', int(sys.argv[1])))\n"
                   "file = open('/volume1/share/by-client', 'w')\n"
                   "print('ready', flush=True); sys.stdin.read()")
        client = start([sys.executable, "-c", program, str(listener.getsockname()[1])],
                       user="alice", stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.addCleanup(stop, client)
        self.assertEqual(client.stdout.readline(), b"ready\n")
        # This process has accepted nothing yet, so nobody holds the other end.
        self.assertEqual(open_files().client("/volume1/share/by-client", client.pid)[1:], UNKNOWN)

    def test_on_a_host_without_clients_everything_is_local(self):
        groups = ("sshd.slice", "SMBService.slice", "ftpd.slice", "rsyncd.slice", "")
        for number, group in enumerate(groups):
            holder = Holder(f"/volume1/share/local-{number}", group)
            self.addCleanup(holder.stop)
        listing = open_files()
        self.assertEqual(len(listing.files), len(groups))
        self.assertEqual({(file["host"], file["user"]) for file in listing.files}, {UNKNOWN})
