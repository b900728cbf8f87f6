#!/usr/bin/env python3
# SPDX-License-Identifier: LicenseRef-HXAux
"""The records of a rolling upgrade, on the controller: one file per unit, and the report of all.

records.py show FOLDER SERIAL         prints the record of a unit, {} when there is none
records.py write FOLDER RECORD        keeps a record (JSON with at least "serial"), and writes the report
records.py failures FOLDER RUN        prints the serial numbers of the units that failed in a run; between its batches
                                      also those that were lost while they were written
"""
from __future__ import annotations

import csv
import io
import json
import os
import pathlib
import re
import sys
import tempfile

COLUMNS = ("serial", "host", "target", "result", "before", "after", "time", "run", "sha256", "detail")
FINE = ("done", "repaired")


def replace(path: pathlib.Path, text: str) -> None:
    """A reader finds the old text or the new one."""
    handle, temporary = tempfile.mkstemp(dir=path.parent, prefix=".records-")
    with os.fdopen(handle, "w", encoding="utf-8", newline="") as file:
        file.write(text)
        file.flush()
        os.fsync(file.fileno())
    os.chmod(temporary, 0o644)
    os.replace(temporary, path)


def file_of(folder: pathlib.Path, serial: str) -> pathlib.Path:
    """Serial numbers are texts of EEPROMs: a path must not become of them."""
    return folder / f"unit-{re.sub(r'[^A-Za-z0-9-]', lambda found: f'_{ord(found[0]):x}', serial)}.json"


def records(folder: pathlib.Path) -> list[dict[str, str]]:
    return [json.loads(path.read_text(encoding="utf-8")) for path in sorted(folder.glob("unit-*.json"))]


def report(folder: pathlib.Path) -> str:
    text = io.StringIO()
    table = csv.DictWriter(text, COLUMNS, extrasaction="ignore", lineterminator="\n")
    table.writeheader()
    table.writerows(records(folder))
    return text.getvalue()


def write(folder: pathlib.Path, text: str) -> None:
    record = json.loads(text)
    folder.mkdir(parents=True, exist_ok=True)
    replace(file_of(folder, record["serial"]), json.dumps(record, indent=2) + "\n")
    replace(folder / "report.csv", report(folder))


def show(folder: pathlib.Path, serial: str) -> None:
    path = file_of(folder, serial)
    print(path.read_text(encoding="utf-8") if path.exists() else "{}")


def failures(folder: pathlib.Path, run: str) -> None:
    print(json.dumps([each["serial"] for each in records(folder) if each["run"] == run and each["result"] not in FINE]))


def main(words: list[str]) -> int:
    commands = {"show": show, "write": write, "failures": failures}
    if len(words) != 3 or words[0] not in commands:
        print(__doc__, file=sys.stderr)
        return 2
    commands[words[0]](pathlib.Path(words[1]), words[2])
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
