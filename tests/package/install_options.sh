#!/usr/bin/env bash
# What CMake is asked for: components, the folder of units, no drop-ins, nothing of 32 bits.
#   install_options.sh SOURCE BUILD
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"

source=$1 build=$2
folder=$(mktemp --directory)
trap 'rm -rf "$folder"' EXIT

install_into() { # NAME BUILD [OPTION...]
    DESTDIR=$folder/$1 cmake --install "${@:2}" >/dev/null
}

installed() { # NAME
    (cd "$folder/$1" && find . ! -type d | LC_ALL=C sort)
}

# Each file is of one component, which the packages have by their names.
install_into all "$build"
for component in libvornfilehandle libvornplatform libvornfilehandle-dev vorn-openfiles \
    vorn-services vorn-slices vorn-openfiles-centre cockpit-vorn-openfiles; do
    # The page is there only where it could be built.
    mkdir -p "$folder/$component"
    install_into "$component" "$build" --component "$component"
    installed "$component"
done | LC_ALL=C sort >"$folder/components"
diff --unified --label installed --label "in components" <(installed all) "$folder/components"

# What is installed looks for libraries where the system has them, what is built in no current folder.
for program in "$folder"/all/usr/*bin/*; do
    ! readelf --dynamic "$program" | grep -E 'R(UN)?PATH' || fail "$program has a path of its own"
done
for binary in "$build"/{bin,lib}/*; do
    ! readelf --dynamic "$binary" 2>&1 | grep -E 'R(UN)?PATH.*(\[:|::|:\]|\[\]|\[/|:/)' ||
        fail "$binary looks for libraries in the current folder or in one of this build"
done

cmake -G Ninja -S "$source" -B "$folder/build" -DCMAKE_INSTALL_PREFIX=/usr -DVORN_BUILD_TESTS=OFF \
    -DVORN_UNIT_FOLDER=/opt/units -DVORN_INSTALL_DROP_INS=OFF >/dev/null
install_into units "$folder/build" --component vorn-services
[[ -f $folder/units/opt/units/sshd.slice && ! -e $folder/units/usr ]] ||
    fail "units in another folder: $(installed units)"
[[ -z $(find "$folder/units" -name '*.d') ]] || fail "drop-ins: $(installed units)"

# A compiler that knows 32 bits will do, without libraries for them.
! said=$(cmake -G Ninja -S "$source" -B "$folder/narrow" -DCMAKE_C_FLAGS=-m32 \
    -DCMAKE_CXX_FLAGS=-m32 -DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY 2>&1) ||
    fail "32 bits are accepted: $said"
grep -q '64-bit systems only' <<<"$said" || fail "32 bits: $said"
