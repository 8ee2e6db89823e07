#!/usr/bin/env bash
# Every exported name has its type held in binary_interface.cpp.
#   interface_is_whole.sh INTERFACE LIST...
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"

interface=$1
shift
names=$(sed -E 's/\(.*//; s/\[abi:[^]]*\]//; s/.*:://; /^~/d; s/^operator$/operator()/' "$@" | sort -u)
[[ $(wc -l <<<"$names") -ge 60 ]] || fail "names found: $names"
while IFS= read -r name; do
    grep -qF "$name" "$interface" || fail "$name is exported and has no line in $interface"
done <<<"$names"
