# SPDX-License-Identifier: LicenseRef-HXAux
"""What all interfaces have in common in Python: errors, release, arguments, threads, values; and the functions."""
from __future__ import annotations

import os
import pathlib
import pickle
import signal
import threading
from collections.abc import Callable, Generator

import headers
import pytest

import hxaux
from hxaux import sim

INTERFACES = sorted({operation.split(".")[0] for operation in headers.operations()})


@pytest.fixture
def buzzer() -> Generator[hxaux.Buzzer, None, None]:
    with hxaux.Buzzer() as opened:
        yield opened


def runs_beside(work: Callable[[], object]) -> int:
    """How often another thread of Python runs while `work` does."""
    rounds = 0
    is_over = threading.Event()

    def count() -> None:
        nonlocal rounds
        while not is_over.wait(0.001):
            rounds += 1

    thread = threading.Thread(target=count)
    thread.start()
    before = rounds
    work()
    during = rounds - before
    is_over.set()
    thread.join()
    return during


class TestErrors:
    def test_have_code_text_operation_and_reason(self, buzzer: hxaux.Buzzer) -> None:
        with pytest.raises(hxaux.InvalidParameterError) as caught:
            buzzer.set_frequency(20000)

        error = caught.value
        assert isinstance(error, hxaux.Error)
        assert error.code is hxaux.ErrorCode.ERR_INVALID_PARAMETER
        assert error.text == hxaux.get_error_string(9) == "Invalid parameter (NULL pointer)"
        assert error.operation == "Buzzer.set_frequency"
        assert error.reason == "hertz is outside 700 to 10000. Nothing was sent."
        assert str(error) == f"{error.operation}: {error.text} (ERR_INVALID_PARAMETER): {error.reason}"

    def test_of_a_driver_reach_python(self, unit: sim.Unit) -> None:
        unit.fail("/dev/adc-id", "get 0", "EIO", 1)
        with hxaux.Adc() as adc:
            with pytest.raises(hxaux.IoctrlFailedError) as caught:
                adc.get_voltage(hxaux.VoltageEnum.VOLTAGE_0)
            assert caught.value.code == 7
            assert adc.get_voltage(hxaux.VoltageEnum.VOLTAGE_0) > 0

    @pytest.mark.parametrize("code", [code for code in hxaux.ErrorCode if code])
    def test_have_a_class_for_each_code(self, code: hxaux.ErrorCode) -> None:
        name = "".join(word.capitalize() for word in code.name.split("_")[1:]) + "Error"
        error = hxaux._values.error(code, hxaux.get_error_string(code), "Any.operation")
        assert type(error) is getattr(hxaux, name)
        assert error.code is code

    def test_can_be_pickled(self) -> None:
        error = pickle.loads(pickle.dumps(hxaux.NotRunningError(hxaux.ErrorCode.ERR_NOT_RUNNING, "a", "b", "c")))
        assert (error.code, error.text, error.operation, error.reason) == (21, "a", "b", "c")

    def test_of_a_missing_device_are_raised_by_the_operation(self, unit: sim.Unit) -> None:
        unit.remove("/dev/adc-id")
        with hxaux.Adc() as adc, pytest.raises(hxaux.OpenFailedError):
            adc.get_voltage(hxaux.VoltageEnum.VOLTAGE_0)
        unit.restore("/dev/adc-id")


class TestRelease:
    @pytest.mark.parametrize("interface", INTERFACES)
    def test_ends_a_with_block(self, interface: str) -> None:
        with getattr(hxaux, interface)() as opened:
            assert repr(opened) == f"<hxaux.{interface}>"
        assert repr(opened) == f"<hxaux.{interface}, released>"
        opened.release()  # again changes nothing

    def test_closes_the_device(self, unit: sim.Unit) -> None:
        with hxaux.Buzzer():
            pass
        assert unit.log().rstrip().splitlines()[-1].endswith(("/dev/buzzer close", "sem_close"))

    def test_ends_a_with_block_that_fails(self) -> None:
        with pytest.raises(KeyError), hxaux.Adc() as adc:
            raise KeyError
        with pytest.raises(ValueError, match="released"):
            adc.get_voltage(0)

    def test_is_done_for_objects_that_nothing_refers_to(self) -> None:
        before = len(os.listdir("/proc/self/fd"))
        for _ in range(100):
            hxaux.Buzzer().get_volume()
        assert len(os.listdir("/proc/self/fd")) <= before + 5

    def test_waits_for_a_call_that_runs(self, unit: sim.Unit) -> None:
        buzzer = hxaux.Buzzer()
        thread = threading.Thread(target=buzzer.buzze, args=(2000, True))
        thread.start()
        unit.expect("buzzer.sounding = on within 60s")
        buzzer.release()
        thread.join()
        assert unit.get("buzzer.sounding") == "off"

    def test_keeps_what_other_objects_share(self) -> None:
        with hxaux.Backlight() as first:
            with hxaux.Backlight() as second:
                second.set_intensity(41)
            assert first.get_intensity() == 41


class TestThreads:
    def test_run_beside_a_blocking_beep(self, buzzer: hxaux.Buzzer) -> None:
        assert runs_beside(lambda: buzzer.buzze(6000, True)) > 3

    def test_run_while_an_object_is_created(self) -> None:
        assert runs_beside(lambda: [hxaux.About().release() for _ in range(5)]) > 3

    def test_run_while_a_lightsensor_is_released(self) -> None:
        sensors = [hxaux.Lightsensor() for _ in range(20)]
        assert runs_beside(lambda: [sensor.release() for sensor in sensors]) > 3

    def test_may_call_one_object_at_once(self) -> None:
        failures: list[BaseException] = []
        with hxaux.HXAuxPrivate() as service:

            def work() -> None:
                try:
                    for _ in range(50):
                        assert service.get_eeprom_property(0, "UNIT_SERIAL")
                except BaseException as error:
                    failures.append(error)

            threads = [threading.Thread(target=work) for _ in range(4)]
            for thread in threads:
                thread.start()
            for thread in threads:
                thread.join()
        assert not failures


class TestSignals:
    def test_end_a_blocking_beep(self, unit: sim.Unit, buzzer: hxaux.Buzzer) -> None:
        def interrupt(*_: object) -> None:
            raise KeyboardInterrupt

        before = unit.time
        handler = signal.signal(signal.SIGALRM, interrupt)
        signal.setitimer(signal.ITIMER_REAL, 0.1)
        with pytest.raises(KeyboardInterrupt):
            buzzer.buzze(600_000, True)
        signal.signal(signal.SIGALRM, handler)
        assert unit.time - before < 600


class TestArguments:
    @pytest.mark.parametrize("value", [-1, 65536, 10**30, -(10**30)])
    def test_that_their_type_cannot_hold_are_refused(self, buzzer: hxaux.Buzzer, value: int) -> None:
        with pytest.raises(ValueError, match="hertz must be 0 to 65535"):
            buzzer.set_frequency(value)

    @pytest.mark.parametrize("value", [None, "700", 700.0, [700]])
    def test_of_another_type_are_refused(self, buzzer: hxaux.Buzzer, value: object) -> None:
        with pytest.raises(TypeError, match="set_frequency"):
            buzzer.set_frequency(value)  # type: ignore[arg-type]

    def test_may_be_named(self, buzzer: hxaux.Buzzer) -> None:
        buzzer.buzze(time=1, blocking=True)

    def test_that_are_texts_must_not_contain_null_characters(self) -> None:
        with hxaux.HXAuxPrivate() as service, pytest.raises(ValueError, match="null"):
            service.get_file_setting("KEY\0")

    def test_that_are_texts_keep_every_character(self) -> None:
        with hxaux.HXAuxPrivate() as service:
            service.set_file_setting("NAME", "Grün \udcff")
            assert service.get_file_setting("NAME") == "Grün \udcff"

    @pytest.mark.parametrize("kind", [str, pathlib.Path, os.fsencode])
    def test_that_are_file_names_may_be_paths(self, kind: Callable[[str], object]) -> None:
        with hxaux.FirmwareUpgrade() as upgrade, pytest.raises(hxaux.OpenFailedError):
            upgrade.start_fpga_verification(kind("/no/such/file"), True)  # type: ignore[arg-type]

    def test_that_are_signed_characters_may_be_negative(self, unit: sim.Unit) -> None:
        with hxaux.HXAuxPrivate() as service:
            with pytest.raises(hxaux.InvalidDataError):
                service.get_from_smart(96)
            with pytest.raises(ValueError, match="reg must be -128 to 127"):
                service.get_from_smart(128)


class TestValues:
    @pytest.mark.parametrize("name", headers.enumerators())
    def test_of_enumerations_are_those_of_the_headers(self, name: str) -> None:
        expected = headers.enumerators()[name]
        enumeration = getattr(hxaux, {"eErr": "ErrorCode", "videoStandard": "VideoStandard"}.get(name, name))
        assert [member.value for member in enumeration] == list(expected.values())
        for member, enumerator in zip(enumeration, expected):
            plain = "".join(c for c in member.name if c != "_").lower()
            assert enumerator.replace("_", "").lower().endswith(plain)

    def test_without_a_name_are_members_too(self, unit: sim.Unit) -> None:
        unit.set("config.can", 7)
        with hxaux.Config() as config:
            status = config.get_can_startup_power_config()
        unit.set("config.can", 1)
        assert isinstance(status, hxaux.HXStatus)
        assert (status, status.name) == (7, "VALUE_7")
        with pytest.raises(ValueError):
            hxaux.HXStatus(2**31)

    def test_of_the_color_table_can_be_changed(self, unit: sim.Unit) -> None:
        assert hxaux.std_color.tolist()[:3] == [15, 0, 0]
        with hxaux.FrontLED() as led:
            hxaux.std_color[1] = 9
            led.set_color(hxaux.HXAuxColor.RED)
            hxaux.std_color[1] = 0
            assert led.get_color_rgb() == (15, 9, 0)

    def test_of_the_can_limits_are_constants(self) -> None:
        can = hxaux.CanSetting
        assert (can.CAN_NET_MIN, can.CAN_NET_MAX, can.CAN_MAX_BAUDRATE) == (1, 4, 1000)

    def test_of_structures_name_their_fields(self) -> None:
        with hxaux.FirmwareUpgrade() as upgrade:
            status = upgrade.get_upgrade_status(False)
        assert status._fields == ("action", "percent", "error")
        assert status.error is hxaux.ErrorCode.ERR_SUCCESS


class TestFunctions:
    OFFERED_BY_ANOTHER = {
        "GetErrorStringW": "get_error_string",
        "GetHwErrorStatusStringW": "get_hw_error_status_string",
        "GetStartupReasonStringW": "get_startup_reason_string",
    }

    @pytest.mark.parametrize("name", headers.functions())
    def test_of_the_headers_are_there(self, name: str) -> None:
        other = self.OFFERED_BY_ANOTHER.get(name)
        if other:
            assert callable(getattr(hxaux, other))
        else:
            plain = name.removesuffix("A") if name.startswith("Get") else name
            offered = {each.replace("_", "").lower(): getattr(hxaux, each) for each in dir(hxaux)}
            assert f"C++: {name}" in offered[plain.lower()].__doc__

    def test_give_texts(self) -> None:
        assert hxaux.get_error_string(hxaux.ErrorCode.ERR_SUCCESS) == hxaux.get_error_string(0)
        assert hxaux.get_error_string(99) == "Unknown error"
        assert hxaux.get_startup_reason_string(0x55) != hxaux.get_startup_reason_string(1) == "Unknown"
        assert hxaux.get_hw_error_status_string(200) == "Unknown error code"

    def test_compare_versions(self, unit: sim.Unit) -> None:
        unit.set("version.fpga", "3.2.0.1")
        assert hxaux.does_system_have_at_least_fpga_version(3, 2, 0, 1)
        assert not hxaux.does_system_have_at_least_fpga_version(3, 2, 0, 2)
        assert hxaux.does_system_have_at_least_ss_version(0, 0, 0, 1)
        assert not hxaux.does_system_have_at_least_front_version(99, 0, 0, 0)
        with pytest.raises(ValueError, match="build must be 0 to 255"):
            hxaux.does_system_have_at_least_ss_version(1, 2, 3, 256)

    def test_of_the_board_library_reach_it(self, unit: sim.Unit) -> None:
        unit.set("eeprom.main.UNIT_SERIAL", "U-3")
        assert hxaux.jida_linux_initialize() is True
        assert hxaux.jida_dll_install(1) == 1
        assert hxaux.jida_dll_initialize() == 1
        assert hxaux.jida_board_count_a(None, 0) == hxaux.jida_board_count_a("CPU", 0) == 1
        answer, board = hxaux.jida_board_open_a("CPU", 0, 0)
        assert answer == 1
        assert hxaux.jida_temperature_count(board) == 2
        for celsius in (45.5, -3.5):
            unit.set("temperature.pm.0", celsius)
            assert hxaux.jida_temperature_get_current(board, 0)[:2] == (1, celsius * 1000)
        answer, information = hxaux.jida_temperature_get_info(board, 0, (44).to_bytes(4, "little") + bytes(40))
        assert (answer, len(information)) == (1, 44)
        with pytest.raises(ValueError, match="44 bytes"):
            hxaux.jida_temperature_get_info(board, 0, b"short")
        answer, content = hxaux.jida_i2c_write_read_combined(board, 0, 0xAE, bytes(2), 128)
        assert answer and content.startswith(b"DATA:2\r\n")
        assert hxaux.jida_i2c_write(board, 0, 0xAE, bytes([0x0F, 0xF0]) + b"x") == 1
        unit.sleep(0.2)
        assert hxaux.jida_i2c_write_register(board, 0, 0xAE, 0x0FF8, 0x5A) in (0, 1)
        assert len(hxaux.jida_i2c_read_register(board, 0, 0xAE, 0x0FF8)) == 2
        assert hxaux.jida_board_close(board) == 1
        assert hxaux.jida_dll_uninitialize() == 1
