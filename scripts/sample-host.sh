#!/usr/bin/env bash
# Runs a command as root in a private sample host and passes its exit status on.
#
#   scripts/sample-host.sh COMMAND [ARG...]
#   scripts/sample-host.sh --check            says what is missing to make one, does nothing
#
# What COMMAND finds:
#   - two empty volumes (tmpfs) on /volume1 and /volume2, none of the host's own /volume* mounts
#   - the host's files everywhere else, writable, each write private and gone at the end (overlays
#     whose upper layer is a tmpfs): users, smb.conf, unit files and databases can be edited freely
#   - two exceptions: an empty /run, and the project's own folder, which is the real one, so that
#     results and coverage data written there stay
#   - its own processes only (/proc), its own network with nothing but "lo", its own /dev/pts,
#     /dev/shm, IPC objects and host name
#   - its own control-group hierarchy "name=systemd" on /sys/fs/cgroup/systemd whose root is the
#     root that /proc/<pid>/cgroup shows: a process put into /sys/fs/cgroup/systemd/sshd.slice
#     reads "name=systemd:/sshd.slice"
#   - /etc/vorn/private-volumes, by which a PID namespace says that nobody outside uses its volumes
#   - VORN_SAMPLE_HOST=1 in the environment
#
# Needs root with CAP_SYS_ADMIN, a kernel with overlayfs, util-linux and iproute2. A container will
# do, and so will a host that itself runs on control groups v2 alone.
#
# Nothing is left behind: every mount point lives in the private mount namespace, every process dies
# with the PID namespace, and that dies with this script, however it ends. Only the control group
# outlives its processes; a janitor in a session of its own removes it, even when this script is
# killed with SIGKILL. Where the janitor was killed as well, the next run does its work.
#
# Exit status: that of COMMAND; 2 when called wrongly or without the rights; 1 when the sample host cannot
# be made.
set -euo pipefail

self=$(realpath "$0")
project=$(dirname "$(dirname "$self")")

# Both directories exist in the private mount namespace alone. /run is the one folder that every
# Debian has and whose content the sample host does not take over.
scratch=/run
hierarchy=$scratch/hierarchy

fail() {
    echo "sample-host: $1" >&2
    exit "${2:-1}"
}

mount_systemd_hierarchy() { # DIRECTORY
    mkdir -p "$1"
    mount -t cgroup -o none,name=systemd cgroup "$1"
}

# Containers mostly take away one or the other.
require_rights() {
    [[ $EUID -eq 0 ]] || fail "must be run as root" 2
    local count capabilities
    read -r _ _ count </proc/self/uid_map
    [[ $count -eq 4294967295 ]] ||
        fail "root of a user namespace may not mount control groups; it has to be the host's own root" 2
    capabilities=$(sed -n 's/^CapEff:[[:space:]]*/0x/p' /proc/self/status)
    ((capabilities >> 21 & 1)) ||
        fail "root lacks CAP_SYS_ADMIN here; a container gets it by --cap-add SYS_ADMIN" 2
}

# --- Stage 1, in the caller's PID namespace: the control group and its removal -------------------

remove_group() { # GROUP
    find "$1" -depth -type d -exec rmdir {} + 2>/dev/null || true
}

# Groups of runs that are gone, whose janitor was killed too.
remove_stale_groups() {
    local group
    for group in "$hierarchy"/vorn-sample-*; do
        [[ -d /proc/${group##*-} ]] || remove_group "$group"
    done
}

# Waits until standard input ends, that is until the script is gone, then removes the group. The
# processes in it are being killed with their PID namespace meanwhile, hence the patience.
janitor() { # GROUP
    trap '' HUP INT TERM
    cat >/dev/null
    local attempt
    for ((attempt = 0; attempt < 600; attempt++)); do
        remove_group "$1"
        [[ -d $1 ]] || return 0
        sleep 0.05
    done
    echo "sample-host: control group $(basename "$1") is still in use" >&2
}

run_in_group() { # GROUP COMMAND [ARG...]
    local group=$1
    shift
    echo "$BASHPID" >"$group/cgroup.procs"
    exec setpriv --pdeathsig KILL \
        unshare --mount --pid --net --uts --ipc --cgroup --fork --kill-child \
        "$self" --build "$@"
}

keep() { # COMMAND [ARG...]
    mount -t tmpfs -o mode=0755 sample-host "$scratch"
    mount_systemd_hierarchy "$hierarchy" || fail "cannot mount the name=systemd hierarchy"
    remove_stale_groups
    local group=$hierarchy/vorn-sample-$$
    mkdir "$group"

    local lifeline status=0
    exec {lifeline}> >(exec setsid "$self" --janitor "$group")
    local janitor_pid=$!
    (
        exec {lifeline}>&-
        run_in_group "$group" "$@"
    ) || status=$?
    exec {lifeline}>&-
    wait "$janitor_pid" || true
    exit "$status"
}

# --- Stage 2, first process of the sample host: its root file system ------------------------------

layers=0

# Lays a private writable layer over what the host has mounted at MOUNT_POINT; what cannot be
# overlaid (single files, some file systems) is shown read-only.
cover() { # MOUNT_POINT
    local layer=$scratch/layer.$layers target=$scratch/root${1%/}
    layers=$((layers + 1))
    mkdir -p "$layer/upper" "$layer/work"
    chmod --reference="$1" "$layer/upper"
    if [[ -d $1 ]] && mount -t overlay -o "lowerdir=$1,upperdir=$layer/upper,workdir=$layer/work" \
        sample-host "$target" 2>/dev/null; then
        return
    fi
    mount --bind "$1" "$target" && mount -o remount,bind,ro "$target"
}

# The mounts below / that belong into the sample host, parents first.
host_mount_points() {
    findmnt --noheadings --raw --output TARGET,FSTYPE |
        while read -r target type; do
            printf -v target '%b' "$target" # findmnt writes blanks as \x20
            case $target in
                / | /proc | /proc/* | /sys | /sys/* | /dev | /dev/* | /run | /run/* | /volume*) ;;
                *) [[ $type == autofs ]] || printf '%s\n' "$target" ;;
            esac
        done | awk '!seen[$0]++'
}

build_root() {
    local root=$scratch/root target
    mkdir "$root"
    cover /
    while IFS= read -r target; do
        cover "$target" || echo "sample-host: $target is left out" >&2
    done < <(host_mount_points)
    if [[ $project != / ]]; then
        mount --rbind "$project" "$root$project"
        # Tests run as other users too, also where the project lies in root's own home.
        target=$(dirname "$project")
        while [[ $target != / ]]; do
            chmod a+x "$root$target"
            target=$(dirname "$target")
        done
    fi

    mkdir -p "$root/volume1" "$root/volume2"
    mount -t tmpfs -o mode=0755 volume1 "$root/volume1"
    mount -t tmpfs -o mode=0755 volume2 "$root/volume2"
    mount -t tmpfs -o mode=0755 run "$root/run"
    # Its own volumes: the processes outside of it, which it doesn't see, hold nothing there.
    mkdir -p "$root/etc/vorn"
    touch "$root/etc/vorn/private-volumes"
}

build_kernel_views() {
    local root=$scratch/root
    mount -t proc proc "$root/proc"
    mount -t sysfs sysfs "$root/sys"
    mount -t tmpfs -o mode=0755 cgroup "$root/sys/fs/cgroup"
    mount_systemd_hierarchy "$root/sys/fs/cgroup/systemd"
    # Its own, so that a test can listen on /dev/log.
    cover /dev
    mount -t tmpfs -o mode=1777 shm "$root/dev/shm"
    mount -t devpts -o newinstance,ptmxmode=0666,mode=0620,gid=5 devpts "$root/dev/pts"
    ip link set lo up
}

build() { # COMMAND [ARG...]
    umount "$hierarchy"
    build_root || fail "cannot build the root file system"
    build_kernel_views || fail "cannot mount /proc, /sys and /dev"
    local folder=$PWD

    # Not chroot: in that the kernel refuses user namespaces, which users reach for first.
    cd "$scratch/root"
    mkdir old
    pivot_root . old
    umount --lazy /old
    rmdir /old

    # Not exec: the first process of a PID namespace ignores signals and has to collect orphans,
    # which is this shell's work and not that of COMMAND.
    local status=0
    (
        cd "$folder" 2>/dev/null || cd /
        VORN_SAMPLE_HOST=1 exec "$@"
    ) || status=$?
    exit "$status"
}

case ${1-} in
    --janitor) shift && janitor "$@" ;;
    --keep) shift && keep "$@" ;;
    --build) shift && build "$@" ;;
    --check) require_rights ;;
    '' | -*)
        echo "usage: $0 COMMAND [ARG...] | --check" >&2
        exit 2
        ;;
    *)
        require_rights
        exec unshare --mount --propagation private "$self" --keep "$@"
        ;;
esac
