#!/usr/bin/env bash
# Measures the centre's questions on many intervals of 80 hosts over 30 days, in the sample host, and prints
# the times: the median of as many calls as are asked for, and the longest.
#
#   bench/centre/questions.sh [--intervals N] [--calls N]
set -euo pipefail

project=$(realpath "$(dirname "$0")/../..")
exec "$project/scripts/sample-host.sh" /usr/bin/python3 "$project/bench/centre/questions.py" "$@"
