#!/usr/bin/env bash
# Built as Debian builds its packages.
#   hardening.sh COMMAND DAEMON STAND-IN LIBRARY
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"
command=$1 daemon=$2 standin=$3 library=$4

# What Debian 12 does not build with is not asked for; it does not even know the other one.
ignored=(--nocfprotection)
said=$(hardening-check --help 2>&1) || true
[[ $said != *--nobranchprotection* ]] || ignored+=(--nobranchprotection)
for program in "$command" "$daemon"; do
    hardening-check "${ignored[@]}" "$program" || fail "$program is not hardened"
    readelf --dynamic --wide "$program" | grep -q 'FLAGS_1.*NOW' || fail "$program is bound lazily"
done
hardening-check "${ignored[@]}" --nobindnow "$standin" || fail "$standin is not hardened"
# Programs may interpose what the library calls, which fortified calls pass by.
hardening-check "${ignored[@]}" --nobindnow --nofortify "$library" ||
    fail "$library is not hardened"

# Symbols of the platform are bound when they are first called, so that a program may lack some.
! readelf --dynamic --wide "$library" | grep -q 'BIND_NOW\|FLAGS_1.*NOW' ||
    fail "$library is bound at once"
