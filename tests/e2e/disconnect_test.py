"""Connections of real clients that are ended: the right ones, and nobody else's."""

import itertools
import json
import os
import re
import signal
import subprocess
import sys
import unittest

import dropbear_test
import ftp_test
import smb_test
import ssh_test
from harness.command import COMMAND, run
from harness.files import touch, write_file
from harness.fuse_volume import FILE, FuseVolume
from harness.processes import Holder, await_holder, holders, output_of, parent_of, program_of, start, start_as, stop
from harness.sample_host import PASSWORD, needs, set_up_host
from harness.servers import Server, SystemLog
from harness.terminal import Terminal
from harness.waiting import wait_until

# Debian lets no two FTP servers be installed.
PROFTPD = "/opt/proftpd/usr/sbin/proftpd"
NEXT_PID = "/proc/sys/kernel/ns_last_pid"
PROFTPD_CONFIGURATION = """
ServerType standalone
DefaultServer on
Port 2121
UseIPv6 off
User nobody
Group nogroup
RequireValidShell off
AuthOrder mod_auth_unix.c
PidFile /run/proftpd.pid
ScoreboardFile /run/proftpd.scoreboard
DefaultRoot /volume1/share
"""


def setUpModule():
    needs("sshd", "ssh", "smbd", "smbclient", "smbpasswd", "smbstatus", "vsftpd", PROFTPD, "curl", "dropbear",
          "dropbearkey", "inetd")
    set_up_host()
    ssh_test.set_up_ssh()
    dropbear_test.set_up_dropbear()
    smb_test.set_up_smb(smb_test.CONFIGURATION)
    os.makedirs("/run/vsftpd/empty", exist_ok=True)
    write_file("/etc/vsftpd.conf", ftp_test.CONFIGURATION)
    write_file("/etc/proftpd/e2e.conf", PROFTPD_CONFIGURATION)
    write_file("/root/upload", bytes(1 << 22))
    for path in smb_test.FILES:
        write_file(path, b"content", 0o666)


def disconnect(*arguments, **options):
    """Status, what it prints, what it complains of."""
    options.setdefault("stdin", subprocess.DEVNULL)
    done = run("disconnect", *arguments, **options)
    return done.returncode, done.stdout.decode(), done.stderr.decode()


def is_alive(pid):
    try:
        with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as file:
            return file.read().rpartition(")")[2].split()[0] not in "ZX"
    except FileNotFoundError:
        return False


def ignores(pid, number):
    with open(f"/proc/{pid}/status", encoding="utf-8", errors="replace") as file:
        return int(re.search(r"^SigIgn:\t(\w+)$", file.read(), re.MULTILINE)[1], 16) >> (number - 1) & 1


class DisconnectTest(unittest.TestCase):
    def await_free(self, path):
        wait_until(lambda: not holders(path), f"{path} to be free")

    def expect_ended(self, result, ended):
        """How many connections have ended, and nothing was complained of."""
        status, printed, complaints = result
        self.assertEqual((status, complaints), (0, ""), result)
        self.assertEqual(len(re.findall("^ended: ", printed, re.MULTILINE)), ended, printed)


class Smb(DisconnectTest, smb_test.SmbTest):
    def setUp(self):
        smb_test.SmbTest.setUp(self)
        self.open(self.hold("alice", "127.0.0.31", "file-0"), "file-1")
        await_holder("/volume1/share/file-1", "smbd")
        self.hold("bob", "127.0.0.32", "file-2")

    def check_by_schema(self, document):
        with open("/usr/share/vornfilehandle/schema/vorn-openfiles-1.schema.json", encoding="utf-8") as file:
            schema = json.load(file)
        del schema["oneOf"]
        schema["$ref"] = "#/$defs/disconnect"
        write_file("/root/schema", json.dumps(schema))
        write_file("/root/document", json.dumps(document))
        output_of(["/usr/bin/python3", "-W", "ignore", "-m", "jsonschema", "-i", "/root/document", "/root/schema"])

    def server_of(self, name):
        return await_holder(f"/volume1/share/{name}", "smbd")

    def expect_alone(self, *names):
        for name in names:
            self.assertTrue(is_alive(self.server_of(name)))

    def test_the_connection_of_a_file_ends_and_its_neighbour_does_not(self):
        ended, neighbour = self.server_of("file-0"), self.server_of("file-2")
        self.expect_ended(disconnect("--yes", "/volume1/share/file-0"), 1)
        self.assertFalse(is_alive(ended))
        self.assertEqual(holders("/volume1/share/file-2"), {neighbour})
        self.assertIsNone(self.server.process.poll())

    def test_by_user(self):
        neighbour = self.server_of("file-0")
        self.expect_ended(disconnect("--yes", "--where", "user=bob"), 1)
        self.assertEqual(holders("/volume1/share/file-0"), {neighbour})
        self.await_free("/volume1/share/file-2")

    def test_all_of_a_folder(self):
        self.expect_ended(disconnect("--yes", "/volume1/share"), 2)
        self.assertIsNone(self.server.process.poll())
        self.hold("alice", "127.0.0.33", "file-0")

    def test_what_else_is_held_is_shown_and_nothing_ends_in_a_dry_run(self):
        pid = self.server_of("file-0")
        status, printed, complaints = disconnect("--dry-run", "/volume1/share/file-0")
        self.assertEqual((status, complaints), (0, ""))
        rows = [re.split(r"\s{2,}", line) for line in printed.splitlines()]
        self.assertEqual(rows[0], ["SERVICE", "USER", "HOST", "PROCESSES", "FILE", "PATH"])
        client = ["SMB", "alice", "127.0.0.31", str(pid)]
        self.assertEqual(rows[1], [*client, "selected", "share/file-0"])
        self.assertIn([*client, "also held", "/volume1/share/file-1"], rows)
        self.assertTrue(all(row[:4] == client for row in rows[1:]), rows)
        self.expect_alone("file-0", "file-2")

    def test_json_says_what_has_become_of_each(self):
        pid = self.server_of("file-0")
        status, printed, complaints = disconnect("--yes", "--json", "/volume1/share/file-0")
        self.assertEqual((status, complaints), (0, ""))
        document = json.loads(printed)
        self.check_by_schema(document)
        connection, = document["connections"]
        self.assertEqual((document["state"], document["complete"], document["left_alone"]), ("ended", True, []))
        self.assertEqual({key: connection[key] for key in ("service", "user", "host", "state", "processes")},
                         {"service": "SMB", "user": "alice", "host": "127.0.0.31", "state": "ended",
                          "processes": [str(pid)]})
        self.assertEqual([file["full_path"] for file in connection["selected"]], ["/volume1/share/file-0"])

    def test_nothing_happens_without_an_answer(self):
        status, _, complaints = disconnect("/volume1/share")
        self.assertEqual(status, 2)
        self.assertIn("asks on a terminal; elsewhere give --yes or --dry-run", complaints)
        self.expect_alone("file-0", "file-2")

    def test_a_terminal_is_asked(self):
        for answer, status in (("n", 2), ("", 2), ("yep", 2), ("y", 0)):
            with self.subTest(answer):
                self.answer_to([], answer, "file-2", status)
        self.await_free("/volume1/share/file-2")
        self.expect_alone("file-0")

    def test_a_terminal_is_asked_within_a_time_limit_too(self):
        for answer, status in (("n", 2), ("y", 0)):
            with self.subTest(answer):
                self.answer_to(["--timeout", "60"], answer, "file-2", status)
        self.await_free("/volume1/share/file-2")
        self.expect_alone("file-0")

    def answer_to(self, limit, answer, name, status):
        terminal = Terminal(COMMAND, "disconnect", *limit, f"/volume1/share/{name}")
        shown = terminal.wait_for(b"End 1 connection? [y/N] ")
        self.assertIn(f"share/{name}".encode(), shown)
        self.expect_alone("file-0", name)
        terminal.type(answer + "\n")
        self.assertEqual(terminal.finish()[0], status)
        self.assertEqual(terminal.settings_after, terminal.settings_before)

    def test_a_user_without_rights_is_told(self):
        for arguments in (["--yes", "/volume1/share"], ["--dry-run"]):
            done = subprocess.run(["setpriv", "--reuid", "alice", "--clear-groups", "/usr/sbin/vorn-openfiles",
                                   "disconnect", *arguments], capture_output=True, check=False)
            self.assertEqual((done.returncode, done.stdout), (2, b""))
            self.assertIn(b"needs the rights of root", done.stderr)
        self.expect_alone("file-0", "file-2")

    def test_the_right_to_end_others_is_looked_for_before_anything_happens(self):
        done = subprocess.run(["setpriv", "--bounding-set", "-kill", "--inh-caps", "-all", "/usr/sbin/vorn-openfiles",
                               "disconnect", "--yes", "/volume1/share"], capture_output=True, check=False)
        self.assertEqual(done.returncode, 2)
        self.assertIn(b"CAP_KILL", done.stderr)
        self.expect_alone("file-0", "file-2")

    def test_the_system_log_has_who_asked_and_what_was_ended(self):
        log = SystemLog()
        self.addCleanup(log.close)
        pid = self.server_of("file-2")
        self.expect_ended(disconnect("--yes", "/volume1/share/file-2", env={"SUDO_USER": "carol\nforged"}), 1)
        self.assertEqual(log.take(), [
            rf"disconnect: uid 0, sudo user carol\nforged ends the SMB connection of bob from 127.0.0.32 "
            rf"(process {pid}): processes {pid}, for /volume1/share/file-2"])

    def test_a_process_that_serves_nobody_is_named_with_what_would_end_it(self):
        local = Holder("/volume1/share/file-0", "system.slice/cron.service")
        self.addCleanup(local.stop)
        status, _, complaints = disconnect("--yes", "/volume1/share/file-0")
        self.assertEqual(status, 0)
        self.assertIn(f"process {local.pid} (python3", complaints)
        self.assertIn("is left alone, as it serves no client; 'systemctl stop cron.service' would end it: "
                      "share/file-0", complaints)
        self.assertIsNone(local.process.poll())
        status, printed, _ = disconnect("--yes", "/volume1/share/file-0")
        self.assertEqual((status, printed), (1, ""))


class SmbDaemon(DisconnectTest, smb_test.SmbTest):
    LOG = "/volume1/share/smbd.log"

    @classmethod
    def setUpClass(cls):
        """A log on the volume: every smbd has it from the first one."""
        with open(cls.LOG, "wb") as log:
            cls.server = Server("smbd", ["/usr/sbin/smbd", "--foreground", "--no-process-group"], 445,
                                pass_fds=[log.fileno()])
        cls.addClassCleanup(cls.server.stop)

    def test_is_left_alone(self):
        main = self.server.process.pid
        self.hold("alice", "127.0.0.34", "file-0")
        serving = await_holder("/volume1/share/file-0", "smbd")
        status, _, complaints = disconnect("--yes", self.LOG)
        self.assertEqual(status, 0, complaints)
        self.assertIn(f"process {main} (smbd) is left alone", complaints)
        self.assertIn("'systemctl stop smbd.service' would end it", complaints)
        self.assertFalse(is_alive(serving))
        self.assertIsNone(self.server.process.poll())


class AsSambaItself(DisconnectTest, smb_test.SmbTest):
    """What ends a connection is what Samba's own tool ends it by."""

    def ends_by(self, end):
        self.hold("alice", "127.0.0.35", "file-0")
        pid = await_holder("/volume1/share/file-0", "smbd")
        end(pid)
        wait_until(lambda: not is_alive(pid), "the end of the connection")
        left = json.loads(output_of(["smbstatus", "--json"]))
        return {key: left.get(key) for key in ("sessions", "tcons", "open_files")}

    def test_leaves_as_little_behind_as_smbcontrol(self):
        tools = self.ends_by(lambda pid: output_of(["smbcontrol", str(pid), "shutdown"]))
        ours = self.ends_by(lambda pid: self.expect_ended(disconnect("--yes", "/volume1/share/file-0"), 1))
        self.assertEqual(ours, tools)


class Ssh(DisconnectTest, ssh_test.SshTest):
    def test_the_session_ends_with_all_of_its_processes_and_its_neighbour_does_not(self):
        detached = "/volume1/photo/detached"
        self.ssh("alice", "127.0.0.41", f"(setsid sh -c 'exec 9>{detached}; exec sleep 1000' </dev/null "
                 ">/dev/null 2>&1 &); sleep 1000 & exec 9>/volume1/share/selected; read _; :")
        self.hold("/volume1/share/neighbour", "alice", "127.0.0.41")
        shell, far = await_holder("/volume1/share/selected", "bash"), await_holder(detached, "sleep")
        neighbour = await_holder("/volume1/share/neighbour")
        child = int(output_of(["pgrep", "-P", str(shell), "sleep"]))
        wait_until(lambda: parent_of(far) == 1, "the process to be adopted")
        half = parent_of(shell)
        head = parent_of(half)
        self.assertEqual((program_of(half), program_of(head)), ("sshd", "sshd"))
        self.expect_ended(disconnect("--yes", "/volume1/share/selected"), 1)
        self.assertEqual([is_alive(pid) for pid in (head, half, shell, child, far)], [False] * 5)
        self.assertTrue(is_alive(neighbour))
        self.assertIsNone(self.server.process.poll())

    def test_of_file_transfers(self):
        self.sftp("alice", "127.0.0.42", "/volume1/share/sent-1")
        self.sftp("bob", "127.0.0.43", "/volume1/share/sent-2")
        await_holder("/volume1/share/sent-1")
        neighbour = await_holder("/volume1/share/sent-2")
        self.expect_ended(disconnect("--yes", "--where", "user=alice"), 1)
        self.await_free("/volume1/share/sent-1")
        self.assertTrue(is_alive(neighbour))

    def test_a_server_that_was_started_from_a_session_stays_with_what_it_has_started(self):
        listener = write_file("/root/listener.py", """
import os, socket, sys, time
server = socket.create_server(("127.0.0.1", 0))
os.fork()
open("/volume1/share/served", "w").close()
held = open("/volume1/share/served")
time.sleep(1000)
""")
        self.ssh("root", "127.0.0.44", f"{sys.executable} {listener} & exec 9>/volume1/share/of-root; read _; :")
        shell = await_holder("/volume1/share/of-root", "bash")
        wait_until(lambda: len(holders("/volume1/share/served")) == 2, "the server and its child")
        started = holders("/volume1/share/served")
        status, printed, complaints = disconnect("--yes", "/volume1/share/of-root", "/volume1/share/served")
        self.assertEqual((status, printed.count("ended: ")), (0, 1), complaints)
        self.assertEqual(complaints.count("is left alone"), 2)
        self.assertFalse(is_alive(shell))
        self.assertEqual([pid for pid in started if not is_alive(pid)], [])
        for pid in started:
            os.kill(pid, signal.SIGKILL)

    def test_what_does_not_end_is_named_and_killed_by_force_alone(self):
        self.ssh("alice", "127.0.0.45", "trap '' TERM HUP; exec 9>/volume1/share/stubborn; "
                 "while :; do sleep 0.1; done")
        pid = await_holder("/volume1/share/stubborn", "bash")
        wait_until(lambda: ignores(pid, signal.SIGTERM) and ignores(pid, signal.SIGHUP), "the shell to ignore signals")
        status, _, complaints = disconnect("--yes", "--grace", "0.5", "/volume1/share/stubborn")
        self.assertEqual(status, 2)
        self.assertIn("still there after 0.5 s", complaints)
        self.assertIn(str(pid), complaints)
        self.assertTrue(is_alive(pid))

    def test_force_kills(self):
        self.ssh("alice", "127.0.0.46", "trap '' TERM HUP; exec 9>/volume1/share/stubborn-2; "
                 "while :; do sleep 0.1; done")
        pid = await_holder("/volume1/share/stubborn-2", "bash")
        wait_until(lambda: ignores(pid, signal.SIGTERM) and ignores(pid, signal.SIGHUP), "the shell to ignore signals")
        status, _, complaints = disconnect("--yes", "--grace", "0.5", "--force", "/volume1/share/stubborn-2")
        self.assertEqual(status, 0, complaints)
        self.assertFalse(is_alive(pid))

    def test_the_connection_that_it_runs_over_is_left_alone(self):
        self.ssh("root", "127.0.0.47", f"exec 9>/volume1/share/own; {COMMAND} disconnect --yes /volume1/share/own "
                 ">/root/said 2>&1; echo $? >>/root/said; read _; :")
        pid = await_holder("/volume1/share/own", "bash")
        said = wait_until(lambda: os.path.exists("/root/said") and
                          re.search(r"^\d\n\Z", open("/root/said", encoding="utf-8").read(), re.MULTILINE) and
                          open("/root/said", encoding="utf-8").read(), "the answer")
        self.assertIn("this command runs over its connection", said)
        self.assertTrue(said.endswith("\n1\n"), said)
        self.assertTrue(is_alive(pid))


class DeadVolume(DisconnectTest, ssh_test.SshTest):
    def test_ends_the_command_in_time_and_nobody_by_it(self):
        volume = FuseVolume()
        self.addCleanup(volume.close)
        self.ssh("root", "127.0.0.48", f"exec 9<{os.fsdecode(FILE)}; read _; :")
        pid = await_holder(FILE, "bash")
        terminal = Terminal(COMMAND, "disconnect", "--by", "volume", "--timeout", "0.5", FILE)
        terminal.wait_for(b"End 1 connection? [y/N] ")
        volume.die()
        terminal.type("y\n")
        status, lines = terminal.finish()
        self.assertEqual((status, lines[-2:]), (2, [
            "vorn-openfiles: no answer within 0.5 s; volumes that don't answer: /volume9", ""]))
        self.assertTrue(is_alive(pid))


class SshWithoutPam(DisconnectTest, ssh_test.SshTest):
    USE_PAM = "no"

    def test_the_session_ends_and_its_neighbour_does_not(self):
        self.hold("/volume1/share/plain", "alice", "127.0.0.51")
        self.hold("/volume1/share/plain-2", "alice", "127.0.0.51")
        shell, neighbour = await_holder("/volume1/share/plain"), await_holder("/volume1/share/plain-2")
        self.expect_ended(disconnect("--yes", "/volume1/share/plain"), 1)
        self.assertFalse(is_alive(shell))
        self.assertTrue(is_alive(neighbour))
        self.assertIsNone(self.server.process.poll())


class Dropbear(DisconnectTest, dropbear_test.DropbearTest):
    def test_the_session_ends_with_all_of_its_processes_and_its_neighbour_does_not(self):
        self.ssh("alice", "127.0.0.52", "sleep 1000 & exec 9>/volume1/share/small; read _; :")
        neighbour = self.hold("/volume1/share/small-2", "alice", "127.0.0.52")
        shell = await_holder("/volume1/share/small", "bash")
        child = int(output_of(["pgrep", "-P", str(shell), "sleep"]))
        head = parent_of(shell)
        self.assertEqual((program_of(head), parent_of(head)), ("dropbear", self.server.process.pid))
        self.expect_ended(disconnect("--yes", "/volume1/share/small"), 1)
        self.assertEqual([is_alive(pid) for pid in (head, shell, child)], [False] * 3)
        self.assertEqual(holders("/volume1/share/small-2"), {neighbour})
        self.assertIsNone(self.server.process.poll())


class DropbearDaemon(DisconnectTest, dropbear_test.DropbearTest):
    LOG = "/volume1/share/dropbear.log"

    def setUp(self):
        """A log on the volume: the daemon and all that it starts have it."""
        with open(self.LOG, "wb") as log:
            super().setUp(pass_fds=[log.fileno()])

    def test_is_left_alone(self):
        main = self.server.process.pid
        serving = parent_of(self.hold("/volume1/share/small-3", "bob", "127.0.0.53"))
        self.assertLessEqual({main, serving}, holders(self.LOG))
        status, _, complaints = disconnect("--yes", self.LOG)
        self.assertEqual(status, 0, complaints)
        self.assertIn(f"process {main} (dropbear) is left alone, as it is a server", complaints)
        self.assertIn("'systemctl stop dropbear.service' would end it", complaints)
        self.assertFalse(is_alive(serving))
        self.assertIsNone(self.server.process.poll())


class Vsftpd(DisconnectTest):
    PROGRAM = "vsftpd"
    SERVICE = "FTP"
    PORT = 21

    @classmethod
    def setUpClass(cls):
        cls.server = Server("vsftpd", ["/usr/sbin/vsftpd", "/etc/vsftpd.conf"], cls.PORT)
        cls.addClassCleanup(cls.server.stop)

    def upload(self, user, address, name):
        client = start(["curl", "--silent", "--show-error", "--limit-rate", "1k", "--interface", address, "--user",
                        f"{user}:{PASSWORD}", "--upload-file", "/root/upload",
                        f"ftp://127.0.0.1:{self.PORT}/{name}"], stderr=subprocess.DEVNULL)
        self.addCleanup(stop, client)
        return await_holder(f"/volume1/share/{name}", self.PROGRAM)

    def test_the_transfer_of_a_file_ends_and_its_neighbour_does_not(self):
        one, other = f"{self.PROGRAM}-1", f"{self.PROGRAM}-2"
        ended = self.upload("alice", "127.0.0.61", one)
        above = parent_of(ended)
        neighbour = self.upload("alice", "127.0.0.61", other)
        result = disconnect("--yes", f"/volume1/share/{one}")
        self.expect_ended(result, 1)
        self.assertIn(f"ended: {self.SERVICE} connection of alice from 127.0.0.61 ", result[1])
        self.assertFalse(is_alive(ended))
        self.assertEqual(is_alive(above), above == self.server.process.pid)
        self.assertEqual(holders(f"/volume1/share/{other}"), {neighbour})
        self.assertIsNone(self.server.process.poll())


class Proftpd(Vsftpd):
    PROGRAM = "proftpd"
    PORT = 2121

    @classmethod
    def setUpClass(cls):
        cls.server = Server("proftpd", [PROFTPD, "--nodaemon", "--config", "/etc/proftpd/e2e.conf"],
                            cls.PORT)
        cls.addClassCleanup(cls.server.stop)


class VsftpdOfInetd(Vsftpd):
    """A daemon that waits for the clients of others, and starts a server for each."""
    SERVICE = "Internet services (inetd)"
    PORT = 2123

    @classmethod
    def setUpClass(cls):
        configuration = write_file("/etc/vsftpd-inetd.conf", ftp_test.CONFIGURATION.replace(
            "listen_ipv6=YES", "listen_ipv6=NO"))
        with open("/etc/services", "a", encoding="ascii") as services:
            services.write(f"e2e-ftp {cls.PORT}/tcp\n")
        started = write_file("/etc/inetd-e2e.conf",
                             f"e2e-ftp stream tcp nowait root /usr/sbin/vsftpd vsftpd {configuration}\n")
        cls.server = Server("inetd", ["/usr/sbin/inetd", "-i", started], cls.PORT)
        cls.addClassCleanup(cls.server.stop)


class ReusedPids(DisconnectTest, smb_test.SmbTest):
    """The sample host's PID namespace is made to give an id again."""

    def test_whoever_has_the_id_of_an_ended_server_by_the_answer_is_not_hit(self):
        self.hold("alice", "127.0.0.71", "file-0")
        pid = await_holder("/volume1/share/file-0", "smbd")
        terminal = Terminal(COMMAND, "disconnect", "/volume1/share/file-0")
        terminal.wait_for(b"[y/N] ")
        os.kill(pid, signal.SIGKILL)
        wait_until(lambda: not os.path.exists(f"/proc/{pid}"), "the server to have gone")
        # It even holds the file that it is all about.
        other = start_as(pid, [sys.executable, "-c", "import time\nheld = open('/volume1/share/file-0')\n"
                               "time.sleep(1000)"])
        self.addCleanup(stop, other)
        wait_until(lambda: holders("/volume1/share/file-0") == {pid}, "it to hold the file")
        terminal.type("y\n")
        status, lines = terminal.finish()
        self.assertIsNone(other.poll())
        self.assertEqual(status, 2, lines)
        self.assertIn(f"held by process {pid}", "\n".join(lines))

    def test_nor_is_the_next_client_whom_a_server_of_that_id_serves(self):
        client = self.hold("alice", "127.0.0.72", "file-0")
        pid = await_holder("/volume1/share/file-0", "smbd")
        terminal = Terminal(COMMAND, "disconnect", "/volume1/share/file-0")
        terminal.wait_for(b"[y/N] ")
        stop(client)
        wait_until(lambda: not os.path.exists(f"/proc/{pid}"), "the server to have gone")

        before = itertools.cycle(range(2, 12))

        def is_served_by_that_id():
            # Some processes are started before the server's, the client's among them.
            touch(NEXT_PID, str(pid - next(before)))
            following = self.hold("alice", "127.0.0.72", "file-0")
            if await_holder("/volume1/share/file-0", "smbd") == pid:
                return True
            stop(following)
            self.await_free("/volume1/share/file-0")
            return False
        wait_until(is_served_by_that_id, "a server of that id")
        terminal.type("y\n")
        status, lines = terminal.finish()
        self.assertEqual(status, 2, lines)
        self.assertTrue(is_alive(pid))
        self.assertEqual(holders("/volume1/share/file-0"), {pid})

