#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Builds both ABIs and runs every test. Installs missing packages.
#
#   scripts/test.sh [CTEST OPTIONS]      e.g. scripts/test.sh -R Backlight
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh test

for preset in i386 x86_64; do
    echo "== building $preset"
    cmake --preset "$preset" -DHX_TESTS=ON >"build-$preset.log" 2>&1 || { cat "build-$preset.log" && exit 1; }
    mkdir -p build && mv "build-$preset.log" "build/$preset.log"
    cmake --build --preset "$preset" -j "$(nproc)" >>"build/$preset.log" 2>&1 || { tail -n 60 "build/$preset.log" && exit 1; }
done

# One run over both ABIs, so that it ends with one summary. Many tests wait for processes and for time to pass: six for
# each processor keep them busy.
echo 'subdirs("i386" "x86_64")' >build/CTestTestfile.cmake
exec ctest --test-dir build --output-on-failure -j $(($(nproc) * 6)) "$@"
