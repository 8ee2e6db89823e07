#!/usr/bin/env bash
# find_package finds the installed version where that answers the request, and fails only where the
# package is required.
#   find_package_requests.sh BUILD
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"

BUILD=$1
folder=$(mktemp --directory)
trap 'rm -rf "$folder"' EXIT
cmake --install "$BUILD" --prefix "$folder/prefix" >/dev/null

# Configures a project with these lines.
configure() { # LINES [OPTION...]
    local source=$folder/source
    rm -rf "$source"
    mkdir "$source"
    printf 'cmake_minimum_required(VERSION 3.25)\nproject(request LANGUAGES CXX)\n%s\n' "$1" \
        >"$source/CMakeLists.txt"
    cmake -G Ninja -S "$source" -B "$source/build" -DCMAKE_PREFIX_PATH="$folder/prefix" "${@:2}" 2>&1
}

request() { # ARGUMENTS; prints lines for configure
    # shellcheck disable=SC2016 # for CMake
    printf 'find_package(vornfilehandle %s)\nmessage("answer: ${vornfilehandle_FOUND} %s")\n' "$1" "$1"
}

# What find_package sets, and its arguments.
answers='1
1 7
1 7.0
1 7.0 EXACT
1 7 EXACT
1 7.0.0 EXACT
1 7.0.0...7.5
1 6...8
1 7.0...<8
1 6.5...7.0.0
0 6
0 8
0 7.1
0 7.0.1 EXACT
0 70 EXACT
0 6...<7
0 7.1...8
0 6...<7.0.0'
lines=$(sed -E 's/^. ?//' <<<"$answers" | while IFS= read -r arguments; do request "$arguments"; done)
said=$(configure "$lines") || fail "a request is an error: $said"
diff --unified --label expected --label answered <(echo "$answers") \
    <(sed -n 's/^answer: //p' <<<"$said" | sed 's/ *$//')

# A library that is missing is an answer as well.
mkdir "$folder/nothing"
printf '#!/bin/sh\nPKG_CONFIG_LIBDIR=%s exec pkg-config "$@"\n' "$folder/nothing" \
    >"$folder/pkg-config"
chmod 0755 "$folder/pkg-config"
without_jsoncpp=-DPKG_CONFIG_EXECUTABLE=$folder/pkg-config
said=$(configure "$(request '' && request QUIET)" "$without_jsoncpp") ||
    fail "without JsonCpp it is an error: $said"
[[ $(grep -c '^answer: 0' <<<"$said") -eq 2 ]] || fail "it is found without JsonCpp: $said"
! said=$(configure "$(request REQUIRED)" "$without_jsoncpp") || fail "it is found: $said"
grep -q JsonCpp <<<"$said" || fail "nothing says that JsonCpp is missing: $said"
