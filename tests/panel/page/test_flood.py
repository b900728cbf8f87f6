# SPDX-License-Identifier: LicenseRef-HXAux
"""A thousand events a second and more leave the page usable and its memory bounded."""
from __future__ import annotations

from panel import Page, Unit

NODES = "return document.querySelectorAll('*').length"


def test_no_request_of_a_quick_program_is_lost(live: Page, unit: Unit) -> None:
    live.find("#log-filter").send_keys("adc-id get 3")
    unit.hxaux("voltage", "3", "--count", "400", "--every", "0.01")

    live.until("return document.querySelector('.log-counter').textContent.startsWith('400 of')")


def test_a_flood_leaves_nodes_and_entries_bounded(live: Page, unit: Unit) -> None:
    unit.hxaux("monitor", "--count", "20", "--every", "0.01")
    before = live.js(NODES)
    live.js("window.frames_seen = 0; (function next() { window.frames_seen += 1; requestAnimationFrame(next); })()")
    programs = [unit.begin("hxaux", "monitor", "--every", "0.01", "--count", "300", "--json") for _ in range(2)]
    for program in programs:
        program.communicate(timeout=120)
    unit.hxaux("backlight", "set", "77")
    live.until("return document.querySelector('.level-text').textContent === '77'")
    live.until(
        "return [...document.querySelectorAll('.log-text')].some((row) => row.textContent.includes('0x40010003: 00 4d'))"
    )

    kept = int(live.text(".log-counter").split(" of ")[1].split(",")[0])
    assert 5000 <= kept <= 5500
    assert live.js(NODES) <= before + 50
    assert live.js("return window.frames_seen") > 0


def test_a_slider_moved_fast_ends_at_its_last_value(live: Page, unit: Unit) -> None:
    control = live.control("backlight.level")
    live.js(
        """for (let level = 1; level <= 200; ++level) {
            arguments[0].value = level;
            arguments[0].dispatchEvent(new Event('input'));
        }""",
        control,
    )
    unit.wait("backlight.level", "=", "200")

    live.until("return document.querySelector('.level-text').textContent === '200'")
    assert control.get_property("value") == "200"
