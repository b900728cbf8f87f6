#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Runs all tests with coverage counters and prints lines and branches of the library, component by component.
# Fails below 98 % of lines or 95 % of branches. The page is build/coverage/html/index.html.
#
#   scripts/coverage.sh           all tests (20 minutes)
#   scripts/coverage.sh --fuzz    what the fuzz targets' corpora alone reach, file by file; no limit
set -euo pipefail
cd "$(dirname "$0")/.."

tests=()
[ "${1:-}" = --fuzz ] && tests=(-R ':Fuzz\.')

cmake --preset coverage -DHX_TESTS=ON
cmake --build --preset coverage -j "$(nproc)"
find build/coverage -name '*.gcda' -delete
ctest --test-dir build/coverage --output-on-failure -j "$(nproc)" "${tests[@]}"

# The branch of a failed assertion is unreachable.
trace=build/coverage/coverage.json
gcovr --root . --object-directory build/coverage --exclude-throw-branches --exclude-unreachable-branches \
    --exclude-branches-by-pattern '\s*assert\(.*' --gcov-ignore-parse-errors --filter src/ --json "$trace"
if [ "${1:-}" = --fuzz ]; then
    gcovr --root . --add-tracefile "$trace"
    exit
fi

# gcovr removes what stands under the name of its output before it writes: no device may be named here.
for component in platform settings devices backlight upgrade; do
    echo "== $component"
    gcovr --root . --add-tracefile "$trace" --filter "src/$component/" --print-summary --output "build/coverage/$component.txt"
done
mkdir -p build/coverage/html
echo "== the library"
gcovr --root . --add-tracefile "$trace" --html-details build/coverage/html/index.html \
    --txt build/coverage/coverage.txt --print-summary --fail-under-line 98 --fail-under-branch 95
