#!/usr/bin/env bash
# The library's file and dynamic section: its name, and that who supplies the platform stays open.
#   dynamic_section.sh LIBRARY PLATFORM_SYMBOLS
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"

library=$1
dynamic=$(readelf --dynamic --wide "$library")

[[ $(basename "$library") == libvornfilehandle.so.7.0 ]] || fail "file name $library"
grep -q 'SONAME.*\[libvornfilehandle\.so\.7\]' <<<"$dynamic" || fail "soname: $dynamic"
! grep -q 'NEEDED.*vornplatform' <<<"$dynamic" || fail "the stand-in is linked in: $dynamic"
! grep -q 'SYMBOLIC' <<<"$dynamic" || fail "bound with -Bsymbolic: $dynamic"

# Every operation that the stand-in exports is one that the library leaves undefined.
diff --unified --label "operations of the platform" --label "undefined in the library" \
    <(LC_ALL=C sort --unique "$2") \
    <(nm --dynamic --undefined-only --demangle --format=posix "$library" |
        sed -E 's/ U *$//' | grep -E '^(KLIBC|VORN|StringBundle)' | LC_ALL=C sort)
