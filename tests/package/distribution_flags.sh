#!/usr/bin/env bash
# The library keeps what it promises to programs, whatever flags a distribution has for its packages.
#   distribution_flags.sh SOURCE PLATFORM_SYMBOLS
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"

source=$1 platform=$2
folder=$(mktemp --directory)
trap 'rm -rf "$folder"' EXIT

while read -r compiler linker lto; do
    cmake -G Ninja -S "$source" -B "$folder/$compiler" -DVORN_BUILD_TESTS=OFF \
        -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_COMPILER="$compiler" \
        -DCMAKE_CXX_FLAGS="-O2 -D_FORTIFY_SOURCE=2 $lto" \
        -DCMAKE_SHARED_LINKER_FLAGS="-fuse-ld=$linker -Wl,-z,relro,-z,now,-O1" >/dev/null
    cmake --build "$folder/$compiler" --target vornfilehandle >/dev/null
    "$(dirname "$0")/dynamic_section.sh" "$folder/$compiler/lib/libvornfilehandle.so.7.0" "$platform"
done <<'END'
g++ bfd -flto=auto
clang++ lld -flto=thin
END
