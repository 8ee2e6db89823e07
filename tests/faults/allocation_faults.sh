#!/usr/bin/env bash
# Lets every allocation fail once (allocation_faults.cpp) on a small host with shares, services,
# clients and open files.
#   allocation_faults.sh PROGRAM SERVER
set -euo pipefail

# shellcheck source=tests/support/sample_host.sh
source "$(dirname "$(realpath "$0")")/../support/sample_host.sh"
enter_sample_host "$@"
program=$1
server=$2

# Services with a text in the bundle and, for when that is not to be had, another name.
write_units() {
    local slice key text
    mkdir -p /usr/lib/systemd/system
    while read -r slice key text; do
        printf '[X-Vornalis]\nName=plain %s\nNameI18n=service:%s\n' "$text" "$key" \
            >"/usr/lib/systemd/system/$slice.slice"
    done <<END
SMBService smb SMB
atalk afp AFP
ftpd ftp FTP
sshd ssh SSH
inetd inetd Internet services (inetd)
END
}

# Samba's tools answer at once, so that thousands of runs take seconds.
write_shares() {
    mkdir -p /etc/samba /etc/exports.d /volume1/photo /volume1/music /volume2/docs
    printf '[global]\n[photo]\n\tpath = /volume1/photo\n' >/etc/samba/smb.conf
    rm -f /usr/bin/testparm
    printf '#!/bin/sh\ncat /etc/samba/smb.conf\n' >/usr/bin/testparm
    chmod 0755 /usr/bin/testparm
    echo '/volume1/music *(ro)' >/etc/exports
    echo '/volume2/docs *(ro)' >/etc/exports.d/docs.exports
}

# A client of an SMB server has logged in.
write_session() { # SERVER_PID USER
    rm -f /usr/bin/smbstatus
    cat >/usr/bin/smbstatus <<END
#!/bin/sh
echo '{"sessions": {"1": {"server_id": {"pid": "$1"}, "uid": 5001, "username": "$2"}}}'
END
    chmod 0755 /usr/bin/smbstatus
}

# A server with a client, a file on a volume and a service of its own.
start_server() { # NAME SLICE USER FILE
    mkdir -p "/srv/$1" "/sys/fs/cgroup/systemd/$2"
    cp "$server" "/srv/$1/$1"
    echo held >"$4"
    mkfifo "/srv/$1/ready"
    # shellcheck disable=SC2016 # expanded by the inner shell
    setpriv --reuid "$3" --regid "$3" --clear-groups "/srv/$1/$1" <"$4" 3<"$4" \
        >"/srv/$1/ready" &
    echo $! >"/sys/fs/cgroup/systemd/$2/cgroup.procs"
    read -r _ <"/srv/$1/ready"
}

# A volume that is in sight under another path as well.
bind_volume() {
    mkdir -p /srv/jail
    mount --bind /volume1/photo /srv/jail
}

write_units
write_shares
bind_volume
start_server smbd SMBService.slice 0 /volume1/photo/held
write_session $! alice
start_server sshd sshd.slice 65534 /volume1/music/held
start_server vsftpd ftpd.slice 0 /volume2/docs/held
"$program"
