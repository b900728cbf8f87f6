# SPDX-License-Identifier: LicenseRef-HXAux
"""Three units under a real Prometheus."""
from __future__ import annotations

import pathlib
import time
from collections.abc import Callable
from contextlib import ExitStack

from fleet import MetricsServer, Prometheus, Unit, eventually

INTERVAL = 2.0


def test_three_units_are_scraped_and_an_alert_fires_and_clears(
    tmp_path: pathlib.Path, ended: ExitStack, start: Callable[..., Unit], serve: Callable[..., MetricsServer]
) -> None:
    units = [start(f"unit{number}") for number in range(3)]
    targets = {unit.name: serve(unit).address for unit in units}
    prometheus = Prometheus(tmp_path, {"hxaux": targets}, INTERVAL)
    ended.callback(prometheus.stop)
    eventually("all are scraped", lambda: len(prometheus.query('up{job="hxaux"} == 1')) == 3)
    assert prometheus.alerts() == set()

    began = time.time()
    units[1].set("diagnostics.error", 7)
    eventually("it fires", lambda: prometheus.alerts() == {("HxauxHardwareError", "unit1")})

    assert prometheus.scrapes("unit1", began) <= 2
    units[1].set("diagnostics.error", 0)
    eventually("it clears", lambda: prometheus.alerts() == set())
