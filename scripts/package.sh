#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Builds the Debian packages for i386 and amd64, each in a root of its own architecture, so that their dependencies are
# named as there; checks them with lintian; installs, uses and removes them in a fresh root.
#
#   scripts/package.sh [--try] [i386|amd64]...      results in build/packages/
#
# With --try it only installs, uses and removes what an earlier run built. Half an hour for both architectures.
# Needs root (for the roots), and uses the package mirrors of this machine.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh package
[ "$(id -u)" -eq 0 ] || {
    echo "building in separate roots needs root; run with sudo" >&2
    exit 1
}

build=yes
if [ "${1:-}" = --try ]; then
    build=no
    shift
fi
architectures=("$@")
[ ${#architectures[@]} -gt 0 ] || architectures=(i386 amd64)
version=$(sed -n 's/^project(HXAux VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
work=$PWD/build/packages
mkdir -p "$work"

# shellcheck disable=SC2016  # apt-get fills in the fields
mirror=$(apt-get indextargets --format '$(SITE) $(RELEASE)' 'Created-By: Packages' | awk '$2 == "bookworm" { print $1; exit }')

in_root() { # root, command
    chroot "$1" /bin/bash -c "export DEBIAN_FRONTEND=noninteractive LC_ALL=C; $2"
}

release_root() { umount "$1/proc" 2>/dev/null || true; }
release_all() {
    for architecture in "${architectures[@]}"; do
        release_root "$work/root-$architecture"
        release_root "$work/try-$architecture"
    done
}
trap release_all EXIT

# A minimal system, kept as an archive for the next run.
fresh_root() { # architecture, place
    local archive="$work/base-$1.tar"
    if [ ! -e "$archive" ]; then
        echo "   a minimal $1 system"
        release_root "$2"
        rm -rf "$2"
        debootstrap --arch="$1" --variant=minbase bookworm "$2" "$mirror" >"$work/debootstrap-$1.log"
        cp /etc/apt/apt.conf.d/* "$2/etc/apt/apt.conf.d/" 2>/dev/null || true
        tar -C "$2" -cf "$archive" .
    fi
    release_root "$2" # an interrupted run may have left it
    rm -rf "$2" && mkdir -p "$2" && tar -C "$2" -xf "$archive"
    cp /etc/hosts /etc/resolv.conf "$2/etc/"
    mount -t proc proc "$2/proc"
    in_root "$2" 'apt-get update -qq'
}

build_in_root() { # architecture
    local root="$work/root-$1" source="hx-aux-$version" indep="-B"
    [ "$1" = amd64 ] && indep="-b" # documentation is the same for all architectures and built once
    fresh_root "$1" "$root"
    mkdir -p "$root/build/$source"
    git archive HEAD | tar -x -C "$root/build/$source"
    cp -r packaging/debian "$root/build/$source/debian"
    echo "   building for $1"
    in_root "$root" "apt-get install -y -qq --no-install-recommends build-essential fakeroot lintian >/dev/null 2>&1 &&
        cd /build/$source && apt-get build-dep -y -qq . >/dev/null 2>&1 && dpkg-buildpackage -us -uc $indep" \
        >"$work/build-$1.log" 2>&1 || {
        tail -n 60 "$work/build-$1.log"
        return 1
    }
    echo "   lintian for $1"
    in_root "$root" "cd /build && lintian --fail-on error,warning --allow-root *.changes" | tee "$work/lintian-$1.log"
    cp "$root"/build/*.deb "$root"/build/*.changes "$root"/build/*.buildinfo "$work/"
    release_root "$root"
}

# Installs everything into a fresh root, compiles a program in three ways, runs it, and removes everything again.
try_in_root() { # architecture
    local root="$work/try-$1"
    fresh_root "$1" "$root"
    mkdir -p "$root/packages"
    cp "$work"/*_"$1".deb "$work"/*_all.deb "$root/packages/" 2>/dev/null || true
    cp -r packaging/try-packages.sh examples/application "$root/packages/"
    echo "   trying the $1 packages"
    in_root "$root" "/packages/try-packages.sh"
    release_root "$root"
    rm -rf "$root"
}

if [ "$build" = yes ]; then
    for architecture in "${architectures[@]}"; do
        echo "== $architecture"
        build_in_root "$architecture"
    done
fi
for architecture in "${architectures[@]}"; do
    echo "== $architecture, installed"
    try_in_root "$architecture"
done
ls -l "$work"/*.deb
