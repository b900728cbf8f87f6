# SPDX-License-Identifier: LicenseRef-HXAux
"""The client of a simulated unit."""
from __future__ import annotations

import os
import pathlib
import signal
import subprocess
import sys
import threading
from collections.abc import Generator

import pytest

from hxaux import sim


@pytest.fixture
def unit() -> Generator[sim.Unit, None, None]:
    with sim.Unit() as unit:
        yield unit


def running() -> list[str]:
    words = [os.environ["HX_SIM"], "list"]
    return subprocess.run(words, capture_output=True, text=True, check=True).stdout.split()


class TestUnit:
    def test_starts_as_described(self) -> None:
        with sim.Unit({"light": 20, "voltage.0": 11.5, "led.startup": False, "led.color": "1 2 3"}) as unit:
            assert unit.get("light") == "20"
            assert float(unit.get("voltage.0")) == pytest.approx(11.5, abs=0.01)
            assert unit.get("led.startup") == "off"
            assert unit.get("led.color") == "1 2 3"

    @pytest.mark.parametrize(
        "light", [250.0, 1e3, 0.1, 1234.56789, 1.5e-7], ids=["whole", "power", "tenth", "digits", "small"]
    )
    def test_sends_every_digit_of_a_number(self, unit: sim.Unit, light: float) -> None:
        with pytest.raises(sim.Error) as refused:
            unit.set("led.color", light)
        assert f"{light:.12f}".rstrip("0").rstrip(".") in str(refused.value)

    def test_starts_with_lines_of_a_description(self) -> None:
        with sim.Unit(["light = 20", "absent = /dev/lightsensor"]) as unit:
            program = unit.run(["hxaux", "light"])
            assert program.wait(60) == 1
            assert program.output == "light: Open failed (1)\n"

    def test_sets_what_it_gets(self, unit: sim.Unit) -> None:
        unit.set("light", 250)
        unit.set("temperature.pm.0", -3)
        unit.set("light.infrared", 0.25)
        unit.set("led.startup", True)
        unit.set("led.color", "0 15 0")
        keys = ("light", "temperature.pm.0", "light.infrared", "led.startup", "led.color")
        assert [unit.get(key) for key in keys] == ["250", "-3.000", "0.25", "on", "0 15 0"]

    def test_waits_for_what_a_program_does(self, unit: sim.Unit) -> None:
        unit.run(["hxaux", "backlight", "set", "30"])
        result = unit.wait_for("backlight.level", "<", 40, timeout=60)
        assert result and result.met and result.time > 0
        assert result.seen.startswith("backlight.level was ") and result.seen.endswith("30")

    def test_counts_from_the_moment_for_which_it_waited(self, unit: sim.Unit) -> None:
        unit.run(["hxaux", "backlight", "set", "30"])
        unit.wait("backlight.level = 30 within 60s")
        unit.expect("never backlight.level = 128 for 10ms")
        with pytest.raises(sim.NotMet):
            unit.wait("backlight.level = 128 within 10ms")

    def test_raises_what_was_seen_instead(self, unit: sim.Unit) -> None:
        with pytest.raises(
            AssertionError, match='expected backlight.level = "41" within 0.01s; backlight.level was 128'
        ):
            unit.wait_for("backlight.level", "=", 41, timeout=0.01)
        with pytest.raises(sim.NotMet):
            unit.expect("never backlight.level = 128 for 10ms")
        assert not unit.check("backlight.level = 41")

    def test_raises_what_the_unit_refuses(self, unit: sim.Unit) -> None:
        with pytest.raises(sim.Error, match="no property 'ligth'; did you mean 'light'"):
            unit.set("ligth", 3)
        with pytest.raises(sim.Error, match="did you mean 'touch'"):
            unit.act("tuch 3")
        with pytest.raises(sim.Error, match="did you mean '='") as caught:
            unit.check("light == 3")
        assert not isinstance(caught.value, AssertionError)
        with pytest.raises(sim.Error, match="did you mean '/dev/adc-id'"):
            unit.fail("/dev/adcid", "get 3")

    def test_injects_failures_and_clears_them(self, unit: sim.Unit) -> None:
        unit.fail("/dev/adc-id", "get 0", "EIO", 1)
        assert [unit.run(["hxaux", "voltage", "0"]).wait(60) for _ in range(2)] == [1, 0]
        unit.fail("/dev/adc-id", "get 0")
        assert unit.run(["hxaux", "voltage", "0"]).wait(60) == 1
        unit.unfail("/dev/adc-id")
        assert unit.run(["hxaux", "voltage", "0"]).wait(60) == 0

    def test_removes_devices_and_restores_them(self, unit: sim.Unit) -> None:
        unit.remove("/dev/adc-id")
        assert unit.run(["hxaux", "voltage", "0"]).wait(60) == 1
        unit.restore("/dev/adc-id")
        assert unit.run(["hxaux", "voltage", "0"]).wait(60) == 0

    def test_acts(self, unit: sim.Unit) -> None:
        unit.press("front")
        unit.expect("power.transition != 0 within 60s")
        unit.act("touch 3")
        assert unit.get("touch.finger") == "3"

    def test_follows_what_is_over_before_it_is_expected(self, unit: sim.Unit) -> None:
        unit.follow("backlight.level")
        assert unit.run(["sh", "-c", "hxaux backlight set 9 && hxaux backlight set 99"]).wait(60) == 0
        unit.expect("backlight.level = 9 within 60s")

    def test_has_a_log_and_a_time(self, unit: sim.Unit) -> None:
        before = unit.time
        assert unit.run(["hxaux", "backlight", "set", "30"]).wait(60) == 0
        assert "/dev/backlight 0x40010003: 00 1e" in unit.log()
        unit.sleep(0.05)
        assert unit.time >= before + 0.05

    def test_runs_faster_than_real_time(self) -> None:
        with sim.Unit(scale=1000) as unit:
            unit.sleep(100)

    def test_has_virtual_time_that_passes_while_the_test_waits(self) -> None:
        with sim.Unit(virtual=True) as unit:
            program = unit.run(["sleep", "3600"])
            assert program.wait(60) == 0
            assert unit.time >= 3600
            before = unit.time
            unit.run(["sh", "-c", "sleep 7200; hxaux backlight set 30"])
            assert unit.time == before
            unit.wait_for("backlight.level", "=", 30, timeout=7300)
        with pytest.raises(sim.Error, match="--scale and --virtual exclude each other"):
            sim.Unit(scale=2, virtual=True)

    def test_stops_with_its_block(self) -> None:
        with sim.Unit() as unit:
            program = unit.run(["sleep", "1000"])
            assert unit.name in running()
        with pytest.raises(sim.Error, match="has been stopped"):
            unit.get("light")
        assert not program.is_running

    def test_stops_when_its_process_is_killed(self) -> None:
        code = "from hxaux import sim; unit = sim.Unit(); print(unit.name, flush=True); input()"
        process = subprocess.Popen([sys.executable, "-c", code], stdin=-1, stdout=-1, text=True)
        assert process.stdout is not None
        with sim.Unit.attach(process.stdout.readline().strip()) as unit:
            process.kill()
            process.communicate()
            with pytest.raises(sim.Error, match="stopped"):
                unit.sleep(1000)

    def test_that_is_attached_continues(self, unit: sim.Unit) -> None:
        with sim.Unit.attach(unit.name) as other:
            other.set("light", 3)
        assert unit.get("light") == "3"

    def test_that_does_not_run_is_named(self) -> None:
        with pytest.raises(sim.Error, match="no unit named 'nothing' is running"):
            sim.Unit.attach("nothing")
        with pytest.raises(sim.Error, match="does not run on a unit"):
            sim.Unit.attach()

    @pytest.mark.parametrize(
        "settings, error",
        [
            ("light = 3", TypeError),
            ({"ligth": 3}, sim.Error),
            ({"light": "dark"}, sim.Error),
            ([3], TypeError),
        ],
    )
    def test_refuses_settings_that_are_wrong(self, settings: object, error: type[Exception]) -> None:
        before = running()
        with pytest.raises(error):
            sim.Unit(settings)  # type: ignore[arg-type]
        assert {name for name in running() if str(os.getpid()) in name} <= set(before)

    def test_refuses_times_that_are_wrong(self, unit: sim.Unit) -> None:
        for time in (-1.0, float("nan"), float("inf")):
            with pytest.raises(ValueError, match="time must be"):
                unit.sleep(time)

    def test_without_hx_sim_says_so(self, monkeypatch: pytest.MonkeyPatch) -> None:
        monkeypatch.setenv("HX_SIM", "/no/such/hx-sim")
        with pytest.raises(sim.Error, match="cannot start /no/such/hx-sim"):
            sim.Unit()


class TestProgram:
    def test_has_its_whole_output_when_it_has_ended(self, unit: sim.Unit) -> None:
        program = unit.run(["sh", "-c", "seq 1 20000; echo error >&2; exit 3"])
        assert program.wait(60) == 3
        assert program.output == "".join(f"{number}\n" for number in range(1, 20001)) + "error\n"

    def test_has_the_output_so_far_while_it_runs(self, unit: sim.Unit) -> None:
        program = unit.run(["sh", "-c", "echo begins; sleep 1000"])
        unit.expect("output begins within 60s")
        assert program.is_running and program.output == "begins\n"

    def test_is_stopped(self, unit: sim.Unit) -> None:
        program = unit.run(["sleep", "1000"])
        with pytest.raises(TimeoutError, match="sleep is still running after 0.01 s"):
            program.wait(0.01)
        program.stop()
        assert program.wait(60) == 128 + signal.SIGTERM

    def test_that_does_not_exist_fails(self, unit: sim.Unit) -> None:
        program = unit.run(["no-such-program"])
        assert program.wait(60) == 127
        assert "no-such-program" in program.output

    def test_may_be_named_by_a_path(self, unit: sim.Unit, tmp_path: pathlib.Path) -> None:
        script = tmp_path / "script"
        script.write_text("#!/bin/sh\necho $1\n")
        script.chmod(0o755)
        program = unit.run([script, "word"])
        assert (program.wait(60), program.output) == (0, "word\n")

    @pytest.mark.parametrize("command, error", [("ls -l", TypeError), ([], ValueError), ([1], TypeError)])
    def test_needs_words(self, unit: sim.Unit, command: object, error: type[Exception]) -> None:
        with pytest.raises(error):
            unit.run(command)  # type: ignore[arg-type]

    def test_in_python_uses_the_library_on_the_unit(self, unit: sim.Unit) -> None:
        unit.set("voltage.0", 11.5)
        code = "import hxaux; print(round(hxaux.Adc().get_voltage(hxaux.VoltageEnum.VOLTAGE_0), 1))"
        program = unit.run([sys.executable, "-c", code])
        assert (program.wait(60), program.output) == (0, "11.5\n")

    def test_in_python_reaches_the_unit_that_it_runs_on(self, unit: sim.Unit) -> None:
        code = "from hxaux import sim; unit = sim.Unit.attach(); unit.set('light', 7); print(unit.name)"
        program = unit.run([sys.executable, "-c", code])
        assert (program.wait(60), program.output) == (0, f"{unit.name}\n")
        assert unit.get("light") == "7"


class TestThreads:
    def test_run_while_another_waits_for_the_unit(self, unit: sim.Unit) -> None:
        is_over = threading.Event()
        threading.Timer(0.05, is_over.set).start()
        unit.sleep(0.5)
        assert is_over.is_set()

    def test_take_turns_on_one_unit(self, unit: sim.Unit) -> None:
        def work(key: str) -> None:
            for number in range(50):
                unit.set(key, number)
                assert unit.get(key) == str(number)

        threads = [threading.Thread(target=work, args=(f"diagnostics.time.{i}",)) for i in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        assert unit.get("diagnostics.time.3") == "49"


class TestCtrlC:
    @pytest.mark.parametrize(
        "wait",
        ["unit.wait_for('light', '=', 7, timeout=1000)", "unit.sleep(1000)", "unit.run(['sleep', '1000']).wait()"],
    )
    def test_ends_a_wait(self, wait: str, tmp_path: pathlib.Path) -> None:
        code = f"""from hxaux import sim
with sim.Unit() as unit:
    try:
        print("waits", flush=True)
        {wait}
    except KeyboardInterrupt:
        unit.set("light", 8)
        print("interrupted", unit.get("light"))
"""
        process = subprocess.Popen([sys.executable, "-c", code], stdout=-1, text=True)
        assert process.stdout is not None
        assert process.stdout.readline() == "waits\n"
        process.send_signal(signal.SIGINT)
        assert process.communicate(timeout=60)[0] == "interrupted 8\n"
        assert process.returncode == 0
