#!/usr/bin/env bash
# Measures what it takes to be told of opens and closes, beside fatrace and inotifywait, one after the
# other in the sample host, and prints it; or what it takes to have them in a journal.
#
#   bench/events.sh [--rate OPENS_A_SECOND] [--seconds N] [--files N] [--journal]
set -euo pipefail

project=$(realpath "$(dirname "$0")/..")
cd "$project"
bench/build.sh
scripts/sample-host.sh /usr/bin/python3 bench/events.py --binaries "$project/build/release/bin" "$@"
