"""Services of this host: what they are called, where they run, how long to wait for them."""

from harness.processes import output_of
from harness.servers import listening
from harness.waiting import wait_until

INTERNAL = "Internal service"

#: Client's protocol: name of its service.
NAMES = {
    "SMB": "SMB",
    "SSH": "SSH",
    "FTP": "FTP",
    "rsync": "rsync",
}

#: Unit: the slice that it runs in once it has been started anew.
SLICES = {
    "smbd": "SMBService.slice",
    "ssh": "sshd.slice",
    "vsftpd": "ftpd.slice",
    "rsync": "rsyncd.slice",
}

PORTS = {"SSH": 22, "SMB": 445, "FTP": 21, "rsync": 873}


def await_servers():
    for protocol, port in PORTS.items():
        wait_until(lambda port=port: listening(port), f"the server of {protocol}")


def property_of(unit, name):
    return output_of(["systemctl", "show", "--value", f"--property={name}", unit]).strip()


def main_process(unit):
    return int(property_of(unit, "MainPID"))
