#!/usr/bin/env bash
# Runs the tests of hostile users in a root file system of their own.
#
#   run.sh COMMAND
#
# Not in a sample host: that is a chroot, in which the kernel refuses user namespaces, and they are
# what a hostile user reaches for first. Here the root is changed by pivot_root.
set -euo pipefail

self=$(realpath "$0")
project=$(dirname "$(dirname "$(dirname "$self")")")

if [[ $EUID -ne 0 ]]; then
    echo "skipped: a root file system of one's own takes root"
    exit 77
fi
if [[ $1 != --inside ]]; then
    root=$(mktemp -d)
    trap 'rmdir "$root"' EXIT
    unshare --mount --propagation private --pid --net --ipc --fork --kill-child \
        "$self" --inside "$(realpath "$1")" "$root"
    exit
fi

command=$2
root=$3
mount -t tmpfs -o mode=0755 root "$root"
cd "$root"
mkdir -p etc proc tmp run var/lib volume1 volume2 old ".$project"
chmod 1777 tmp
for folder in usr dev; do
    mkdir -p "$folder"
    mount --rbind "/$folder" "$folder"
done
for link in bin lib lib64 sbin; do
    ln -s "usr/$link" "$link"
done
cp /etc/passwd /etc/group /etc/nsswitch.conf /etc/ld.so.cache etc/
mount --rbind "$project" ".$project"
mount -t proc proc proc
mount -t tmpfs -o mode=0755 volume1 volume1
mount -t tmpfs -o mode=0755 volume2 volume2
mkdir -m 1777 volume1/photo
pivot_root . old
umount --lazy /old
ip link set lo up

if ! setpriv --reuid=65534 --regid=65534 --clear-groups unshare --user true; then
    echo "skipped: the kernel refuses user namespaces to users, as in a chroot or by sysctl"
    exit 77
fi

export VORN_OPENFILES=$command PYTHONDONTWRITEBYTECODE=1
export PYTHONPATH=$project/tests/cli/command
cd "$project/tests/hostile"
/usr/bin/python3 -m unittest -v test_hostile
