#!/bin/bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Runs in a fresh root with the packages in /packages: installs them, builds a program with pkg-config, with CMake and
# with a plain command line, runs each on a simulated unit, uses the Python package and the panel, runs the tests of the
# example application as a CI job does, and removes everything without a trace.
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive

listing() { find / -xdev \( -path /proc -o -path /tmp -o -path /packages -o -path /var -o -path /root -o -path /dev \) -prune -o -print | sort; }

apt-get install -y -qq --no-install-recommends g++ cmake make pkg-config file python3-pytest >/dev/null 2>&1
listing >/tmp/before

echo "   installing"
apt-get install -y -qq --no-install-recommends /packages/*.deb >/dev/null 2>&1

mkdir -p /tmp/try && cd /tmp/try
cat >program.cpp <<'END'
#include <hx-aux/hx-aux.h>
#include <cstdio>

int main()
{
    Halvix::Adc* adc = GetAdc();
    double volts = 0;
    const Halvix::eErr err = adc->getVoltage(Halvix::VoltageEnum(0), &volts);
    std::printf("%s: %.2f V\n", GetErrorStringA(err), volts);
    adc->Release();
    return err;
}
END
cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.10)
project(try CXX)
find_package(hx-aux REQUIRED)
add_executable(by-cmake program.cpp)
target_link_libraries(by-cmake hx-aux::hx-aux)
END
# shellcheck disable=SC2046  # the flags are words of their own
g++ program.cpp -o by-pkg-config $(pkg-config --cflags --libs hx-aux)
g++ program.cpp -o by-hand -lhx-aux
cmake -S . -B cmake-build >/dev/null && cmake --build cmake-build >/dev/null

for program in ./by-pkg-config ./by-hand ./cmake-build/by-cmake; do
    [ "$(hx-sim run -- "$program")" = "ERR_SUCCESS: 24.00 V" ] || { echo "$program: wrong answer"; exit 1; }
    echo "   $program: $(hx-sim run -- "$program")"
done
hx-sim run -- hxaux version >/dev/null

echo "   Python"
cat >program.py <<'END'
import hxaux
with hxaux.Adc() as adc:
    print(f"{adc.get_voltage(hxaux.VoltageEnum.VOLTAGE_0):.2f} V")
END
[ "$(hx-sim run -- /usr/bin/python3 program.py)" = "24.00 V" ] || { echo "program.py: wrong answer"; exit 1; }
cat >test_program.py <<'END'
import sys
def test_reads_what_is_set(hx_unit):
    hx_unit.set("voltage.0", 11.5)
    program = hx_unit.run([sys.executable, "program.py"])
    assert (program.wait(), program.output) == (0, "11.50 V\n")
END
/usr/bin/python3 -B -m pytest -q -p no:cacheprovider test_program.py
[ "$(hxaux --version | grep -c 1.3.1.0)" = 1 ]

echo "   the panel"
hx-sim start bench
hx-panel --listen 127.0.0.1:0 >address &
panel=$!
until [ -s address ]; do sleep 0.1; done
cat >panel.py <<'END'
import json, urllib.request
address = open("address").read().strip()
assert b"<html" in urllib.request.urlopen(address).read()
words = json.dumps({"words": ["voltage", "0"]}).encode()
request = urllib.request.Request(address + "api/units/bench/hxaux", words, {"Content-Type": "application/json"})
print(json.load(urllib.request.urlopen(request))["result"]["voltage"][0]["value"])
END
[ "$(/usr/bin/python3 panel.py)" = 23.996 ] || { echo "the panel: wrong answer"; exit 1; }
kill "$panel"
wait "$panel" || [ $? -eq 143 ]
hx-sim stop bench

cp -r /packages/application console && mkdir console/packages && cp /packages/*.deb console/packages/
for step in install-packages run-tests; do
    console/$step >log 2>&1 || { cat log && exit 1; }
done
echo "   the tests of the example application: $(grep 'tests passed' log)"

echo "   removing"
apt-get purge -y -qq libhx-aux1 libhx-aux-dev hxaux-tools hx-sim hx-sim-preload hx-sim-dev hx-panel python3-hxaux 'libhx-aux-doc*' >/dev/null 2>&1
apt-get autoremove -y -qq --purge >/dev/null 2>&1
listing >/tmp/after
if ! diff /tmp/before /tmp/after >/tmp/left; then
    # Packages that were pulled in as dependencies may leave caches; files of ours may not stay.
    if grep -E 'hx|Halvix' /tmp/left; then
        echo "the packages leave these behind"
        exit 1
    fi
fi
echo "   removed without a trace"
