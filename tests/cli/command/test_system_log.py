"""Names of files can't forge lines in the system log."""

import os
import re
import socket
import subprocess
import unittest

from harness.command import run
from harness.files import touch
from harness.processes import Holder
from harness.waiting import PATIENCE, wait_until

DEVICE = "/dev/log"
FORGED = b"/volume1/photo/x\n<3>forged: line"
MESSAGE = b"Failed to stat file [" + FORGED + b" (deleted)], skipped."

RSYSLOG = """
module(load="imuxsock" SysSock.Use="off")
input(type="imuxsock" Socket="/dev/log")
*.* action(type="omfile" file="/tmp/messages")
"""


def list_with_times():
    """With an open file that is named like two lines of a log and deleted."""
    touch(FORGED)
    with Holder([FORGED]):
        os.unlink(FORGED)
        return run("--time")


def content(path):
    try:
        with open(path, "rb") as file:
            return file.read()
    except FileNotFoundError:
        return b""


class SystemLog(unittest.TestCase):
    def setUp(self):
        if os.path.lexists(DEVICE):
            os.unlink(DEVICE)
        self.addCleanup(lambda: os.path.lexists(DEVICE) and os.unlink(DEVICE))

    def test_gets_each_message_as_one_datagram(self):
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM | socket.SOCK_NONBLOCK) as log:
            log.bind(DEVICE)
            self.assertEqual(list_with_times().returncode, 0)
            datagrams = []
            try:
                while True:
                    datagrams.append(log.recv(65536))
            except BlockingIOError:
                pass
        self.assertEqual([MESSAGE in each for each in datagrams if b"forged" in each], [True])
        for each in datagrams:
            self.assertRegex(each, rb"^<\d+>\w{3} [ \d]\d [\d:]{8} vorn-openfiles: ")

    def test_of_rsyslog_shows_control_characters_as_numbers(self):
        with open("/tmp/rsyslog.conf", "w", encoding="ascii") as file:
            file.write(RSYSLOG)
        daemon = subprocess.Popen(["rsyslogd", "-n", "-f", "/tmp/rsyslog.conf", "-i", "/tmp/rsyslog.pid"],
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        try:
            wait_until(lambda: os.path.exists(DEVICE) or daemon.poll() is not None, "rsyslogd to listen")
            self.assertEqual(list_with_times().returncode, 0)
            wait_until(lambda: b"forged" in content("/tmp/messages"), "rsyslogd to write the message")
        finally:
            daemon.terminate()
            said = daemon.communicate(timeout=PATIENCE)[0]
        lines = content("/tmp/messages").split(b"\n")
        self.assertIn(b"x#012<3>forged: line (deleted)], skipped.", b"\n".join(lines), said)
        self.assertEqual([line for line in lines if re.match(rb"(<3>)?\s*forged", line)], [])
        self.assertEqual(sum(b"forged" in line for line in lines), 1)
