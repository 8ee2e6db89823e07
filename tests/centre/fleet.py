"""Three storage hosts and their centre, all on this machine, with real clients over SMB."""

import os
import subprocess
import sys

from centre_host import start_loader
from harness.processes import output_of, plain_environment, start, stop
from harness.sample_host import PASSWORD, needs, set_up_host
from harness.waiting import wait_until
from receiver_test import Receiver, make_certificate, set_up_receiver
from storage_host import CENTRE

HERE = os.path.dirname(os.path.realpath(__file__))
#: Each host is reached from a client's machine of its own.
HOSTS = {"alpha": "192.0.2.10", "beta": "192.0.2.11", "gamma": "192.0.2.12"}
NAMESPACES = ["unshare", "--mount", "--uts", "--net", "--pid", "--fork", "--kill-child", "--mount-proc"]


def address_of(node):
    return f"198.51.100.{1 + list(HOSTS).index(node)}"


class Fleet:
    def __init__(self):
        needs("smbd", "smbclient", "nginx")
        set_up_host()
        set_up_receiver()
        output_of(["ip", "link", "set", "lo", "up"])
        with open("/etc/hosts", "a", encoding="ascii") as hosts:
            hosts.write(f"{CENTRE} centre\n")
        self.clients = []
        self.receiver = Receiver(*HOSTS)
        self.loader = start_loader()
        self.hosts = {node: self._start_host(node, client) for node, client in HOSTS.items()}
        for host in self.hosts.values():
            wait_until(lambda host=host: host.stdout.readline() == b"ready\n", "a storage host")

    def stop(self):
        """What sends first."""
        for process in (*self.clients, *self.hosts.values(), self.loader):
            stop(process)
        self.receiver.stop()

    @staticmethod
    def _start_host(node, client):
        make_certificate(node, f"/CN={node}", "ours")
        host = start([*NAMESPACES, sys.executable, f"{HERE}/storage_host.py", node, address_of(node)],
                     stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                     env=plain_environment(PYTHONPATH=os.pathsep.join(sys.path)))
        wait_until(lambda: host.stdout.readline() == b"ready\n", f"the namespaces of {node}")
        link = f"to-{node}"
        for argv in (["link", "add", link, "type", "veth", "peer", "name", "uplink", "netns", str(host.pid)],
                     ["link", "set", link, "up"], ["address", "replace", f"{CENTRE}/32", "dev", "lo"],
                     ["address", "replace", f"{client}/32", "dev", "lo"],
                     ["route", "replace", address_of(node), "dev", link, "src", client]):
            output_of(["ip", *argv])
        host.stdin.write(b"\n")
        host.stdin.flush()
        return host

    def ask(self, node, *argv):
        """Runs a command on a host."""
        return subprocess.run(["nsenter", "--target", self._pid_in(node), "--mount", "--uts", "--net", "--pid", *argv],
                              env=plain_environment(), capture_output=True, text=True, check=False, timeout=60)

    def _pid_in(self, node):
        return output_of(["pgrep", "--parent", str(self.hosts[node].pid)]).strip()

    @staticmethod
    def client(node, user, share, *arguments):
        """A client that stays until its input ends, or until it has done what it is told by its arguments."""
        return start(["smbclient", f"//{address_of(node)}/{share}", "-U", f"{user}%{PASSWORD}", *arguments],
                     stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def stays(self, node, user, share):
        """A client that is there as long as the fleet is."""
        self.clients.append(self.client(node, user, share))
        return self.clients[-1]

    @classmethod
    def run_client(cls, node, user, share, *commands):
        output_of(["smbclient", f"//{address_of(node)}/{share}", "-U", f"{user}%{PASSWORD}", "-c", ";".join(commands)])
