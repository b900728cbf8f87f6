#!/usr/bin/env python3
# SPDX-License-Identifier: LicenseRef-HXAux
"""Generates the sources of the extension from the public headers.

    python/generate.py HEADERS DIRECTORY      writes _hxaux.cpp, _hxaux.pyi and _values.py there
"""
from __future__ import annotations

import pathlib
import sys

from generator import bindings, emit, headers


def main(words: list[str]) -> int:
    if len(words) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    try:
        builder = bindings.Builder(headers.read(pathlib.Path(words[0])))
        files = {
            "_hxaux.cpp": emit.Cpp(builder).module(),
            "_hxaux.pyi": emit.one_blank_line(emit.Stubs(builder).module()),
            "_values.py": emit.one_blank_line(emit.Values(builder).module()),
        }
    except headers.Mistake as mistake:
        print(f"generate.py: {mistake}", file=sys.stderr)
        return 1
    directory = pathlib.Path(words[1])
    for name, text in files.items():
        (directory / name).write_text(text, encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
