# SPDX-License-Identifier: LicenseRef-HXAux
"""The console as its users meet it; the environment variable CONSOLE names the program."""
import os

import pytest


@pytest.fixture
def state(hx_unit, tmp_path):
    """The file in which the console, running on the unit, saves its state."""
    hx_unit.run([os.environ["CONSOLE"], tmp_path / "state"])
    return tmp_path / "state"


# It is dark, and the front LED refuses a color once.
@pytest.mark.hx_unit(["light = 20", "fail = /dev/frontled 0x40030045 EIO 1"], scale=5)
def test_dims_warns_and_saves(hx_unit, state):
    hx_unit.wait_for("backlight.level", "=", 40, timeout=60)
    hx_unit.set("light", 2000)
    hx_unit.wait_for("backlight.level", "=", 200, timeout=60)
    hx_unit.expect("never request /dev/backlight 0x40010003 for 5s")
    hx_unit.set("voltage.0", 11)
    hx_unit.wait_for("led.color", "=", "15 0 0", timeout=60)
    hx_unit.press("front")
    hx_unit.wait_for("led.color", "=", "0 15 0", timeout=60)
    hx_unit.expect("power.state = suspended within 50s")
    assert state.read_text() == "1\n"
