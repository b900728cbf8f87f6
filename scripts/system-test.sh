#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Runs the 32-bit library, the tool and the checks in an emulated machine with a real kernel and real character devices.
#
#   scripts/system-test.sh [--keep]      --keep leaves the image in build/system
#
# The kernel is the one of Debian's linux-image-cloud-amd64 package, unpacked and not installed. Nothing needs root but
# the installation of missing packages. The report is left in build/system/report.txt.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh system

work=build/system
bound=120 # seconds from power-on to verdict, with room for a slow machine
mkdir -p "$work"

echo "== building"
{
    cmake --preset i386 -DHX_TESTS=ON
    cmake --build --preset i386 -j "$(nproc)" --target hx-aux conformance hxaux hx-sim
    cmake --preset x86_64 -DHX_TESTS=ON
    cmake --build --preset x86_64 -j "$(nproc)" --target hx-sim-cuse
} >"$work/build.log" 2>&1 || {
    tail -n 40 "$work/build.log"
    exit 1
}

fetch_kernel() {
    local package
    package=$(apt-cache depends linux-image-cloud-amd64 | awk '/Depends:/ { print $2; exit }')
    [ -d "$work/kernel/$package" ] && return
    rm -rf "$work/kernel" && mkdir -p "$work/kernel/$package"
    (cd "$work/kernel" && apt-get download -qq -o APT::Sandbox::User="$(id -un)" "$package")
    dpkg-deb -x "$work/kernel/$package"*.deb "$work/kernel/$package"
    rm "$work/kernel/$package"*.deb
}

# Copies a program into the image, with every library that its loader would load.
put_program() { # file, place
    install -D "$1" "$work/image/$2"
    LD_LIBRARY_PATH="$PWD/build/i386" ldd "$1" 2>/dev/null | grep -oE '/[^ ]+' | while read -r library; do
        local place=$library
        case "$library" in "$PWD"/*) place="/lib32/$(basename "$library")" ;; esac
        [ -e "$work/image$place" ] || install -D "$library" "$work/image$place"
    done
}

make_image() {
    rm -rf "$work/image"
    mkdir -p "$work/image/bin" "$work/image/modules" "$work/image/etc"
    install /bin/busybox "$work/image/bin/busybox"
    find "$work/kernel" -name fuse.ko -o -name cuse.ko | while read -r module; do
        install -m 644 "$module" "$work/image/modules/"
    done
    gcc -static -O2 -o "$work/image/bin/guest-exit" tests/system/guest/exit.c
    install tests/system/guest/init "$work/image/init"
    install tests/system/guest/checks "$work/image/checks"
    put_program build/x86_64/simulator/hx-sim-cuse bin/hx-sim-cuse
    put_program build/i386/tests/conformance bin/conformance
    put_program build/i386/hxaux bin/hxaux
    put_program build/i386/hx-sim bin/hx-sim
    install -D build/i386/preload/lib/i386-linux-gnu/libhxsim-preload.so -t "$work/image/bin/preload/lib/i386-linux-gnu"
    install -D build/i386/preload/lib/i386-linux-gnu/jida/libjida.so -t "$work/image/bin/preload/lib/i386-linux-gnu/jida"
    install build/i386/preload/lib/i386-linux-gnu/jida/libjida.so "$work/image/lib32/"
    (cd "$work/image" && find . | cpio --quiet -o -H newc) | gzip -1 >"$work/image.gz"
}

run_guest() {
    local wire="$work/wire"
    rm -f "$wire"
    # First port: the unit's "/dev/ttyS0"; third port: the other end of its wire; second port: what the guest prints.
    timeout "$bound" qemu-system-x86_64 -accel tcg -m 512 -display none -nodefaults -no-reboot \
        -kernel "$(find "$work/kernel" -name 'vmlinuz-*')" -initrd "$work/image.gz" \
        -append "console=ttyS1 quiet panic=-1 mitigations=off tsc=reliable 8250.nr_uarts=4" \
        -chardev "socket,id=wire,path=$wire,server=on,wait=off" -serial chardev:wire \
        -serial "file:$work/output.txt" \
        -chardev "socket,id=peer,path=$wire,server=off,reconnect=1" -serial chardev:peer \
        -device isa-debug-exit,iobase=0xf4,iosize=0x04
}

fetch_kernel
make_image
echo "== running"
started=$SECONDS
set +e
run_guest
emulator=$?
set -e
rm -f "$work"/report.txt "$work"/recording.* "$work"/shown.*
touch "$work/report.txt"
tr -d '\r' <"$work/output.txt" | awk -v work="$work" '
    /^== / { file = $2 == "report" ? "report.txt" : $2 == "recording" || $2 == "shown" ? $2 "." $3 : ""; next }
    file != "" { print > (work "/" file) }'
cat "$work/report.txt"
status=$(((emulator - 1) / 2))
if [ "$emulator" -eq 124 ]; then
    echo "no result within $bound s"
    status=1
elif [ "$emulator" -eq 0 ] || [ $((emulator % 2)) -eq 0 ]; then
    echo "the machine ended without a result (status $emulator)"
    tail -n 20 "$work/output.txt"
    status=1
fi
for recording in "$work"/recording.*; do
    verb=${recording##*.}
    if [ "$verb" != '*' ] && build/i386/hx-sim replay "$recording" -- build/i386/hxaux "$verb" | diff "$work/shown.$verb" -; then
        echo "hxaux $verb, recorded in the guest: replayed here"
    else
        echo "hxaux $verb, recorded in the guest: DIFFERS here"
        status=1
    fi
done
[ "${1:-}" = --keep ] || rm -rf "$work/image" "$work/image.gz"
echo "guest: $(grep -c . "$work/report.txt") checks, $((SECONDS - started)) s, status $status"
exit "$status"
