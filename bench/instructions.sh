#!/usr/bin/env bash
# Counts the instructions of a fixed enumeration of 10,000 records and holds them against the
# recorded figure: more than 10 % above it fails, on any machine and whatever else that is doing.
#
#   bench/instructions.sh FIXED_SCAN     the program, built with optimisation
#
# After a change that is worth its price, or that saves something, record the new figure in
# bench/instructions.txt.
set -euo pipefail

recorded=$(<"$(dirname "$0")/instructions.txt")
output=$(mktemp)
trap 'rm -f "$output"' EXIT
if ! valgrind --tool=callgrind --callgrind-out-file=/dev/null "$1" >"$output" 2>&1; then
    cat "$output" >&2
    exit 2
fi
counted=$(sed -n 's/.*Collected : //p' "$output")
echo "instructions: $counted counted, $recorded recorded"
if ((counted > recorded + recorded / 10)); then
    echo "instructions: more than 10 % above what is recorded" >&2
    exit 1
fi
