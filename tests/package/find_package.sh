#!/usr/bin/env bash
# Installs the build into a prefix of its own and builds programs against it with find_package.
#   find_package.sh BUILD
# shellcheck source=SCRIPTDIR/support.sh
source "$(dirname "$0")/support.sh"
enter_sample_host "$@"

BUILD=$1
install_build /opt/vorn
cmake -S /tmp/consumer -B /tmp/consumer/build -DCMAKE_PREFIX_PATH=/opt/vorn >/dev/null
cmake --build /tmp/consumer/build >/dev/null

expect_lists_open_file /tmp/consumer/build/consumer
expect_own_operation_wins /tmp/consumer/build/own_operation
