#!/usr/bin/env bash
# Whoever is told to end while it shuts a machine down leaves none behind. In the machine's place is a
# process that nobody reaches and that never ends by itself.
set -euo pipefail

vm=$(realpath "$(dirname "$0")/../../scripts/vm.sh")
folder=$(realpath "$(mktemp -d)")
export VORN_VM_RUN=$folder/run VORN_VM_CACHE=$folder/cache
mkdir -p "$VORN_VM_RUN" "$VORN_VM_CACHE"
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$folder"' EXIT

fail() {
    echo "killed_stop: $1" >&2
    exit 1
}

# The brackets keep grep from finding itself.
is_waited_for() { # PID
    grep --quiet --no-messages --text -- "[-]-pid=$1" /proc/[0-9]*/cmdline
}

for signal in TERM HUP; do
    touch "$VORN_VM_RUN/pid"
    tail -f "$VORN_VM_RUN/pid" >/dev/null &
    machine=$!
    echo "$machine" >"$VORN_VM_RUN/pid"
    echo 1 >"$VORN_VM_RUN/port" # where nobody listens
    "$vm" stop 2>"$folder/said" &
    stop=$!
    until is_waited_for "$machine"; do
        kill -0 "$stop" || fail "the shutdown has ended: $(<"$folder/said")"
        sleep 0.1
    done
    kill -s "$signal" "$stop"
    ! wait "$stop" || fail "the shutdown was not ended by $signal"
    timeout 20 tail --pid="$machine" -f /dev/null || fail "the machine is left behind after $signal"
    [[ ! -e $VORN_VM_RUN/pid ]] || fail "the machine is not forgotten after $signal"
done
