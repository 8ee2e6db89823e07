"""Volumes with real file systems, in files on a volume of the sample host."""

import os

from harness.files import touch
from harness.processes import output_of


class Volume:
    """Made once, mounted as often as wanted."""

    def __init__(self, point, source, options=()):
        self.point = point
        self.source = source
        self.options = options
        os.makedirs(point, exist_ok=True)
        self.mount()

    def mount(self):
        output_of(["mount", *self.options, self.source, self.point])

    def is_mounted(self):
        return os.path.ismount(self.point)


def looped(name, kind, mega_bytes):
    """A loop device with a file system on it."""
    image = f"/volume2/{name}.img"
    with open(image, "wb") as file:
        file.truncate(mega_bytes << 20)
    device = output_of(["losetup", "--find", "--show", image]).strip()
    output_of([f"mkfs.{kind}", "-q", device])
    return device


def ext4(point="/volume3"):
    return Volume(point, looped("ext4", "ext4", 32))


def btrfs(point="/volume4"):
    """A subvolume of a file system; below it lies another, with a device number of its own."""
    device = looped("btrfs", "btrfs", 120)
    whole = Volume("/mnt/btrfs", device)
    output_of(["btrfs", "subvolume", "create", "/mnt/btrfs/data"])
    output_of(["btrfs", "subvolume", "create", "/mnt/btrfs/data/sub"])
    output_of(["btrfs", "subvolume", "create", "/mnt/btrfs/other"])
    output_of(["umount", whole.point])
    return Volume(point, device, ["-o", "subvol=data"])


def overlay(point="/volume5"):
    """Its layers are on different file systems, so files have device numbers that no mount has."""
    lower = Volume("/mnt/lower", "lower", ["-t", "tmpfs"])
    touch(f"{lower.point}/lower/file", b"x" * 4096)
    for folder in ("/volume2/upper", "/volume2/work"):
        os.makedirs(folder)
    layers = "lowerdir=/mnt/lower,upperdir=/volume2/upper,workdir=/volume2/work"
    return Volume(point, "overlay", ["-t", "overlay", "-o", layers])
