# SPDX-License-Identifier: LicenseRef-HXAux
"""What the readers of other projects say to the metrics of a unit."""
from __future__ import annotations

import subprocess
from collections.abc import Callable

import pytest
from prometheus_client.openmetrics.parser import text_string_to_metric_families as open_metrics
from prometheus_client.parser import text_string_to_metric_families as older_format

from fleet import Unit, engine, metric_names

HOSTILE = {
    "a quote that ends the label": 'a"} 1\\nfoo 2',
    "a backslash at the end": "a\\",
    "control characters": "\x01\x1b[2J\x7f\x85",
    "a tab": "a\tb",
    "UTF-8": "Gerät-\u20ac-\U0001f600",
    "a name of a metric": "hxaux_up{x=1}",
}


def checked(text: str) -> str:
    """What promtool says to a text: nothing."""
    promtool = engine("promtool")
    assert promtool is not None
    done = subprocess.run([promtool, "check", "metrics"], input=text, capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stderr
    return done.stdout + done.stderr


def test_promtool_has_nothing_to_say(unit: Unit) -> None:
    assert checked(unit.hxaux("metrics", "--format", "prometheus").stdout) == ""


def test_promtool_has_nothing_to_say_when_everything_fails(start: Callable[..., Unit]) -> None:
    unit = start("dead", "do=supply off", "absent=libjida.so", "absent=/dev/lightsensor", "absent=/dev/backlight")

    assert checked(unit.hxaux("metrics", "--format", "prometheus").stdout) == ""


def test_another_projects_parser_accepts_openmetrics(unit: Unit) -> None:
    families = {family.name: family for family in open_metrics(unit.hxaux("metrics").stdout)}

    assert families["hxaux"].type == "info"
    assert families["hxaux"].samples[0].labels["serial"] == "U-77-004711"
    assert families["hxaux_power_cycles"].type == "counter"
    assert families["hxaux_lock_state"].type == "stateset"
    assert families["hxaux_supply_volts"].unit == "volts"
    assert len(families["hxaux_supply_volts"].samples) == 8


def test_both_formats_have_the_same_samples(unit: Unit) -> None:
    newer = unit.hxaux("metrics").stdout
    older = unit.hxaux("metrics", "--format", "prometheus").stdout

    assert metric_names(newer) == metric_names(older)
    assert len([*older_format(older)]) == len([*open_metrics(newer)])


@pytest.mark.parametrize("text", HOSTILE.values(), ids=HOSTILE.keys())
def test_a_hostile_text_stays_inside_its_label(start: Callable[..., Unit], text: str) -> None:
    plain = start("plain")
    unit = start("hostile", "eeprom.main.UNIT_SERIAL=" + text.replace("\n", ""), "eeprom.main.PCB_SERIAL=" + text)

    found = unit.hxaux("metrics").stdout
    older = unit.hxaux("metrics", "--format", "prometheus").stdout

    assert metric_names(found) == metric_names(plain.hxaux("metrics").stdout)
    assert len(found.splitlines()) == len(plain.hxaux("metrics").stdout.splitlines())
    families = {family.name: family for family in open_metrics(found)}
    assert len(families["hxaux"].samples) == 1
    assert checked(older) == ""


def test_bytes_that_are_not_utf8_become_visible(start: Callable[..., Unit], unit: Unit) -> None:
    words = unit.command(
        "sh", "-c", "hxaux eeprom set main UNIT_SERIAL \"$(printf 'x\\303\\050\\200')\"; hxaux metrics"
    )

    text = subprocess.run(words, capture_output=True, check=False).stdout.decode("utf-8")

    families = {family.name: family for family in open_metrics(text)}
    assert len(families["hxaux"].samples) == 1
