# SPDX-License-Identifier: LicenseRef-HXAux
"""What is done on the page plays back the same."""
from __future__ import annotations

import json
import pathlib
import re
import subprocess

from panel import SIM, Page, Unit


STEP = r"^at (\S+) (\S.*)$"


def test_a_recording_plays_back_the_same(live: Page, unit: Unit, downloads: pathlib.Path) -> None:
    live.click(live.find("#record"))
    live.type(live.find("#light-lux"), "20")
    unit.wait("light", "=", "20")
    live.click(live.control("inputs.2"))
    unit.wait("inputs.2", "=", "on")
    live.type(live.control("voltage.0"), "11.5")
    unit.wait("voltage.0", "<", "12")
    live.type(live.find("[aria-label='UNIT_SERIAL of the main board']"), "U-5$HOME")
    unit.wait("eeprom.main.UNIT_SERIAL", "=", "U-5$HOME")
    live.js("arguments[0].value = '/dev/dig-io'", live.find("#fault-node"))
    live.click(live.button("Inject"))
    live.until("return document.querySelector('#faults td')")
    live.click(live.button("Clear all"))
    live.until("return document.querySelector('#faults td') === null")
    live.click(live.find("#devices summary"))
    live.click(live.find("[data-device='/dev/buzzer']"))
    live.until("return document.querySelector('#devices output').textContent.includes('buzzer')")
    live.js("document.querySelector('#front-button').focus()")
    live.click(live.find("#front-button"))
    unit.wait("power.transition", "=", "1")
    live.click(live.find("#record"))
    live.click(live.find("#save-scenario"))
    text = live.find("#recorder-text").get_property("value")
    file = downloads / "unit-1.scenario"
    live.until("return document.querySelector('#record').textContent === 'Record'")

    final = {
        name: unit.get(name)
        for name in ("light", "inputs.2", "voltage.0", "eeprom.main.UNIT_SERIAL", "power.transition")
    }
    unit.do("restore", "/dev/buzzer")
    passed, steps = play(downloads / "played.scenario", text, final)

    assert steps == re.findall(STEP, text.replace("$$", "$"), re.MULTILINE)
    assert [step.split(" ")[0] for _, step in steps] == ["set", "set", "set", "do", "fail", "unfail", "remove", "press"]
    assert passed
    assert saved(file) == text


def test_a_recording_ends_when_its_unit_starts_again_or_another_one_is_shown(live: Page, unit: Unit) -> None:
    other = Unit("unit-2")
    live.until("return [...document.querySelectorAll('#unit-chooser option')].some((each) => each.value === 'unit-2')")
    for end in (lambda: live.choose(live.find("#unit-chooser"), "unit-2"), lambda: restart(other)):
        live.click(live.find("#record"))
        live.until("return document.querySelector('#record').textContent.startsWith('Stop')")
        end()
        live.until("return document.querySelector('#record').textContent === 'Record'")
        times = re.findall(r"^at (\S+)", str(live.find("#recorder-text").get_property("value")), re.MULTILINE)
        assert len(times) == 1
        assert not times[0].startswith("-")
        live.until_live()
    other.stop()


def restart(unit: Unit) -> None:
    unit.stop()
    unit.start()


def saved(file: pathlib.Path) -> str:
    """The browser renames a download when it is complete."""
    subprocess.run(["sh", "-c", 'until [ -e "$1" ]; do sleep 0.05; done', "sh", str(file)], check=True, timeout=60)
    return file.read_text()


def play(file: pathlib.Path, text: str, final: dict[str, str]) -> tuple[bool, list[tuple[str, str]]]:
    """Plays it in virtual time, and expects the same unit at the end."""
    expected = "".join(f'expect {name} = "{value.replace("$", "$$")}"\n' for name, value in final.items())
    file.write_text(text + expected)
    run = subprocess.run(
        [SIM, "play", "scenario", str(file), "--virtual", "--json"], capture_output=True, text=True, timeout=60
    )
    assert run.stdout, run.stderr
    played = json.loads(run.stdout)["runs"][0]
    return played["passed"], re.findall(STEP, "\n".join(each["text"] for each in played["statements"]), re.MULTILINE)


def test_a_recording_begins_with_what_differs_from_a_healthy_unit(live: Page, unit: Unit) -> None:
    unit.set("temperature.pm.1", "55")
    live.until("return document.querySelector('[data-property=\"temperature.pm.1\"] input').value.startsWith('55')")
    live.click(live.find("#record"))
    live.click(live.find("#record"))
    text = live.find("#recorder-text").get_property("value")

    assert "\nset temperature.pm.1 55" in text
    assert "inputs.4" not in text
