#!/usr/bin/env bash
# Everything that must hold before a change goes in, in phases; the first that fails ends the run.
#
#   scripts/test.sh [PHASE[+PHASE...]...]
#
# Phases with "+" between them run side by side.
#
#   install   the packages that the project needs (scripts/install-deps.sh)
#   shell     shellcheck over every script
#   format    clang-format over every source, header guards, licences
#   build     release build, warnings are errors
#   test      all tests: unit, platform, faults, cli, slices, package, flood, hostile, e2e, centre
#   tidy      clang-tidy over library, stand-in, command and vorn-slices
#   cppcheck  cppcheck over the same
#   sanitize  build with AddressSanitizer and UndefinedBehaviorSanitizer
#   asan      all tests but package, flood, centre and the longest two in that build
#   tsan      what the stand-in remembers and the command's threads, under ThreadSanitizer
#   valgrind  unit tests under memcheck
#   fuzz      every fuzz target for two seconds (fuzz/run.sh runs them for longer)
#
# More run only where they are named:
#
#   coverage  lines and branches that the tests reach, with a floor for each folder; takes a build of
#             its own
#   page      the page for Cockpit: its modules, and all of it in a browser
#   packages  Debian's packages, for 12 and 13, in clean roots (tests/debian/run.sh)
#   vm        real clients on real hosts, Debian 12 and 13 in virtual machines (tests/vm/run.sh), and
#             packages that come and go there (tests/vm/packages.sh)
#
# Run as root, no test may be skipped: what a test misses, "install" has to bring.
set -euo pipefail

cd "$(dirname "$(realpath "$0")")/.."
jobs=$(nproc)

# --- Phases --------------------------------------------------------------------------------------

phase_install() {
    scripts/install-deps.sh
}

phase_shell() {
    list_files | while IFS= read -r file; do
        [[ $file == *.sh ]] || head -n 1 "$file" | grep -qE '^#!.*\b(ba)?sh$' || continue
        printf '%s\0' "$file"
    done | xargs -0 shellcheck --external-sources
}

phase_format() {
    list_files '*.h' '*.cpp' '*.c' | xargs -d '\n' clang-format --dry-run --Werror
    list_files '*.h' | check_guards
    list_files '*.h' '*.cpp' '*.c' | check_licences
}

phase_build() {
    # Lines are enough to find a fault by; all else that a debugger wants takes a quarter of the time.
    quietly cmake --preset release -DVORN_BUILD_TESTS=ON -DCMAKE_COMPILE_WARNING_AS_ERROR=ON \
        -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O2 -g1 -DNDEBUG"
    quietly cmake --build --preset release
}

phase_test() {
    run_tests release
}

phase_page() {
    scripts/install-deps.sh page
    quietly npm --prefix cockpit ci
    quietly node cockpit/build.mjs
    quietly node --test tests/page/unit/*.test.mjs
    if [[ $EUID -eq 0 ]]; then
        printf '%s\0' tests/page/browser/*.test.mjs | VORN_BUILD_FOLDER=$PWD/build/release \
            quietly xargs -0 -P "$jobs" -n 1 scripts/sample-host.sh node --test
    else
        echo "  skipped the browser: a sample host needs root" >&2
        echo 1 >>"$counter"
    fi
}

phase_tidy() {
    list_files 'src/*.cpp' 'platform/linux/*.cpp' 'groups/*.cpp' 'cli/*.cpp' 'slices/*.cpp' |
        quietly xargs -d '\n' -P "$jobs" -n 1 clang-tidy --quiet -p build/release
}

phase_cppcheck() {
    # Programs for the kernel are no C that it knows.
    quietly cppcheck --enable=warning,performance,portability --inline-suppr --error-exitcode=1 \
        --std=c++17 --library=posix --library=gnu --quiet -j "$jobs" \
        -i cli/host/kernel/programs -I . -I include -I platform/include support src platform/linux \
        groups cli slices
}

phase_sanitize() {
    quietly cmake --preset asan -DCMAKE_COMPILE_WARNING_AS_ERROR=ON
    quietly cmake --build --preset asan
}

phase_asan() {
    phase_sanitize
    # Each failing allocation and the same tricks by the other source take minutes here; the release
    # build has them. The centre has nothing that was compiled.
    run_tests asan --exclude-regex '^AllocationFault|^Hostile.UsersTricks.walk$|^Centre'
}

phase_tsan() {
    quietly cmake --preset tsan
    quietly cmake --build --preset tsan --target vornplatform_threads vorn_enumeration_tests \
        vorn_cli_threads vorn-openfiles vorn_library_listing
    quietly build/tsan/bin/vornplatform_threads
    quietly build/tsan/bin/vorn_enumeration_tests
    quietly build/tsan/bin/vorn_cli_threads
    VORN_OPENFILES=$PWD/build/tsan/bin/vorn-openfiles quietly tests/run.py tests/cli/command/test_workers.py
}

phase_valgrind() {
    # The tests' own operator new stays, as some of them make it fail. Each takes its share of them.
    seq 0 $((jobs - 1)) | GTEST_TOTAL_SHARDS=$jobs quietly xargs -P "$jobs" -I '{}' \
        env GTEST_SHARD_INDEX='{}' valgrind --soname-synonyms=somalloc=nouserintercepts --error-exitcode=99 \
        --leak-check=full --errors-for-leak-kinds=definite,indirect \
        --child-silent-after-fork=yes build/release/bin/vornfilehandle_unit
}

phase_fuzz() {
    quietly fuzz/run.sh 2
}

phase_coverage() {
    local programs=(vornfilehandle_unit vornfilehandle_unit_shared vornplatform_tests
        vorn_groups_tests vorn_cli_tests vorn_cli_threads vorn_slices_tests)
    quietly cmake --preset coverage
    quietly cmake --build --preset coverage --target vorn_library_listing vorn-openfiles vorn-slices
    forget_coverage
    # Those that reach no line more but take a minute are left out.
    quietly ctest --test-dir build/coverage --parallel "$jobs" --tests-regex '^(Command|Slices|EndToEnd.disconnect)' \
        --exclude-regex 'environment|hostile_names' --output-on-failure --no-tests=error &
    quietly cmake --build --preset coverage --target "${programs[@]}"
    printf 'build/coverage/bin/%s\n' "${programs[@]}" | quietly xargs -P "$jobs" -n 1 env
    wait $!
    find build/coverage -name '*.gcda' -empty -delete
    gcovr --root . --filter src/ --filter platform/linux/ --filter groups/ --filter cli/ \
        --filter slices/ -j "$jobs" \
        --object-directory build/coverage --exclude-throw-branches --print-summary \
        --json build/coverage/lines.json
    require_lines src 100
    require_lines platform/linux 93
    require_lines groups 94
    require_lines cli 94
    require_lines slices 85
}

phase_packages() {
    quietly tests/debian/run.sh bookworm
    quietly tests/debian/run.sh trixie
}

phase_vm() {
    quietly tests/vm/run.sh bookworm
    quietly tests/vm/run.sh trixie
    quietly tests/vm/packages.sh
}

# --- What they are made of -----------------------------------------------------------------------

# Sources of this folder, whether in git already or not, but nothing that was built.
list_files() { # [PATTERN...]
    git ls-files --cached --others --exclude-standard -- "$@" | while IFS= read -r file; do
        [[ ! -f $file ]] || printf '%s\n' "$file"
    done
}

# A header's guard is its path, as it is included: cli/x/y.h has VORN_CLI_X_Y_H.
check_guards() { # reads names of headers
    local header guard wrong=0
    while IFS= read -r header; do
        guard=$(sed -E 's|^(platform/)?include/||; s|^(vorn/)?|vorn/|; s|[^A-Za-z0-9]|_|g' \
            <<<"$header")
        guard=${guard^^}
        if [[ $(grep '^#' "$header" | head -n 2) != "#ifndef $guard"$'\n'"#define $guard" ]]; then
            echo "$header: the header guard must be $guard" >&2
            wrong=1
        fi
    done
    return "$wrong"
}

# What runs as another user adds to data that is there, but may not make any.
forget_coverage() {
    find build/coverage -name '*.gcda' -delete
    find build/coverage -name '*.gcno' | sed 's/gcno$/gcda/' | (umask 0 && xargs -d '\n' touch)
}

# Whoever copies a file has its licence with it. Programs for the kernel are the kernel's as well.
check_licences() { # reads names of sources
    local source wrong=0
    while IFS= read -r source; do
        if ! head -n 1 "$source" | grep -qxE '// SPDX-License-Identifier: MIT( OR GPL-2.0-only)?'; then
            echo "$source: the first line must be '// SPDX-License-Identifier: MIT'" >&2
            wrong=1
        fi
    done
    return "$wrong"
}

require_lines() { # FOLDER PERCENT
    gcovr --root . --add-tracefile build/coverage/lines.json --filter "$1/" \
        --fail-under-line "$2" --print-summary | sed -n "s|^lines|$1|p"
}

# Shows a command's output only when it fails.
quietly() { # COMMAND [ARG...]
    local log status=0
    log=$(mktemp)
    "$@" >"$log" 2>&1 || status=$?
    [[ $status -eq 0 ]] || cat "$log" >&2
    rm -f "$log"
    return "$status"
}

# Twice as many at a time as there are processors: many wait for servers and hardly compute.
run_tests() { # PRESET [CTEST_ARG...]
    local results=$PWD/build/$1/results.xml
    quietly ctest --test-dir "build/$1" --parallel $((2 * jobs)) --output-on-failure \
        --no-tests=error --output-junit "$results" "${@:2}"
    report_results "$1" "$results"
}

# Counts results and names each test that did not run, with the reason that it printed.
report_results() { # NAME RESULTS
    /usr/bin/python3 - "$1" "$2" <<'END' >>"$counter"
import sys
import xml.etree.ElementTree as tree

name, results = sys.argv[1:]
cases = tree.parse(results).getroot().findall("testcase")
skips = [case for case in cases if case.get("status") != "run"]
print(f"{name}: {len(cases) - len(skips)} passed, {len(skips)} skipped", file=sys.stderr)
for case in skips:
    output = (case.findtext("system-out") or "").strip()
    print(f"  skipped {case.get('name')}: {output}", file=sys.stderr)
print(len(skips))
END
}

run_phase() { # NAME
    local started=$SECONDS status=0
    echo "== $1"
    # Not "phase || ...": that would switch off "set -e" inside the phase.
    set +e
    (
        set -e
        "phase_$1"
    )
    status=$?
    set -e
    if [[ $status -ne 0 ]]; then
        echo "== $1 FAILED after $((SECONDS - started)) s" >&2
        exit 1
    fi
    echo "== $1 passed, $((SECONDS - started)) s"
}

# Where one waits, the other computes.
run_side_by_side() { # NAME...
    local name pid pids=() status=0
    for name in "$@"; do
        run_phase "$name" &
        pids+=($!)
    done
    for pid in "${pids[@]}"; do
        wait "$pid" || status=1
    done
    [[ $status -eq 0 ]] || exit 1
}

[[ $# -gt 0 ]] || set -- install shell format build test+tidy cppcheck sanitize asan+tsan \
    valgrind+fuzz
mapfile -t phases < <(printf '%s\n' "$@" | tr + '\n')
for phase in "${phases[@]}"; do
    if ! declare -F "phase_$phase" >/dev/null; then
        echo "test: no phase named '$phase'" >&2
        exit 2
    fi
done
# A line for the tests of each build: how many were skipped.
counter=$(mktemp)
trap 'rm -f "$counter"' EXIT
for phase in "$@"; do
    if [[ $phase == *+* ]]; then
        mapfile -t phases < <(tr + '\n' <<<"$phase")
        run_side_by_side "${phases[@]}"
    else
        run_phase "$phase"
    fi
done

skipped=$(awk '{ sum += $1 } END { print sum + 0 }' "$counter")
echo "All phases passed in $SECONDS s, tests skipped: $skipped"
if [[ $EUID -eq 0 && $skipped -gt 0 ]]; then
    echo "test: root on Debian must skip nothing" >&2
    exit 1
fi
