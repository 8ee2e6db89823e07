#!/usr/bin/env bash
# The library calls no function of the C library but those that are listed with how they fail, and
# makes each listed call whose failure is tried.
#   c_library_calls.sh LIBRARY CALLS PLATFORM_SYMBOLS
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"

library=$1
calls=$2
platform=$3

# What is undefined, but for C++, its runtime, the compiler's optional hooks (w without a version)
# and the platform; "__read_chk@GLIBC_2.4 U" becomes "read", "__isoc23_strtol@GLIBC_2.38 U" "strtol".
called=$(nm --dynamic --undefined-only --format=posix "$library" |
    grep -vE '^_Z|@(GLIBCXX|CXXABI|GCC)_|^[^@]+ w' |
    sed -E 's/[@ ].*//; s/^__(.+)_chk$/\1/; s/^__isoc[0-9]+_//' | grep -vxFf "$platform" | LC_ALL=C sort --unique)
listed=$(sed -E '/^(#|$)/d; s/ .*//' "$calls" | LC_ALL=C sort)
failing=$(awk '$1 != "#" && $2 == "fails" { print $1 }' "$calls" | LC_ALL=C sort)

grep -qx readlink <<<"$called" || fail "$library seems to call nothing: $called"
wrong=$(grep -vE '^(#|$)|^\w+ +(fails$|elsewhere +tests/|cannot +\w)' "$calls" || true)
[[ -z $wrong ]] || fail "lines of another form: $wrong"
unlisted=$(comm -23 <(echo "$called") <(echo "$listed"))
[[ -z $unlisted ]] || fail "called, and nothing is said of how they fail: $unlisted"
gone=$(comm -13 <(echo "$called") <(echo "$failing"))
[[ -z $gone ]] || fail "listed as failing, and not called: $gone"
while read -r file; do
    [[ -f $(dirname "$0")/../../$file ]] || fail "no such test: $file"
done < <(awk '$1 != "#" && $2 == "elsewhere" { print $3 }' "$calls")
