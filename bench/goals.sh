#!/usr/bin/env bash
# Measures the goals of speed and size, as ratios of programs that run side by side in the sample
# host, and writes them to docs/performance/goals.md. With --only, rows of other goals stay there.
#
#   bench/goals.sh [--only GOAL]...
#
# Exit status: 0 when all are met, 1 when not.
set -euo pipefail

project=$(realpath "$(dirname "$0")/..")
cd "$project"
bench/build.sh
mkdir -p docs/performance
scripts/sample-host.sh /usr/bin/python3 bench/goals.py \
    --project "$project" --binaries "$project/build/release/bin" \
    --output docs/performance/goals.md "$@"
