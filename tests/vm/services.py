"""What services are called on a host with control groups v2 alone."""

# Whether they have names there at all, without any hierarchy name=systemd.
NAMED_ON_CONTROL_GROUPS_V2 = False

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


def name_of(protocol):
    return NAMES[protocol] if NAMED_ON_CONTROL_GROUPS_V2 else INTERNAL
