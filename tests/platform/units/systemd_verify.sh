#!/bin/bash
# systemd_verify.sh DATA: systemd accepts the slices and drop-ins of the folder without a remark,
# puts each unit that has a drop-in into the slice that it names, and finds the services no more
# exposed than they are said to be.
set -euo pipefail
data=$1
manager=/lib/systemd/systemd

if [ ! -x $manager ] || ! command -v systemd-analyze >/dev/null; then
    echo "skipped: systemd is not installed (package systemd)"
    exit 77
fi

units=$(mktemp -d)
trap 'rm -rf "$units"' EXIT
chmod 755 "$units"
cp -r "$data"/. "$units"
# What they start is looked for, and need not be installed here.
sed -i -E 's#^(Exec[A-Za-z]+=)(vorn-[a-z]+|/usr/lib/systemd/systemd-journal-upload)#\1/bin/true#' "$units"/*.service
export SYSTEMD_UNIT_PATH=$units: # the trailing colon adds systemd's own units

# systemd reads a drop-in together with its unit; each gets the least that can be started.
names=()
expected=
for dropIn in "$units"/*.d; do
    unit=$(basename "$dropIn" .d)
    printf '[Service]\nExecStart=/bin/true\n' >"$units/$unit"
    names+=("${unit/@./@1.}")
    slice=$(sed -n 's/^Slice=//p' "$dropIn"/*.conf)
    # systemd makes up a slice that has no file; ours are to be the ones with the names.
    expected+="${unit/@./@1.} $slice"$'\n'"$slice -.slice $units/$slice"$'\n'
done
for unit in "$data"/*.{slice,timer,mount,service}; do
    names+=("$(basename "$unit")")
done
printf '[Unit]\nWants=%s\n' "${names[*]}" >"$units/all.target"

remarks=$(systemd-analyze verify --man=no --recursive-errors=yes "${names[@]/#/$units/}" 2>&1) ||
    remarks+=" (refused)"
if [ -n "$remarks" ]; then
    echo "$remarks"
    exit 1
fi

# The manager tells what it would start, but never to root.
ordinary=()
if [ "$(id -u)" = 0 ]; then
    ordinary=(setpriv --reuid=65534 --regid=65534 --clear-groups)
fi
placed=$("${ordinary[@]}" $manager --test --system --unit=all.target --log-target=console 2>&1 |
    awk '/^\t(->|→) Unit /        { unit = $3; sub(/:$/, "", unit) }
         /^\t\tSlice: /         { slice[unit] = $2 }
         /^\t\tFragment Path: / { path[unit] = $3 }
         END { for (unit in slice) print unit, slice[unit] (unit ~ /\.slice$/ ? " " path[unit] : "") }')
missing=$(comm -23 <(sort -u <<<"${expected%$'\n'}") <(sort <<<"$placed"))
if [ -n "$missing" ]; then
    printf 'not placed as expected:\n%s\n' "$missing"
    exit 1
fi

# Ten times the exposure that docs/reliability.md names; 0.3 more where CAP_SYS_ADMIN is needed.
exposed=0
for service in "$data"/*.service; do
    threshold=25
    [[ $service != */vorn-openfiles-events.service ]] || threshold=28
    systemd-analyze security --offline=yes --no-pager --threshold=$threshold "$service" >"$units/exposure" ||
        { cat "$units/exposure"; exposed=1; }
done
[ "$exposed" = 0 ]
echo "${#names[@]} units verified"
