#!/usr/bin/env bash
# Sends events as many hosts do, each with its own journal, certificate and sender, through the receiver and
# the loader into PostgreSQL, and prints what it took and whether all that was sent is stored.
#
#   bench/centre/load.sh [--hosts N] [--rate EVENTS_A_SECOND] [--seconds N]
#
# The database and the journals lie in build/centre-load, on this machine's disk.
set -euo pipefail

project=$(realpath "$(dirname "$0")/../..")
rm -rf "$project/build/centre-load"
mkdir -p "$project/build/centre-load"
status=0
"$project/scripts/sample-host.sh" /usr/bin/python3 "$project/bench/centre/load.py" \
    --folder "$project/build/centre-load" "$@" || status=$?
rm -rf "$project/build/centre-load"
exit "$status"
