#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Measures what the library's operations cost on top of the requests that they make to the drivers, for both ABIs.
#
#   scripts/bench.sh             measure and print
#   scripts/bench.sh --check     also fail when an operation's own cost is over 50 ns
set -euo pipefail
cd "$(dirname "$0")/.."

limit=50
scripts/install-deps.sh check
status=0
for abi in i386 x86_64; do
    build="build/$abi"
    cmake --preset "$abi" -DHX_BENCHMARKS=ON >/dev/null
    cmake --build --preset "$abi" -j "$(nproc)" --target hx-bench >/dev/null
    echo "$abi: nanoseconds an operation, median of 15 runs"
    "$build/benchmarks/hx-bench" --benchmark_repetitions=15 --benchmark_report_aggregates_only=true \
        --benchmark_enable_random_interleaving=true --benchmark_min_time=0.05 --benchmark_format=csv 2>/dev/null |
        awk -F, -v limit="$limit" -v check="${1:-}" '
            { gsub(/"/, "", $1) }
            $1 ~ /_median$/ {
                sub(/_median$/, "", $1)
                kind = $1; sub(/.*\//, "", kind); name = substr($1, 1, length($1) - length(kind) - 1)
                time[name, kind] = $4
                if (!(name in seen)) { seen[name] = 1; order[++count] = name }
            }
            END {
                if (!count) { print "nothing was measured"; exit 1 }
                printf "  %-28s %10s %10s %10s\n", "operation", "library", "bare", "own cost"
                for (i = 1; i <= count; ++i) {
                    own = time[order[i], "library"] - time[order[i], "bare"]
                    printf "  %-28s %10.1f %10.1f %10.1f\n", order[i], time[order[i], "library"], time[order[i], "bare"], own
                    if (check == "--check" && own > limit) { print "  over " limit " ns"; bad = 1 }
                }
                exit bad
            }' || status=1
done
exit "$status"
