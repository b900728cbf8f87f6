# SPDX-License-Identifier: LicenseRef-HXAux
"""The Ansible role on simulated units, with planted failures."""
from __future__ import annotations

import csv
import dataclasses
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
from collections.abc import Callable
from typing import Any

import pytest

from fleet import SOURCE, Unit

sys.path.insert(0, str(SOURCE / "tests/python"))
import firmware  # noqa: E402

pytestmark = [
    pytest.mark.large,
    pytest.mark.skipif(shutil.which("ansible-playbook") is None, reason="needs ansible-core"),
]
Start = Callable[..., Unit]
LOCK = "HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS"
SIZE = 100000
"""Of a firmware file for the supervisor."""


@dataclasses.dataclass
class Fleet:
    """Units in an inventory, and a firmware file for their supervisors."""

    folder: pathlib.Path
    units: dict[str, Unit]
    hosts: dict[str, dict[str, Any]] = dataclasses.field(default_factory=dict)

    def __post_init__(self) -> None:
        self.firmware = firmware.hex_file(self.folder, "supervisor.hex", SIZE)
        for name, unit in self.units.items():
            metrics = self.folder / name
            metrics.mkdir()
            self.hosts[name] = {
                "hxaux_command": ["hx-sim", "run", "--unit", unit.name, "--", "hxaux"],
                "hxaux_upgrade_metrics": str(metrics),
            }

    def upgrade(self, *words: str, **settings: object) -> subprocess.CompletedProcess[str]:
        everything = {
            "hxaux_upgrade_target": "ss",
            "hxaux_upgrade_state": str(self.folder / "state"),
            "hxaux_upgrade_folder": str(self.folder),
            "hxaux_upgrade_poll": 1,
            **settings,
        }
        shared = {
            "ansible_connection": "local",
            "ansible_python_interpreter": "/usr/bin/python3",
            "ansible_async_dir": str(self.folder / "async"),
            "hxaux_upgrade_file": str(self.firmware),
        }
        inventory = self.folder / "units.yml"
        inventory.write_text(json.dumps({"units": {"hosts": self.hosts, "vars": shared}}), encoding="utf-8")
        playbook = SOURCE / "packaging/ansible/upgrade.yml"
        command = ["ansible-playbook", "-i", str(inventory), str(playbook), "-e", json.dumps(everything), *words]
        environment = {**os.environ, "ANSIBLE_FORKS": "8", "ANSIBLE_NOCOLOR": "1", "ANSIBLE_LOCALHOST_WARNING": "0"}
        done = subprocess.run(command, capture_output=True, text=True, check=False, env=environment)
        (self.folder / "ansible.log").write_text(done.stdout + done.stderr, encoding="utf-8")
        return done

    def report(self) -> dict[str, str]:
        """The result of each unit, by its serial number."""
        path = self.folder / "state/report.csv"
        if not path.exists():
            return {}
        with path.open(encoding="utf-8", newline="") as file:
            return {row["serial"]: row["result"] for row in csv.DictReader(file)}

    def metric(self, name: str) -> str:
        return (self.folder / name / "hxaux_upgrade.prom").read_text(encoding="utf-8")


def was_touched(unit: Unit) -> bool:
    """Every run begins with the routing of the service UART; `hxaux doctor` only looks whether it may."""
    return re.search(r"/dev/uart-redir (0x|put|write)", unit.control("log")) is not None


@pytest.fixture
def fleet(tmp_path: pathlib.Path, start: Start) -> Callable[[int], Fleet]:
    def fleet(count: int) -> Fleet:
        names = [f"unit{number:02}" for number in range(count)]
        return Fleet(tmp_path, {name: start(name, f"eeprom.main.UNIT_SERIAL=S-{name}", scale=60) for name in names})

    return fleet


def test_a_dry_run_says_what_it_would_do_and_touches_nothing(fleet: Callable[[int], Fleet]) -> None:
    three = fleet(3)
    before = {name: unit.get("ss.flash-crc") for name, unit in three.units.items()}

    done = three.upgrade("--check", batches=[3])

    assert done.returncode == 0, done.stdout
    assert re.findall(r"(S-unit\d\d): would write supervisor.hex to ss, which has 2.4.0.7", done.stdout) == [
        "S-unit00",
        "S-unit01",
        "S-unit02",
    ]
    assert three.report() == {}
    assert not any(was_touched(unit) for unit in three.units.values())
    assert {name: unit.get("ss.flash-crc") for name, unit in three.units.items()} == before
    assert list(three.folder.glob("hxaux-*")) == []


def test_a_unit_that_is_being_upgraded_is_left_alone(fleet: Callable[[int], Fleet]) -> None:
    one = fleet(1)
    unit = one.units["unit00"]
    holder = subprocess.Popen(
        unit.command(str(pathlib.Path(os.environ["HX_BUILD"]) / "tests/hx-child"), "take", LOCK),
        stdout=subprocess.PIPE,
        text=True,
    )
    assert holder.stdout is not None
    assert holder.stdout.readline() == "taken\n"

    done = one.upgrade()

    holder.kill()
    holder.wait()
    holder.stdout.close()
    assert done.returncode != 0
    assert one.report() == {"S-unit00": "busy"}
    assert not was_touched(unit)


def test_a_unit_that_is_worse_than_before_counts_as_failed(fleet: Callable[[int], Fleet]) -> None:
    one = fleet(1)
    restart = ["hx-sim", "set", "--unit", "unit00", "diagnostics.error", "7"]

    done = one.upgrade(hxaux_upgrade_restart=restart)

    assert done.returncode != 0
    assert one.report() == {"S-unit00": "unhealthy"}
    assert 'result="unhealthy"} 0\n' in one.metric("unit00")


def test_another_version_than_expected_counts_as_failed(fleet: Callable[[int], Fleet]) -> None:
    one = fleet(1)
    restart = ["sh", "-c", "hx-sim supply --unit unit00 off && hx-sim supply --unit unit00 on"]

    assert one.upgrade(hxaux_upgrade_restart=restart, hxaux_upgrade_version="9.9.9.9").returncode != 0
    assert one.report() == {"S-unit00": "unhealthy"}

    assert one.upgrade(hxaux_upgrade_restart=restart, hxaux_upgrade_version="2.4.0.7").returncode == 0
    assert one.report() == {"S-unit00": "done"}


def test_thirty_units_with_three_planted_failures(fleet: Callable[[int], Fleet]) -> None:
    thirty = fleet(30)
    units = thirty.units
    names = sorted(units)
    old = units["unit29"].get("ss.flash-crc")
    # One whose target refuses every try, one whose power fails in the middle, and one that is given a wrong file.
    units["unit03"].set("ss.silent", "on")
    marker = thirty.folder / "power-fails"
    marker.touch()
    script = pathlib.Path(__file__).with_name("power_cut.py")
    thirty.hosts["unit07"]["hxaux_command"] = [sys.executable, "-B", str(script), "unit07", str(marker)]
    wrong = thirty.folder / "wrong.hex"
    wrong.write_text(thirty.firmware.read_text(encoding="ascii")[: SIZE // 2], encoding="ascii")
    thirty.hosts["unit12"]["hxaux_upgrade_file"] = str(wrong)
    batches = [1, 4, 5, 10, 10]

    first = thirty.upgrade(batches=batches, hxaux_upgrade_most_failures=1)

    # The third batch had the second failure, one too many: the fourth was not touched.
    assert first.returncode != 0
    assert "2 units failed, 1 may: S-unit03, S-unit07" in first.stdout, first.stdout
    expected = {f"S-{name}": "done" for name in names[:10]}
    expected |= {"S-unit03": "no connection", "S-unit07": "interrupted"}
    assert thirty.report() == expected
    assert not any(was_touched(units[name]) for name in names[10:])
    assert {units[name].get("ss.flash-crc") for name in names[10:]} == {old}

    # The metrics show the one that lost its firmware, and the lock that its upgrade left.
    lost = units["unit07"].hxaux("metrics").stdout
    assert 'hxaux_component_up{component="ss"} 0\n' in lost
    assert f'hxaux_lock_state{{lock="{LOCK}",hxaux_lock_state="stale"}} 1\n' in lost
    assert 'hxaux_upgrade_last_success{target="ss",result="interrupted"} 0\n' in thirty.metric("unit07")

    written = {name: units[name].get("ss.flash-crc") for name in names[:10]}
    for name in names[:3]:
        units[name].control("log", "--clear")
    second = thirty.upgrade(batches=batches, hxaux_upgrade_most_failures=3)

    assert second.returncode != 0  # two still fail
    expected = {f"S-{name}": "done" for name in names}
    expected |= {"S-unit03": "no connection", "S-unit07": "repaired", "S-unit12": "wrong file"}
    assert thirty.report() == expected
    assert not any(was_touched(units[name]) for name in names[:3]), "what is done is not done again"
    new = written["unit00"]
    assert new != old
    assert {name for name in names if units[name].get("ss.flash-crc") != new} == {"unit03", "unit12"}
    repaired = units["unit07"].hxaux("metrics").stdout
    assert 'hxaux_component_up{component="ss"} 1\n' in repaired
    assert f'hxaux_lock_state{{lock="{LOCK}",hxaux_lock_state="free"}} 1\n' in repaired
    assert 'hxaux_upgrade_last_success{target="ss",result="repaired"} 1\n' in thirty.metric("unit07")
