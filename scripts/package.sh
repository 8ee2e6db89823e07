#!/usr/bin/env bash
# Debian's packages of the project, and clean roots to make and try them in.
#
#   scripts/package.sh build RELEASE [SUFFIX]           makes them, in build/packages/RELEASE
#   scripts/package.sh cross RELEASE                    those for arm64, in build/packages/RELEASE-arm64
#   scripts/package.sh enter RELEASE COMMAND [ARG...]   runs a command as root in a clean root
#
# RELEASE is bookworm or trixie, whichever this host is of. SUFFIX is put behind the version.
#
# A clean root is a Debian of that release with what the packages are built with, and lintian. It has
# the folder of the project at the path that it has here; whatever else is written in it is gone with it.
# What clean roots begin with, and what the compiler has made, is kept beside the images of scripts/vm.sh
# (VORN_VM_CACHE): once they are there, and the page's packages in cockpit/node_modules, nothing needs a
# network.
#
# For tests: VORN_PACKAGE_TARGET is a folder in the project's instead of build/packages/RELEASE; the build
# has VORN_PACKAGE_FOLDER, VORN_PACKAGE_UMASK, TZ and CCACHE_NAMESPACE.
#
# Needs root, git, debootstrap, node, npm and mandoc (the groups build, vm and page of
# scripts/install-deps.sh).
set -euo pipefail

self=$(realpath "$0")
scripts=$(dirname "$self")
project=$(dirname "$scripts")

fail() {
    echo "package: $1" >&2
    exit "${2:-1}"
}

usage() {
    sed -n '4,6s/^# *//p' "$self" >&2
    exit 2
}

# --- Clean roots ---------------------------------------------------------------------------------

build_dependencies() { # prints one a line
    sed -n '/^Build-Depends:/,/^[^ B]/s/^ \([a-z0-9.+-]*\).*/\1/p' "$project/debian/control" |
        sed 's/^debhelper-compat$/debhelper/'
}

fill_tree() { # PACKAGE...
    "$scripts/vm/tree.sh" make "$release" "$tree.new" "$@" || return
    # shellcheck disable=SC2016 # for the shell in the tree
    [[ -z $foreign ]] || "$scripts/vm/tree.sh" enter "$tree.new" sh -ec '
        dpkg --add-architecture "$1"
        apt-get --quiet update
        apt-get --quiet --yes -o Dpkg::Options::=--force-unsafe-io install --no-install-recommends \
            "crossbuild-essential-$1"
        apt-get --quiet --yes -o Dpkg::Options::=--force-unsafe-io build-dep --no-install-recommends \
            --host-architecture "$1" -P cross,nocheck "$2"
        apt-get clean
        rm -f /var/lib/apt/lists/*_*' sh "$foreign" "$project"
}

make_tree() {
    local packages checksum lock
    mapfile -t packages < <(build_dependencies)
    # The last one is what the page's package stands on where it is tried.
    packages+=(build-essential ccache lintian cockpit-bridge)
    checksum=$(cat - "$scripts/vm/tree.sh" <<<"${packages[*]}" | sha256sum)
    mkdir -p "$cache"
    exec {lock}>"$tree.lock"
    flock "$lock"
    if [[ ! -e $tree/.checksum || $(<"$tree/.checksum") != "$checksum" ]]; then
        echo "Making a clean root of $release, which takes some minutes ..." >&2
        rm -rf --one-file-system "$tree" "$tree.new"
        fill_tree "${packages[@]}" >"$tree.log" 2>&1 || fail "$(tail -n 20 "$tree.log")"
        mkdir -p "$tree.new/var/cache/ccache"
        echo "$checksum" >"$tree.new/.checksum"
        mv "$tree.new" "$tree"
    fi
    exec {lock}>&-
}

# Every mount is private, and what is written goes to memory.
enter_isolated() { # COMMAND [ARG...]
    mkdir -p "$tree-ccache"
    mount -t tmpfs -o mode=0755 tmpfs /mnt
    mkdir /mnt/{root,upper,work}
    mount -t overlay -o "lowerdir=$tree,upperdir=/mnt/upper,workdir=/mnt/work" overlay /mnt/root
    mount --bind "$tree-ccache" /mnt/root/var/cache/ccache
    "$scripts/vm/tree.sh" enter /mnt/root "$@"
}

enter() { # COMMAND [ARG...]
    make_tree
    unshare --mount --propagation private \
        env VORN_PACKAGE_ISOLATED=1 VORN_PACKAGE_FOREIGN="$foreign" "$self" enter "$release" "$@"
}

# --- The build -----------------------------------------------------------------------------------

# The same files are the same bytes.
pack() { # ARCHIVE ARG...
    tar --create --xz --file "$1" --sort=name \
        --mtime="@$(dpkg-parsechangelog -l "$project/debian/changelog" -S Timestamp)" \
        --owner=0 --group=0 --numeric-owner --mode=u=rwX,go=rX "${@:2}"
}

# What git has or would take, as it lies here.
archive() { # ARCHIVE FOLDER [PATHSPEC...]
    git -C "$project" ls-files -z --cached --others --exclude-standard -- "${@:3}" |
        while IFS= read -r -d '' file; do
            [[ ! -e $project/$file ]] || printf '%s\0' "$file"
        done |
        pack "$1" --directory "$project" --null --files-from - --transform "s,^,$2,"
}

# A clean root has no way to the packages that the page is built of: see debian/README.source.
archive_page() { # ARCHIVE
    local page=$project/cockpit built=$target/page program
    for program in node npm mandoc; do
        command -v "$program" >/dev/null || fail "the page needs $program: scripts/install-deps.sh page"
    done
    [[ ! $page/node_modules/.package-lock.json -ot $page/package-lock.json ]] ||
        npm --prefix "$page" ci --no-progress >"$target/npm.log" 2>&1 || fail "$(cat "$target/npm.log")"
    node "$page/build.mjs" "$built"
    pack "$1" --directory "$built" --transform 's,^\.,cockpit-page,' .
    rm -r "$built"
}

build() { # [SUFFIX]
    local version target upstream log
    version=$(dpkg-parsechangelog -l "$project/debian/changelog" -S Version)
    upstream=vornfilehandle_${version%-*}
    target=$(realpath --canonicalize-missing \
        "${VORN_PACKAGE_TARGET:-$project/build/packages/$release${foreign:+-$foreign}}")
    [[ $target == "$project"/* ]] || fail "$target is not in $project" 2
    rm -rf "$target"
    mkdir -p "$target"
    archive "$target/$upstream.orig.tar.xz" "${upstream/_/-}/" . ':!debian'
    archive_page "$target/$upstream.orig-cockpit-page.tar.xz"
    archive "$target/debian.tar.xz" '' debian
    log=$target/build.log
    enter "$scripts/package/build.sh" "$target" "$upstream" "$version~${numbers[$release]}${1-}" \
        >"$log" 2>&1 || fail "$(tail -n 40 "$log")"
    rm "$target/debian.tar.xz"
}

# --- Verbs ---------------------------------------------------------------------------------------

# One release's packages are replaced by the next one's.
declare -A numbers=([bookworm]=deb12 [trixie]=deb13)

verb=${1-} release=${2-}
shift 2 || usage
[[ -v numbers[$release] ]] || fail "no release '$release', but ${!numbers[*]}" 2
[[ $EUID -eq 0 ]] || fail "must be run as root" 2
cache=$(realpath --canonicalize-missing "${VORN_VM_CACHE:-${XDG_CACHE_HOME:-/var/cache}/vorn-vm}")
foreign=${VORN_PACKAGE_FOREIGN-} # the architecture that is built for, where it isn't this host's
[[ $verb != cross ]] || foreign=arm64
tree=$cache/$release-package${foreign:+-$foreign}
case $verb/$#/${VORN_PACKAGE_ISOLATED-} in
    build/[01]/) build "$@" ;;
    cross/0/) build ;;
    enter/0/*) usage ;;
    enter/*/1)
        unset VORN_PACKAGE_ISOLATED
        enter_isolated "$@"
        ;;
    enter/*/) enter "$@" ;;
    *) usage ;;
esac
