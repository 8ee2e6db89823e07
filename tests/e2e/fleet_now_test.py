"""The commands of docs/fleet-now.md, asked of several hosts over real connections."""

import os
import re
import socket
import subprocess
import unittest

import ssh_test
from harness.files import write_file
from harness.processes import await_holder, output_of, plain_environment, start, stop
from harness.sample_host import PROJECT, needs, set_up_host
from harness.servers import slice_of
from harness.waiting import PATIENCE, wait_until

CLIENT = "192.0.2.10"
#: A host of its own as far as the command can see: its processes, its volumes.
HOST = """
umount /volume1 /volume2
mount -t tmpfs volume1 /volume1 && mkdir -p /volume1/projects
{more}
exec /usr/sbin/sshd -D -e -f {config}
"""


def setUpModule():
    needs("clush", "promtool", "sshd", "ssh")
    set_up_host()
    output_of(["ip", "address", "add", f"{CLIENT}/32", "dev", "lo"])
    os.mkdir("/volume1/projects")
    os.chmod("/volume1/projects", 0o1777)
    ssh_test.set_up_ssh()
    with open("/etc/hosts", "a", encoding="ascii") as hosts:
        hosts.writelines(f"127.0.1.{number} storage0{number}\n" for number in range(1, 5))
    write_file("/etc/ssh/ssh_config.d/e2e.conf", f"""
        IdentityFile {ssh_test.KEY}
        StrictHostKeyChecking no
        UserKnownHostsFile /dev/null
        LogLevel ERROR
        """)
    write_file("/etc/clustershell/groups.d/local.cfg", "storage: storage[01-04]\n")


def is_reached(address):
    with socket.socket() as probe:
        return probe.connect_ex((address, 22)) == 0


def start_host(number, *, more=None):
    """sshd on an address of its own; with more, in a host of its own as well."""
    config = write_file(f"/etc/ssh/sshd_config.{number}", f"""
        ListenAddress 127.0.1.{number}
        UsePAM no
        AuthorizedKeysFile /etc/ssh/e2e-keys/%u
        StrictModes no
        """)
    argv = ["/usr/sbin/sshd", "-D", "-e", "-f", config]
    if more is not None:
        argv = ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc",
                "sh", "-ec", HOST.format(more=more, config=config)]
    server = start(argv, f"{slice_of('ssh')}/ssh.service", stderr=subprocess.DEVNULL)
    unittest.addModuleCleanup(stop, server)
    wait_until(lambda: is_reached(f"127.0.1.{number}"), f"sshd of host {number}")


def set_off():
    """The lines that the document sets off, a list for each place."""
    with open(os.path.join(PROJECT, "docs", "fleet-now.md"), encoding="utf-8") as file:
        blocks = re.findall(r"(?:^    .*\n)+", file.read(), re.M)
    return [[line[4:] for line in block.splitlines()] for block in blocks]


def answers_in_document():
    """What the document shows below each command."""
    return {lines[0].removeprefix("$ "): lines[1:] for lines in set_off() if lines[0].startswith("$ clush")}


class Rules(unittest.TestCase):
    def test_are_set_up_as_the_document_says(self):
        [commands] = [lines for lines in set_off() if lines[0].startswith("cp ")]
        [config] = [lines for lines in set_off() if lines[0] == "rule_files:"]
        output_of(["bash", "-ec", "\n".join(commands)])
        output_of(["promtool", "check", "config", write_file("/etc/prometheus/prometheus.yml", "\n".join(config))])
        with open("/etc/prometheus/vorn-openfiles-migration.rules.yml", encoding="utf-8") as rules:
            self.assertIn('{share=~"accounts|home-.*"}', rules.read())


def without_progress(said):
    """clush counts the hosts that have answered, in a line that it takes back, when they take their time."""
    return [line for line in re.split(r"[\r\n]", said) if line.strip() and not re.fullmatch(r"clush: \d+/\d+ *", line)]


class FleetNow(unittest.TestCase):
    """One host with a client, one without, one that can't tell, one that nobody answers for."""

    @classmethod
    def setUpClass(cls):
        start_host(1)
        start_host(2, more="")
        start_host(3, more="mount -t tmpfs none /etc/vorn")
        client = start(["ssh", "-b", CLIENT, "alice@storage01", "exec 9>/volume1/projects/plan.ods; read _; :"],
                       stdin=subprocess.PIPE)
        cls.addClassCleanup(stop, client)
        await_holder("/volume1/projects/plan.ods")

    def answer(self, command):
        return subprocess.run(["bash", "-c", command], env=plain_environment(HOME="/root"), stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, check=False, timeout=PATIENCE)

    def test_every_answer_is_what_the_document_shows(self):
        answers = answers_in_document()
        self.assertEqual(len(answers), 3)
        for command, shown in answers.items():
            with self.subTest(command):
                done = self.answer(command)
                # What hosts say on standard error comes in any order.
                said, answered = without_progress(done.stderr), done.stdout.splitlines()
                self.assertEqual(sorted(shown[:len(said)]), sorted(said))
                self.assertEqual(shown[len(said):], answered)

    def test_the_greatest_status_is_that_of_a_host_that_was_not_reached(self):
        command = next(command for command in answers_in_document() if " -S " in command)
        self.assertEqual(self.answer(command).returncode, 255)
        self.assertEqual(self.answer(command.replace("-g storage", "-w storage[01-03]")).returncode, 2)
        self.assertEqual(self.answer(command.replace("-g storage", "-w storage01")).returncode, 0)
