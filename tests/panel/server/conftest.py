# SPDX-License-Identifier: LicenseRef-HXAux
"""Each test has units and servers of its own, in a folder of its own."""
from __future__ import annotations

import os
import pathlib
from collections.abc import Callable, Generator

import pytest

from panel import BUILD, Panel, hx_sim


@pytest.fixture(autouse=True)
def place(tmp_path_factory: pytest.TempPathFactory, monkeypatch: pytest.MonkeyPatch) -> None:
    """The path of a unit's socket has to be short."""
    monkeypatch.setenv("XDG_RUNTIME_DIR", str(tmp_path_factory.mktemp("p", numbered=True)))
    monkeypatch.setenv("PATH", f"{BUILD}{os.pathsep}{os.environ['PATH']}")


@pytest.fixture
def start(place: None) -> Generator[Callable[..., str], None, None]:
    """Starts a unit of this name."""
    started: list[str] = []

    def start(name: str, *words: str) -> str:
        hx_sim("start", name, *words)
        started.append(name)
        return name

    yield start
    for name in set(started) & set(hx_sim("list").split()):
        hx_sim("stop", name)


@pytest.fixture
def unit(start: Callable[..., str]) -> str:
    return start("bench")


@pytest.fixture
def serve(place: None) -> Generator[Callable[..., Panel], None, None]:
    """Starts a server with these words."""
    started: list[Panel] = []

    def serve(*words: str) -> Panel:
        started.append(Panel(*words))
        return started[-1]

    yield serve
    for panel in started:
        if panel.process.poll() is None:
            panel.stop()


@pytest.fixture
def panel(unit: str, serve: Callable[..., Panel]) -> Panel:
    """A server of a unit that is named bench."""
    return serve()


@pytest.fixture
def token(tmp_path: pathlib.Path) -> pathlib.Path:
    """A file with the token "correct-horse-battery"."""
    file = tmp_path / "token"
    file.write_text("correct-horse-battery\n", encoding="ascii")
    file.chmod(0o600)
    return file
