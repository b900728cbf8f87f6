# SPDX-License-Identifier: LicenseRef-HXAux
"""Each test has units and servers of its own, in a folder of its own."""
from __future__ import annotations

import os
from collections.abc import Callable, Generator
from contextlib import ExitStack

import pytest

from fleet import BUILD, MetricsServer, Unit


@pytest.fixture(autouse=True)
def place(tmp_path_factory: pytest.TempPathFactory, monkeypatch: pytest.MonkeyPatch) -> None:
    """The path of a unit's socket has to be short."""
    monkeypatch.setenv("XDG_RUNTIME_DIR", str(tmp_path_factory.mktemp("f", numbered=True)))
    monkeypatch.setenv("PATH", f"{BUILD}{os.pathsep}{os.environ['PATH']}")


@pytest.fixture
def ended(place: None) -> Generator[ExitStack, None, None]:
    """What a test starts, and what ends with it in reverse order."""
    with ExitStack() as stack:
        yield stack


@pytest.fixture
def start(ended: ExitStack) -> Callable[..., Unit]:
    """Starts a unit of this name. Its EEPROMs are read twenty times as fast as real ones."""

    def start(name: str, *settings: str, scale: float = 20) -> Unit:
        unit = Unit(name, *settings, scale=scale)
        ended.callback(unit.stop)
        return unit

    return start


@pytest.fixture
def unit(start: Callable[..., Unit]) -> Unit:
    return start("bench")


@pytest.fixture
def serve(ended: ExitStack) -> Callable[..., MetricsServer]:
    """Starts a server of a unit."""

    def serve(unit: Unit, *words: str) -> MetricsServer:
        server = MetricsServer(unit, *words)
        ended.callback(server.stop)
        return server

    return serve
