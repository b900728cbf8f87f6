# SPDX-License-Identifier: LicenseRef-HXAux
"""The plugin of pytest, in runs of pytest of its own."""
from __future__ import annotations

import os

import pytest

PASSES = """
import pytest

def test_has_a_unit(hx_unit):
    hx_unit.set("light", 33)
    assert hx_unit.get("light") == "33"

def test_has_another_unit(hx_unit):
    assert hx_unit.get("light") == "250"

@pytest.mark.hx_unit({"light": 20}, scale=1000)
def test_has_a_unit_that_is_described(hx_unit):
    assert hx_unit.get("light") == "20"
    hx_unit.sleep(100)

def test_has_several_units(hx_unit_factory):
    first, second = hx_unit_factory({"light": 1}), hx_unit_factory({"light": 2})
    assert (first.get("light"), second.get("light")) == ("1", "2")
"""
FAILS = """
def test_fails(hx_unit):
    assert hx_unit.run(["sh", "-c", "echo dims; hxaux backlight set 40"]).wait() == 0
    hx_unit.expect("backlight.level = 41")
"""


def run(pytester: pytest.Pytester, text: str, *words: str) -> pytest.RunResult:
    pytester.makepyfile(text)
    return pytester.runpytest_subprocess("-p", "no:cacheprovider", *words)


def test_gives_each_test_a_unit_of_its_own(pytester: pytest.Pytester) -> None:
    run(pytester, PASSES, "--strict-markers").assert_outcomes(passed=4)


def test_shows_log_and_output_of_a_failed_test(pytester: pytest.Pytester) -> None:
    result = run(pytester, FAILS)
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(
        [
            ">       hx_unit.expect(?backlight.level = 41?)",
            "E       hxaux.sim.NotMet: expected backlight.level = 41; backlight.level was 40",
            "*- log of the unit test-* -*",
            "*/dev/backlight 0x40010003: 00 28",
            "*- output of sh -c *",
            "dims",
        ]
    )


def test_shows_the_end_of_a_long_log(pytester: pytest.Pytester) -> None:
    text = FAILS.replace("echo dims", "for i in $(seq 300); do hxaux voltage 0; done")
    lines = run(pytester, text).stdout.lines
    begin = next(i for i, line in enumerate(lines) if "log of the unit" in line)
    assert lines[begin + 1] == "..."
    assert any("/dev/backlight 0x40010003: 00 28" in line for line in lines[begin:])


def test_shows_no_log_of_a_test_that_passes(pytester: pytest.Pytester) -> None:
    run(pytester, PASSES, "-rA").stdout.no_fnmatch_line("*log of the unit*")


@pytest.mark.parametrize(
    "words, message",
    [
        ("light=20", "TypeError: hx_unit_factory() got an unexpected keyword argument 'light'"),
        ('{"ligth": 20}', "hxaux.sim.Error: hx-sim: line 1: the unit has no property 'ligth'; did you mean 'light'[?]"),
    ],
)
def test_refuses_a_marker_that_is_wrong(pytester: pytest.Pytester, words: str, message: str) -> None:
    result = run(pytester, f"import pytest\n@pytest.mark.hx_unit({words})\ndef test_begins(hx_unit): pass\n")
    result.assert_outcomes(errors=1)
    result.stdout.fnmatch_lines([f"E  *{message}"])


def test_keeps_tests_apart_that_run_at_once(pytester: pytest.Pytester) -> None:
    text = """
import pytest

@pytest.mark.parametrize("level", range(40))
def test_has_its_own_level(hx_unit, level):
    assert hx_unit.get("backlight.level") == "128"
    assert hx_unit.run(["hxaux", "backlight", "set", str(level)]).wait(60) == 0
    hx_unit.expect(f"backlight.level = {level}")
"""
    result = run(pytester, text, "-n", "4")
    result.assert_outcomes(passed=40)
    result.stdout.fnmatch_lines(["gw0 * / gw1 * / gw2 * / gw3 *"])


def test_shows_logs_of_tests_that_run_at_once(pytester: pytest.Pytester) -> None:
    run(pytester, FAILS, "-n", "4").stdout.fnmatch_lines(["*- log of the unit test-* -*", "*0x40010003: 00 28"])


def test_uses_the_chosen_hx_sim(pytester: pytest.Pytester) -> None:
    chosen = pytester.path / "my-hx-sim"
    chosen.write_text(f'#!/bin/sh\necho "$1" >>{pytester.path}/used\nexec {os.environ["HX_SIM"]} "$@"\n')
    chosen.chmod(0o755)
    run(pytester, PASSES, "--hx-sim", str(chosen)).assert_outcomes(passed=4)
    assert (pytester.path / "used").read_text().split().count("start") == 5


def test_refuses_an_hx_sim_that_does_not_exist(pytester: pytest.Pytester) -> None:
    result = run(pytester, PASSES, "--hx-sim", "no-such-hx-sim")
    assert result.ret == pytest.ExitCode.USAGE_ERROR
    result.stderr.fnmatch_lines(["*--hx-sim: no program 'no-such-hx-sim'"])


def test_stops_the_units_of_a_run_that_is_interrupted(pytester: pytest.Pytester) -> None:
    text = """
def test_is_interrupted(hx_unit):
    hx_unit.run(["sleep", "1000"])
    open("name", "w").write(hx_unit.name)
    raise KeyboardInterrupt
"""
    assert run(pytester, text).ret == pytest.ExitCode.INTERRUPTED
    name = (pytester.path / "name").read_text()
    listed = pytester.run(os.environ["HX_SIM"], "list").stdout.lines
    assert name not in listed
