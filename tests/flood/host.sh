#!/usr/bin/env bash
# Inside the sample host: starts sshd and runs a command with SSH_COMMAND set
# to what runs one session that holds a file, and a connection that is dropped before it is one.
#
#   tests/flood/host.sh COMMAND [ARG...]
#
# Exit status: that of COMMAND; 77 without an SSH server or client.
set -euo pipefail

keys=/run/flood
port=22 # the sample host's network is its own

start_sshd() {
    mkdir -p "$keys" /run/sshd
    chmod 700 "$keys"
    local name
    for name in host user; do
        ssh-keygen -q -t ed25519 -N '' -f "$keys/$name"
    done
    # A client ends when its pipe does; sshd must not hold what the test reads.
    /usr/sbin/sshd -f /dev/null -h "$keys/host" -p "$port" -o ListenAddress=127.0.0.1 \
        -o UsePAM=no -o PermitRootLogin=yes -o StrictModes=no -o MaxStartups=100 \
        -o AuthorizedKeysFile="$keys/user.pub" -o PidFile="$keys/pid" -E "$keys/log"
}

write_session() {
    # No pattern removes the file: expanding it would hold the folder open, which nobody expects.
    cat >"$keys/session" <<END
#!/bin/bash
: </dev/tcp/127.0.0.1/$port
pid=\$(ssh -F /dev/null -q -i $keys/user -p $port -o BatchMode=yes -o StrictHostKeyChecking=no \\
    -o UserKnownHostsFile=/dev/null root@127.0.0.1 \\
    'echo \$\$; exec 3>/volume1/photo/ssh-p\$\$; exec sleep 0.1' </dev/null)
status=\$?
rm -f "/volume1/photo/ssh-p\$pid"
exit \$status
END
    chmod 755 "$keys/session"
}

if ! command -v ssh >/dev/null || [[ ! -x /usr/sbin/sshd ]]; then
    echo "skipped: needs an SSH server and client, whose sessions come and go"
    exit 77
fi
start_sshd
write_session
export SSH_COMMAND=$keys/session
exec "$@"
