#!/usr/bin/env bash
# Builds the project for a release of Debian, as README says.
#
#   scripts/vm/build.sh RELEASE ROOT BUILD TARGET           builds it, and installs it into TARGET
#   scripts/vm/build.sh RELEASE ROOT BUILD TARGET PROGRAMS  builds the programs of a folder, which
#                                                           link what TARGET has, in BUILD
#
# Where this host is of another release, the build runs in ROOT, a tree of RELEASE with the
# packages that the project is built with: made where it isn't there yet, and kept. BUILD, which is
# kept as well, and TARGET must lie in the project's folder.
#
# Needs what scripts/install-deps.sh calls "build" on a host of RELEASE, root and debootstrap on
# others.
set -euo pipefail

scripts=$(dirname "$(realpath "$0")")
cd "$scripts/../.."

fail() {
    echo "vm/build: $1" >&2
    exit "${2:-1}"
}

is_release_of_host() {
    grep -qxF "VERSION_CODENAME=$release" /etc/os-release
}

make_root() {
    local new=$root.new
    rm -rf --one-file-system "$new"
    "$scripts/tree.sh" make "$release" "$new" &&
        "$scripts/tree.sh" enter "$new" scripts/install-deps.sh build &&
        mv "$new" "$root"
}

in_release() { # COMMAND [ARG...]
    if is_release_of_host; then
        "$@"
    else
        "$scripts/tree.sh" enter "$root" "$@"
    fi
}

build() {
    # What a kept tree misses since it was made.
    in_release scripts/install-deps.sh build &&
        in_release cmake --preset release -B "$build" -DVORN_BUILD_TESTS=OFF -DVORN_BUILD_BENCH=OFF &&
        in_release cmake --build "$build" &&
        in_release env DESTDIR="$target" cmake --install "$build"
}

build_programs() {
    in_release cmake -G Ninja -S "$programs" -B "$build" -DCMAKE_PREFIX_PATH="$target/usr" &&
        in_release cmake --build "$build"
}

[[ $# -eq 4 || $# -eq 5 ]] || fail "usage: $0 RELEASE ROOT BUILD TARGET [PROGRAMS]" 2
release=$1 root=$2 build=$3 target=$4 programs=${5-}
for folder in "$build" "$target" ${programs:+"$programs"}; do
    [[ $folder == "$PWD"/* ]] || fail "$folder is not in $PWD" 2
done
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! is_release_of_host; then
    exec {lock}>"$root.lock"
    flock "$lock"
    [[ -e $root ]] || make_root >"$log" 2>&1 || fail "$(tail -n 20 "$log")"
    exec {lock}>&-
fi
build${programs:+_programs} >"$log" 2>&1 || fail "$(tail -n 40 "$log")"
