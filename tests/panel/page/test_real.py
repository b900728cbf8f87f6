# SPDX-License-Identifier: LicenseRef-HXAux
"""A real unit through hxaux: the server itself runs where the devices are."""
from __future__ import annotations

from collections.abc import Iterator

import pytest
from panel import SIM, Page, Server, Unit


@pytest.fixture(scope="module")
def machine(unit: Unit) -> Iterator[Server]:
    server = Server("--real", before=[SIM, "run", "--unit", unit.name, "--"])
    yield server
    server.stop()


@pytest.fixture
def real(page: Page, machine: Server) -> Page:
    page.open_live(machine.url, "real")
    return page


def test_readings_show_like_those_of_a_simulated_unit(real: Page, unit: Unit) -> None:
    unit.set("voltage.0", "19")
    unit.set("light", "500")
    unit.hxaux("led", "color", "blue")

    real.until("return document.querySelector('[data-property=\"voltage.0\"] input').value.startsWith('19')")
    real.until("return document.querySelector('#led').style.color === 'rgb(0, 0, 255)'")
    real.until("return Number(document.querySelector('#light-lux').value) > 400")


@pytest.mark.parametrize(
    "name, value, condition",
    [
        ("backlight.level", "77", "backlight.level = 77"),
        ("power.fan", "on", "power.fan = on"),
        ("buzzer.frequency", "1500", "buzzer.frequency = 1500"),
        ("can.1.bitrate", "500000", "can.1.bitrate = 500000"),
    ],
)
def test_controls_call_hxaux(real: Page, unit: Unit, name: str, value: str, condition: str) -> None:
    control = real.control(name)
    if control.get_attribute("role") == "switch":
        real.click(control)
    elif control.get_attribute("type") == "range":
        real.slide(control, int(value))
    elif control.tag_name == "select":
        real.choose(control, value)
    else:
        real.type(control, value)

    unit.wait(*condition.split(" "))


def test_what_a_real_unit_cannot_do_is_not_offered(real: Page) -> None:
    hidden = real.js("return [...document.querySelectorAll('.card[hidden], #record[hidden]')].map((each) => each.id)")
    enabled = real.js(
        "return [...document.querySelectorAll('#voltages input:not(:disabled), #inputs input:not(:disabled)')].length"
    )

    assert set(hidden) >= {"faults", "devices", "log", "recorder", "production", "record"}
    assert enabled == 0
