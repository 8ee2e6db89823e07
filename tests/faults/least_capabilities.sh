#!/usr/bin/env bash
# Which capabilities the command needs for a complete list: runs it with every set of the two that
# matter, and with the one that the metrics service has as its second, as an unprivileged user and
# as root without the others, while root and two users hold files, and prints what it lists. Fails
# when a set that suffices no longer does, or a smaller one does.
#   least_capabilities.sh COMMAND
set -euo pipefail

# shellcheck source=tests/support/sample_host.sh
source "$(dirname "$(realpath "$0")")/../support/sample_host.sh"
enter_sample_host "$@"
command=$1
failed=0

# A file and a folder that nobody else may reach, held by a process of that user.
hold() { # USER
    local folder=/volume1/share/$1
    mkdir -p "$folder/inside"
    echo held >"$folder/file"
    chown -R "$1:$1" "$folder"
    chmod 0700 "$folder"
    setpriv --reuid "$1" --regid "$1" --clear-groups sleep infinity 7<"$folder/file" \
        8<"$folder/inside" &
    held=$((held + 2))
}

listed() { # USER CAPABILITIES ("+sys_ptrace,+..." or "-all")
    local user=$1 set=$2 files
    local options=(--reuid "$user" --regid "$user" --clear-groups --inh-caps "-all"
        --bounding-set "-all" --ambient-caps "-all")
    if [[ $set != none ]]; then
        options=(--reuid "$user" --regid "$user" --clear-groups --inh-caps "-all,$set"
            --bounding-set "-all,$set" --ambient-caps "-all,$set")
    fi
    files=$(setpriv "${options[@]}" "$command" --by volume --json 2>/dev/null || true)
    jq --raw-output "[(.files | length), ([.files[] | select(.folder)] | length)] | @tsv" \
        <<<"$files"
}

expect() { # USER CAPABILITIES LISTED FOLDERS
    local shown
    shown=$(listed "$1" "$2")
    printf 'user %-6s %-32s files %s of %d, folders known as such %s of %d\n' \
        "$1" "$2" "${shown%$'\t'*}" "$held" "${shown#*$'\t'}" "$((held / 2))"
    [[ $shown == "$3"$'\t'"$4" ]] || { echo "  expected $3, $4" >&2; failed=1; }
}

held=0
for user in 0 1001 1002; do
    hold "$user"
done
complete="$held $((held / 2))"
expect 65534 none 0 0
expect 65534 +sys_ptrace 0 0
expect 65534 +dac_read_search 0 0
# shellcheck disable=SC2086 # two words
expect 65534 +sys_ptrace,+dac_read_search $complete
# shellcheck disable=SC2086 # two words
expect 65534 +sys_ptrace,+dac_override $complete
expect 0 none 0 0 # root's own processes have more rights than it then has
expect 0 +sys_ptrace 2 1
expect 0 +dac_read_search 0 0
# shellcheck disable=SC2086 # two words
expect 0 +sys_ptrace,+dac_read_search $complete
# shellcheck disable=SC2086 # two words
expect 0 +sys_ptrace,+dac_override $complete
exit "$failed"
