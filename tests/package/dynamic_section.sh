#!/usr/bin/env bash
# The library's file and dynamic section: its name, that who supplies the platform stays open, and that
# programs may have functions of their own for what it calls.
#   dynamic_section.sh LIBRARY PLATFORM_SYMBOLS
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"

library=$1
dynamic=$(readelf --dynamic --wide "$library")

[[ $(basename "$library") == libvornfilehandle.so.7.0 ]] || fail "file name $library"
grep -q 'SONAME.*\[libvornfilehandle\.so\.7\]' <<<"$dynamic" || fail "soname: $dynamic"
! grep -q 'NEEDED.*vornplatform' <<<"$dynamic" || fail "the stand-in is linked in: $dynamic"
! grep -q 'SYMBOLIC' <<<"$dynamic" || fail "bound with -Bsymbolic: $dynamic"
! grep -qE 'BIND_NOW|FLAGS_1.*NOW' <<<"$dynamic" || fail "bound at once: $dynamic"

undefined=$(nm --dynamic --undefined-only --format=posix "$library" | sed -E 's/[@ ].*//')
grep -qx syslog <<<"$undefined" || fail "it seems to log nothing: $undefined"
! grep '_chk$' <<<"$undefined" || fail "calls go past a program's own function"
slots=$(readelf --relocs --wide "$library" | c++filt | grep _JUMP_SL)
for function in EraseAdjacentDuplicates FilterPath GetProcOpenedFileInVolume GetServiceName LabelFolder \
    LabelHidden UpdateConnectionInfo; do
    grep -qF "VORN::FileHandle::$function(" <<<"$slots" ||
        fail "a program's own $function would not be called"
done

# Every operation that the stand-in exports is one that the library leaves undefined, but for those
# that a platform may lack: programs ask for them.
optional=$(dirname "$0")/optional-symbols.txt
diff --unified --label "operations of the platform" --label "undefined in the library" \
    <(LC_ALL=C sort --unique "$2" | grep -vxFf "$optional") \
    <(nm --dynamic --undefined-only --demangle --format=posix "$library" |
        sed -E 's/ U *$//' | grep -E '^(KLIBC|VORN|StringBundle)' | LC_ALL=C sort)
