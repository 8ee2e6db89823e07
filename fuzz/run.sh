#!/usr/bin/env bash
# Builds the fuzz targets and runs each for a while, from its seeds, as many side by side as there
# are processors.
#
#   fuzz/run.sh SECONDS [TARGET...]
#
# TARGET is a name under fuzz/corpus, such as smb_status; without one all are run. What is found
# along the way is kept in build/fuzz/corpus, so that a further run starts where this one ended. An
# input that fails is left in build/fuzz/failures, and the exit status is 1.
set -euo pipefail

if [[ ! ${1-} =~ ^[1-9][0-9]*$ ]]; then
    sed -n '2,/^set /{/^#/s/^# \{0,1\}//p}' "$0" >&2
    exit 2
fi
seconds=$1
shift

root=$(cd "$(dirname "$0")/.." && pwd)
[[ $# -gt 0 ]] || mapfile -t all < <(ls "$root/fuzz/corpus")
targets=("${@:-${all[@]}}")
for target in "${targets[@]}"; do
    if [[ ! -d $root/fuzz/corpus/$target ]]; then
        echo "run.sh: no target named '$target'" >&2
        exit 2
    fi
done

cd "$root"
cmake --preset asan >/dev/null
cmake --build --preset asan --target "${targets[@]/#/fuzz_}"

build=$root/build/fuzz
mkdir -p "$build/failures" "$build/logs"

# Reads as much at once as the largest of the readers takes from a socket.
run_target() { # TARGET
    local corpus=$build/corpus/$1 log=$build/logs/$1 runs
    mkdir -p "$corpus"
    if ! "$root/build/asan/bin/fuzz_$1" -max_total_time="$seconds" -max_len=65536 -timeout=10 \
        -rss_limit_mb=1024 -print_final_stats=1 -artifact_prefix="$build/failures/$1-" \
        "$corpus" "$root/fuzz/corpus/$1" >"$log" 2>&1; then
        cat "$log"
        echo "$1: FAILED"
        return 1
    fi
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    echo "$1: clean after $runs runs in $seconds s"
}

export -f run_target
export root build seconds
printf '%s\n' "${targets[@]}" |
    xargs -P "$(nproc)" -I '{}' bash -c 'run_target "{}"' || exit 1
