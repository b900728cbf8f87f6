#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Runs all tests with coverage counters and prints lines and branches of the library, room by room.
# Fails below 98 % of lines or 95 % of branches. The page is build/coverage/html/index.html.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset coverage -DHX_TESTS=ON
cmake --build --preset coverage -j "$(nproc)"
find build/coverage -name '*.gcda' -delete
ctest --test-dir build/coverage --output-on-failure -j "$(nproc)"

mkdir -p build/coverage/html
trace=build/coverage/coverage.json
# The branch of an assertion that does not hold is none that can be reached.
gcovr --root . --object-directory build/coverage --exclude-throw-branches --exclude-unreachable-branches \
    --exclude-branches-by-pattern '\s*assert\(.*' --gcov-ignore-parse-errors --filter platform/ --filter settings/ --filter devices/ --filter backlight/ \
    --filter upgrade/ --json "$trace"
# gcovr removes what stands under the name of its output before it writes: no device may be named here.
for room in platform settings devices backlight upgrade; do
    echo "== $room"
    gcovr --root . --add-tracefile "$trace" --filter "$room/" --print-summary --output "build/coverage/$room.txt"
done
echo "== the library"
gcovr --root . --add-tracefile "$trace" --html-details build/coverage/html/index.html \
    --txt build/coverage/coverage.txt --print-summary --fail-under-line 98 --fail-under-branch 95
