"""Hosts that send over HTTPS with their certificates, by the engines and with the configuration that is installed."""

import os
import shutil
import signal
import socket
import subprocess
import unittest

from centre_host import (CENTRE, FOLDER, JOURNALS, REMOTE, Host, ask, load, new_centre, set_up_centre, start_loader,
                         write_entries)
from harness.files import write_file
from harness.processes import output_of, plain_environment, start, stop
from harness.waiting import wait_until

CERTIFICATES = f"{FOLDER}/certificates"
ETC = "/etc/vorn-openfiles-centre"
SOCKETS = "/run/vorn-openfiles-journals"
CREDENTIALS = "/run/credentials/vorn-openfiles-receive.service"
RECEIVER = "vorn-openfiles-receive"
UPLOAD = "/lib/systemd/systemd-journal-upload"
URL = "https://localhost:19533"
EVENTS = 10_000


postgresql = None  # of the module


def setUpModule():
    set_up_receiver()


def set_up_receiver(**options):
    global postgresql  # pylint: disable=global-statement
    output_of(["systemd-sysusers", f"{CENTRE}/receiver/sysusers.conf"])
    postgresql = set_up_centre(**options)
    for folder in (CERTIFICATES, ETC, SOCKETS, CREDENTIALS, f"/run/{RECEIVER}"):
        os.makedirs(folder, exist_ok=True)
    shutil.chown(f"/run/{RECEIVER}", RECEIVER)
    for authority in ("ours", "theirs"):
        make_authority(authority)
    make_certificate("server", "/CN=localhost", "ours", "subjectAltName=DNS:localhost,DNS:centre")
    shutil.copy(f"{CERTIFICATES}/server.pem", ETC)
    shutil.copy(f"{CERTIFICATES}/ours.pem", f"{ETC}/hosts.pem")
    shutil.copy(f"{CERTIFICATES}/server.key", CREDENTIALS)
    shutil.chown(f"{CREDENTIALS}/server.key", RECEIVER)


def openssl(*arguments):
    output_of(["openssl", *arguments])


KEY = ["-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes"]


def make_authority(name):
    openssl("req", "-x509", *KEY, "-keyout", f"{CERTIFICATES}/{name}.key", "-out", f"{CERTIFICATES}/{name}.pem",
            "-days", "2", "-subj", f"/CN={name}")


def make_certificate(name, subject, authority, extension="extendedKeyUsage=clientAuth"):
    base = f"{CERTIFICATES}/{name}"
    write_file(f"{base}.ext", extension.encode())
    openssl("req", *KEY, "-keyout", f"{base}.key", "-out", f"{base}.csr", "-subj", subject)
    openssl("x509", "-req", "-in", f"{base}.csr", "-CA", f"{CERTIFICATES}/{authority}.pem", "-CAkey",
            f"{CERTIFICATES}/{authority}.key", "-CAcreateserial", "-days", "2", "-extfile", f"{base}.ext", "-out",
            f"{base}.pem")


class Receiver:
    """The web server and a journal a node, as the units start them."""

    def __init__(self, *nodes):
        self.nodes = {}
        for node in nodes:
            self.start_node(node)
        self.start_server()

    def start_server(self):
        self.server = start(["/usr/sbin/nginx", "-e", "stderr", "-c", f"{CENTRE}/receiver/nginx.conf", "-g",
                             "daemon off;"], user=RECEIVER, stderr=subprocess.DEVNULL)
        wait_until(listens, "the receiver to listen")

    def start_node(self, node):
        path = f"{SOCKETS}/{node}.sock"
        if os.path.exists(path):
            os.unlink(path)
        self.nodes[node] = start(["systemd-socket-activate", f"--listen={path}", REMOTE, "--listen-http=-3",
                                  "--split-mode=none", f"--output={JOURNALS}/remote-{node}.journal"],
                                 stderr=subprocess.DEVNULL)
        wait_until(lambda: os.path.exists(path), "the node's socket")
        shutil.chown(path, RECEIVER)

    def stop(self):
        self.server.send_signal(signal.SIGTERM)
        self.server.wait()
        for process in self.nodes.values():
            process.send_signal(signal.SIGTERM)
            process.wait()


def listens():
    try:
        socket.create_connection(("localhost", 19533)).close()
        return True
    except ConnectionRefusedError:
        return False


def upload_command(name, certificate=None):
    base = f"{CERTIFICATES}/{certificate or name}"
    return [UPLOAD, f"--url={URL}", f"--file={FOLDER}/{name}.journal", f"--save-state={FOLDER}/{name}.state",
            f"--key={base}.key", f"--cert={base}.pem", f"--trust={CERTIFICATES}/ours.pem"]


def upload(name, certificate=None):
    """Sends all that the host's journal has; the status and what was said."""
    done = subprocess.run([*upload_command(name, certificate), "--follow=no"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          env=plain_environment(), text=True, check=False, timeout=60)
    return done.returncode, done.stdout


def write_at_host(host):
    """Into the host's own journal, from where it is sent."""
    write_entries(host.entries, f"{FOLDER}/{host.node}.journal")
    host.entries = []


class Sending(unittest.TestCase):
    def setUp(self):
        new_centre()
        for name in os.listdir(FOLDER):
            if name.endswith((".journal", ".state")):
                os.unlink(f"{FOLDER}/{name}")

    def receiver(self, *nodes):
        receiver = Receiver(*nodes)
        self.addCleanup(receiver.stop)
        return receiver

    def test_what_was_written_while_the_receiver_was_down_arrives(self):
        make_certificate("alpha", "/O=Example/CN=alpha", "ours")
        host = Host("alpha").tell("started").opened("/volume1/a").closed("/volume1/a")
        write_at_host(host)
        self.assertNotEqual(upload("alpha")[0], 0)
        host.opened(b"/volume1/\xff\n").tell("heartbeat")
        write_at_host(host)
        self.receiver("alpha")
        self.assertEqual(upload("alpha")[0], 0)
        load()
        self.assertEqual(ask("select node, events::int from vorn.runs"), [("alpha", 5)])
        self.assertEqual(ask("select path, user_name from vorn.open_now"), [("/volume1/\\xFF\n", "alice")])
        host.closed(b"/volume1/\xff\n")
        write_at_host(host)
        self.assertEqual(upload("alpha")[0], 0)
        load()
        self.assertEqual(ask("select events::int, last_seq::int from vorn.runs"), [(6, 6)])

    def test_only_those_with_a_certificate_of_ours_and_a_journal_get_in(self):
        make_certificate("alpha", "/CN=alpha", "ours")
        make_certificate("stranger", "/CN=alpha", "theirs")
        make_certificate("unlisted", "/CN=unlisted", "ours")
        make_certificate("path", "/CN=..\\/alpha", "ours")
        make_certificate("archive", "/CN=alpha@0001-0001", "ours")
        make_certificate("second", "/CN=alpha/O=CN=beta/OU=Storage", "ours")
        write_at_host(Host("alpha").opened("/volume1/a"))
        self.receiver("alpha")
        for certificate, status in [("stranger", "400"), ("unlisted", "502"), ("path", "403"), ("archive", "403"),
                                    ("second", "403")]:
            with self.subTest(certificate):
                code, said = upload("alpha", certificate)
                self.assertNotEqual(code, 0)
                self.assertIn(status, said)
        for arguments in ([], ["--insecure", "--http1.0"]):
            status = output_of(["curl", "--silent", "--output", "/dev/null", "--write-out", "%{http_code}", "--cacert",
                                f"{CERTIFICATES}/ours.pem", "--data-binary", "VORN_NODE=alpha\n\n", f"{URL}/upload",
                                "--header", "Content-Type: application/vnd.fdo.journal", *arguments])
            self.assertEqual(status, "400")
        self.assertEqual(os.listdir(JOURNALS), [])
        self.assertEqual(upload("alpha")[0], 0)
        self.assertEqual(os.listdir(JOURNALS), ["remote-alpha.journal"])

    def test_a_host_speaks_for_nobody_else(self):
        for name in ("alpha", "beta"):
            make_certificate(name, f"/CN={name}", "ours")
        host = Host("beta").opened("/volume1/own").opened("/volume1/forged", NODE="alpha")
        write_at_host(host)
        self.receiver("alpha", "beta")
        self.assertEqual(upload("beta")[0], 0)
        load()
        self.assertEqual(ask("select node, path from vorn.open_now"), [("beta", "/volume1/own")])
        self.assertEqual(ask("select node, fields->>'VORN_NODE' from vorn.refused"), [("beta", "alpha")])

    def test_nothing_is_lost_when_each_part_is_killed_under_way(self):
        make_certificate("alpha", "/CN=alpha", "ours")
        host = Host("alpha").tell("started")
        for number in range(EVENTS // 2):
            host.opened(f"/volume1/{number}").closed(f"/volume1/{number}")
        write_at_host(host)
        receiver = self.receiver("alpha")
        loader = start_loader(stderr=subprocess.DEVNULL)
        self.addCleanup(lambda: stop(loader))

        def stored():
            return ask("select coalesce(sum(events), 0)::int from vorn.runs")[0][0]

        def sending_until(share, *options):
            sender = start([*upload_command("alpha"), *options], env=plain_environment(), stderr=subprocess.DEVNULL)
            self.addCleanup(stop, sender)
            wait_until(lambda: stored() >= EVENTS // share, "events to arrive")
            return sender
        sending_until(10)
        stop(receiver.nodes["alpha"])
        receiver.start_node("alpha")
        sending_until(5)
        receiver.server.kill()
        receiver.server.wait()
        receiver.start_server()
        stop(sending_until(3))
        self.assertEqual(sending_until(1, '--follow=no').wait(60), 0)
        wait_until(lambda: stored() == host.seq, "all events to be stored")
        self.assertEqual(ask("select count(*)::int, sum(opens)::int from vorn.intervals where end_known"),
                         [(EVENTS // 2, EVENTS // 2)])
        self.assertEqual(ask("select count(*) from vorn.gaps"), [(0,)])
