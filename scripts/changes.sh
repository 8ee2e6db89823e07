#!/usr/bin/env bash
# Prints what a version has brought, its section of the change log.
#
#   scripts/changes.sh VERSION
set -euo pipefail

[[ $# -eq 1 ]] || {
    echo "usage: $0 VERSION" >&2
    exit 2
}
cd "$(dirname "$(realpath "$0")")/.."

section=$(awk -v heading="## [$1]" '
    index($0, "## ") == 1 || /^\[[^]]*\]: / { inside = 0 }
    index($0, heading) == 1 { inside = 1 }
    inside' CHANGELOG.md)
[[ -n $section ]] || {
    echo "changes: CHANGELOG.md has no version $1" >&2
    exit 1
}
printf '%s\n' "$section"
