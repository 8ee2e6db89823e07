#!/usr/bin/env bash
# Runs a test module of the whole command in a sample host of its own.
#
#   run.sh SAMPLE_HOST MODULE
set -euo pipefail

if [[ $EUID -ne 0 ]]; then
    echo "skipped: a sample host takes root"
    exit 77
fi
cd "$(dirname "$0")"
export PYTHONDONTWRITEBYTECODE=1
exec "$1" /usr/bin/python3 -m unittest -v "$2"
