#!/usr/bin/env bash
# How long it takes to ask many hosts at once, as docs/fleet-now.md has it: addresses of this machine,
# each connection a real one, served by one sshd.
#
#   scripts/sample-host.sh bench/fleet_now.sh [HOSTS]      80 hosts unless told otherwise
#
# Client and all hosts share this machine's processors. BUILD says where the command was built.
set -euo pipefail

hosts=${1:-80}
build=${BUILD:-build/release}
[[ ${VORN_SAMPLE_HOST-} ]] || {
    echo "fleet_now: for a sample host alone; see the head of this file" >&2
    exit 2
}

cmake --install "$build" >/dev/null
ldconfig
mkdir -p /run/sshd /volume1/projects
ssh-keygen -q -t ed25519 -N '' -f /root/key
ssh-keygen -A >/dev/null
/usr/sbin/sshd -f /dev/null -o UsePAM=no -o MaxStartups=1000 -o StrictModes=no \
    -o AuthorizedKeysFile=/root/key.pub
for ((host = 1; host <= hosts; ++host)); do
    printf '127.0.1.%d storage%02d\n' "$host" "$host"
done >>/etc/hosts
printf 'IdentityFile /root/key\nStrictHostKeyChecking no\nUserKnownHostsFile /dev/null\nLogLevel ERROR\n' \
    >/etc/ssh/ssh_config.d/fleet.conf

exec 9>/volume1/projects/plan.ods
time clush -w "storage[01-$hosts]" -l root -b \
    'vorn-openfiles -q --strict --timeout 20 --where share=projects; case $? in 0) echo in use ;; 1) echo free ;; *) echo cannot tell ;; esac'
