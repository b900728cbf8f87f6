#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Builds and starts the web page of a simulated unit, until Ctrl-C. Installs missing packages.
#
#   scripts/panel.sh [OPTIONS]      options of hx-panel
#
# Starts a unit named "bench", and stops it at the end, unless units are running already. Uses the tools of an earlier
# build, such as the one of scripts/demo.sh, or builds them.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh panel
targets=(hx-panel)
if [ -x build/i386/hx-sim ] && [ -x build/i386/hxaux ]; then
    PATH="$PWD/build/i386:$PATH"
else
    targets+=(hx-sim hxaux)
    PATH="$PWD/build/x86_64:$PATH"
fi
export PATH

options=(-DHX_TESTS=OFF)
if [ -e build/x86_64/CMakeCache.txt ]; then options=(); fi # as it is
echo "Building ${targets[*]} (build/panel.log)"
mkdir -p build
: >build/panel.log
{
    cmake --preset x86_64 "${options[@]}" &&
        NINJA_STATUS='[%f/%t] ' cmake --build --preset x86_64 -j "$(nproc)" --target "${targets[@]}"
} 2>&1 | scripts/progress build/panel.log || {
    tail -n 60 build/panel.log
    exit 1
}

stop=
cleanup() { [ -z "$stop" ] || hx-sim stop "$stop"; }
trap cleanup EXIT
if [ -z "$(hx-sim list)" ]; then
    hx-sim start bench
    stop=bench
    echo "Started the unit \"bench\": hx-sim run --unit bench -- hxaux monitor"
fi
build/x86_64/hx-panel "$@"
