#!/usr/bin/env bash
# What each format costs beside the enumeration: 100,000 records in a sample host, processor time,
# least of several runs. A ratio below 0.5 means that formatting costs less than half of finding.
#
#   bench/format.sh COMMAND        COMMAND is a release build of vorn-openfiles; takes root
set -euo pipefail

project=$(dirname "$(dirname "$(realpath "$0")")")
export VORN_OPENFILES
VORN_OPENFILES=$(realpath "$1")
export PYTHONPATH=$project/tests PYTHONDONTWRITEBYTECODE=1
exec "$project/scripts/sample-host.sh" /usr/bin/python3 "$project/bench/format.py"
