#!/usr/bin/env bash
# Makes the packages for a release of Debian and tries them in clean roots.
#
#   tests/debian/run.sh RELEASE [CHECK...]
#
#   lintian        says nothing, not even a hint, that isn't overridden with a reason
#   files          the libraries in the packages keep what they promise, the page is what its sources give
#   life           installed, upgraded, removed and purged, they leave nothing
#   reproducible   built elsewhere, they are the same bytes
#
# Without a CHECK: all of them. What they do to connections shows in a machine alone: tests/vm/packages.sh.
set -euo pipefail

tests=$(dirname "$(realpath "$0")")
project=$(realpath "$tests/../..")

fail() {
    echo "FAILED: $1" >&2
    exit 1
}

package() { # VERB [ARG...]
    "$project/scripts/package.sh" "$1" "$release" "${@:2}"
}

check_lintian() {
    package enter lintian -EviI --pedantic --allow-root \
        --fail-on error,warning,info,pedantic,experimental "$packages"/*.changes \
        >"$packages/lintian.log" 2>&1 || fail "$(grep '^[A-Z]: ' "$packages/lintian.log")"
}

check_files() {
    local unpacked=$packages/unpacked library deb
    rm -rf "$unpacked"
    for deb in "$packages"/*.deb; do
        [[ $deb != *-dbgsym_* ]] || continue
        dpkg-deb --extract "$deb" "$unpacked"
        ! dpkg-deb --field "$deb" Depends | grep boost || fail "$deb depends on a library of Boost"
    done
    library=$(echo "$unpacked"/usr/lib/*/libvornfilehandle.so.7.0)
    "$project/tests/package/dynamic_section.sh" "$library" "$project/tests/package/platform-symbols.txt"
    for library in "$unpacked"/usr/lib/*/lib*.so.*.0 "$unpacked"/usr/sbin/*; do
        ! readelf --dynamic "$library" | grep -E 'R(UN)?PATH' || fail "$library has a path of its own"
    done
    # What was built before the clean root is there, whole and unchanged.
    node "$project/cockpit/build.mjs" "$packages/page"
    diff --recursive "$packages/page" "$unpacked/usr/share/cockpit/vorn-openfiles" ||
        fail "the page isn't what its sources give"
    rm -r "$unpacked" "$packages/page"
}

check_life() {
    package enter tests/debian/life.sh "$packages" >"$packages/life.log" 2>&1 ||
        fail "$(cat "$packages/life.log")"
}

# Nothing is taken from what the compiler has made for the first one: a namespace of its own.
check_reproducible() {
    local again=$packages/again
    VORN_PACKAGE_TARGET=$again VORN_PACKAGE_FOLDER=/home/another/folder VORN_PACKAGE_UMASK=077 \
        TZ=Pacific/Kiritimati CCACHE_NAMESPACE=again package build
    diff --unified --label first --label again <(cd "$packages" && sha256sum -- *.deb *.dsc) \
        <(cd "$again" && sha256sum -- *.deb *.dsc)
    rm -r "$again"
}

[[ $# -ge 1 ]] || {
    sed -n '4s/^# *//p' "$0" >&2
    exit 2
}
release=$1
shift
[[ $# -gt 0 ]] || set -- lintian files life reproducible
packages=$project/build/packages/$release
package build
for check in "$@"; do
    "check_$check"
done
