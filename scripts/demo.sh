#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Builds the 32-bit library, starts a simulated unit and runs the tour on it: an unmodified program that makes real
# open and ioctl calls. Installs missing packages.
#
#   scripts/demo.sh
set -euo pipefail
cd "$(dirname "$0")/.."

started=$SECONDS
took() { echo "   done after $((SECONDS - started)) s"; }

echo "== 1 of 4: Packages"
scripts/install-deps.sh build
took

echo "== 2 of 4: Building the 32-bit library, the tool and the simulated unit (build/demo.log)"
mkdir -p build
: >build/demo.log
{
    cmake --preset i386 -DHX_TESTS=OFF &&
        NINJA_STATUS='[%f/%t] ' cmake --build --preset i386 -j "$(nproc)" --target demo
} 2>&1 | scripts/progress build/demo.log || {
    tail -n 60 build/demo.log
    exit 1
}
took

unit="demo-$$"
folder=$(mktemp -d)
cleanup() {
    build/i386/hx-sim stop "$unit" >/dev/null 2>&1 || true
    rm -rf "$folder"
}
trap cleanup EXIT

echo "== 3 of 4: Starting the simulated unit \"$unit\""
build/i386/hx-sim start "$unit"

echo "   The tour: examples/tour.cpp, linked with libhx-aux.so.1 as any application"
build/i386/hx-sim run --unit "$unit" -- build/i386/examples/tour

echo
echo "   The same unit through the command line tool"
for request in "version" "voltage 0" "inputs" "info" "backlight get"; do
    echo "\$ hxaux $request"
    # The requests are split into words on purpose.
    # shellcheck disable=SC2086
    build/i386/hx-sim run --unit "$unit" -- build/i386/hxaux $request | sed 's/^/  /'
done

# An Intel HEX file of 20000 bytes, as a linker would make it for the front panel's microcontroller.
awk 'BEGIN {
    print ":020000040800F2"
    for (address = 0; address < 20000; address += 16) {
        line = sprintf(":10%04X00", address)
        sum = 16 + int(address / 256) + address % 256
        for (i = 0; i < 16; i++) {
            byte = (address / 16 + 7 * i) % 256
            line = line sprintf("%02X", byte)
            sum += byte
        }
        printf "%s%02X\n", line, (256 - sum % 256) % 256
    }
    print ":00000001FF"
}' >"$folder/front.hex"

echo
echo "== 4 of 4: New firmware for the front panel, over the serial line and the bootloader; time runs 20 times faster"
echo "\$ hxaux upgrade front front.hex"
build/i386/hx-sim run --scale 20 -- build/i386/hxaux upgrade front "$folder/front.hex" |
    grep -v '^done' | uniq | sed 's/^/  /'
took

cat <<'END'

Try next:
  export PATH="$PWD/build/i386:$PATH"
  hx-sim start bench                        a unit in the background
  hx-sim run --unit bench -- hxaux monitor  what it measures, live; in another terminal:
  hx-sim set voltage.0 11.5                 a lower supply voltage
  hx-sim stop bench
  scripts/panel.sh                          the page of a unit, in a browser
  docs/first-program.md                     a program of your own
  cmake --build --preset i386               the rest of this build: units for 64-bit programs, examples
END
