# shellcheck shell=bash
# For the scripts beside this one: what they share.
set -euo pipefail

# shellcheck source=tests/support/sample_host.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/sample_host.sh"

fail() {
    echo "FAILED: $1" >&2
    exit 1
}

install_build() { # PREFIX, after BUILD and CONSUMER were set
    cmake --install "$BUILD" --prefix "$1" >/dev/null
    # Outside of the tree, so that nothing of the tree is found by chance.
    cp -r "$(dirname "$0")/consumer" /tmp/consumer
}

# Runs "$1" while a process holds a file on a volume, which it has to list.
expect_lists_open_file() { # PROGRAM
    echo sample >/volume1/held
    exec 7</volume1/held # before the process exists, so that there is nothing to wait for
    sleep infinity &
    local holder=$! shown
    exec 7<&-
    shown=$("$1")
    kill "$holder"
    grep -qE "^$holder /volume1/held\$" <<<"$shown" || fail "$1 printed: $shown"
}

expect_own_operation_wins() { # PROGRAM
    local shown
    shown=$("$1")
    [[ $shown == $'asked for /volume1/no/such/folder\nfolder: 1' ]] || fail "$1 printed: $shown"
}
