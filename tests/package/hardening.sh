#!/usr/bin/env bash
# Built as Debian builds its packages.
#   hardening.sh COMMAND STAND-IN LIBRARY
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"
command=$1 standin=$2 library=$3

# What Debian 12 does not build with is not asked for.
hardening-check --nocfprotection "$command" || fail "$command is not hardened"
hardening-check --nocfprotection --nobindnow "$standin" || fail "$standin is not hardened"
# Programs may interpose what the library calls, which fortified calls pass by.
hardening-check --nocfprotection --nobindnow --nofortify "$library" ||
    fail "$library is not hardened"

# Symbols of the platform are bound when they are first called, so that a program may lack some.
! readelf --dynamic --wide "$library" | grep -q 'BIND_NOW\|FLAGS_1.*NOW' ||
    fail "$library is bound at once"
readelf --dynamic --wide "$command" | grep -q 'FLAGS_1.*NOW' || fail "$command is bound lazily"
