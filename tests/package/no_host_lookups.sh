#!/usr/bin/env bash
# No name or address of a host is ever looked up: whoever answers could be slow, or lie.
#   no_host_lookups.sh BINARY...
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"

for binary in "$@"; do
    undefined=$(nm --dynamic --undefined-only --format=posix "$binary")
    # Without versions: "open@GLIBC_2.2.5 U" becomes "open".
    names=$(sed -E 's/[@ ].*//' <<<"$undefined")
    grep -qE '^(__cxa_|_Z)' <<<"$names" || fail "$binary seems to need nothing: $undefined"
    ! grep -E '^(getnameinfo|getaddrinfo|gethostby|gethostent|(__)?res_|ns_)' <<<"$names" ||
        fail "$binary looks hosts up"
done
