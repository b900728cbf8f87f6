# SPDX-License-Identifier: LicenseRef-HXAux
"""Everything works with the keyboard alone."""
from __future__ import annotations

from panel import Page, Unit
from selenium.webdriver import ActionChains
from selenium.webdriver.common.keys import Keys

FOCUSABLE = """return [...document.querySelectorAll('a[href], button, input, select, textarea, summary, [tabindex="0"]')]
    .filter((each) => !each.disabled && each.checkVisibility() && each.closest('details:not([open])') === null
        || each.tagName === 'SUMMARY').map((each) => mark(each));
    function mark(each) { each.dataset.order ??= String(document.querySelectorAll('[data-order]').length); return each.dataset.order; }"""


def press(page: Page, *keys: str) -> None:
    ActionChains(page.browser).send_keys(*keys).perform()


def test_tab_reaches_every_control_in_the_order_of_the_page(live: Page) -> None:
    expected = live.js(FOCUSABLE)
    seen = []
    unseen = []
    live.js("document.activeElement.blur(); window.scrollTo(0, 0)")
    for _ in range(len(expected) + 5):
        press(live, Keys.TAB)
        order, outlined = live.js(
            """const at = document.activeElement; const style = getComputedStyle(at);
            const parts = [...at.querySelectorAll('*')].map((each) => getComputedStyle(each).strokeWidth);
            return [at.dataset.order, style.outlineStyle !== 'none' || parts.includes('6px')]"""
        )
        if order is None or order in seen:
            break
        seen.append(order)
        if not outlined:
            unseen.append(live.js("return document.activeElement.outerHTML.slice(0, 90)"))

    assert seen == expected
    assert unseen == []


def test_controls_work_with_keys(live: Page, unit: Unit) -> None:
    live.js("document.querySelector('#light-slider').focus()")
    press(live, Keys.HOME)
    unit.wait("light", "=", "0")
    press(live, Keys.END)
    unit.wait("light", "=", "200000")
    live.js("arguments[0].focus()", live.control("inputs.1"))
    press(live, Keys.SPACE)
    unit.wait("inputs.1", "=", "on")
    live.js("arguments[0].focus()", live.control("can.1.bitrate"))
    press(live, "5", "0", "0")
    unit.wait("can.1.bitrate", "=", "500000")


def test_the_front_button_is_held_with_the_space_key(live: Page, unit: Unit) -> None:
    unit.set("config.button-time", "500")
    live.js("document.querySelector('#front-button').focus()")
    ActionChains(live.browser).key_down(Keys.SPACE).pause(0.8).key_up(Keys.SPACE).perform()

    unit.wait("power.transition", "=", "4")


def test_the_list_of_requests_is_read_with_the_arrow_keys(live: Page, unit: Unit) -> None:
    unit.hxaux("voltage")
    live.find("#log-filter").send_keys("adc-id get")
    live.until("return document.querySelectorAll('.log-row:not([hidden])').length >= 8")
    live.js("document.querySelector('#log-list').focus()")
    press(live, Keys.HOME)
    press(live, Keys.HOME, Keys.DOWN)
    active = live.js(
        "return document.getElementById(document.querySelector('#log-list').getAttribute('aria-activedescendant')).textContent"
    )

    assert "get 1" in active
    assert live.find("#log-step").get_property("value").startswith("expect request /dev/adc-id get 1")


def test_an_edit_is_given_up_with_escape(live: Page, unit: Unit) -> None:
    field = live.control("voltage.1")
    before = field.get_property("value")
    live.js("arguments[0].focus()", field)
    press(live, "9", "9", Keys.ESCAPE)

    assert field.get_property("value") == before
    assert unit.get("voltage.1") == before


def test_the_first_tab_skips_to_the_unit(live: Page) -> None:
    live.js("document.activeElement.blur()")
    press(live, Keys.TAB, Keys.ENTER)

    assert live.js("return document.activeElement.id") == "main"
