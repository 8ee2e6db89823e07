#!/usr/bin/env bash
# The demo says what is missing before it installs or builds anything.
#   demo_rights.sh
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"
enter_sample_host "$@"

project=$(realpath "$(dirname "$0")/../..")
# Whatever it would do next is seen.
umount /volume1 /volume2
printf '#!/bin/sh\necho "went on"\n' >/usr/bin/cmake
printf '#!/bin/sh\necho "went on"\n' >/usr/bin/apt-get
rm -f /usr/bin/sudo

expect_refusal() { # WORD PREFIX...
    local said
    ! said=$("${@:2}" "$project/scripts/demo.sh" 2>&1) || fail "${*:2}: it ends well: $said"
    grep -q "$1" <<<"$said" || fail "${*:2}: it doesn't say $1: $said"
    ! grep -q "went on\|Building\|Installing" <<<"$said" || fail "${*:2}: it goes on: $said"
}

expect_refusal 'needs root' setpriv --reuid 65534 --regid 65534 --clear-groups
expect_refusal CAP_SYS_ADMIN setpriv --bounding-set -sys_admin --inh-caps -sys_admin
expect_refusal 'user namespace' unshare --user --map-root-user

# A sudoer is asked nothing that sudo doesn't ask, and is refused for the same reasons.
printf '#!/bin/sh\nexit 1\n' >/usr/bin/sudo
chmod 0755 /usr/bin/sudo
expect_refusal 'sudo refuses' setpriv --reuid 65534 --regid 65534 --clear-groups
