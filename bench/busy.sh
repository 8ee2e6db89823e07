#!/usr/bin/env bash
# Measures busy beside fuser, as ratios of programs that run side by side in the sample host, and
# writes them to docs/performance/busy.md.
#
#   bench/busy.sh [--processes N] [--descriptors N] [--rounds N]
set -euo pipefail

project=$(realpath "$(dirname "$0")/..")
cd "$project"
bench/build.sh
mkdir -p docs/performance
scripts/sample-host.sh /usr/bin/python3 bench/busy.py --binaries "$project/build/release/bin" \
    --output docs/performance/busy.md "$@"
