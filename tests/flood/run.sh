#!/usr/bin/env bash
# Enumerates while processes, descriptors, files, volumes, shares and SSH sessions come and
# go, and holds every result against what was really open.
#
#   tests/flood/run.sh [ENUMERATIONS] [PROGRAM]
#
# ENUMERATIONS is 2000 unless given; PROGRAM is build/release/bin/vorn_flood. Needs root.
set -euo pipefail

root=$(cd "$(dirname "$0")/../.." && pwd)
program=$(realpath "${2:-$root/build/release/bin/vorn_flood}")

if [[ $EUID -ne 0 ]]; then
    echo "skipped: needs root for a sample host"
    exit 77
fi
exec "$root/scripts/sample-host.sh" "$root/tests/flood/host.sh" "$program" "${1:-2000}"
