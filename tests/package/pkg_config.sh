#!/usr/bin/env bash
# Installs the build into /usr and builds programs against it as anyone would with pkg-config.
#   pkg_config.sh BUILD
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"
enter_sample_host "$@"

BUILD=$1
install_build /usr
ldconfig
cd /tmp/consumer

for program in consumer own_operation; do
    # shellcheck disable=SC2046 # flags are words
    c++ -std=c++17 -Wall -Wextra -Werror "$program.cpp" -o "$program" \
        $(pkg-config --cflags --libs vornfilehandle)
done
[[ $(pkg-config --modversion vornfilehandle) == 7.0.* ]] || fail "version of vornfilehandle.pc"
[[ $(pkg-config --libs vornplatform) == *-lvornplatform* ]] || fail "libraries of vornplatform.pc"

expect_lists_open_file ./consumer
expect_own_operation_wins ./own_operation
