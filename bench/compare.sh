#!/usr/bin/env bash
# Measures the library and the command beside the bare walk and the peers, in the sample host, and
# writes a table and a plot to docs/performance/.
#
#   bench/compare.sh [PROCESSES DESCRIPTORS]...
#
# Without arguments: 10,000, 50,000, 200,000, 500,000 and 1,000,000 descriptors, which takes about
# half an hour.
set -euo pipefail

project=$(realpath "$(dirname "$0")/..")
cd "$project"
bench/build.sh

if (($# == 0)); then
    set -- 40 250 200 250 200 1000 50 10000 64 15625
fi
mkdir -p docs/performance
while (($# > 0)); do
    printf '\n%s descriptors\n' $(($1 * $2))
    scripts/sample-host.sh /usr/bin/python3 bench/compare.py \
        --project "$project" --binaries "$project/build/release/bin" \
        --processes "$1" --descriptors "$2" \
        --output "$(printf 'docs/performance/descriptors-%07d' $(($1 * $2)))"
    shift 2
done
bench/plot.sh
