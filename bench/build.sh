#!/usr/bin/env bash
# Installs what the benchmarks need and builds them, optimised, in build/release.
set -euo pipefail

cd "$(dirname "$0")/.."
scripts/install-deps.sh build run bench test
cmake --preset release >/dev/null
cmake --build --preset release
