#!/usr/bin/env bash
# Lists hosts that are as large as this machine allows, and prints how long the list took and what
# memory the command had at most.
#
#   tests/size/run.sh [COMMAND [TEST...]]
#
# COMMAND is build/release/bin/vorn-openfiles, TEST such as Size.test_many_exports.
# VORN_SIZE_PROCESSES says how many processes to start (30000); they take their pids from the
# whole machine. Needs root, a C compiler and some 8 GB of memory.
set -euo pipefail

root=$(cd "$(dirname "$0")/../.." && pwd)
VORN_OPENFILES=$(realpath "${1:-$root/build/release/bin/vorn-openfiles}")
VORN_POPULATE=$root/build/size-populate
export VORN_OPENFILES VORN_POPULATE

if [[ $EUID -ne 0 ]]; then
    echo "size: must be run as root" >&2
    exit 2
fi
cc -std=gnu11 -O1 -o "$VORN_POPULATE" "$root/bench/populate.c"
exec "$root/tests/run.py" "$root/tests/size/test_size.py" "${@:2}"
