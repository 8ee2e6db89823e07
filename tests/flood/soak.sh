#!/usr/bin/env bash
# Goes on enumerating under the same flood as run.sh for an hour, or for as long as it is told, and
# draws how memory and descriptors of the enumerating process develop.
#
#   tests/flood/soak.sh [SECONDS] [PROGRAM]
#
# Writes docs/reliability/soak.txt (what was done) and soak.svg. Needs root and gnuplot.
set -euo pipefail

root=$(cd "$(dirname "$0")/../.." && pwd)
seconds=${1:-3600}
program=$(realpath "${2:-$root/build/release/bin/vorn_flood}")
output=$root/docs/reliability
figures=$root/build/soak-figures

[[ $EUID -eq 0 ]] || { echo "soak: must be run as root" >&2; exit 2; }
command -v gnuplot >/dev/null || { echo "soak: needs gnuplot" >&2; exit 2; }

mkdir -p "$output"
rm -f "$figures"
status=0
"$root/scripts/sample-host.sh" "$root/tests/flood/host.sh" "$program" 20 "$seconds" "$figures" \
    >"$output/soak.txt" || status=$?
cat "$output/soak.txt"
[[ -s $figures ]] || exit "$status" # nothing ran that could be drawn

gnuplot <<END
set terminal svg size 900,360 font 'sans-serif,12' background '#ffffff'
set output '$output/soak.svg'
set title 'Resident memory and open descriptors of one process that enumerates all the time'
set xlabel 'minutes'
set ylabel 'resident MiB'
set y2label 'descriptors'
set yrange [0:*]
set y2range [0:20]
set y2tics
set grid
set key bottom right
plot '$figures' using (\$1/60):(\$3/1024) with lines lw 2 title 'resident memory', \\
     '' using (\$1/60):4 axes x1y2 with lines lw 2 title 'descriptors'
END
exit "$status"
