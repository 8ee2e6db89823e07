#!/usr/bin/env bash
# Installs what Debian 12 packages the project needs, and only those that are missing.
#
#   scripts/install-deps.sh [GROUP...]
#
# Groups: build, run, test, e2e, bench, vm. Without a group: all but vm.
#
# Needs root or sudo when something is missing, nothing otherwise: a second run touches neither
# network nor disk. Servers that the end-to-end tests start for themselves are installed, but not
# started.
set -euo pipefail

# One package a line, sorted within its group.
declare -A packages

# To build the library, the stand-in and the command.
packages[build]='
    cmake
    g++
    libboost-dev
    libboost-filesystem-dev
    libboost-system-dev
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
    clang
    clang-format
    clang-tidy
    cppcheck
    devscripts
    fish
    gcovr
    jq
    libclang-rt-14-dev
    libgmock-dev
    libgtest-dev
    locales
    mandoc
    python3
    python3-jsonschema
    samba-common-bin
    shellcheck
    systemd
    valgrind
    zsh
'

# Real servers, clients and tools for the end-to-end tests.
packages[e2e]='
    curl
    dropbear-bin
    lsof
    openssh-client
    openssh-server
    procps
    prometheus
    prometheus-node-exporter
    psmisc
    rsync
    rsyslog
    samba
    smbclient
    vsftpd
'

# Benchmarks, the peers that they measure beside, plots.
packages[bench]='
    gnuplot-nox
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

[[ $# -gt 0 ]] || set -- build run test e2e bench
listed=$(packages_of "$@")
mapfile -t wanted < <(missing <<<"$listed")
if [[ ${#wanted[@]} -eq 0 ]]; then
    exit 0
fi

echo "Installing: ${wanted[*]}"
hold_services
apt_get update
apt_get install --no-install-recommends "${wanted[@]}"
