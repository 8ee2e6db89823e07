#!/usr/bin/env bash
# Installs what packages of Debian 12 or 13 the project needs, and only those that are missing.
#
#   scripts/install-deps.sh [GROUP...]
#
# Groups: build, run, test, e2e, centre, page, bench, vm. Without a group: all but page and vm.
#
# Needs root or sudo when something is missing, nothing otherwise: a second run touches neither
# network nor disk. Servers that the end-to-end tests start for themselves are installed, but not
# started.
set -euo pipefail

# One package a line, sorted within its group.
declare -A packages

# To build the library, the stand-in and the command.
packages[build]='
    bpftool
    clang
    cmake
    g++
    libboost-dev
    libbpf-dev
    libcli11-dev
    libfmt-dev
    libjsoncpp-dev
    libmnl-dev
    libsystemd-dev
    libutf8proc-dev
    ninja-build
    pkg-config
'

# To run the sample host.
packages[run]='
    iproute2
    mount
    util-linux
'

# Test framework, sanitizers, analysers, formatters.
packages[test]='
    bash-completion
    btrfs-progs
    clang
    clang-format
    clang-tidy
    cppcheck
    devscripts
    e2fsprogs
    fish
    gcovr
    jq
    libboost-filesystem-dev
    libclang-rt-dev
    libgmock-dev
    libgtest-dev
    lld
    locales
    lsof
    man-db
    mandoc
    mold
    psmisc
    python3
    python3-jsonschema
    samba-common-bin
    shellcheck
    systemd
    valgrind
    xfsprogs
    zsh
'

# Real servers, clients and tools for the end-to-end tests.
packages[e2e]='
    clustershell
    curl
    dropbear-bin
    libpcre2-posix3
    lsof
    openbsd-inetd
    openssh-client
    openssh-server
    procps
    prometheus
    prometheus-alertmanager
    prometheus-node-exporter
    psmisc
    rsync
    rsyslog
    samba
    smbclient
    vsftpd
'

# The centre that keeps the events of many hosts: its engines, and what its tests need.
packages[centre]='
    nginx
    openssl
    postgresql
    python3
    python3-psycopg
    python3-systemd
    systemd-journal-remote
'

# The page for Cockpit: to build it and to look at it in a browser.
packages[page]='
    appstream
    chromium
    cockpit-bridge
    cockpit-system
    cockpit-ws
    fonts-dejavu-core
    mandoc
    samba
    smbclient
    sudo
'

# Benchmarks, the peers that they measure beside, plots.
packages[bench]='
    fatrace
    gnuplot-nox
    inotify-tools
    libbenchmark-dev
    lsof
    psmisc
    python3
    util-linux-extra
    valgrind
'

# Machines of one's own (scripts/vm.sh).
packages[vm]='
    btrfs-progs
    debootstrap
    e2fsprogs
    iproute2
    openssh-client
    qemu-system-x86
    qemu-utils
    util-linux
'

# Whoever has node from elsewhere keeps it: Debian's npm goes with Debian's node only.
for program in nodejs npm; do
    command -v "${program%js}" >/dev/null || packages[page]+=" $program"
done

# What Debian 13 names otherwise: gold has a package of its own there, and libraries that ProFTPD
# needs were built anew for times beyond 2038.
if [[ $(sed -n 's/^VERSION_ID="\?\([0-9]*\).*/\1/p' /etc/os-release) -ge 13 ]]; then
    packages[test]+=' binutils-gold'
    packages[e2e]+=' libhiredis1.1.0 libmemcached11t64 libmemcachedutil2t64'
else
    packages[e2e]+=' libhiredis0.14 libmemcached11 libmemcachedutil2'
fi

policy=/usr/sbin/policy-rc.d

fail() {
    echo "install-deps: $1" >&2
    exit "${2:-1}"
}

packages_of() { # GROUP...
    local group
    for group in "$@"; do
        [[ -v packages[$group] ]] || fail "no group named '$group'" 2
        xargs -n 1 <<<"${packages[$group]}"
    done | sort -u
}

missing() { # reads package names, one a line
    local installed
    installed=$(dpkg-query --show --showformat '${db:Status-Status} ${Package}\n' |
        sed -n 's/^installed //p' | sort -u)
    comm -23 - <(printf '%s\n' "$installed")
}

as_root() {
    if [[ $EUID -eq 0 ]]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        fail "packages are missing and this is neither root nor is there sudo: ${wanted[*]}"
    fi
}

# A package's own script asks policy-rc.d before it starts a service; 101 is "forbidden".
hold_services() {
    [[ ! -e $policy ]] || as_root mv "$policy" "$policy.vorn-saved"
    trap release_services EXIT
    printf '#!/bin/sh\nexit 101\n' | as_root tee "$policy" >/dev/null
    as_root chmod 0755 "$policy"
}

release_services() {
    as_root rm -f "$policy"
    [[ ! -e $policy.vorn-saved ]] || as_root mv "$policy.vorn-saved" "$policy"
}

apt_get() {
    as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get --quiet --yes -o DPkg::Lock::Timeout=600 "$@"
}

[[ $# -gt 0 ]] || set -- build run test e2e centre bench
listed=$(packages_of "$@")

# Debian lets no two FTP servers be installed: this one is unpacked beside the other.
proftpd=/opt/proftpd
unpack_proftpd() {
    local folder
    folder=$(mktemp --directory)
    (cd "$folder" && apt_get download proftpd-core)
    as_root dpkg-deb --extract "$folder"/proftpd-core_*.deb "$proftpd"
    rm -r "$folder"
}

wants_proftpd() { # GROUP...
    [[ " $* " == *' e2e '* && ! -x $proftpd/usr/sbin/proftpd ]]
}

mapfile -t wanted < <(missing <<<"$listed")
if [[ ${#wanted[@]} -eq 0 ]]; then
    ! wants_proftpd "$@" || unpack_proftpd
    exit 0
fi

echo "Installing: ${wanted[*]}"
hold_services
apt_get update
apt_get install --no-install-recommends "${wanted[@]}"
! wants_proftpd "$@" || unpack_proftpd
