#!/usr/bin/env bash
# Starts a centre and three storage hosts in namespaces of this machine, with real clients over SMB, and shows
# what the centre answers about them.
#
#   scripts/demo-fleet.sh
#
# Installs what is missing, builds. Nothing of it stays but build/demo. Needs root.
set -euo pipefail

project=$(dirname "$(dirname "$(realpath "$0")")")
build=$project/build/demo

if [[ $EUID -ne 0 ]]; then
    echo "demo-fleet: needs root: it makes namespaces, users and servers" >&2
    exit 1
fi
"$project/scripts/install-deps.sh" build run centre e2e
echo "Building in $build ..."
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! (cd "$project" && cmake --preset release -B "$build" -DVORN_BUILD_TESTS=OFF -DVORN_BUILD_BENCH=OFF &&
    cmake --build "$build") >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi
VORN_BUILD_FOLDER=$build PYTHONPATH=$project/tests:$project/tests/e2e \
    "$project/scripts/sample-host.sh" /usr/bin/python3 "$project/tests/centre/fleet_demo.py"
