#!/bin/bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Fuzzes one target, or all of them one after the other, each for a number of seconds:
#
#     scripts/fuzz.sh EepromText 60        scripts/fuzz.sh all 60
#     scripts/fuzz.sh EepromText runs=10000000
#
# fuzz/<target>.options may hold options of libFuzzer for the target, one a line.
# New inputs of interest stay in build/fuzz/found/<target>; an input that breaks the target is written beside them and
# the script ends with its status. Keep such an input in fuzz/corpus/<target>: the tests replay it from then on.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ $# -ne 2 ]; then
    echo "usage: scripts/fuzz.sh TARGET|all SECONDS|runs=COUNT" >&2
    exit 2
fi
case $2 in
runs=*) limit=-runs=${2#runs=} ;;
*) limit=-max_total_time=$2 ;;
esac

cmake --preset fuzz > /dev/null
cmake --build --preset fuzz --target fuzz-targets -j "$(nproc)"

if [ "$1" = all ]; then
    targets=$(cd fuzz/corpus && ls)
else
    targets=$1
fi
for target in $targets; do
    found=build/fuzz/found/$target
    mkdir -p "$found"
    echo "== $target"
    options=(-max_len=8192)
    if [ -f "fuzz/$target.options" ]; then
        mapfile -t options < "fuzz/$target.options"
    fi
    "build/fuzz/fuzz/fuzz_$target" "$limit" "${options[@]}" -rss_limit_mb=2048 -print_final_stats=1 -verbosity=0 \
        -artifact_prefix="$found/" "$found" "fuzz/corpus/$target"
done
