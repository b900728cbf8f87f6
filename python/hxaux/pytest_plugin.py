# SPDX-License-Identifier: LicenseRef-HXAux
"""Simulated units as fixtures of pytest. Loaded by pytest itself; docs/python.md describes it."""
from __future__ import annotations

import os
import shutil
from collections.abc import Generator, Iterable, Mapping
from typing import TYPE_CHECKING, Any, Protocol

import pytest

if TYPE_CHECKING:
    from .sim import Unit, Value

_LONGEST_SECTION = 4000
_UNITS = pytest.StashKey["list[Unit]"]()


class UnitFactory(Protocol):
    """What hx_unit_factory is."""

    def __call__(
        self, settings: Mapping[str, Value] | Iterable[str] = (), scale: float = 1, *, virtual: bool = False
    ) -> Unit:
        ...


def pytest_addoption(parser: pytest.Parser) -> None:
    group = parser.getgroup("hx-sim", "simulated units")
    group.addoption(
        "--hx-sim", metavar="PROGRAM", help="the program hx-sim; by default $HX_SIM, or found like a command"
    )


def pytest_configure(config: pytest.Config) -> None:
    config.addinivalue_line("markers", "hx_unit(settings, scale, virtual): how the unit of the fixture hx_unit starts")
    program = config.getoption("--hx-sim")
    if program is None:
        return
    found = shutil.which(program)
    if found is None:
        raise pytest.UsageError(f"--hx-sim: no program '{program}'")
    os.environ["HX_SIM"] = os.path.abspath(found)


@pytest.fixture
def hx_unit_factory(request: pytest.FixtureRequest) -> Generator[UnitFactory, None, None]:
    """Starts simulated units: hx_unit_factory({"light": 20}, scale=10). They stop after the test."""
    from . import sim

    units: list[Unit] = request.node.stash.setdefault(_UNITS, [])

    def start(settings: Mapping[str, Value] | Iterable[str] = (), scale: float = 1, *, virtual: bool = False) -> Unit:
        units.append(sim.Unit(settings, scale, virtual=virtual))
        return units[-1]

    start.__qualname__ = "hx_unit_factory"  # for messages about its arguments
    yield start
    while units:
        units.pop().stop()


@pytest.fixture
def hx_unit(request: pytest.FixtureRequest, hx_unit_factory: UnitFactory) -> Unit:
    """A simulated unit of the test's own. The marker hx_unit says how it starts."""
    marker = request.node.get_closest_marker("hx_unit")
    return hx_unit_factory(*marker.args, **marker.kwargs) if marker else hx_unit_factory()


@pytest.hookimpl(hookwrapper=True)  # type: ignore[misc]  # pluggy does not say its type
def pytest_runtest_makereport(item: pytest.Item) -> Generator[None, Any, None]:
    """A failed test shows the log of its units and what its programs printed."""
    outcome = yield
    report: pytest.TestReport = outcome.get_result()
    if not report.failed:
        return
    for unit in item.stash.get(_UNITS, []):
        report.sections += _sections(unit)


def _sections(unit: Unit) -> list[tuple[str, str]]:
    try:
        sections = [(f"log of the unit {unit.name}", unit.log())]
    except Exception as error:  # the unit may have stopped; the test's own failure is what counts
        sections = [(f"log of the unit {unit.name}", f"cannot be read: {error}")]
    sections += [(f"output of {' '.join(program.command)}", program.output) for program in unit.programs]
    return [(title, _end(text)) for title, text in sections if text]


def _end(text: str) -> str:
    """The last lines of a long text."""
    if len(text) <= _LONGEST_SECTION:
        return text
    return "...\n" + text[-_LONGEST_SECTION:].partition("\n")[2]
