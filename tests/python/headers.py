# SPDX-License-Identifier: LicenseRef-HXAux
"""What the public headers declare, found with as little understanding as possible: the generator must not check itself."""
from __future__ import annotations

import pathlib
import re
from collections import Counter

FOLDER = pathlib.Path(__file__).resolve().parents[2] / "include/hx-aux"


def text(header: pathlib.Path) -> str:
    return re.sub(r"//[^\n]*", "", header.read_text(encoding="utf-8"))


def operations() -> list[str]:
    """Each operation but Release: "Adc.getVoltage", and with the number of parameters where it has overloads."""
    found = []
    for header in sorted(FOLDER.glob("*.h")):
        for name, body in re.findall(r"^class (\w+) \{(.*?)^\};", text(header), re.S | re.M):
            calls = re.findall(r"virtual eErr (\w+)\(([^)]*)\)", body)
            count = Counter(operation for operation, _ in calls)
            for operation, parameters in calls:
                number = f"/{parameters.count(',') + 1}" if count[operation] > 1 else ""
                if operation != "Release":
                    found.append(f"{name}.{operation}{number}")
    return found


def functions() -> list[str]:
    """Each exported function that does not create an object."""
    found = []
    for header in sorted(FOLDER.glob("*.h")):
        found += re.findall(r"^HX_EXPORT (?!Halvix::)[\w* ]+?(\w+)\([^;*()]*(?:\*[^;()]*)*\);", text(header), re.M)
    return found


def enumerators() -> dict[str, dict[str, int]]:
    """Each enumeration: its enumerators and their values."""
    found = {}
    for header in sorted(FOLDER.glob("*.h")):
        for name, body in re.findall(r"^enum (\w+) HX_32BIT \{(.*?)\};", text(header), re.S | re.M):
            found[name] = {key: int(value) for key, value in re.findall(r"(\w+)\s*=\s*(\d+)", body)}
    return found
