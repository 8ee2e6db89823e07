#!/usr/bin/env bash
# The page's tests in a browser with the Cockpit of another release of Debian than this host's, whose
# command, servers and browser stay as they are.
#
#   tests/page/cockpit_of.sh RELEASE [TEST...]     trixie; page.test.mjs unless told otherwise
#
# Cockpit comes from a clean root of that release (scripts/package.sh), for which it needs a network, and
# is kept in build/cockpit-RELEASE. Its programs run with the libraries of their release. Needs root.
#
# With Cockpit 337 of Debian 13 all of page.test.mjs passes but for the test in Cockpit's own frame, which
# waits for a login that has no rights yet.
set -euo pipefail

self=$(realpath "$0")
project=$(realpath "$(dirname "$self")/../..")
programs=(cockpit-ws cockpit-session)

# In the clean root: what is Cockpit's, and the libraries of its programs.
take() { # TARGET
    export DEBIAN_FRONTEND=noninteractive
    apt-get --quiet update
    apt-get --quiet --yes install --no-install-recommends cockpit-bridge cockpit-system cockpit-ws
    mkdir -p "$1/lib"
    cp --archive --parents /usr/share/cockpit /usr/lib/cockpit /usr/bin/cockpit-bridge \
        /usr/lib/python3/dist-packages/cockpit "$1"
    local program
    for program in "${programs[@]}"; do
        ldd "/usr/lib/cockpit/$program" | sed -n 's/.*=> \(\/[^ ]*\).*/\1/p'
    done | sort -u | xargs cp --dereference --target-directory="$1/lib"
    cp --dereference /lib64/ld-linux-x86-64.so.2 "$1/lib"
    dpkg-query --show cockpit-ws >"$1/version"
}

# In the sample host: that Cockpit instead of the host's.
exchange() { # FOLDER
    rm -rf /usr/share/cockpit /usr/lib/cockpit /usr/lib/python3/dist-packages/cockpit
    cp --archive "$1/usr/." /usr
    local program
    for program in "${programs[@]}"; do
        mv "/usr/lib/cockpit/$program" "/usr/lib/cockpit/$program.real"
        printf '#!/bin/sh\nexec %q --library-path %q %q "$@"\n' "$1/lib/ld-linux-x86-64.so.2" "$1/lib" \
            "/usr/lib/cockpit/$program.real" >"/usr/lib/cockpit/$program"
        chmod 0755 "/usr/lib/cockpit/$program"
    done
    # Logins go by way of a socket, which is systemd's elsewhere.
    mkdir -p /run/cockpit
    systemd-socket-activate --accept --inetd --listen=/run/cockpit/session /usr/lib/cockpit/cockpit-session \
        2>/dev/null &
}

case ${1-} in
    --take)
        take "$2"
        exit
        ;;
    --test)
        folder=$2
        shift 2
        exchange "$folder"
        exec node --test "$@"
        ;;
    '' | -*)
        echo "usage: $0 RELEASE [TEST...]" >&2
        exit 2
        ;;
esac

release=$1
shift
folder=$project/build/cockpit-$release
cd "$project"
if [[ ! -s $folder/version ]]; then
    rm -rf "$folder"
    scripts/package.sh enter "$release" "$self" --take "$folder"
fi
cat "$folder/version"
[[ $# -gt 0 ]] || set -- tests/page/browser/page.test.mjs
VORN_BUILD_FOLDER=${VORN_BUILD_FOLDER:-$project/build/release} exec scripts/sample-host.sh "$self" --test "$folder" "$@"
