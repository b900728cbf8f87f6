#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Installs the Debian 12 packages for a purpose, and lists them. Does nothing when all are installed.
#
#   scripts/install-deps.sh build|panel|test|fast|fleet|system|check|package
#
# build    library, tool and simulated unit
# panel    build, and the web page of a unit
# test     panel, and every test
# fleet    test, and what operators of many units run
# fast     the checks that need no build
# system   test, and the emulated machine
# check    test, and every other check
# package  building and checking the Debian packages
set -euo pipefail

build=(g++ g++-multilib cmake ninja-build libcli11-dev nlohmann-json3-dev libedit2)
panel=("${build[@]}" libmicrohttpd-dev)
tests=("${panel[@]}" pkg-config python3 python3-yaml googletest libgtest-dev make patch binutils clang lld srecord qemu-system-arm fish man-db zsh
    mypy pybind11-dev python3-dev python3-pytest python3-pytest-xdist chromium chromium-driver python3-selenium
    python3-prometheus-client)
fleet=("${tests[@]}" ansible-core)
fast=(black clang-format codespell git python3 shellcheck)
checks=("${fleet[@]}" "${fast[@]}" clang lld clang-tidy libclang-rt-14-dev ccache abigail-tools doxygen graphviz
    gcovr libbenchmark-dev libbenchmark-dev:i386 pkg-config umockdev libumockdev-dev)
system=("${tests[@]}" qemu-system-x86 busybox-static cpio pkg-config libfuse3-dev gzip)
# Servers that their installation would start: their packages are unpacked in build/monitoring/ instead.
tests_unpacked=(prometheus)
fleet_unpacked=(prometheus prometheus-alertmanager prometheus-node-exporter)
packages=("${build[@]}" debhelper debootstrap devscripts dh-python dpkg-dev lintian fakeroot)

unpacked=()
case "${1:-}" in
build) wanted=("${build[@]}") ;;
panel) wanted=("${panel[@]}") ;;
test) wanted=("${tests[@]}") unpacked=("${tests_unpacked[@]}") ;;
fleet) wanted=("${fleet[@]}") unpacked=("${fleet_unpacked[@]}") ;;
fast) wanted=("${fast[@]}") ;;
system) wanted=("${system[@]}") ;;
check) wanted=("${checks[@]}") unpacked=("${fleet_unpacked[@]}") ;;
package) wanted=("${packages[@]}") ;;
*)
    echo "usage: $0 build|panel|test|fast|fleet|system|check|package" >&2
    exit 2
    ;;
esac

# A package of both architectures prints one line for each.
installed() { dpkg-query -W -f='${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed; }

# npm may have come with another package than Debian's.
if [[ " ${wanted[*]} " == *" chromium "* ]] && ! command -v npm >/dev/null; then
    wanted+=(npm)
fi

# The accessibility checks of the panel's page, of this version; npm knows where packages come from.
axe=4.11.4
browser=$(dirname "$0")/../build/browser
monitoring=$(dirname "$0")/../build/monitoring
missing=()
unpack=()
modules=()
for package in "${wanted[@]}"; do
    installed "$package" || missing+=("$package")
done
# A package that is installed needs no copy.
for package in "${unpacked[@]}"; do
    [ -e "$monitoring/usr/bin/$package" ] || installed "$package" || unpack+=("$package")
done
if [[ " ${wanted[*]} " == *" chromium "* ]] && ! grep -qs "\"version\": \"$axe\"" "$browser/node_modules/axe-core/package.json"; then
    modules=("axe-core@$axe")
fi

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "These packages are missing and need root or sudo to install: ${missing[*]} ${unpack[*]}" >&2
        exit 1
    fi
}

# A mirror that is being updated may fail for one index and still have the packages: the installation decides.
update_lists() {
    as_root apt-get update -qq || echo "Some package lists could not be updated; continuing with the existing ones" >&2
}

install_packages() {
    echo "Installing for '$1': ${missing[*]}"
    if [[ " ${missing[*]} " == *:i386* ]] && ! dpkg --print-foreign-architectures | grep -qx i386; then
        echo "Adding the foreign architecture i386 (for 32-bit libraries)"
        as_root dpkg --add-architecture i386
    fi
    update_lists
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
        >/dev/null
}

unpack_packages() {
    echo "Unpacking for '$1' in build/monitoring: ${unpack[*]}"
    downloads=$(mktemp -d)
    trap 'rm -rf "$downloads"' EXIT
    download() { (cd "$downloads" && apt-get download -qq -o APT::Sandbox::User=root "${unpack[@]}" >/dev/null 2>&1); }
    download || { update_lists && download; }
    mkdir -p "$monitoring"
    for package in "$downloads"/*.deb; do
        dpkg-deb -x "$package" "$monitoring"
    done
}

install_modules() {
    echo "Installing for '$1' in build/browser: ${modules[*]}"
    npm install --silent --no-save --no-audit --no-fund --ignore-scripts --prefix "$browser" "${modules[@]}" >/dev/null ||
        echo "npm could not install it: the panel's page is not checked for accessibility" >&2
}

[ ${#missing[@]} -eq 0 ] || install_packages "$1"
[ ${#unpack[@]} -eq 0 ] || unpack_packages "$1"
[ ${#modules[@]} -eq 0 ] || install_modules "$1"
