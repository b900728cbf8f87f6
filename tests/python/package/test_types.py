# SPDX-License-Identifier: LicenseRef-HXAux
"""The annotations of types, judged by mypy; and stubs against what they describe."""
from __future__ import annotations

import ast
import os
import pathlib
import subprocess
import sys
import types

import pytest

import hxaux
import hxaux.sim

PACKAGE = pathlib.Path(hxaux.__file__).parent
SOURCE = pathlib.Path(__file__).resolve().parents[3] / "python"
GOOD = """
import hxaux
from hxaux import sim

with hxaux.Power() as power:
    power.set_bl_power_status(hxaux.HXStatus.ENABLED)
    status: hxaux.HXStatus = power.get_can_power_status()
with hxaux.AuxVersion() as versions:
    major: int = versions.get_fpga_version().major
try:
    pass
except hxaux.NotRunningError as error:
    code: hxaux.ErrorCode = error.code
with sim.Unit({"light": 20}) as unit:
    text: str = unit.run(["ls"]).output
    level: bool = unit.wait_for("light", "<", 40, timeout=1).met
"""
BAD = """
import hxaux

hxaux.Power().set_bl_power_status(3)
hxaux.Adc().get_voltages()
count: str = hxaux.DigIO().get_dig_io()
"""


def mypy(*words: str, folder: pathlib.Path) -> subprocess.CompletedProcess[str]:
    environment = {**os.environ, "MYPYPATH": str(PACKAGE.parent), "MYPY_CACHE_DIR": str(folder / "cache")}
    return subprocess.run([sys.executable, "-m", *words], cwd=folder, env=environment, capture_output=True, text=True)


def test_of_the_package_are_consistent(tmp_path: pathlib.Path) -> None:
    result = mypy("mypy", "--strict", "-p", "hxaux", folder=tmp_path)
    assert result.returncode == 0, result.stdout


def test_of_the_generator_are_consistent(tmp_path: pathlib.Path) -> None:
    words = ["--strict", "--config-file=", "generate.py"]
    result = mypy("mypy", *words, "--cache-dir", str(tmp_path / "cache"), folder=SOURCE)
    assert result.returncode == 0, result.stdout


def names(definitions: list[ast.stmt]) -> set[str]:
    """Of classes, functions and values."""
    found = {each.name for each in definitions if isinstance(each, (ast.ClassDef, ast.FunctionDef))}
    return found | {
        each.target.id for each in definitions if isinstance(each, ast.AnnAssign) and isinstance(each.target, ast.Name)
    }


@pytest.mark.parametrize("module", [hxaux._hxaux, hxaux.sim._sim], ids=lambda module: module.__name__)
def test_of_the_stubs_name_what_the_extension_has(module: types.ModuleType) -> None:
    stub = ast.parse((PACKAGE / f"{module.__name__.split('.')[1]}.pyi").read_text())
    assert names(stub.body) == {name for name in vars(module) if not name.startswith("_")}
    for described in (each for each in stub.body if isinstance(each, ast.ClassDef) and each.name != "Error"):
        ours = {name for name in names(described.body) if not name.startswith("__")}
        assert ours == {name for name in vars(getattr(module, described.name)) if not name.startswith("_")}


def test_accept_a_right_program_and_find_mistakes(tmp_path: pathlib.Path) -> None:
    (tmp_path / "good.py").write_text(GOOD)
    (tmp_path / "bad.py").write_text(BAD)
    assert mypy("mypy", "--strict", "good.py", folder=tmp_path).returncode == 0
    found = mypy("mypy", "--strict", "bad.py", folder=tmp_path).stdout
    assert [line.split(":")[1] for line in found.splitlines() if ": error: " in line] == ["4", "5", "6"]
