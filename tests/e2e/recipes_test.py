"""The everyday questions of the README have the answers that it shows."""

import os
import re
import signal
import subprocess
import sys

import smb_test
import ssh_test
from harness.files import write_file
from harness.processes import Holder, await_holder, output_of, stop
from harness.sample_host import PROJECT, needs, set_up_host
from harness.terminal import Terminal
from harness.waiting import PATIENCE

sys.path.append(os.path.join(PROJECT, "tests", "cli", "command"))

OFFICE, STUDIO = "192.0.2.10", "192.0.2.11"
DELETED = "/volume1/projects/2023.tar"
NEW = "/volume1/projects/budget.ods"
END_OF_SCREEN = b"\x1b[J"


def setUpModule():
    needs("sshd", "ssh", "smbd", "smbclient", "smbpasswd", "smbstatus", "jq")
    set_up_host()
    for address in (OFFICE, STUDIO):
        output_of(["ip", "address", "add", f"{address}/32", "dev", "lo"])
    os.mkdir("/volume1/projects", 0o1777)
    os.chmod("/volume1/projects", 0o1777)
    ssh_test.set_up_ssh()
    smb_test.set_up_smb(smb_test.CONFIGURATION.replace("share", "projects"))
    for name in ("beach", "dunes", "harbour"):
        write_file(f"/volume1/photo/2024/{name}.jpg", b"content", 0o666)


def answers_in_readme():
    """What the README shows below each command of its questions."""
    with open(os.path.join(PROJECT, "README.md"), encoding="utf-8") as file:
        section = file.read().split("\n## Everyday questions\n")[1].split("\n## ")[0]
    answers = {}
    for block in re.findall(r"(?:^    .*\n)+", section, re.M):
        lines = [line[4:] for line in block.splitlines()]
        answers[lines[0].removeprefix("$ ")] = lines[1:]
    return answers


def lasting(lines):
    """Lines without what is another one each time: pids, descriptors, times and the widths that
    follow. From Debian 13 on smbd adds its client to its name."""
    lines = [re.sub(r"(?<= smbd)\[\S+", "", line) for line in lines]
    lines = [re.sub(r"  [\d,]+(?= +/volume)", "  FD", line) for line in lines]
    lines = [re.sub(r"(?<=\S) {2,}\d+(?=  )", "  PID", line) for line in lines]
    lines = [re.sub(r"process \d+", "process PID", line) for line in lines]
    lines = [re.sub(r"(\d{4}-\d\d-\d\dT)?\d\d:\d\d:\d\d(\.\d{6})?Z?", "TIME", line) for line in lines]
    return [re.sub(r" {2,}", "  ", line) for line in lines]


def on_a_terminal(command):
    return Terminal("bash", "-c", command, NO_COLOR="1")


def interrupt(terminal):
    """As Ctrl-C does."""
    os.killpg(terminal.process.pid, signal.SIGINT)
    terminal.finish()


class Recipes(ssh_test.SshTest, smb_test.SmbTest):
    @classmethod
    def setUpClass(cls):
        for base in (ssh_test.SshTest, smb_test.SmbTest):
            base.setUpClass.__func__(cls)
        cls.answers = answers_in_readme()

    def setUp(self):
        client = smb_test.SmbTest.hold(self, "alice", OFFICE, "2024/beach.jpg", share="photo")
        self.open(client, "2024/dunes.jpg")
        await_holder("/volume1/photo/2024/dunes.jpg", "smbd")
        smb_test.SmbTest.hold(self, "bob", STUDIO, "2024/harbour.jpg", share="photo")
        self.hold("/volume1/projects/plan.ods", "alice", OFFICE)
        await_holder("/volume1/projects/plan.ods")
        write_file(DELETED, b"content" * (1 << 20))
        backup = Holder(DELETED, "system.slice/cron.service")
        self.addCleanup(backup.stop)
        os.unlink(DELETED)

    def open_another(self):
        client = self.hold(NEW, "alice", OFFICE)
        await_holder(NEW)
        return client

    def test_every_answer_is_what_the_readme_shows(self):
        self.assertEqual(len(self.answers), 9)
        for command, shown in self.answers.items():
            with self.subTest(command):
                real = self.answer(command)
                self.assertEqual(lasting(real), lasting(shown), "\n" + "\n".join(real))

    def answer(self, command):
        if "jsonl" in command:
            return self.events(command)
        if "--watch" in command:
            return self.screen(command)
        # The sample host is a PID namespace: nobody outside of it has its volumes.
        command = command.replace("vorn-openfiles idle", "vorn-openfiles idle --inside")
        done = subprocess.run(["bash", "-c", command], env={**os.environ, "LANG": "C.UTF-8"},
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, check=False, timeout=PATIENCE)
        return done.stdout.splitlines()

    def screen(self, command):
        """The screen that marks a new file."""
        terminal = on_a_terminal(command)
        terminal.wait_for(END_OF_SCREEN)
        client = self.open_another()
        screen = terminal.wait_for(b"budget.ods") + terminal.wait_for(END_OF_SCREEN)
        interrupt(terminal)
        stop(client)
        return re.sub(r"\x1b\[\w", "", screen.decode().rpartition("\x1b[H")[2]).splitlines()

    def events(self, command):
        """What is logged of a file that is opened and closed."""
        terminal = on_a_terminal(command)
        terminal.wait_for(b"plan.ods\r\n")
        client = self.open_another()
        opened = terminal.wait_for(b"budget.ods\r\n")
        stop(client)
        closed = terminal.wait_for(b"budget.ods\r\n")
        interrupt(terminal)
        return (opened + closed).decode().splitlines()
