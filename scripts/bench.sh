#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Measures the costs of the library and the simulated unit; docs/performance.md explains the figures.
#
#   scripts/bench.sh [SECTION...]             measure and print; all sections take about six minutes
#   scripts/bench.sh --check [SECTION...]     also fail when a target is missed: 50 ns per operation, 3 % over the floor
#                                             of an EEPROM change, 1.02 times the wire's time of an upgrade, objcopy's
#                                             speed of reading firmware files
#
#   scripts/bench.sh build                    CPU seconds of cold builds and of a rebuild (scripts/bench-build; 20 minutes)
#   scripts/bench.sh units [UNITS]            one simulated unit, and a hundred at once (scripts/bench-units; a minute)
#   scripts/bench.sh panel                    the web page of a unit: latency, CPU and memory of its server
#                                             (scripts/bench-panel; a minute)
#   scripts/bench.sh fleet                    the metrics of a unit, beside a program, and their storage
#                                             (scripts/bench-fleet; a minute)
#   scripts/bench.sh application [RUNS]       the tests of an application, a thousand times each on busy processors
#                                             (scripts/bench-application; five minutes)
#
# Sections: operations light parsers processes requests eeprom upgrade
# shellcheck disable=SC2317  # the sections are called by their names
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" = build ]; then
    scripts/install-deps.sh test
    exec scripts/bench-build "${@:2}"
fi
if [ "${1:-}" = units ] || [ "${1:-}" = application ]; then
    scripts/install-deps.sh check
    cmake --preset x86_64 -DHX_TESTS=ON -DHX_BENCHMARKS=ON >/dev/null
    cmake --build --preset x86_64 --target hx-benchmarks hxaux hx-sim hx-sim-client _hxaux _sim >/dev/null
    exec "scripts/bench-$1" "${@:2}"
fi
if [ "${1:-}" = panel ]; then
    scripts/install-deps.sh check
    cmake --preset x86_64 -DHX_TESTS=ON -DHX_BENCHMARKS=ON >/dev/null
    cmake --build --preset x86_64 --target hx-panel hxaux hx-sim hx-bench-preload-request >/dev/null
    exec scripts/bench-panel "${@:2}"
fi
if [ "${1:-}" = fleet ]; then
    scripts/install-deps.sh fleet
    cmake --preset x86_64 -DHX_TESTS=ON >/dev/null
    cmake --build --preset x86_64 --target hxaux hx-sim >/dev/null
    exec /usr/bin/python3 scripts/bench-fleet
fi
limit=50
check=()
if [ "${1:-}" = --check ]; then
    check=(--check)
    shift
fi
sections=("$@")
[ ${#sections[@]} -gt 0 ] || sections=(operations light parsers processes requests eeprom upgrade)

scripts/install-deps.sh check
for abi in i386 x86_64; do
    cmake --preset "$abi" -DHX_TESTS=ON -DHX_BENCHMARKS=ON >/dev/null
    cmake --build --preset "$abi" -j "$(nproc)" --target hx-benchmarks hxaux hx-sim >/dev/null
done

bench_operations() { # abi
    echo "  nanoseconds per operation, the fastest of 15 runs"
    "$folder/hx-bench" --benchmark_repetitions=15 --benchmark_report_aggregates_only=true \
        --benchmark_enable_random_interleaving=true --benchmark_min_time=0.05 --benchmark_format=csv 2>/dev/null |
        awk -F, -v limit="$limit" -v check="${check[*]}" '
            { gsub(/"/, "", $1) }
            $1 ~ /_fastest$/ {
                sub(/_fastest$/, "", $1)
                kind = $1; sub(/.*\//, "", kind); name = substr($1, 1, length($1) - length(kind) - 1)
                time[name, kind] = $4
                if (kind == "bare") calls[name] = $NF
                if (!(name in seen)) { seen[name] = 1; order[++count] = name }
            }
            END {
                if (!count) { print "nothing was measured"; exit 1 }
                printf "  %-32s %10s %10s %10s %10s\n", "operation", "calls", "library", "bare", "own cost"
                for (i = 1; i <= count; ++i) {
                    name = order[i]
                    own = time[name, "library"] - time[name, "bare"]
                    printf "  %-32s %10d %10.1f %10.1f %10.1f\n", name, calls[name], time[name, "library"], time[name, "bare"], own
                    if (check != "" && name !~ /^gated/ && own > limit * calls[name]) { print "  over " limit " ns a call"; bad = 1 }
                }
                exit bad
            }'
}
bench_light() { "$folder/hx-bench-light" 2>/dev/null; }
bench_parsers() { "$folder/hx-bench-parsers" "${check[@]}"; }
bench_processes() {
    echo "  on a unit, the preload library in every process"
    "build/$abi/hx-sim" run -- "$folder/hx-bench-process" "$folder"
}
bench_requests() {
    echo "  load average $(cut -d' ' -f1-3 /proc/loadavg)"
    "build/$abi/hx-sim" run -- "$folder/hx-bench-preload-request"
    HXSIM_MAILBOX=off "build/$abi/hx-sim" run -- "$folder/hx-bench-preload-request"
    if [ -x "$folder/hx-bench-umockdev-request" ]; then
        umockdev-wrapper "$folder/hx-bench-umockdev-request"
    fi
    "$folder/hx-bench-inprocess-request"
}
bench_eeprom() { "build/$abi/hx-sim" run -- "$folder/hx-bench-eeprom" "${check[@]}"; }
bench_upgrade() { "build/$abi/hx-sim" run -- "$folder/hx-bench-upgrade" "${check[@]}"; }

# A processor that sleeps between two calls adds its wake-up time to every wait for another process. Idle loops keep all of
# them awake and yield at once; but a request to a unit must not need that.
loops=()
keep_awake() {
    [ ${#loops[@]} -eq 0 ] || return 0
    for _ in $(seq "$(nproc)"); do
        chrt --idle 0 bash -c 'while :; do :; done' &
        loops+=($!)
    done
}
keep_asleep() {
    [ ${#loops[@]} -eq 0 ] || kill "${loops[@]}"
    loops=()
}
trap keep_asleep EXIT

status=0
for section in "${sections[@]}"; do
    declare -F "bench_$section" >/dev/null || {
        echo "no section '$section'; the head of this script lists them" >&2
        exit 2
    }
    if [ "$section" = requests ]; then keep_asleep; else keep_awake; fi
    for abi in i386 x86_64; do
        folder="build/$abi/benchmarks"
        echo "$section, $abi"
        "bench_$section" || status=1
    done
done
exit "$status"
