#!/usr/bin/env bash
# A Debian file tree of one release.
#
#   scripts/vm/tree.sh make RELEASE FOLDER [PACKAGE...]   makes it, with packages
#   scripts/vm/tree.sh enter FOLDER COMMAND [ARG...]      runs a command as root in it
#
# FOLDER must not exist before. Packages come from where this host's apt gets its own, without
# those that are merely recommended. No service starts in the tree. What runs in it finds the
# host's network and, at the path that it has here, the folder of the project.
#
# Needs root and debootstrap. Every mount is made in a private mount namespace and every process
# runs in a PID namespace of its own, so that nothing of either stays, however this ends. FOLDER
# does stay where it can't be finished; whoever has named it removes it.
set -euo pipefail

self=$(realpath "$0")
project=$(realpath "$(dirname "$self")/../..")
keyring=/usr/share/keyrings/debian-archive-keyring.gpg

fail() {
    echo "vm/tree: $1" >&2
    exit "${2:-1}"
}

usage() {
    echo "usage: $0 make RELEASE FOLDER [PACKAGE...] | enter FOLDER COMMAND [ARG...]" >&2
    exit 2
}

inside() { # COMMAND [ARG...]
    chroot "$folder" env --unset=TMPDIR HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
        PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin "$@"
}

# --- Where packages come from --------------------------------------------------------------------

# The address that this host's apt has for one of its suites; empty where it has none.
address_of() { # SUITE
    # shellcheck disable=SC2016 # apt fills these in
    apt-get indextargets --format '$(RELEASE) $(REPO_URI)' 'Created-By: Packages' |
        awk -v suite="$1" '$1 == suite && !found++ { print $2 }'
}

print_source() { # ADDRESS SUITE...
    [[ -n $1 ]] || return 0
    printf 'Types: deb\nURIs: %s\nSuites: %s\nComponents: main\nSigned-By: %s\n\n' \
        "$1" "${*:2}" "$keyring"
}

set_up_apt() { # ADDRESS SECURITY-ADDRESS
    local etc=$folder/etc/apt
    rm -f "$etc/sources.list"
    {
        print_source "$1" "$release" "$release-updates"
        print_source "$2" "$release-security"
    } >"$etc/sources.list.d/debian.sources"
    # How this host reaches them: proxies, and checks that a mirror can't stand.
    apt-config dump Acquire | grep -E '^Acquire::(http|https|Check-|Retries|ForceIPv)' \
        >"$etc/apt.conf.d/99host" || true
}

# --- The tree ------------------------------------------------------------------------------------

mount_kernel_views() {
    mount -t proc proc "$folder/proc"
    mount -t sysfs -o ro sysfs "$folder/sys"
    mount -t devpts -o newinstance,ptmxmode=0666,mode=0620,gid=5 devpts "$folder/dev/pts"
}

# A package's own script asks policy-rc.d before it starts a service; 101 is "forbidden".
install_packages() { # [PACKAGE...]
    local policy=$folder/usr/sbin/policy-rc.d
    printf '#!/bin/sh\nexit 101\n' >"$policy"
    chmod 0755 "$policy"
    cp --dereference /etc/resolv.conf "$folder/etc/resolv.conf"
    inside apt-get --quiet update
    # The tree is worth nothing before it is whole: no need to write each file through.
    inside apt-get --quiet --yes -o Dpkg::Options::=--force-unsafe-io dist-upgrade
    inside apt-get --quiet --yes -o Dpkg::Options::=--force-unsafe-io \
        install --no-install-recommends "$@"
    inside apt-get clean
    rm -f "$folder"/var/lib/apt/lists/*_* "$folder/etc/resolv.conf" "$policy"
}

make() { # [PACKAGE...]
    local codename address security
    codename=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
    address=$(address_of "$codename")
    security=$(address_of "$codename-security")
    [[ -n $address ]] || fail "this host's apt has no source of Debian's release '$codename'"
    debootstrap --variant=minbase --keyring="$keyring" "$release" "$folder" "$address"
    set_up_apt "$address" "$security"
    mount_kernel_views
    install_packages "$@"
}

enter() { # COMMAND [ARG...]
    mount_kernel_views
    mkdir -p "$folder$project"
    mount --bind "$project" "$folder$project"
    touch "$folder/etc/resolv.conf"
    mount --bind "$(realpath /etc/resolv.conf)" "$folder/etc/resolv.conf"
    # shellcheck disable=SC2016 # for the shell in the tree
    inside sh -c 'cd "$1" && shift && exec "$@"' sh "$project" "$@"
}

isolated() { # VERB FOLDER ...
    exec setpriv --pdeathsig KILL \
        unshare --mount --propagation private --pid --fork --kill-child \
        env VORN_VM_TREE_ISOLATED=1 "$self" "$@"
}

verb=${1-}
case $verb in
    make) [[ $# -ge 3 ]] || usage ;;
    enter) [[ $# -ge 3 ]] || usage ;;
    *) usage ;;
esac
[[ $EUID -eq 0 ]] || fail "must be run as root" 2
[[ -n ${VORN_VM_TREE_ISOLATED-} ]] || isolated "$@"
unset VORN_VM_TREE_ISOLATED

if [[ $verb == make ]]; then
    release=$2 folder=$3
    [[ ! -e $folder ]] || fail "$folder exists already"
    make "${@:4}"
else
    folder=$2
    enter "${@:3}"
fi
