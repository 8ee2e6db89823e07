#!/usr/bin/env bash
# Measures the goals of speed and size, as ratios of programs that run side by side in the sample
# host, writes them to docs/performance/goals.md and draws those beside the peers. With --only, rows of
# other goals stay there.
#
#   bench/goals.sh [--only GOAL]...
#
# Exit status: 0 when all are met, 1 when not.
set -euo pipefail

project=$(realpath "$(dirname "$0")/..")
cd "$project"
bench/build.sh
mkdir -p docs/performance
status=0
scripts/sample-host.sh /usr/bin/python3 bench/goals.py \
    --project "$project" --binaries "$project/build/release/bin" \
    --output docs/performance/goals.md "$@" || status=$?
bench/goals_plot.sh
exit "$status"
