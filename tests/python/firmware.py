# SPDX-License-Identifier: LicenseRef-HXAux
"""Firmware files for tests."""
from __future__ import annotations

import os
import pathlib


def new_image() -> bytes:
    """A program that no microcontroller has had: its stack is in RAM, its entry in flash. Then any bytes."""
    return bytes([0x00, 0x10, 0x00, 0x20, 0x01, 0x01, 0x00, 0x08]) + os.urandom(1016)


def record(kind: int, offset: int, data: bytes) -> str:
    record = bytes([len(data), offset >> 8, offset & 0xFF, kind]) + data
    return f":{record.hex().upper()}{-sum(record) & 0xFF:02X}\n"


def text(image: bytes, start: int) -> str:
    lines = [record(4, 0, (start >> 16).to_bytes(2, "big"))]
    lines += [record(0, (start + i) & 0xFFFF, image[i : i + 16]) for i in range(0, len(image), 16)]
    return "".join([*lines, record(1, 0, b"")])


def hex_file(folder: pathlib.Path, name: str, size: int) -> pathlib.Path:
    """For a microcontroller: the two differ in size."""
    path = folder / name
    path.write_text(text(new_image(), 0x08000000).ljust(size, "\n"))
    return path


def mcs_file(folder: pathlib.Path) -> pathlib.Path:
    path = folder / "fpga.mcs"
    path.write_text(text(new_image(), 0))
    return path
