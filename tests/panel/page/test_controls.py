# SPDX-License-Identifier: LicenseRef-HXAux
"""Every control changes what a program on the unit reads."""
from __future__ import annotations

import pytest
from panel import Page, Unit
from selenium.webdriver import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

# Control, what is set, what the unit then has, and what which call of hxaux prints.
READS = [
    ("backlight.level", "40", "backlight.level = 40", "backlight get", "level: 40"),
    ("voltage.0", "11.5", "voltage.0 < 11.6", "voltage 0", "voltage 0: 11.495 V"),
    ("voltage.7", "1.1", "voltage.7 < 1.15", "voltage 7", "voltage 7: 1.1"),
    ("diagnostics.ss-temp", "71", "diagnostics.ss-temp = 71", "diag supervisor", "71"),
    ("diagnostics.pcb-temp", "52", "diagnostics.pcb-temp = 52", "diag board", "52"),
    ("temperature.pm.0", "63", "temperature.pm.0 = 63", "diag module 0", "63"),
    ("inputs.3", "on", "inputs.3 = on", "inputs", "input 3: on"),
    ("power.fan", "on", "power.fan = on", "power fan", "on"),
    ("power.video.3", "on", "power.video.3 = on", "power video", "1, 2, 3"),
    ("power.transition", "2", "power.transition = 2", "power transition", "2"),
    (
        "diagnostics.startup-reason",
        "170",
        "diagnostics.startup-reason = 170",
        "diag startup",
        "External Control Signal",
    ),
    ("diagnostics.error", "130", "diagnostics.error = 130", "diag error", "Read Error EEPROM"),
    ("diagnostics.power-cycles", "77", "diagnostics.power-cycles = 77", "diag cycles", "77"),
    ("config.long-press", "1", "config.long-press = 1", "config long-press", "1"),
    ("config.button-time", "2500", "config.button-time = 2500", "config button-time", "2500"),
    ("config.power-on", "on", "config.power-on = on", "config power-on", "on"),
    ("can.2.bitrate", "500000", "can.2.bitrate = 500000", "can get 2", "500 kbit/s"),
    ("telematics.antenna-short", "on", "telematics.antenna-short = on", "telematics antenna", ": on"),
    ("telematics.gsm", "on", "telematics.gsm = on", "telematics gprs", "on"),
    ("led.startup", "off", "led.startup = off", "led startup", "off"),
    ("buzzer.trigger", "on", "buzzer.trigger = 1", "buzzer", "sounding: on"),
    ("buzzer.frequency", "3200", "buzzer.frequency = 3200", "buzzer frequency", "3200"),
    ("buzzer.volume", "7", "buzzer.volume = 7", "buzzer volume", "7"),
    ("light.range", "1", "light.range = 1", "light range", "extended"),
    ("version.ss", "2.5.0.1", "version.ss = 2.5.0.1", "version ss", "2.5.0.1"),
    ("touch.mode", "3", "touch.mode = 3", "touch mode", "3"),
    ("touch.right-click", "650", "touch.right-click = 650", "touch right-click", "650"),
    ("video.1.channel", "2", "video.1.channel = 2", "video channel 1", "2"),
]


def use(page: Page, name: str, value: str) -> None:
    control = page.control(name)
    kind = control.get_attribute("role") or control.get_attribute("type") or control.tag_name
    if kind == "switch":
        page.click(control)
    elif kind == "range":
        page.slide(control, int(value))
    elif control.tag_name == "select":
        page.choose(control, value)
    else:
        page.type(control, value)


@pytest.mark.parametrize("name, value, condition, call, answer", READS, ids=[row[0] for row in READS])
def test_a_control_changes_what_a_program_reads(
    live_module: Page, unit: Unit, name: str, value: str, condition: str, call: str, answer: str
) -> None:
    use(live_module, name, value)

    unit.wait(*condition.split(" "))
    assert answer in unit.hxaux(*call.split(" "))


@pytest.fixture(scope="module")
def live_module(browser, server, unit) -> Page:
    page = Page(browser)
    page.resize(1280, 1000)
    page.open_live(server.url, unit.name)
    return page


CHANGE_ALL = """
    const done = arguments[arguments.length - 1];
    const changed = {};
    for (const row of document.querySelectorAll(".row[data-property]")) {
        const control = row.querySelector("input:not(:disabled), select:not(:disabled)");
        if (row.hidden || !control || control.type === "text") { continue; }
        const name = row.dataset.property;
        if (control.role === "switch") {
            changed[name] = control.checked ? ["off", "0"] : ["on", "1"];
            control.click();
        } else {
            const part = Number(control.max || 9) < 1 ? 0.25 : 1;
            const numbers = [1, 2, 3].map((step) => String(Number(control.min || 0) + step * part));
            const options = [...(control.options ?? [])].filter((each) => !each.hidden).map((each) => each.value);
            const value = (options.length > 0 ? options : numbers).find((each) => Number(each) !== Number(control.value));
            control.value = value;
            changed[name] = [value];
            control.dispatchEvent(new Event(control.type === "range" ? "input" : "change"));
        }
    }
    done(changed);
"""


def test_each_control_on_the_page_changes_its_property(live: Page, unit: Unit) -> None:
    before = unit.properties()
    changed = live.browser.execute_async_script(CHANGE_ALL)

    assert len(changed) >= 70
    for name, values in changed.items():
        unit.wait(name, "!=", before[name]["value"])
        now = unit.get(name)
        assert now in values or abs(float(now) - float(values[0])) < 0.05, name  # voltages are converter counts


def test_the_slider_of_light_is_logarithmic(live: Page, unit: Unit) -> None:
    live.slide(live.find("#light-slider"), 0)
    unit.wait("light", "=", "0")
    live.slide(live.find("#light-slider"), 1000)
    unit.wait("light", "=", "200000")
    live.slide(live.find("#light-slider"), 500)
    unit.wait("light", "<", "200")

    assert 100 < float(unit.get("light")) < 200


def test_a_light_in_lux_reaches_a_program(live: Page, unit: Unit) -> None:
    unit.set("light.range", "0")
    unit.set("light.noise", "0")
    unit.set("light.infrared", "0.2")
    live.type(live.find("#light-lux"), "20")
    unit.wait("light", "=", "20")

    assert unit.hxaux("light").startswith("light: 18 lux")


def test_a_profile_is_played_and_ended(live: Page, unit: Unit) -> None:
    live.until("return document.querySelector('#light-profiles option')")
    live.choose(live.find("#light-profiles"), "tunnel")
    live.click(live.button("Play", "#light"))
    live.until("return document.querySelector('#light-profile').textContent.includes('tunnel')")
    assert unit.get("light.profile") != ""

    live.click(live.button("End", "#light"))
    unit.wait("light.profile", "=", "")


def test_color_and_pattern_of_the_led_are_set(live: Page, unit: Unit) -> None:
    live.choose(live.find("#led-color-name"), "15 5 0")
    unit.wait("led.color", "=", "15 5 0")
    fields = live.all("#signals .times input")
    for field, value in zip(fields, ("200", "300", "1000", "3")):
        live.type(field, value)
    unit.wait("led.timing", "=", "20 30 100 3")

    assert "orange" in unit.hxaux("led", "color")
    assert "200 ms" in unit.hxaux("led", "on-time")


def test_a_press_of_the_front_button_lasts_as_long_as_it_is_held(live: Page, unit: Unit) -> None:
    unit.set("config.button-time", "700")
    unit.set("config.short-press", "1")
    unit.set("config.long-press", "2")
    unit.set("power.transition", "0")
    button = live.find("#front-button")
    live.js("arguments[0].scrollIntoView({block: 'center'})", button)
    ActionChains(live.browser).move_to_element(button).click_and_hold().pause(1).release().perform()
    unit.wait("power.transition", "!=", "0")
    held = unit.get("power.transition")
    unit.stop()
    unit.start()
    live.until_live()
    ActionChains(live.browser).move_to_element(button).click().perform()
    unit.wait("power.transition", "!=", "0")

    assert held == "4"  # shut down, by a long press
    assert unit.get("power.transition") == "1"  # suspend, by a short one


def test_supply_and_ignition_are_buttons(live: Page, unit: Unit) -> None:
    live.click(live.button("Supply off", "#power"))
    unit.wait("power.state", "=", "off")
    live.until("return document.querySelector('#power output').textContent === 'off'")
    live.click(live.button("Supply on", "#power"))
    live.click(live.button("Ignition signal", "#power"))

    unit.wait("power.state", "=", "running")


def test_a_calibration_is_done_on_the_drawn_screen(live: Page, unit: Unit) -> None:
    program = unit.begin("hxaux", "calibrate", "run", "5-points")
    for point in range(1, 6):
        target = f".target.asked[data-point='{point}']"
        live.until("return document.querySelector(arguments[0])", target)
        live.js("arguments[0].scrollIntoView({block: 'center'})", live.find(target))
        live.js("arguments[0].focus()", live.find(target))
        ActionChains(live.browser).send_keys(Keys.SPACE).perform()

    output, _ = program.communicate(timeout=60)
    assert "calibration: finished" in output
    live.until("return document.querySelector('.target') === null")


def test_a_setting_is_written_and_the_file_is_checked(live: Page, unit: Unit) -> None:
    form = live.find("#settings form")
    form.find_element(By.CSS_SELECTOR, "#setting-key").send_keys("ABL_k")
    live.type(form.find_element(By.CSS_SELECTOR, "[aria-label='Value of the new setting']"), "41.5")
    live.until("return document.querySelector('[aria-label=\"Setting ABL_k\"]')?.value === '41.5'")
    assert "41.5" in unit.hxaux("settings", "get", "ABL_k")

    live.click(live.button("Check the file"))
    live.until("return document.querySelector('#settings-verdict').textContent.includes('fine')")
    unit.hxaux("settings", "set", "ABL_k", "nonsense")
    live.until("return document.querySelector('[aria-label=\"Setting ABL_k\"]').value === 'nonsense'")
    live.click(live.button("Check the file"))
    live.until("return document.querySelector('#settings-verdict').textContent.includes('ABL_k')")


def test_production_data_is_changed_added_and_removed(live: Page, unit: Unit) -> None:
    live.type(live.find("[aria-label='UNIT_SERIAL of the main board']"), "U-88-1")
    unit.wait("eeprom.main.UNIT_SERIAL", "=", "U-88-1")
    form = live.find("#production-main form")
    form.find_elements(By.CSS_SELECTOR, "input")[0].send_keys("COLOR")
    live.type(form.find_elements(By.CSS_SELECTOR, "input")[1], "black")
    unit.wait("eeprom.main.text", "contains", "COLOR:black")
    live.until("return document.querySelector('[aria-label=\"Remove COLOR of the main board\"]')")
    live.click(live.button("Remove COLOR of the main board"))
    live.until("return document.querySelector('[aria-label=\"Remove COLOR of the main board\"]') === null")

    assert "unit serial: U-88-1" in unit.hxaux("info")
    assert "COLOR" not in unit.get("eeprom.main.text")


def test_a_property_without_a_control_of_its_own_is_in_the_table(live: Page, unit: Unit) -> None:
    search = live.find("#property-search")
    search.send_keys("i2c")
    live.until("return document.querySelectorAll('#properties tbody tr:not([hidden])').length === 1")
    live.type(live.find("#properties [aria-label='i2c.hertz']"), "400000")

    unit.wait("i2c.hertz", "=", "400000")


def test_the_table_has_every_property_and_its_meaning(live: Page, unit: Unit) -> None:
    rows = live.js(
        """return Object.fromEntries([...document.querySelectorAll('#properties tbody tr')].map((row) =>
        [row.children[0].textContent, [row.children[2].textContent, row.querySelector('input') !== null]]))"""
    )

    assert rows == {name: [each["help"], each["writable"]] for name, each in unit.properties().items()}


def test_an_invalid_value_is_refused_with_the_text_of_the_unit(live: Page, unit: Unit) -> None:
    before = unit.get("voltage.0")
    live.type(live.find("#properties [aria-label='voltage.0']"), "many")

    live.until("return document.querySelector('.notice.error')?.textContent.includes('many')")
    assert live.find("#properties [aria-label='voltage.0']").get_property("value") == before


def test_failures_are_injected_shown_when_hit_and_cleared(live: Page, unit: Unit) -> None:
    live.js("arguments[0].value = '/dev/dig-io'", live.find("#fault-node"))
    live.find("#fault-count").send_keys("1")
    live.click(live.button("Inject"))
    live.until("return document.querySelector('#faults td')")
    with pytest.raises(Exception):
        unit.hxaux("inputs")
    live.until("return document.querySelector('#faults tbody').textContent.includes('hit once')")
    live.click(live.button("Clear all"))
    live.until("return document.querySelector('#faults tbody tr') === null")

    assert "input 1" in unit.hxaux("inputs")


def test_a_device_is_removed_and_restored(live: Page, unit: Unit) -> None:
    live.click(live.find("#devices summary"))
    switch = live.find("[data-device='/dev/buzzer']")
    live.click(switch)
    live.until("return document.querySelector('#devices output').textContent === 'Removed: /dev/buzzer'")
    with pytest.raises(Exception):
        unit.hxaux("buzzer")
    live.click(switch)
    live.until("return document.querySelector('#devices output').textContent === 'All devices are present.'")

    assert "volume" in unit.hxaux("buzzer")


def test_a_stale_lock_is_shown_and_released(live: Page, unit: Unit) -> None:
    program = unit.begin("timeout", "-s", "KILL", "3", "hxaux", "light", "--average", "--watch", "--every", "0.2")
    name = "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED"
    row = f"[...document.querySelectorAll('#locks tbody tr')].find((row) => row.textContent.includes('{name}'))"
    live.until(f"return {row}?.textContent.includes('hxaux')")
    program.communicate(timeout=60)
    live.until(f"return {row}?.textContent.includes('stale')")
    live.click(live.button(f"Release {name}"))

    live.until(f"return {row}?.textContent.includes('free')")
    assert "free" in unit.hxaux("locks").split(name)[1].splitlines()[0]
