"""Packages come and go on a host whose daemons serve clients, and nobody notices.

In /root/packages: the packages, in "next" those of a higher version.
"""

import contextlib
import glob
import os
import shutil
import subprocess
import unittest

from clients import FtpUpload, SmbClient, SshCommand
from harness.files import write_file
from harness.listing import open_files
from harness.processes import holders, output_of
from harness.waiting import wait_until
from named import SERVICES, await_group, hierarchies
from services import NAMES, SLICES, await_servers, main_process

PACKAGES = "/root/packages"
NAMES_OF_PACKAGES = ("libvornfilehandle7", "libvornplatform1", "vorn-openfiles", "vorn-services", "vorn-slices")
METRICS = "/var/lib/prometheus/node-exporter/vorn_openfiles.prom"
TIMER, COUNTING = "vorn-openfiles-metrics.timer", "vorn-openfiles-metrics.service"
SLOWLY = f"/run/systemd/system/{COUNTING}.d"
DAEMON = "vorn-slices.service"


def patiently(*argv):
    """What a tool says that must succeed; in an emulated machine packages take their time."""
    done = subprocess.run(argv, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False,
                          timeout=600, env={**os.environ, "DEBIAN_FRONTEND": "noninteractive"})
    if done.returncode != 0:
        raise AssertionError(f"{argv} ended with {done.returncode}: {done.stdout}")
    return done.stdout


def apt(verb, *what):
    return patiently("apt-get", "--yes", "--no-install-recommends", verb, *what)


def install(folder):
    """As README says, and what gives the library names; the network has none of what the rest asks for."""
    return apt("install", *(found for name in NAMES_OF_PACKAGES
                            for found in glob.glob(f"{folder}/{name}_*.deb")))


def installed_version():
    return output_of(["dpkg-query", "--show", "--showformat=${Version}", "vorn-openfiles"])


def word_of(*command):
    """What systemctl says by its output, whatever its status."""
    return subprocess.run(["systemctl", *command], capture_output=True, text=True, check=False).stdout.strip()


def state():
    """The daemons' lives, and what systemd thinks of the host."""
    lives = {unit: word_of("show", "--property=MainPID,NRestarts,ActiveEnterTimestampMonotonic", unit)
             for unit in SLICES}
    return {**lives, "host": word_of("is-system-running"),
            "failed": word_of("list-units", "--failed", "--plain", "--no-legend")}


def files():
    """Every file of the system and its settings, and whatever else is called as we are."""
    found = output_of(["find", "/etc", "/usr", "-xdev"]).splitlines()
    found += output_of(["find", "/", "/run", "-ignore_readdir_race", "-xdev", "-name", "*vorn*",
                        "-not", "-path", "/root/*", "-not", "-path", "/tmp/*"]).splitlines()
    return set(found)


def complete_listing():
    """Where the machine is slow, a list may lack what Samba was too slow to say, and says that it does."""
    def look():
        listing = open_files("--by", "volume")
        return listing if listing.complete else None
    return wait_until(look, "a complete list")


def some_clients(folder):
    """One of each daemon; all are at it when the block begins."""
    return (SmbClient("alice", "127.0.0.2", f"/volume1/photo/smb-{folder}"),
            SshCommand("alice", "127.0.0.3", f"/volume1/photo/ssh-{folder}"),
            FtpUpload("alice", "127.0.0.4", f"/volume1/photo/ftp-{folder}"))


@contextlib.contextmanager
def connected(name):
    with contextlib.ExitStack() as running:
        yield [running.enter_context(client) for client in some_clients(name)]


def restart_daemons():
    output_of(["systemctl", "restart", *SLICES])
    await_servers()


class Packages(unittest.TestCase):
    maxDiff = None

    def expect_nobody_noticed(self, clients, before):
        self.assertEqual(state(), before)
        for client in clients:
            self.assertIn(client.pid, holders(client.path), str(client))

    def expect_listed(self, clients, names=None):
        listing = complete_listing()
        for client in clients:
            service, *rest = listing.client(client.path, client.pid)
            self.assertEqual(rest, [client.host, client.user], str(client))
            if names:
                self.assertEqual(service, names[client.protocol], str(client))

    def expect_named_for_the_library(self, clients):
        slices = {"SMB": SLICES["smbd"], "SSH": SLICES["ssh"], "FTP": SLICES["vsftpd"]}
        for client in clients:
            await_group(client.pid, "/" + slices[client.protocol])

    def enable(self, unit):
        self.assertEqual((word_of("is-enabled", unit), word_of("is-active", unit)), ("disabled", "inactive"),
                         f"somebody has enabled {unit}")
        output_of(["systemctl", "enable", "--now", unit])

    def expect_slices_refuse_to_stop(self):
        for slice_ in set(SLICES.values()):
            done = subprocess.run(["systemctl", "stop", slice_], capture_output=True, check=False)
            self.assertNotEqual(done.returncode, 0, slice_)

    @contextlib.contextmanager
    def counting_slowly(self):
        """A run of the metrics that doesn't end by itself."""
        os.makedirs(SLOWLY)
        self.addCleanup(shutil.rmtree, SLOWLY, ignore_errors=True)
        write_file(f"{SLOWLY}/slowly.conf", b"[Service]\nExecStartPre=sleep 1000\n")
        output_of(["systemctl", "daemon-reload"])
        output_of(["systemctl", "stop", COUNTING])
        subprocess.run(["systemctl", "reset-failed", COUNTING], capture_output=True, check=False)
        output_of(["systemctl", "start", "--no-block", COUNTING])
        wait_until(lambda: word_of("is-active", COUNTING) == "activating", "metrics being counted")
        yield
        shutil.rmtree(SLOWLY)
        output_of(["systemctl", "daemon-reload"])

    def install_beside(self, clients):
        before = state()
        said = install(PACKAGES)
        self.expect_nobody_noticed(clients, before)
        self.assertIn("systemctl restart", said)
        self.expect_listed(clients)

    def upgrade_beside(self, clients, before):
        version, daemon = installed_version(), main_process(DAEMON)
        install(f"{PACKAGES}/next")
        self.expect_nobody_noticed(clients, before)
        self.assertNotEqual(installed_version(), version)
        self.expect_listed(clients, NAMES)
        self.assertEqual(word_of("is-active", TIMER), "active")
        self.assertNotIn(main_process(DAEMON), (0, daemon), "the old one still runs, or none")
        self.expect_named_for_the_library(clients)

    def remove_beside(self, clients, before):
        with self.counting_slowly():
            apt("remove", *NAMES_OF_PACKAGES)
        self.expect_nobody_noticed(clients, before)
        self.assertFalse(os.path.ismount(SERVICES))
        wait_until(lambda: hierarchies() == [""], "the hierarchy to end")
        self.assertFalse(os.path.exists(METRICS))
        # Not apt, which has heard of none of them any more but by what dpkg remembers.
        patiently("dpkg", "--purge", *NAMES_OF_PACKAGES)
        self.expect_nobody_noticed(clients, before)

    def test_they_come_and_go_and_nobody_loses_a_connection(self):
        found = files()
        with connected("installed") as clients:
            self.install_beside(clients)
        restart_daemons()
        self.enable(TIMER)
        output_of(["systemctl", "start", COUNTING])
        self.assertTrue(os.path.exists(METRICS))
        self.enable(DAEMON)
        with connected("served") as clients:
            before = state()
            self.expect_listed(clients, NAMES)
            self.expect_named_for_the_library(clients)
            self.expect_slices_refuse_to_stop()
            self.expect_nobody_noticed(clients, before)
            self.upgrade_beside(clients, before)
            self.remove_beside(clients, before)
            self.assertEqual((files() - found, found - files()), (set(), set()))
        restart_daemons()
        self.assertEqual(word_of("is-system-running"), before["host"])
