"""What services are called on a host with control groups v2 alone."""

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
