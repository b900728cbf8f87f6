# SPDX-License-Identifier: LicenseRef-HXAux
"""Both themes, three widths, and what axe-core finds. The pictures of the guide are made here with HX_PANEL_PICTURES."""
from __future__ import annotations

import os
import pathlib

import pytest
from panel import Page, Server, Unit

AXE = os.environ.get("HX_AXE", "")
PICTURES = os.environ.get("HX_PANEL_PICTURES", "")
WIDTHS = {360: 800, 1280: 1000, 2560: 1440}


@pytest.fixture(scope="module", autouse=True)
def busy(unit: Unit) -> None:
    """Something to see: a camera, a failure, a blinking LED, a program that has run."""
    unit.set("light", "800")
    unit.hxaux("led", "color", "orange")
    unit.hxaux("backlight", "set", "190")
    unit.hxaux("video", "show", "1")
    unit.hxaux("video", "area", "1", "560", "60", "400", "300")
    unit.do("fail", "/dev/buzzer", "open", "EBUSY", "2")
    unit.hxaux("voltage")
    unit.hxaux("settings", "set", "ABL_k", "41.5")


@pytest.mark.parametrize("theme", ["light", "dark"])
@pytest.mark.parametrize("width", WIDTHS)
def test_nothing_is_cut_off_at_any_width(live: Page, tmp_path: pathlib.Path, theme: str, width: int) -> None:
    live.theme(theme)
    live.resize(width, WIDTHS[width])
    live.until("return document.querySelector('#settings tbody tr') && document.querySelector('#locks tbody tr')")
    live.until("return document.querySelector('#plot-light').width > 0")
    height = live.js("return document.documentElement.scrollHeight")
    folder = pathlib.Path(PICTURES) if PICTURES else tmp_path
    live.picture(folder / f"whole-{theme}-{width}.png", width, height)

    assert live.js("return document.documentElement.scrollWidth") <= width
    assert live.js(CUT_OFF) == []


# Cards whose content is wider than they are; what scrolls on purpose has a scroll bar of its own.
CUT_OFF = """return [...document.querySelectorAll('.card')].filter((card) => card.scrollWidth > card.clientWidth + 1)
    .map((card) => card.id)"""


@pytest.mark.skipif(not os.path.exists(AXE), reason="no axe-core; scripts/install-deps.sh test installs it")
@pytest.mark.parametrize("theme", ["light", "dark"])
def test_axe_finds_no_violation(live: Page, unit: Unit, theme: str) -> None:
    live.theme(theme)
    unit.set("touch.calibration", "1")
    unit.hxaux("voltage", "0")
    live.js("document.querySelectorAll('details').forEach((each) => { each.open = true; })")
    live.until("return document.querySelector('.target') && document.querySelector('.log-row:not([hidden])')")
    live.click(live.find(".log-row:not([hidden])"))
    live.js(pathlib.Path(AXE).read_text(encoding="utf-8") + "; window.axe = axe;")
    result = live.browser.execute_async_script("axe.run().then(arguments[arguments.length - 1])")
    unit.set("touch.calibration", "0")

    assert [(each["id"], [node["html"][:120] for node in each["nodes"]]) for each in result["violations"]] == []
    assert len(result["passes"]) > 20


def test_a_chosen_theme_stays(live: Page, server, unit: Unit) -> None:
    live.theme("light")
    live.choose(live.find("#theme"), "dark")
    dark = live.js("return getComputedStyle(document.body).backgroundColor")
    live.open_live(server.url, unit.name)
    kept = live.js("return getComputedStyle(document.body).backgroundColor")
    live.choose(live.find("#theme"), "")
    light = live.js("return getComputedStyle(document.body).backgroundColor")

    assert dark == kept != light


DRIVE = [
    ("20", "60", "24"),
    ("900", "190", "23.1"),
    ("6000", "255", "24.4"),
    ("15", "45", "19.5"),
    ("400", "170", "23.9"),
]


def test_the_pictures_of_the_guide_are_made(page: Page, server: Server, tmp_path: pathlib.Path) -> None:
    folder = pathlib.Path(PICTURES) if PICTURES else tmp_path
    bench = Unit("bench", "--scale", "60")
    page.open_live(server.url, "bench")
    for lux, level, volts in DRIVE:  # eight minutes of the unit
        bench.set("light.profile", f"0 {bench.get('light')}; 60 {lux}")
        bench.hxaux("backlight", "set", level)
        bench.set("voltage.0", volts)
        bench.do("expect", "light", ">=", "0", "for", "70s")
    bench.hxaux("led", "color", "orange")
    bench.hxaux("video", "show", "1")
    bench.hxaux("video", "area", "1", "600", "40", "380", "285")
    bench.do("fail", "/dev/dig-io", "open", "EBUSY", "1")
    page.find("#log-filter").send_keys("adc-id")
    bench.hxaux("voltage")
    page.until("return document.querySelectorAll('.log-row:not([hidden])').length >= 8")
    page.until(
        "return document.querySelector('#faults td') && document.querySelector('#video-window-1[visibility=visible]')"
    )
    page.click(page.all(".log-row:not([hidden])")[4])
    page.js("document.activeElement.blur(); window.scrollTo(0, 0)")
    page.picture(folder / "panel-light.png", 1280, 1000)
    page.find("#log").screenshot(str(folder / "panel-requests.png"))
    page.theme("dark")
    page.js("window.scrollTo(0, 0)")
    page.picture(folder / "panel-narrow.png", 360, 760)
    page.picture(folder / "panel-dark.png", 1280, 1000)
    bench.stop()

    for name in ("light", "requests", "narrow", "dark"):
        assert 5_000 < (folder / f"panel-{name}.png").stat().st_size < 300_000
