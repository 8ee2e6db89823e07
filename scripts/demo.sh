#!/usr/bin/env bash
# Shows the open files of this host's volumes: installs what the build needs, builds, prints the
# table.
#
#   scripts/demo.sh
#
# A host without /volume* mounts gets a private sample host (scripts/sample-host.sh) with two
# volumes, a few shares and real processes that hold files there. Nothing of it stays but build/demo.
#
# Needs root or sudo, and says before anything is installed or built what else is missing.
set -euo pipefail

scripts=$(dirname "$(realpath "$0")")
project=$(dirname "$scripts")
build=$project/build/demo # nobody else's, whose options and failures would be its own
as_root=()

fail() {
    echo "demo: $1" >&2
    exit 1
}

require_rights() {
    if [[ $EUID -ne 0 ]]; then
        command -v sudo >/dev/null || fail "needs root: other users' files are not shown to anybody else"
        sudo true || fail "needs root, and sudo refuses it"
        as_root=(sudo)
    fi
    host_has_volumes || "${as_root[@]}" "$scripts/sample-host.sh" --check
}

build_release() {
    "$scripts/install-deps.sh" build run
    local log
    log=$(mktemp)
    # shellcheck disable=SC2064 # the name is known now
    trap "rm -f '$log'" EXIT
    echo "Building in $build ..."
    if ! (cd "$project" && cmake --preset release -B "$build" -DVORN_BUILD_TESTS=OFF \
        -DVORN_BUILD_BENCH=OFF && cmake --build "$build") >"$log" 2>&1; then
        cat "$log" >&2
        exit 1
    fi
}

show() { # COMMAND [ARG...]
    printf '\n$ %s\n' "$*"
    "$@"
}

host_has_volumes() {
    findmnt --noheadings --raw --output TARGET | grep -q '^/volume[^/]'
}

# --- Inside the sample host ----------------------------------------------------------------------

# Starts a process in a control group below SLICE that holds what its redirections say.
hold_in() { # SLICE/UNIT COMMAND [ARG...]
    local group=/sys/fs/cgroup/systemd/$1
    shift
    mkdir -p "$group"
    (
        echo "$BASHPID" >"$group/cgroup.procs"
        exec "$@" >/dev/null
    ) &
}

populate() {
    mkdir -p /volume1/{photo/2024,projects/.git} /volume2/backup/nightly
    local name
    for name in photo/2024/beach.jpg photo/2024/sunset.jpg projects/plan.ods projects/.git/index; do
        echo sample >"/volume1/$name"
    done
    echo sample >/volume2/backup/nightly/home.tar

    # Real clients' processes would sit in the slices of their servers in just this way.
    hold_in SMBService.slice/smbd.service tail -f /volume1/photo/2024/beach.jpg
    hold_in SMBService.slice/smbd.service sleep infinity 5</volume1/photo/2024
    hold_in sshd.slice/ssh.service tail -f /volume1/projects/plan.ods
    hold_in ftpd.slice/vsftpd.service sleep infinity 4>>/volume1/photo/2024/sunset.jpg
    hold_in system.slice/cron.service sleep infinity 3>/volume2/backup/nightly/home.tar
    hold_in user.slice tail -f /volume1/projects/.git/index
    # A file that is gone from its folder but not from the disk, a hidden one, and one whose name
    # would clear the screen and forge a line if it were printed as it is.
    hold_in SMBService.slice/smbd.service sleep infinity 6>/volume1/photo/upload.tmp
    mkdir /volume1/photo/.snapshot
    hold_in user.slice sleep infinity 3>/volume1/photo/.snapshot/beach.jpg
    hold_in ftpd.slice/vsftpd.service sleep infinity \
        7>$'/volume1/photo/\e[2J\e[31mall is well\nroot'
}

# Waits until every process of populate has become the command that holds its files.
await_holders() {
    local pid
    for pid in $(jobs -p); do
        until [[ $(readlink "/proc/$pid/exe") == */@(sleep|tail) ]]; do
            kill -0 "$pid"
        done
    done
    rm /volume1/photo/upload.tmp
}

demo_in_sample_host() {
    # The sample host's /usr is private: nothing is installed outside of it.
    cmake --install "$build" >/dev/null
    ldconfig
    shopt -s extglob
    populate
    await_holders
    show vorn-openfiles
    show vorn-openfiles --by volume
}

case ${1-} in
    '')
        require_rights
        build_release
        if host_has_volumes; then
            show "${as_root[@]}" "$build/bin/vorn-openfiles" --by volume
        else
            "${as_root[@]}" "$scripts/sample-host.sh" "$(realpath "$0")" --inside
        fi
        ;;
    --inside) demo_in_sample_host ;;
    *)
        echo "usage: $0" >&2
        exit 2
        ;;
esac
