#!/usr/bin/env bash
# Built as Debian builds its packages.
#   hardening.sh COMMAND LIBRARY...
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"

# What Debian 12 does not build with is not asked for.
hardening-check --nocfprotection "$1" || fail "$1 is not hardened"
command=$1
shift
# Symbols of the platform are bound when they are first called, so that a program may lack some.
hardening-check --nocfprotection --nobindnow "$@" || fail "$* is not hardened"
! readelf --dynamic --wide "$1" | grep -q 'BIND_NOW\|FLAGS_1.*NOW' || fail "$1 is bound at once"
readelf --dynamic --wide "$command" | grep -q 'FLAGS_1.*NOW' || fail "$command is bound lazily"
