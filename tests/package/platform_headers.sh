#!/usr/bin/env bash
# Each header of the platform stands alone, in C++17 and, but for the class, in C11.
#   platform_headers.sh CC CXX INCLUDE_FOLDER
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"

cd "$3"
headers=(vorn/platform/*.h)
[[ ${#headers[@]} -ge 10 ]] || fail "headers found: ${headers[*]}"
for header in "${headers[@]}"; do
    "$2" -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I. -x c++ - \
        <<<"#include \"$header\""
    [[ $header != */string_bundle.h ]] || continue
    "$1" -std=c11 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I. -x c - \
        <<<"#include \"$header\""
done
