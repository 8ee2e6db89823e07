#!/usr/bin/env bash
# A library exports what is listed, and nothing else.
#   exported_symbols.sh LIBRARY LIST
set -euo pipefail

diff --unified --label expected --label exported "$2" \
    <(nm --dynamic --defined-only --demangle --format=posix "$1" |
        sed -E 's/ [A-Za-z] [0-9a-f]+ [0-9a-f]*$//' | LC_ALL=C sort)
