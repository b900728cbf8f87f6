#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Builds the 32-bit library, starts a simulated unit and runs the tour against it: a program that knows nothing of any
# simulation and makes real open and ioctl calls. Installs what is missing.
#
#   scripts/demo.sh
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh build

echo "== Building the 32-bit library, the tool and the simulated unit"
mkdir -p build
{
    cmake --preset i386 -DHX_TESTS=OFF
    cmake --build --preset i386 -j "$(nproc)"
} >build/demo.log 2>&1 || {
    tail -n 60 build/demo.log
    exit 1
}

unit="demo-$$"
cleanup() { build/i386/hx-sim stop "$unit" >/dev/null 2>&1 || true; }
trap cleanup EXIT

echo "== Starting the simulated unit \"$unit\""
build/i386/hx-sim start "$unit"

echo "== The tour: examples/tour.cpp, linked with libhx-aux.so.1 as any application"
build/i386/hx-sim run --unit "$unit" -- build/i386/examples/tour

echo
echo "== The same unit through the command line tool"
for request in "version" "voltage 0" "inputs" "info" "backlight get"; do
    echo "\$ hxaux $request"
    # The requests are words of their own on purpose.
    # shellcheck disable=SC2086
    build/i386/hx-sim run --unit "$unit" -- build/i386/hxaux $request | sed 's/^/  /'
done
