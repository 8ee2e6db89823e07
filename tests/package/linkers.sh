#!/usr/bin/env bash
# A program gets the stand-in from every linker, also where only what is needed is linked.
#   linkers.sh BUILD
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"
enter_sample_host "$@"

BUILD=$1
install_build /usr
ldconfig
cd /tmp/consumer

link_with_pkg_config() { # COMPILER LINKER
    local program
    for program in consumer own_operation; do
        # shellcheck disable=SC2046 # flags are words
        "$1" "-fuse-ld=$2" -Wl,--as-needed "pkg-config/$program.o" -o "pkg-config/$program" \
            $(pkg-config --libs vornfilehandle)
    done
}

# Nothing but the linker differs from the time before.
link_with_cmake() { # COMPILER LINKER
    cmake -G Ninja -B "cmake-$1" -DCMAKE_CXX_COMPILER="$1" \
        -DCMAKE_EXE_LINKER_FLAGS="-fuse-ld=$2 -Wl,--as-needed" >/dev/null
    cmake --build "cmake-$1" >/dev/null
}

mkdir pkg-config
for compiler in g++ clang++; do
    for program in consumer own_operation; do
        # shellcheck disable=SC2046 # flags are words
        "$compiler" -std=c++17 -c "$program.cpp" -o "pkg-config/$program.o" \
            $(pkg-config --cflags vornfilehandle)
    done
    for linker in bfd gold lld mold; do
        echo "$compiler with $linker"
        link_with_pkg_config "$compiler" "$linker"
        link_with_cmake "$compiler" "$linker"
        for folder in pkg-config "cmake-$compiler"; do
            expect_lists_open_file "$folder/consumer"
            expect_own_operation_wins "$folder/own_operation"
        done
    done
done
