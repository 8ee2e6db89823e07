#!/usr/bin/env bash
# In a clean root: builds the packages from sources that scripts/package.sh has put into TARGET, and
# leaves them there.
#
#   scripts/package/build.sh TARGET UPSTREAM VERSION
set -euo pipefail

# Of the caller's settings nothing but what is meant for here.
for name in $(compgen -e); do
    [[ $name =~ ^(HOME|LC_ALL|PATH|TZ|CCACHE_NAMESPACE|VORN_PACKAGE_[A-Z]+)$ ]] || unset "$name"
done

target=$1 upstream=$2 version=$3
folder=${VORN_PACKAGE_FOLDER:-/build}
export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_DIR=/var/cache/ccache
umask "${VORN_PACKAGE_UMASK:-022}"

mkdir -p "$folder"
cd "$folder"
cp "$target/$upstream".orig*.tar.xz .
tar --extract --no-same-permissions --file "$upstream.orig.tar.xz"
cd "${upstream/_/-}"
tar --extract --no-same-permissions --file "../$upstream.orig-cockpit-page.tar.xz"
tar --extract --no-same-permissions --file "$target/debian.tar.xz"
chmod --recursive u=rwX,go=rX debian # The source package has their modes.
sed -i "1s/(.*)/($version)/" debian/changelog
# The policy that the release's own tools know.
! grep -qx VERSION_CODENAME=bookworm /etc/os-release ||
    sed -i 's/^Standards-Version: .*/Standards-Version: 4.6.2/' debian/control
options=(--build=full)
[[ -z ${VORN_PACKAGE_FOREIGN-} ]] || options=(--host-arch "$VORN_PACKAGE_FOREIGN" --build-profiles='cross,nocheck')
dpkg-buildpackage "${options[@]}" -us -uc
cp ../*.{deb,dsc,changes,buildinfo,debian.tar.xz} "$target"
