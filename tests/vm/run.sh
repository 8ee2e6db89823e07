#!/usr/bin/env bash
# Installs the project on a fresh host of a release, as Debian has it, and looks what it says there of
# real clients.
#
#   tests/vm/run.sh bookworm|trixie [TEST...]
#
# TEST is such as clients_test.Clients, without one all are run, those of rebooted.py after a reboot.
# The machine is one of scripts/vm.sh; it is shut down at the end, and its console stays in
# build/vm/RELEASE. Takes some minutes, and some more where the machine's image isn't kept from an
# earlier run.
#
# Exit status: 0 when all tests have passed, 1 otherwise.
set -euo pipefail

project=$(realpath "$(dirname "$0")/../..")
tests=/root/tests # in the machine

vm() { # VERB [ARG...]
    "$project/scripts/vm.sh" --release "$release" "$@"
}

# Whatever an SSH session starts belongs to that session's client, so the tests have a unit.
run_tests() { # TEST...
    vm run rm -rf "$tests"
    vm run mkdir "$tests"
    vm put "$project/README.md" "$project/tests/harness" "$project/tests/vm" "$tests"
    vm run systemd-run --quiet --collect --wait --pipe --working-directory="$tests/vm" \
        --setenv=PYTHONPATH="$tests" --setenv=PYTHONDONTWRITEBYTECODE=1 \
        /usr/bin/python3 -m unittest "$@" --verbose
}

[[ $# -ge 1 ]] || {
    echo "usage: $0 bookworm|trixie [TEST...]" >&2
    exit 2
}
release=$1
shift
"$project/scripts/install-deps.sh" build vm
vm stop
vm disk
trap 'vm stop' EXIT
vm boot
vm install
# Into the slices that the installation has brought.
vm run systemctl restart ssh smbd vsftpd rsync
vm link "$project/tests/vm/linked"
if [[ $# -gt 0 ]]; then
    run_tests "$@"
    exit
fi
run_tests discover --pattern '*_test.py'
vm run systemctl enable vorn-slices.service vorn-openfiles-metrics.timer
vm reboot
run_tests rebooted
