"""A storage host in namespaces of its own: smbd, the record of opens and closes, and what sends it to the centre.

    storage_host.py NODE ADDRESS

Says "ready" for its network, is told by a line that it has it, says "ready" again, and ends with its input.
"""

import os
import socket
import subprocess
import sys

from centre_host import FOLDER
from harness.files import write_file
from harness.journal import Journal
from harness.processes import output_of, start
from harness.servers import Server
from receiver_test import CERTIFICATES, UPLOAD
from smb_test import set_up_smb

CENTRE = "192.0.2.1"
SHARES = """
[global]
    server role = standalone server
    load printers = no
    disable spoolss = yes
    smb ports = 445
[projects]
    path = /volume1/projects
    read only = no
[photo]
    path = /volume1/photo
    read only = no
"""


def make_folders_its_own(node):
    for folder in ("/run", "/var/log", "/var/lib/samba", "/var/cache/samba", "/etc/samba", "/volume1", "/volume2"):
        output_of(["mount", "-t", "tmpfs", "own", folder])
    for folder in ("/run/samba", "/var/log/samba", "/var/lib/samba/private"):
        os.mkdir(folder)
    write_file("/run/machine-id", f"{node.encode().hex():0<32}\n")
    output_of(["mount", "--bind", "/run/machine-id", "/etc/machine-id"])
    for folder in ("/volume1/projects", "/volume1/projects/x", "/volume1/photo"):
        os.mkdir(folder)
        os.chmod(folder, 0o1777)
    write_file("/volume1/photo/album.txt", b"by bob", 0o666)


def set_up_network(address):
    print("ready", flush=True)
    sys.stdin.readline()
    for argv in (["link", "set", "lo", "up"], ["link", "set", "uplink", "up"],
                 ["address", "add", address, "peer", CENTRE, "dev", "uplink"],
                 ["route", "add", "192.0.2.0/24", "via", CENTRE, "dev", "uplink"]):
        output_of(["ip", *argv])


def main(node, address):
    socket.sethostname(node)
    make_folders_its_own(node)
    set_up_network(address)
    set_up_smb(SHARES)
    journal = Journal()
    start(["vorn-openfiles", "events", "--journal", "--heartbeat", "1"])
    Server("smbd", ["/usr/sbin/smbd", "--foreground", "--no-process-group"], 445)
    start([UPLOAD, "--url=https://centre:19533", f"--directory={journal.folder}", "--follow",
           "--save-state=/run/sent", f"--key={CERTIFICATES}/{node}.key", f"--cert={CERTIFICATES}/{node}.pem",
           f"--trust={CERTIFICATES}/ours.pem"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    print("ready", flush=True)
    sys.stdin.read()


if __name__ == "__main__":
    sys.dont_write_bytecode = True
    main(*sys.argv[1:])
