#!/usr/bin/env bash
# Measures how quickly the loader takes what has gathered while it was down, in the sample host.
#
#   bench/centre/backlog.sh [--events N] [--hosts N]
set -euo pipefail

project=$(realpath "$(dirname "$0")/../..")
exec "$project/scripts/sample-host.sh" /usr/bin/python3 "$project/bench/centre/backlog.py" "$@"
