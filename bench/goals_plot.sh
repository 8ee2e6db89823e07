#!/usr/bin/env bash
# Draws docs/performance/peers.svg from goals.md beside it: times as fast as each peer, for each kind
# of holder, by the kernel's iterator and by the walk.
set -euo pipefail

cd "$(dirname "$0")/../docs/performance"

# "PEER, DESCRIPTORS <tab> KIND <tab> TIMES", a line a row of goals.md.
rows() { # SOURCE
    sed -nE "s/^\| command, $1, against ([a-z]+)[^|]*, ([0-9,]+) descriptors, ([^|]*) \|[^|]*\| ([0-9.]+) x .*/\1, \2\t\3\t\4/p" goals.md
}

folder=$(mktemp --directory)
trap 'rm -rf "$folder"' EXIT
columns=()
for source in iterator walk; do
    data=$folder/$source
    # A line a peer and size, a column a kind.
    rows "$source" | awk -F '\t' '
        !($1 in peers) { peers[$1]; order[++lines] = $1 }
        !($2 in kinds) { kinds[$2]; names[++count] = $2 }
        { times[$1, $2] = $3 }
        END {
            printf "peer"; for (k = 1; k <= count; ++k) printf "\t%s", names[k]; print ""
            for (l = 1; l <= lines; ++l) {
                printf "%s", order[l]
                for (k = 1; k <= count; ++k) printf "\t%s", times[order[l], names[k]]
                print ""
            }
        }' >"$data"
    for column in 2 3 4; do
        title=$(head -n 1 "$data" | cut -f "$column")
        columns+=("'$data' using $column:xtic(1) every ::1 title '$source, $title'")
    done
done
plot=$(printf ', %s' "${columns[@]}")
gnuplot <<END
set terminal svg size 900,420 dynamic font 'sans-serif,13' background 'white'
set output 'peers.svg'
set datafile separator "\t"
set style data histogram
set style histogram clustered gap 1
set style fill solid 0.9
set boxwidth 0.9
set grid ytics
set key bmargin center horizontal maxcols 2
set ylabel 'times as fast as the peer'
set yrange [0:*]
set colorsequence podo
plot ${plot#, }
END
