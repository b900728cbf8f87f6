#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Calls every operation in the same way through the three backends of the simulated unit and prints the results side by
# side: linked into the program, preloaded into a plain program, and real character devices in an emulated machine.
#
#   scripts/conformance.sh             all three (a minute)
#   scripts/conformance.sh --no-guest  the first two
#
# Ends with 1 when an answer is wrong or differs between the backends. The table is left in build/conformance.txt.
set -euo pipefail
cd "$(dirname "$0")/.."

guest=yes
[ "${1:-}" = --no-guest ] && guest=no

scripts/install-deps.sh test
mkdir -p build
{
    cmake --preset i386 -DHX_TESTS=ON
    cmake --build --preset i386 -j "$(nproc)" --target conformance conformance-linked hx-sim
} >build/conformance.log 2>&1 || {
    tail -n 40 build/conformance.log
    exit 1
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
build/i386/tests/conformance-linked >"$work/linked" || true
build/i386/hx-sim run -- build/i386/tests/conformance >"$work/preloaded" || true
backends=(linked preloaded)
if [ "$guest" = yes ]; then
    scripts/system-test.sh >"$work/system.log" || {
        cat "$work/system.log"
        exit 1
    }
    cp build/system/report.txt "$work/devices"
    backends+=(devices)
fi

python3 - "$work" "${backends[@]}" <<'END' | tee build/conformance.txt
import pathlib, sys

work, *backends = sys.argv[1:]
answers = {}
for backend in backends:
    for line in pathlib.Path(work, backend).read_text().splitlines():
        fields = line.split("\t")
        if len(fields) == 3:
            answers.setdefault(fields[0], {})[backend] = (fields[1], fields[2])

def verdict(row, backend):
    return row.get(backend, ("missing", ""))[0]

print(f"{'operation':<44}" + "".join(f"{backend:<12}" for backend in backends) + "answer")
wrong = different = 0
for operation, row in answers.items():
    given = {row.get(backend, ("", "nothing"))[1] for backend in backends}
    wrong += any(verdict(row, backend) != "pass" for backend in backends)
    different += len(given) > 1
    print(f"{operation:<44}" + "".join(f"{verdict(row, backend):<12}" for backend in backends) + " | ".join(sorted(given)))
print(f"\n{len(answers)} questions, {len(backends)} backends: {wrong} wrong, {different} answered differently")
END
grep -q ': 0 wrong, 0 answered differently$' build/conformance.txt
