#!/usr/bin/env bash
# Draws docs/performance/compare.svg from the measurements beside it: time against descriptors.
set -euo pipefail

cd "$(dirname "$0")/../docs/performance"
lines=()
while IFS= read -r name; do
    lines+=("'< grep -hF \"$(printf '\t')$name$(printf '\t')\" descriptors-*.tsv' using 1:3 title '$name'")
done < <(cut -f2 descriptors-*.tsv | awk '!seen[$0]++')
plot=$(printf ', %s' "${lines[@]}")
gnuplot <<END
set terminal svg size 900,520 dynamic font 'sans-serif,13' background 'white'
set output 'compare.svg'
set datafile separator "\t"
set logscale xy
set grid
set key outside right center
set xlabel 'descriptors in the process table'
set ylabel 'seconds, median'
set style data linespoints
plot ${plot#, }
END
