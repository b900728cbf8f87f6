# SPDX-License-Identifier: LicenseRef-HXAux
"""These tests run on a unit (hx-sim run -- pytest): the library's calls of this process reach it."""
from __future__ import annotations

from collections.abc import Generator

import pytest

from hxaux import sim


@pytest.fixture
def unit() -> Generator[sim.Unit, None, None]:
    with sim.Unit.attach() as unit:
        yield unit
