#!/usr/bin/env bash
# Installs, upgrades, removes and purges the packages on fresh hosts as Debian has them, while their
# daemons serve clients.
#
#   tests/vm/packages.sh [bookworm|trixie...]
#
# Without a release: one host of each, one after the other. The machines are those of scripts/vm.sh; each is
# shut down at the end. Takes some minutes, and some more where the machine's image or the packages aren't
# kept from an earlier run.
#
# Exit status: 0 when all tests have passed, 1 otherwise.
set -euo pipefail

project=$(realpath "$(dirname "$0")/../..")
here=/root/packages # in the machine

vm() { # VERB [ARG...]
    "$project/scripts/vm.sh" --release "$release" "$@"
}

make_packages() {
    "$project/scripts/package.sh" build "$release"
    VORN_PACKAGE_TARGET=$packages-next "$project/scripts/package.sh" build "$release" +next
}

put_packages() {
    vm run mkdir -p "$here/next" /root/tests
    vm put "$packages"/*.deb "$here"
    vm put "$packages-next"/*.deb "$here/next"
    vm put "$project/tests/harness" "$project/tests/vm" /root/tests
}

try_packages() {
    echo "== $release"
    make_packages
    vm stop
    vm disk
    vm boot
    put_packages
    vm run systemd-run --quiet --collect --wait --pipe --working-directory=/root/tests/vm/packages \
        --setenv=PYTHONPATH=/root/tests:/root/tests/vm --setenv=PYTHONDONTWRITEBYTECODE=1 \
        /usr/bin/python3 -m unittest --verbose packages_test
    vm stop
}

[[ $# -gt 0 ]] || set -- bookworm trixie
for release in "$@"; do
    if [[ $release != @(bookworm|trixie) ]]; then
        echo "usage: $0 [bookworm|trixie...]" >&2
        exit 2
    fi
done
"$project/scripts/install-deps.sh" vm
trap 'vm stop' EXIT
for release in "$@"; do
    packages=$project/build/packages/$release
    try_packages
done
