# SPDX-License-Identifier: LicenseRef-HXAux
"""hxaux on a unit whose power fails in the middle of the first upgrade: power_cut.py UNIT MARKER WORDS...

The marker is a file that is there until it has happened.
"""
from __future__ import annotations

import os
import pathlib
import subprocess
import sys


def main(unit: str, marker: pathlib.Path, words: list[str]) -> int:
    command = ["hx-sim", "run", "--unit", unit, "--", "hxaux", *words]
    if words[0] != "upgrade" or "--dry-run" in words or not marker.exists():
        return subprocess.run(command, check=False).returncode
    marker.unlink()
    subprocess.run(["hx-sim", "set", "--unit", unit, "ss.cut-at-ack", "15"], check=True)
    upgrade = subprocess.Popen(command)
    subprocess.run(["hx-sim", "wait", "--unit", unit, "--timeout", "60m", "ss.state", "=", "off"], check=True)
    upgrade.kill()  # the unit's processor loses its power as well
    upgrade.wait()
    for state in ("off", "on"):
        subprocess.run(["hx-sim", "supply", "--unit", unit, state], check=True)
    return 137


if __name__ == "__main__":
    os.environ.setdefault("PYTHONDONTWRITEBYTECODE", "1")
    sys.exit(main(sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3:]))
