"""README's first table is what the installed command prints on this host, process ids aside."""

import contextlib
import re
import subprocess
import unittest

from clients import CifsMount, FtpUpload, RsyncUpload, Sftp, SmbClient, SshTerminal
from harness.command import run
from harness.processes import Holder, output_of

README = "../README.md"

CLIENTS = (
    SmbClient("alice", "192.0.2.10", "/volume1/photo/beach.jpg"),
    CifsMount("bob", "192.0.2.11", "/volume1/photo/harbour.jpg"),
    FtpUpload("alice", "192.0.2.12", "/volume1/photo/sunset.jpg"),
    SshTerminal("bob", "192.0.2.13", "/volume2/projects/budget.ods"),
    Sftp("alice", "192.0.2.14", "/volume2/projects/plan.ods"),
    RsyncUpload("alice", "192.0.2.15", "/volume2/projects/2023.tar"),
)
LOCAL = "/volume2/projects/backup.log"


def first_table():
    """Lines of the first block whose command is the name alone."""
    with open(README, encoding="utf-8") as readme:
        block = re.search(r"^    \$ vorn-openfiles\n((?:    .+\n)+)", readme.read(), re.MULTILINE)
    return rows(block[1])


def rows(table):
    """Each row's columns; a process id says no more than that there is one, a temporary name of
    rsync's no more than its beginning."""
    return [[re.sub(r"^\d+$", "PID", re.sub(r"\.[A-Za-z0-9]{6}$", ".XXXXXX", column))
             for column in re.split(r"\s{2,}", line.strip())] for line in table.splitlines()]


class Readme(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        for client in CLIENTS:
            output_of(["ip", "address", "replace", f"{client.host}/32", "dev", "lo"])
            cls.addClassCleanup(output_of, ["ip", "address", "delete", f"{client.host}/32", "dev", "lo"])

    def test_its_first_table_is_what_this_host_prints(self):
        with contextlib.ExitStack() as running:
            for client in CLIENTS:
                running.enter_context(client)
            running.enter_context(Holder(LOCAL))
            printed = run(stdin=subprocess.DEVNULL).stdout.decode()
        self.assertEqual(rows(printed), first_table(), printed)
