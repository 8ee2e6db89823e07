#!/bin/bash
# systemd_verify.sh DATA: systemd accepts the slices and drop-ins of the folder without a remark.
set -euo pipefail
data=$1

if ! command -v systemd-analyze >/dev/null; then
    echo "skipped: systemd-analyze is not installed (package systemd)"
    exit 77
fi

units=$(mktemp -d)
trap 'rm -rf "$units"' EXIT
cp -r "$data"/. "$units"

# systemd reads a drop-in together with its unit; each gets the least that can be started.
names=()
for dropIn in "$units"/*.d; do
    unit=$(basename "$dropIn" .d)
    printf '[Service]\nExecStart=/bin/true\n' >"$units/$unit"
    names+=("$units/${unit/@./@1.}")
done
for slice in "$units"/*.slice; do
    names+=("$slice")
done

# The trailing colon adds systemd's own units.
output=$(SYSTEMD_UNIT_PATH=$units: systemd-analyze verify --man=no --recursive-errors=yes \
    "${names[@]}" 2>&1) || { echo "$output"; exit 1; }
if [ -n "$output" ]; then
    echo "$output"
    exit 1
fi
echo "${#names[@]} units verified"
