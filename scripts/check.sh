#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# shellcheck disable=SC2317  # the checks are called by their names
# Every check besides scripts/test.sh, in one command; ends with a table of results.
#
#   scripts/check.sh              all checks
#   scripts/check.sh NAME...      these checks; the names below, in the order in which they run
#   scripts/check.sh --fast       those that need no build: seconds
#   scripts/check.sh --list       the names
#
# Rough times on two cores: the static checks a few minutes, asan and tsan ten minutes each, fuzz one minute a target.
set -euo pipefail
cd "$(dirname "$0")/.."

fast=(format python shell spelling source layers commits links)
names=("${fast[@]}" readme clang tidy headers docs abi tests fleet conformance soak mutants asan tsan fuzz coverage)

sources() { git ls-files '*.cpp' '*.h' '*.c'; }

build_and_test() { # preset
    cmake --preset "$1" -DHX_TESTS=ON
    cmake --build --preset "$1" -j "$(nproc)"
    ctest --test-dir "build/$1" --output-on-failure -j "$(nproc)"
}

check_format() {
    sources | xargs clang-format --dry-run -Werror || {
        echo "clang-format -i FILE... formats them"
        return 1
    }
}
check_python() {
    git ls-files '*.py' '*.pyi' | xargs black --quiet --check --diff --config python/pyproject.toml || {
        echo "black --config python/pyproject.toml FILE... formats them"
        return 1
    }
}
check_shell() { git ls-files scripts .ci/run packaging | xargs grep -lE '^#!.*(ba)?sh' | xargs shellcheck; }
check_spelling() { git ls-files | grep -vE '^fuzz/corpus/|\.(svg|png|bin|hex|mcs)$' | xargs codespell --ignore-words scripts/spelling-exceptions.txt; }
check_source() { scripts/check-source; }
check_layers() { scripts/check-layers; }
check_commits() { scripts/check-commits; }
check_links() { scripts/check-links; }
check_readme() { scripts/check-readme; }
check_clang() {
    cmake -S . -B build/clang -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DHX_TESTS=OFF
    cmake --build build/clang -j "$(nproc)"
}
check_tidy() {
    local ours products="^$PWD/(src|tools|simulator|panel)/"
    cmake -S . -B build/tidy -G Ninja -DHX_UNITY=OFF -DHX_TESTS=ON >/dev/null
    ours=$(sed -n 's/^  "file": "\(.*\)",*$/\1/p' build/tidy/compile_commands.json | sort -u |
        grep -F "$PWD/" | grep -vE "^$PWD/build/|/tests/abi/frozen/") # an application of long ago, kept as it was
    # Some options are GCC's alone, and rows of tables leave out the braces of their base.
    local tidy=(clang-tidy --quiet -p build/tidy --extra-arg=-Qunused-arguments --extra-arg=-Wno-missing-braces)
    grep -E "$products" <<<"$ours" | xargs -P "$(nproc)" -n 4 "${tidy[@]}"
    # The analyzer follows every path through the macros of tests: hours.
    grep -vE "$products" <<<"$ours" | xargs -P "$(nproc)" -n 4 "${tidy[@]}" '--checks=-clang-analyzer-*'
}
check_headers() { scripts/test.sh -R '[Hh]eader'; }
check_docs() { scripts/docs.sh; }
check_abi() { scripts/check-abi; }
check_tests() { scripts/test.sh; }
check_conformance() { scripts/conformance.sh; }
# Twelve random mutants; the seed in the log repeats the selection.
check_mutants() { scripts/mutants --random 12; }
check_asan() { build_and_test asan; }
check_tsan() { build_and_test tsan; }
# Units under the engines of an operator, and a rolling upgrade of 30: ten minutes.
check_fleet() {
    cmake --preset x86_64 -DHX_TESTS=ON
    cmake --build --preset x86_64 -j "$(nproc)" --target hxaux hx-sim hx-child
    HX_BUILD="$PWD/build/x86_64" /usr/bin/python3 -B -m pytest -c tests/fleet/pytest.ini tests/fleet
}
# A million rounds of the cheap operations, then a random mix for HX_SOAK_SECONDS (an hour: 3600); its seed is in the log.
check_soak() {
    cmake --preset x86_64 -DHX_TESTS=ON
    cmake --build --preset x86_64 -j "$(nproc)" --target test_soak
    HX_SOAK_ROUNDS=1000000 build/x86_64/tests/test_soak --gtest_filter='Soak*'
    HX_SOAK_SECONDS="${HX_SOAK_SECONDS:-60}" build/x86_64/tests/test_soak --gtest_filter='Mix*'
}
check_fuzz() { scripts/fuzz.sh all 60; }
check_coverage() { scripts/coverage.sh; }

if [ "${1:-}" = --list ]; then
    printf '%s\n' "${names[@]}"
    exit 0
fi
purpose=check
wanted=("$@")
if [ "${1:-}" = --fast ]; then
    purpose=fast
    wanted=("${fast[@]}")
fi
[ ${#wanted[@]} -gt 0 ] || wanted=("${names[@]}")
for name in "${wanted[@]}"; do
    declare -F "check_$name" >/dev/null || {
        echo "no check named '$name'; scripts/check.sh --list lists them" >&2
        exit 2
    }
done

scripts/install-deps.sh "$purpose"
mkdir -p build/checks
failed=0
verdicts=()
for name in "${wanted[@]}"; do
    echo "== $name"
    started=$SECONDS
    # A subshell, so that errexit holds inside the check although its status is looked at here.
    set +e
    (
        set -e
        "check_$name"
    ) >"build/checks/$name.log" 2>&1
    status=$?
    set -e
    if [ "$status" -eq 0 ]; then
        verdicts+=("$(printf '%-10s passed  %5d s' "$name" $((SECONDS - started)))")
    else
        verdicts+=("$(printf '%-10s FAILED  %5d s  build/checks/%s.log' "$name" $((SECONDS - started)) "$name")")
        tail -n 40 "build/checks/$name.log"
        failed=1
    fi
done
printf '\n'
printf '%s\n' "${verdicts[@]}"
exit "$failed"
