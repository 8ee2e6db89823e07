#!/usr/bin/env bash
# Builds what a machine of scripts/vm.sh boots: a storage host as Debian has it.
#
#   scripts/vm/image.sh RELEASE FOLDER
#
# What FOLDER, which must not exist before, gets:
#   - disk.img, volume1.img, volume2.img: the file systems of /, /volume1 (ext4) and /volume2 (btrfs)
#   - vmlinuz, initrd.img: Debian's own kernel
#   - key: lets in as root, alice and bob; the machine's root has it too
#   - known_hosts: the machine's key, by the name vorn-vm
#   - build.log: what debootstrap, apt and others have said
#
# In the machine: sshd, smbd and the daemon of rsync with the shares photo (/volume1/photo) and
# projects (/volume2/projects), vsftpd; their clients; what the project needs to run, but neither
# the project nor what builds it. Users alice and bob have the password of tests/harness. When all
# is up, the machine says so on the port "vorn.ready", by one line with the state of its system.
#
# Needs root and the group vm of scripts/install-deps.sh. FOLDER appears when it is whole.
set -euo pipefail

scripts=$(dirname "$(realpath "$0")")
project=$(realpath "$scripts/../..")

packages=(
    # a host
    apparmor
    dbus
    e2fsprogs
    initramfs-tools
    iproute2
    kmod
    libpam-systemd
    linux-image-amd64
    procps
    systemd-sysv
    udev
    zstd
    # servers
    openssh-server
    prometheus-node-exporter
    rsync
    samba
    vsftpd
    # clients
    cifs-utils
    curl
    lftp
    openssh-client
    smbclient
    # what tests are made of, and what helps to understand them
    btrfs-progs
    jq
    lsof
    psmisc
    python3
    strace
)

# What the project is linked with. Their names change with each release.
declare -A libraries
libraries[bookworm]='libboost-filesystem1.74.0 libfmt9 libjsoncpp25 libmnl0 libutf8proc2'
libraries[trixie]='libboost-filesystem1.83.0 libfmt10 libjsoncpp26 libmnl0 libutf8proc3'

fail() {
    echo "vm/image: $1" >&2
    exit "${2:-1}"
}

in_root() { # COMMAND [ARG...]
    chroot "$root" env LC_ALL=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin "$@"
}

# --- The host's settings -------------------------------------------------------------------------

set_up_system() {
    echo storage >"$root/etc/hostname"
    printf '127.0.0.1 localhost storage\n::1 localhost\n' >"$root/etc/hosts"
    cat >"$root/etc/fstab" <<'END'
LABEL=root / ext4 defaults 0 1
LABEL=volume1 /volume1 ext4 defaults 0 2
LABEL=volume2 /volume2 btrfs defaults 0 0
END
    mkdir "$root/volume1" "$root/volume2"
    # The address that qemu's network forwards to; there is nobody else to talk to.
    cat >"$root/etc/systemd/network/10-vm.network" <<'END'
[Match]
Type=ether
[Network]
Address=10.0.2.15/24
LinkLocalAddressing=no
IPv6AcceptRA=no
END
    in_root systemctl --quiet enable systemd-networkd.service
}

set_up_readiness() {
    cat >"$root/etc/systemd/system/vm-ready.service" <<'END'
[Unit]
Description=Word to whoever has booted this machine that it is up
Requires=dev-virtio\x2dports-vorn.ready.device
After=dev-virtio\x2dports-vorn.ready.device

[Service]
Type=exec
ExecStart=/bin/sh -c 'systemctl is-system-running --wait >/dev/virtio-ports/vorn.ready || :'

[Install]
WantedBy=multi-user.target
END
    in_root systemctl --quiet enable vm-ready.service
}

add_user() { # NAME PASSWORD
    in_root useradd --create-home --shell /bin/bash "$1"
    in_root chpasswd <<<"$1:$2"
    in_root smbpasswd -s -a "$1" <<<"$2"$'\n'"$2"
    let_in "$1" "/home/$1"
}

let_in() { # USER HOME
    install -d -m 0700 "$root$2/.ssh"
    install -m 0600 "$target/key.pub" "$root$2/.ssh/authorized_keys"
    in_root chown -R "$1:$1" "$2/.ssh"
}

set_up_users() {
    local password user
    password=$(sed -n 's/^PASSWORD = "\(.*\)"$/\1/p' "$project/tests/harness/sample_host.py")
    [[ -n $password ]] || fail "tests/harness/sample_host.py has no password"
    ssh-keygen -q -t ed25519 -N '' -C vorn-vm -f "$target/key"
    for user in alice bob; do
        add_user "$user" "$password"
    done
    let_in root /root
    install -m 0600 "$target/key" "$root/root/.ssh/id_ed25519"
    sed 's/^/vorn-vm /' "$root/etc/ssh/ssh_host_ed25519_key.pub" >"$target/known_hosts"
    rm "$target/key.pub"
}

set_up_servers() {
    cat >>"$root/etc/samba/smb.conf" <<'END'

[photo]
   path = /volume1/photo
   read only = no
[projects]
   path = /volume2/projects
   read only = no
END
    cat >"$root/etc/rsyncd.conf" <<'END'
uid = alice
gid = alice
read only = no
[photo]
path = /volume1/photo
[projects]
path = /volume2/projects
END
    printf 'write_enable=YES\nlocal_root=/volume1/photo\n' >>"$root/etc/vsftpd.conf"
    # Not every release starts it unasked.
    in_root systemctl --quiet enable rsync.service
}

# --- The image -----------------------------------------------------------------------------------

make_volumes() {
    install -d "$target/volume1" "$target/volume2"
    install -d -m 1777 "$target/volume1/photo" "$target/volume2/projects"
    truncate -s 1G "$target/volume1.img" "$target/volume2.img"
    mkfs.ext4 -q -L volume1 -d "$target/volume1" "$target/volume1.img"
    mkfs.btrfs -q -L volume2 --rootdir "$target/volume2" "$target/volume2.img"
    rm -r "$target/volume1" "$target/volume2"
}

make_disk() {
    cp "$root"/boot/vmlinuz-* "$target/vmlinuz"
    cp "$root"/boot/initrd.img-* "$target/initrd.img"
    truncate -s 6G "$target/disk.img"
    mkfs.ext4 -q -L root -d "$root" "$target/disk.img"
    rm -r "$root"
}

build() {
    # shellcheck disable=SC2086 # several packages
    "$scripts/tree.sh" make "$release" "$root" "${packages[@]}" ${libraries[$release]}
    set_up_system
    set_up_readiness
    set_up_users
    set_up_servers
    make_volumes
    make_disk
}

clean_up() {
    local status=$?
    [[ $status -eq 0 ]] || tail -n 20 "$target/build.log" >&"$errors"
    rm -rf --one-file-system "$target"
}

[[ $# -eq 2 ]] || fail "usage: $0 RELEASE FOLDER" 2
release=$1 finished=$2
[[ -v libraries[$release] ]] || fail "no release '$release', but ${!libraries[*]}" 2
[[ $EUID -eq 0 ]] || fail "must be run as root" 2
[[ ! -e $finished ]] || fail "$finished exists already"

target=$(mktemp --directory "$finished.XXXXXX")
root=$target/root
exec {errors}>&2 >"$target/build.log" 2>&1
trap clean_up EXIT
trap 'exit 1' HUP INT TERM
build
chmod 0755 "$target"
mv --no-target-directory "$target" "$finished"
