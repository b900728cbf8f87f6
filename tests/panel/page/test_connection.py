# SPDX-License-Identifier: LicenseRef-HXAux
"""Several units, restarts, a read-only server and one with a token."""
from __future__ import annotations

import pathlib

from panel import SIM, Page, Server, Unit, run
from selenium.webdriver.common.keys import Keys


def test_the_page_waits_for_a_unit_that_restarts(live: Page, unit: Unit) -> None:
    unit.set("light", "20")
    live.until("return document.querySelector('#light-lux').value === '20'")
    unit.stop()
    live.until("return document.body.dataset.status === 'stopped'")
    assert "has stopped" in live.text("#connection")

    unit.start("--set", "light = 30")
    live.until_live()
    live.until("return document.querySelector('#light-lux').value === '30'")
    live.type(live.find("#light-lux"), "40")
    unit.wait("light", "=", "40")


def test_the_page_waits_for_a_server_that_restarts(page: Page, unit: Unit) -> None:
    server = Server()
    page.open_live(server.url, unit.name)
    server.stop()
    page.until("return document.body.dataset.status === 'lost'")
    assert "No connection" in page.text("#connection")

    server.start()
    page.until_live()
    page.type(page.find("#light-lux"), "55")
    unit.wait("light", "=", "55")
    server.stop()


def test_units_are_chosen_and_come_and_go(live: Page, unit: Unit) -> None:
    other = Unit("unit-2", "--set", "backlight.level = 9")
    live.until("return [...document.querySelectorAll('#unit-chooser option')].some((each) => each.value === 'unit-2')")
    live.choose(live.find("#unit-chooser"), "unit-2")
    live.until("return document.querySelector('.level-text').textContent === '9'")
    live.slide(live.control("backlight.level"), 10)
    other.wait("backlight.level", "=", "10")
    other.stop()
    live.until("return document.body.dataset.status === 'stopped'")
    live.choose(live.find("#unit-chooser"), unit.name)
    live.until_live()

    assert live.text(".level-text") == unit.get("backlight.level")


def test_another_unit_is_shown_without_the_past_of_the_first(live: Page, unit: Unit) -> None:
    other = Unit("unit-2", "--set", "light = 7")
    unit.stop()
    unit.start("--set", "light = 40000")  # the clock of the other one is ahead
    live.until("return document.querySelector('#plot-light').ariaLabel.includes('to 40000')")
    run(SIM, "run", "--unit", unit.name, "--", "sh", "-c", ": </dev/fpgaflash")
    live.until("return document.querySelector('#upgrade-title').textContent.startsWith('Upgrade of the FPGA')")
    live.click(live.button("Check the file"))
    live.until("return document.querySelector('#settings-verdict').textContent !== ''")
    unit.hxaux("voltage")
    live.type(live.find("#log-filter"), "adc-id")
    live.until("return document.querySelector('#log-list [role=option]:not([hidden])')")
    live.until("return [...document.querySelectorAll('#unit-chooser option')].some((each) => each.value === 'unit-2')")
    live.choose(live.find("#unit-chooser"), "unit-2")
    live.until_live()
    live.until("return document.querySelector('#plot-light').ariaLabel.includes('from 7 to 7 ')")
    live.until("return document.querySelector('#log-list [role=option]:not([hidden])') === null")
    assert live.text("#upgrade-title") == "No upgrade has run while this page was open."
    assert live.text("#settings-verdict") == ""
    other.stop()


def test_a_read_only_page_disables_its_controls(page: Page, unit: Unit) -> None:
    server = Server("--read-only")
    page.open_live(server.url, unit.name)
    unit.set("light", "66")
    page.until("return document.querySelector('#light-lux').value === '66'")
    enabled = page.js(
        """return [...document.querySelectorAll('main :is(input, select, button):not(:disabled)')]
        .filter((each) => each.offsetParent).map((each) => each.id || each.textContent)"""
    )
    seen = page.js("return !document.querySelector('#read-only').hidden")
    server.stop()

    assert seen
    assert set(enabled) <= {
        "log-filter", "property-search", "log-step", "record", "Pause", "Clear", "Read again", "Check the file",
    }  # fmt: skip
    assert page.find("#front-button").get_attribute("aria-disabled") == "true"


def test_a_token_is_asked_for_and_kept_out_of_the_address(page: Page, unit: Unit, tmp_path: pathlib.Path) -> None:
    file = tmp_path / "token"
    file.write_text("0123456789abcdef0123456789abcdef\n")
    file.chmod(0o600)
    server = Server("--token-file", str(file))
    page.browser.get(server.url)
    page.js("sessionStorage.clear()")
    page.open(server.url, unit.name)
    page.until("return document.querySelector('#token').open")
    page.find("#token-field").send_keys("wrong", Keys.ENTER)
    page.until("return document.querySelector('#token').textContent.includes('refused')")
    page.find("#token-field").send_keys("0123456789abcdef0123456789abcdef", Keys.ENTER)
    page.until_live()
    page.type(page.find("#light-lux"), "77")
    unit.wait("light", "=", "77")
    kept = page.js("return [location.href, document.cookie, JSON.stringify(localStorage)].join(' ')")
    page.js("sessionStorage.clear()")
    server.stop()

    assert "0123456789abcdef" not in kept


def test_without_a_unit_the_page_says_what_to_do_and_waits(page: Page, unit: Unit) -> None:
    unit.stop()
    server = Server()
    page.open(server.url)
    page.until("return document.querySelector('#connection').textContent.includes('hx-sim start')")
    unit.start()

    page.until_live()
    server.stop()
