# SPDX-License-Identifier: LicenseRef-HXAux
"""What the controller of a rolling upgrade keeps of each unit."""
from __future__ import annotations

import csv
import json
import pathlib
import subprocess
import sys

import pytest

from fleet import SOURCE

RECORDS = SOURCE / "packaging/ansible/roles/hxaux_upgrade/files/records.py"


def records(*words: object) -> str:
    return subprocess.run(
        [sys.executable, "-B", RECORDS, *map(str, words)], check=True, capture_output=True, text=True
    ).stdout


def write(folder: pathlib.Path, serial: str, result: str, run: str = "now", **more: str) -> None:
    records("write", folder, json.dumps({"serial": serial, "result": result, "run": run, **more}))


@pytest.mark.parametrize("result", ["wrong file", "busy", "refused", "interrupted", "unhealthy", "failed"])
def test_a_failure_of_this_run_counts(tmp_path: pathlib.Path, result: str) -> None:
    write(tmp_path, "U-1", result)

    assert json.loads(records("failures", tmp_path, "now")) == ["U-1"]


@pytest.mark.parametrize("result", ["done", "repaired"])
def test_a_success_does_not_count(tmp_path: pathlib.Path, result: str) -> None:
    write(tmp_path, "U-1", result)

    assert json.loads(records("failures", tmp_path, "now")) == []


def test_a_failure_of_an_earlier_run_does_not_count(tmp_path: pathlib.Path) -> None:
    write(tmp_path, "U-1", "failed", run="before")

    assert json.loads(records("failures", tmp_path, "now")) == []


def test_a_unit_that_was_lost_while_it_was_written_counts(tmp_path: pathlib.Path) -> None:
    """Between two batches no unit is written: a record that still says so has lost its unit."""
    write(tmp_path, "U-1", "running")

    assert json.loads(records("failures", tmp_path, "now")) == ["U-1"]


def test_a_unit_without_a_record_has_an_empty_one(tmp_path: pathlib.Path) -> None:
    assert json.loads(records("show", tmp_path / "none", "U-1")) == {}


@pytest.mark.parametrize("serial", ["../../etc/passwd", "a/b", "", ".", "ü\n\x01", 'quote"', "x" * 60])
def test_a_hostile_serial_number_keeps_its_record_in_the_folder(tmp_path: pathlib.Path, serial: str) -> None:
    folder = tmp_path / "state"
    write(folder, serial, "done", detail='a, b\n"c"')

    assert json.loads(records("show", folder, serial))["serial"] == serial
    assert sorted(tmp_path.iterdir()) == [folder]
    assert len(list(folder.iterdir())) == 2
    with (folder / "report.csv").open(encoding="utf-8", newline="") as report:
        assert [(row["serial"], row["detail"]) for row in csv.DictReader(report)] == [(serial, 'a, b\n"c"')]


def test_other_words_are_a_mistake(tmp_path: pathlib.Path) -> None:
    assert (
        subprocess.run([sys.executable, "-B", RECORDS, "forget", tmp_path, "x"], stderr=subprocess.DEVNULL).returncode
        == 2
    )
