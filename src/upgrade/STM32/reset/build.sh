#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Builds the reset program from its source. Needs clang, ld.lld and objcopy.
#
#   build.sh IMAGE      writes the 428 bytes to IMAGE
#   build.sh --source   rewrites the checked-in bytes, ../stm32_reset_program.cpp
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

clang --target=thumbv7m-none-eabi -c "$here/reset.s" -o "$work/reset.o"
ld.lld -T "$here/reset.ld" "$work/reset.o" -o "$work/reset.elf"
objcopy -I elf32-little -O binary "$work/reset.elf" "$work/reset.bin"

if [ "${1:?usage: build.sh IMAGE|--source}" != --source ]; then
    cp "$work/reset.bin" "$1"
    exit 0
fi

{
    cat <<'HEAD'
// SPDX-License-Identifier: LicenseRef-HXAux
// Made by reset/build.sh --source from reset/reset.s: do not edit.
#include "stm32_bootloader.h"

// clang-format off
const uint8_t stmreset_binary[] = {
HEAD
    od -An -v -tx1 -w16 "$work/reset.bin" | sed -E 's/ ([0-9a-f]{2})/ 0x\1,/g; s/^ /    /'
    cat <<'TAIL'
};
// clang-format on

const uint32_t stmreset_length = sizeof stmreset_binary;
TAIL
} >"$here/../stm32_reset_program.cpp"
