# SPDX-License-Identifier: LicenseRef-HXAux
"""Every effect of a program on the unit shows on the page."""
from __future__ import annotations

import pathlib
import shutil

import pytest
from panel import Page, Unit

DOCS = pathlib.Path(__file__).resolve().parents[3] / "docs"


def shows(name: str, value: str) -> str:
    selector = f'.row[data-property="{name}"] :is(input, select, output)'
    return f"const one = document.querySelector('{selector}'); return (one.type === 'checkbox' ? (one.checked ? 'on' : 'off') : one.value) === '{value}'"


# What a program calls, and what the page then shows.
EFFECTS = [
    ("backlight set 60", "return document.querySelector('.level-text').textContent === '60'"),
    ("backlight set 60", shows("backlight.level", "60")),
    ("power backlight off", "return document.querySelector('.shade').style.opacity === '1'"),
    ("power backlight on", "return Number(document.querySelector('.shade').style.opacity) < 1"),
    ("power can off", shows("power.can", "off")),
    ("power video 4", shows("power.video.4", "on")),
    ("led color magenta", "return document.querySelector('#led-color-name').value === '12 0 4'"),
    ("led rgb 15 15 15", "return document.querySelector('#led').style.color === 'rgb(255, 255, 255)'"),
    ("led off", "return document.querySelector('#led').classList.contains('dark')"),
    ("led signal 2 25", "return document.querySelector('.summary').textContent.includes('120 ms on, 380 ms off')"),
    ("buzzer on", "return document.querySelector('#buzzer-grille').classList.contains('sounds')"),
    ("buzzer off", "return !document.querySelector('#buzzer-grille').classList.contains('sounds')"),
    ("buzzer frequency 1234", shows("buzzer.frequency", "1234")),
    ("video show 1", "return document.querySelector('#video-window-1').getAttribute('visibility') === 'visible'"),
    ("video area 1 100 50 400 300", "return document.querySelector('.video-frame').getAttribute('width') === '400'"),
    ("video hide 1", "return document.querySelector('#video-window-1').getAttribute('visibility') === 'hidden'"),
    ("can set 3 125", shows("can.3.bitrate", "125000")),
    (
        "config voltage 11.5",
        "return document.querySelector('#properties [aria-label=\"config.voltage\"]').value === '1189'",
    ),
    ("config short-press 0", shows("config.short-press", "0")),
    ("telematics wlan on", shows("telematics.wlan", "on")),
    ("touch mode 2", shows("touch.mode", "2")),
    ("light range extended", shows("light.range", "1")),
    (
        "settings set GPRSPowerAtStartup 1",
        "return document.querySelector('[aria-label=\"Setting GPRSPowerAtStartup\"]')?.value === '1'",
    ),
    (
        "eeprom set UNIT_SERIAL U-1",
        "return document.querySelector('[aria-label=\"UNIT_SERIAL of the main board\"]')?.value === 'U-1'",
    ),
    ("calibrate mode 9-points", "return document.querySelectorAll('.target').length === 9"),
    (
        "smart set 8 999",
        "return [...document.querySelectorAll('.log-text')].some((row) => row.textContent.includes('= 999'))",
    ),
]


@pytest.fixture(scope="module")
def open_page(browser, server, unit) -> Page:
    page = Page(browser)
    page.resize(1280, 1000)
    page.open_live(server.url, unit.name)
    return page


@pytest.mark.parametrize("call, shown", EFFECTS, ids=[f"{row[0]} {i}" for i, row in enumerate(EFFECTS)])
def test_what_a_program_does_shows_on_the_page(open_page: Page, unit: Unit, call: str, shown: str) -> None:
    unit.hxaux(*call.split(" "))

    open_page.until(shown)


def test_a_beep_that_is_over_at_once_is_still_seen(live: Page, unit: Unit) -> None:
    live.js(
        """window.seen = false;
        new MutationObserver(() => { window.seen ||= document.querySelector('#buzzer-grille').classList.contains('sounds'); })
            .observe(document.querySelector('#buzzer-grille'), {attributes: true})"""
    )
    unit.hxaux("buzzer", "beep", "5")

    live.until("return window.seen")
    live.until("return !document.querySelector('#buzzer-grille').classList.contains('sounds')")


def test_the_buzzer_is_heard_only_after_the_user_has_asked(live: Page, unit: Unit) -> None:
    live.js(
        """window.made = 0; window.AudioContext = class extends window.AudioContext {
        constructor() { super(); window.made += 1; } }"""
    )
    unit.hxaux("buzzer", "on")
    live.until("return document.querySelector('#buzzer-grille').classList.contains('sounds')")
    assert live.js("return window.made") == 0

    live.click(live.find("#sound"))
    live.until("return document.querySelector('#sound').getAttribute('aria-pressed') === 'true'")
    assert live.js("return window.made") == 1
    unit.hxaux("buzzer", "off")


def test_requests_are_listed_with_their_names(live: Page, unit: Unit) -> None:
    unit.hxaux("backlight", "set", "33")
    live.find("#log-filter").send_keys("setbacklightlevel")

    live.until(
        "return document.querySelector('.log-row:not([hidden]) .log-text')?.textContent === '/dev/backlight 0x40010003: 00 21'"
    )
    assert "setBacklightLevel" in live.log()[-1]


def test_the_list_pauses_and_continues(live: Page, unit: Unit) -> None:
    live.find("#log-filter").send_keys("dig-io open")
    live.click(live.button("Pause"))
    unit.hxaux("inputs")
    live.until("return /[1-9]\\d* waiting/.test(document.querySelector('.log-counter').textContent)")
    assert live.log() == []

    live.click(live.button("Pause"))
    live.until("return document.querySelector('.log-row:not([hidden])') !== null")


def test_a_request_is_copied_as_a_step_that_the_same_call_meets(live: Page, unit: Unit) -> None:
    unit.hxaux("power", "fan", "on")
    live.find("#log-filter").send_keys("put 3")
    live.until("return document.querySelector('.log-row:not([hidden])')?.textContent.includes('put 3')")
    live.click(live.find(".log-row:not([hidden])"))
    step = live.find("#log-step").get_property("value")
    assert step == "expect request /dev/power-id put 3 = 1 within 5s"

    program = unit.begin("sh", "-c", "for i in 1 2 3 4 5 6 7 8; do sleep 0.2; hxaux power fan on; done")
    unit.do(*step.replace("within 5s", "within 30s").split(" "))
    program.communicate(timeout=60)


def test_names_of_requests_are_those_of_the_guide() -> None:
    rows = [line.split("|") for line in (DOCS / "control-codes.md").read_text().splitlines() if line.startswith("| 0x")]
    listed = {row[1].strip(): row[2].strip(" `") for row in rows}
    module = (DOCS.parent / "panel/page/requests.js").read_text()
    table = module[module.index("CODES = {") : module.index("};")]
    named = dict(
        part.strip().replace('"', "").split(": ") for part in table[9:].replace("\n", "").split(",") if part.strip()
    )

    assert named == listed


def test_an_upgrade_shows_its_steps(live: Page, unit: Unit, tmp_path: pathlib.Path) -> None:
    file = tmp_path / "firmware.mcs"
    file.write_text(mcs_of(16 * 528 * 4))
    live.js(
        """window.steps = new Set();
        new MutationObserver(() => document.querySelectorAll('.steps .now').forEach((step) => window.steps.add(step.textContent)))
            .observe(document.querySelector('#upgrade-steps'), {subtree: true, attributes: true})"""
    )
    unit.hxaux("upgrade", "fpga", str(file))

    live.until("return document.querySelector('#upgrade-title').textContent.includes('FPGA: finished')")
    assert {"writing", "verifying"} & set(live.js("return [...window.steps]"))


def mcs_of(size: int) -> str:
    """An MCS file of this many bytes."""
    lines = []
    for at in range(0, size, 16):
        if at % 65536 == 0:
            lines.append(record(4, 0, [at >> 24, at >> 16 & 255]))
        lines.append(record(0, at & 0xFFFF, [at >> 4 & 255] * 16))
    return "".join(f":{line}\n" for line in [*lines, record(1, 0, [])])


def record(kind: int, address: int, data: list[int]) -> str:
    content = [len(data), address >> 8, address & 255, kind, *data]
    return "".join(f"{byte:02X}" for byte in [*content, -sum(content) & 255])


def test_hostile_texts_are_only_ever_texts(live: Page, unit: Unit, tmp_path: pathlib.Path) -> None:
    evil = "<img/src=x/onerror=document.title='taken'><script>document.title='taken'</script>"
    before = live.js("return document.querySelectorAll('img, script').length")
    unit.set("eeprom.main.UNIT_SERIAL", evil)
    unit.set("can.1.text", evil)
    unit.set("version.os", evil)
    unit.hxaux("settings", "set", "GPRSPowerAtStartup", evil)
    program = tmp_path / "<b>evil<script>"
    shutil.copy(shutil.which("hxaux") or "", program)
    printed, _ = unit.begin(str(program), "inputs").communicate(timeout=60)
    assert "input 1" in printed
    live.find("#log-filter").send_keys("evil")
    live.until(
        "return document.querySelector('[aria-label=\"UNIT_SERIAL of the main board\"]').value.includes('onerror')"
    )
    live.until(
        "return document.querySelector('[aria-label=\"Setting GPRSPowerAtStartup\"]')?.value.includes('onerror')"
    )
    live.until("return [...document.querySelectorAll('.log-text')].some((row) => row.textContent.includes('evil'))")

    assert live.js("return document.querySelectorAll('img, script').length") == before
    assert live.js("return document.querySelector('b')") is None
    assert live.browser.title == "HXAux panel"


def test_control_characters_and_wrong_bytes_in_an_eeprom_do_no_harm(live: Page, unit: Unit) -> None:
    unit.do("erase", "main", "0x1b")
    live.until("return document.querySelector('#production-main .empty').textContent !== ''")
    unit.do("erase", "main", "0xff")
    unit.do("production", "main", "UNIT_SERIAL", "U-2")

    live.until("return document.querySelector('[aria-label=\"UNIT_SERIAL of the main board\"]')?.value === 'U-2'")
