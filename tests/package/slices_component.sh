#!/usr/bin/env bash
# vorn-slices is installed alone, or left out.
#   slices_component.sh BUILD
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"

installed() { # ROOT COMPONENT
    DESTDIR=$1 cmake --install "$BUILD" --component "$2" >/dev/null
    find "$1" \( -name 'vorn-slices*' -o -name 'run-vorn-services*' \) -printf '%f\n' | LC_ALL=C sort
}

BUILD=$1
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
own=$(installed "$root/own" vorn-slices)
expected=$'run-vorn-services.mount\nvorn-slices\nvorn-slices-undo.service\nvorn-slices.8\nvorn-slices.service'
[[ $own == "$expected" ]] || fail "its component has: $own"
[[ $(find "$root/own" ! -type d | wc -l) -eq 5 ]] || fail "its component has more: $(find "$root/own")"
[[ -z $(installed "$root/rest" Unspecified) ]] || fail "the rest has some of it: $(installed "$root/rest" Unspecified)"
