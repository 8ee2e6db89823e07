#!/usr/bin/env bash
# In a clean root: installs the packages, uses them, and is rid of them.
#
#   tests/debian/life.sh PACKAGES
set -euo pipefail

packages=$1
tests=$(dirname "$(realpath "$0")")
names=(cockpit-vorn-openfiles libvornfilehandle-dev libvornfilehandle7 libvornplatform1 vorn-openfiles
    vorn-services vorn-slices)
metrics=/var/lib/prometheus/node-exporter
wants=/etc/systemd/system

fail() {
    echo "FAILED: $1" >&2
    exit 1
}

# All but what packages' own tools write down.
all_files() {
    find / -xdev \( -path /tmp -o -path /var/lib/dpkg -o -path /var/log -o -path /var/cache \) -prune \
        -o -printf '%p %y %m %u %g %s %l\n' | sed -E 's/ d ([0-7]+ \w+ \w+) [0-9]+ / d \1 /' | sort
}

install_all() { # prints what dpkg and the packages say
    local debs=() name
    for name in "${names[@]}"; do
        debs+=("$packages/${name}"_*.deb)
    done
    dpkg --install "${debs[@]}"
}

# What whoever enables the metrics and the daemon leaves behind.
enable_units() {
    echo metrics >"$metrics/vorn_openfiles.prom"
    ln -s /usr/lib/systemd/system/vorn-openfiles-metrics.timer "$wants/timers.target.wants"
    ln -s /usr/lib/systemd/system/vorn-slices.service "$wants/multi-user.target.wants"
    mkdir -p /run/vorn/services
}

try_command() {
    ! ldd /usr/sbin/vorn-openfiles | grep 'not found' || fail "the command lacks libraries"
    vorn-openfiles --version
    # Nothing is mounted here, and it says so.
    said=$(vorn-openfiles 2>&1) && fail "files on no volume: $said"
    grep 'no data volume is mounted' <<<"$said" || fail "the command says nothing: $said"
}

try_page() {
    cockpit-bridge --packages | grep '^vorn-openfiles\b.*Open files' || fail "Cockpit doesn't know the page"
}

try_development() {
    # shellcheck disable=SC2046 # flags are words
    c++ -std=c++17 "$tests/../package/consumer/own_operation.cpp" -o /tmp/own_operation \
        $(pkg-config --cflags --libs vornfilehandle)
    /tmp/own_operation | grep -x 'folder: 1' || fail "a program can't use the library"
    cmake -G Ninja -S "$tests/../package/consumer" -B /tmp/consumer
    cmake --build /tmp/consumer
    /tmp/consumer/own_operation | grep -x 'folder: 1' || fail "a program built by CMake can't use it"
}

# The library is content with whoever says that it supplies the platform.
try_another_platform() {
    mkdir -p /tmp/another/DEBIAN
    printf '%s\n' 'Package: another-platform' 'Version: 1' 'Architecture: all' \
        'Maintainer: tests <tests@localhost>' 'Provides: vornplatform-1' 'Description: another one' \
        >/tmp/another/DEBIAN/control
    dpkg-deb --build /tmp/another /tmp/another.deb
    dpkg --install /tmp/another.deb "$packages"/libvornfilehandle7_*.deb
    dpkg --purge libvornfilehandle7 another-platform
}

mkdir -p "$metrics" "$wants"/{timers,multi-user}.target.wants
all_files >/tmp/before
try_another_platform

said=$(install_all)
echo "$said"
[[ $(grep -c 'next start on\|systemctl restart' <<<"$said") -eq 2 ]] ||
    fail "nobody is told what takes effect when"
try_command
try_page
try_development
enable_units
# The same again is an upgrade to maintainer scripts.
said=$(install_all)
! grep 'next start on' <<<"$said" || fail "an upgrade says what the installation has said"
dpkg --remove "${names[@]}"
[[ ! -e $metrics/vorn_openfiles.prom ]] || fail "metrics of a command that is gone"
[[ ! -e /run/vorn ]] || fail "the hierarchy's folder without the daemon"
dpkg --purge "${names[@]}"
diff --unified --label before --label after /tmp/before <(all_files)
