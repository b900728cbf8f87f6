# SPDX-License-Identifier: LicenseRef-HXAux
"""Every operation of every interface, called on a unit, with its effect there."""
from __future__ import annotations

import contextlib
import pathlib
import sys
from collections.abc import Callable, Generator

import firmware
import headers
import pytest

import hxaux
from hxaux import sim

Case = Callable[[sim.Unit, pathlib.Path], None]
CASES: dict[str, Case] = {}

ON = hxaux.HXStatus.ENABLED
OFF = hxaux.HXStatus.DISABLED


def case(operation: str) -> Callable[[Case], Case]:
    def keep(test: Case) -> Case:
        assert operation not in CASES
        CASES[operation] = test
        return test

    return keep


def python_name(operation: str) -> tuple[type, str]:
    """The class and the method, by the documented rule."""
    interface, name = operation.split(".")
    special = {
        "getMainHWversion": "get_main_hw_version",
        "getAddOnHWversion": "get_add_on_hw_version",
        "getColor/3": "get_color_rgb",
        "getIlluminance/3": "get_illuminance_channels",
    }
    name = special.get(name) or snake(name.split("/")[0])
    return getattr(hxaux, interface), name


def snake(name: str) -> str:
    made = ""
    for i, letter in enumerate(name):
        begins = letter.isupper() and i > 0
        if begins and (not name[i - 1].isupper() or name[i + 1 : i + 2].islower()):
            made += "_"
        made += letter.lower()
    return made


# Operations that read: the operation, its arguments, what the unit has, and what is read.
READS = [
    ("About.getMainPCBSerial", (), {"eeprom.main.PCB_SERIAL": "M-1"}, "M-1"),
    ("About.getUnitSerial", (), {"eeprom.main.UNIT_SERIAL": "U-1"}, "U-1"),
    ("About.getMainPCBArt", (), {"eeprom.main.PCB_ART": "500-1"}, "500-1"),
    ("About.getMainManufacturingDate", (), {"eeprom.main.DATE": "2015-01-02"}, "2015-01-02"),
    ("About.getMainHWversion", (), {}, "C2"),
    ("About.getMainProdRev", (), {"eeprom.main.PROD_REV": "D"}, "D"),
    ("About.getMainProdArtNr", (), {"eeprom.main.PROD_ART": "700-1"}, "700-1"),
    ("About.getNrOfETHConnections", (), {"eeprom.main.ETH": 5}, 5),
    ("About.getNrOfCANConnections", (), {"eeprom.main.CAN": 6}, 6),
    ("About.getNrOfVideoConnections", (), {"eeprom.main.VIDEO": 7}, 7),
    ("About.getNrOfUSBConnections", (), {"eeprom.main.USBHOST": 8}, 8),
    ("About.getNrOfSerialConnections", (), {"eeprom.main.RS232": 4}, 4),
    ("About.getAddOnPCBSerial", (), {"eeprom.addon.PCB_SERIAL": "A-1"}, "A-1"),
    ("About.getAddOnPCBArt", (), {"eeprom.addon.PCB_ART": "500-2"}, "500-2"),
    ("About.getAddOnManufacturingDate", (), {"eeprom.addon.DATE": "2015-03-04"}, "2015-03-04"),
    ("About.getAddOnHWversion", (), {"eeprom.addon.PCB_REV": "3"}, "3"),
    ("About.getIsWLANMounted", (), {"eeprom.addon.WLAN": 0}, False),
    ("About.getIsGPSMounted", (), {}, True),
    ("About.getIsGPRSMounted", (), {}, True),
    ("About.getIsBTMounted", (), {"eeprom.addon.BLUETOOTH": 0}, False),
    ("Adc.getVoltage", (hxaux.VoltageEnum.VOLTAGE_0,), {"voltage.0": 11.5}, pytest.approx(11.5, abs=0.01)),
    ("AuxVersion.getFPGAVersion", (), {"version.fpga": "3.2.0.9"}, (3, 2, 0, 9)),
    ("AuxVersion.getSSVersion", (), {"version.ss": "2.4.0.9"}, (2, 4, 0, 9)),
    ("AuxVersion.getFrontVersion", (), {"version.front": "1.6.0.9"}, (1, 6, 0, 9)),
    ("AuxVersion.getHXAuxVersion", (), {}, (1, 3, 1, 0)),
    ("AuxVersion.getOSVersion", (), {"version.os": "2.1.0.9"}, (2, 1, 0, 9)),
    ("AuxVersion.getHXAuxDrvVersion", (), {"version.drv": "1.3.0.9"}, (1, 3, 0, 9)),
    ("Backlight.getIntensity", (), {"backlight.level": 77}, 77),
    ("Backlight.getStatus", (), {"backlight.status": 3}, 3),
    ("Buzzer.getFrequency", (), {"buzzer.frequency": 1234}, 1234),
    ("Buzzer.getVolume", (), {"buzzer.volume": 12}, 12),
    ("Buzzer.getTrigger", (), {"buzzer.trigger": 0}, False),
    ("CanSetting.getBaudrate", (2,), {"can.2.bitrate": 500000}, 500),
    ("Config.getStartupTriggerConfig", (), {"config.trigger": 2}, hxaux.TriggerConf.TRIGGER_2),
    ("Config.getShortButtonPressAction", (), {"config.short-press": 2}, hxaux.PowerAction.ACTION_2),
    ("Config.getLongButtonPressAction", (), {"config.long-press": 1}, hxaux.PowerAction.ACTION_1),
    ("Config.getOnOffSigAction", (), {"config.signal": 0}, hxaux.PowerAction.ACTION_0),
    ("Config.getFrontBtnTrigTime", (), {"config.button-time": 1500}, 1500),
    ("Config.getExtOnOffSigTrigTime", (), {"config.signal-time.high": 1, "config.signal-time.low": 2}, 0x10002),
    ("Config.getSuspendMaxTime", (), {"config.suspend-time": 61}, 61),
    ("Config.getCanStartupPowerConfig", (), {"config.can": 0}, OFF),
    ("Config.getVideoStartupPowerConfig", (), {"config.video.1": 0, "config.video.3": 1}, 6),
    ("Config.getExtFanStartupPowerConfig", (), {"config.fan": 1}, ON),
    ("Config.getStartupVoltageConfig", (), {"config.voltage": 1241}, pytest.approx(12.0, abs=0.02)),
    ("Config.getHeatingTempLimit", (), {"config.heating": 51}, -5),
    ("Config.getPowerOnStartup", (), {"config.power-on": 1}, ON),
    ("Diagnostic.getSSTemp", (), {"diagnostics.ss-temp": -3}, -3),
    ("Diagnostic.getPCBTemp", (), {"diagnostics.pcb-temp": 41}, 41),
    ("Diagnostic.getPMTemp", (1,), {"temperature.pm.1": -3.5, "temperature.pm.1.type": 4}, (-3, 4)),
    ("Diagnostic.getStartupReason", (), {"diagnostics.startup-reason": 170}, 170),
    ("Diagnostic.getShutDownReason", (), {"diagnostics.shutdown-reason": 15}, 15),
    ("Diagnostic.getHwErrorStatus", (), {"diagnostics.error": 7}, 7),
    ("Diagnostic.getMinMaxTemp", (), {"diagnostics.lowest": 10, "diagnostics.highest": 60}, (60, 10)),
    ("Diagnostic.getPowerCycles", (), {"diagnostics.power-cycles": 43}, 43),
    ("DigIO.getDigIO", (), {"inputs.1": True, "inputs.4": True}, 9),
    ("FrontLED.getSignal", (), {"led.timing": "50 50 0 1"}, (1.0, 50)),
    ("FrontLED.getOnTime", (), {"led.timing": "1 2 3 4"}, 1),
    ("FrontLED.getOffTime", (), {"led.timing": "1 2 3 4"}, 2),
    ("FrontLED.getIdleTime", (), {"led.timing": "1 2 3 4"}, 3),
    ("FrontLED.getNrOfPulses", (), {"led.timing": "1 2 3 4"}, 4),
    ("FrontLED.getColor/3", (), {"led.color": "1 2 3"}, (1, 2, 3)),
    ("FrontLED.getColor/1", (), {"led.color": "0 0 15"}, hxaux.HXAuxColor.BLUE),
    ("FrontLED.getEnabledDuringStartup", (), {"led.startup": False}, OFF),
    ("HXAuxPrivate.getEepromProperty", (0, "MAC1"), {"eeprom.main.MAC1": "02-00"}, "02-00"),
    ("Lightsensor.getIlluminance/1", (), {"light": 250}, pytest.approx(250, abs=10)),
    ("Lightsensor.getIlluminance/3", (), {"light.channels": "0xd9 0xb5"}, (248, 0xD9, 0xB5)),
    ("Lightsensor.getOperatingRange", (), {"light.range": 1}, hxaux.LightSensorOperationRange.EXTENDED),
    ("Power.getBLPowerStatus", (), {"power.backlight": 0}, OFF),
    ("Power.getCanPowerStatus", (), {"power.can": 0}, OFF),
    ("Power.getVideoPowerStatus", (), {"power.video.1": 0, "power.video.4": 1}, 10),
    ("Power.getExtFanPowerStatus", (), {"power.fan": 1}, ON),
    (
        "Power.getButtonPowerTransitionStatus",
        (),
        {"power.transition": 3},
        hxaux.ButtonPowerTransitionStatus.TRANSITION_3,
    ),
    ("Telematics.getTelematicsAvailable", (), {}, ON),
    ("Telematics.getGPRSPowerStatus", (), {"telematics.gsm": True}, ON),
    ("Telematics.getGPSAntennaStatus", (), {"telematics.antenna-short": True}, ON),
    ("TouchScreen.getMode", (), {"touch.mode": 2}, hxaux.TouchScreenModeSettings.MODE_2),
    ("TouchScreen.getMouseRightClickTime", (), {"touch.right-click": 700}, 700),
    ("TouchScreen.getAdvancedSetting", (hxaux.TSAdvancedSettingsParameter.SETTING_1,), {"touch.register.5": 121}, 121),
    ("TouchScreenCalib.GetMode", (), {"touch.calibration": 0}, hxaux.CalibrationModeSettings.MODE_NONE),
    ("TouchScreenCalib.GetConfigParam", (hxaux.CalibrationConfigParam.PARAM_2,), {"touch.register.16": 161}, 161),
]

# Operations that write: the operation, its arguments, and what the unit has afterwards.
WRITES = [
    ("Backlight.setIntensity", (40,), {"backlight.level": "40"}),
    ("Buzzer.setFrequency", (1500,), {"buzzer.frequency": "1500"}),
    ("Buzzer.setVolume", (9,), {"buzzer.volume": "9"}),
    ("CanSetting.setBaudrate", (3, 125), {"can.3.bitrate": "125000"}),
    ("Config.setStartupTriggerConfig", (hxaux.TriggerConf.TRIGGER_1,), {"config.trigger": "1"}),
    ("Config.setShortButtonPressAction", (hxaux.PowerAction.ACTION_0,), {"config.short-press": "0"}),
    ("Config.setLongButtonPressAction", (hxaux.PowerAction.ACTION_0,), {"config.long-press": "0"}),
    ("Config.setOnOffSigAction", (hxaux.PowerAction.ACTION_1,), {"config.signal": "1"}),
    ("Config.setFrontBtnTrigTime", (1600,), {"config.button-time": "1600"}),
    ("Config.setExtOnOffSigTrigTime", (0x20003,), {"config.signal-time.high": "2", "config.signal-time.low": "3"}),
    ("Config.setSuspendMaxTime", (62,), {"config.suspend-time": "62"}),
    ("Config.setCanStartupPowerConfig", (ON,), {"config.can": "on"}),
    (
        "Config.setVideoStartupPowerConfig",
        (9,),
        {"config.video.1": "on", "config.video.2": "off", "config.video.4": "8"},
    ),
    ("Config.setExtFanStartupPowerConfig", (OFF,), {"config.fan": "off"}),
    ("Config.setStartupVoltageConfig", (13.0,), {"config.voltage": "1344"}),
    ("Config.setHeatingTempLimit", (-10,), {"config.heating": "46"}),
    ("Config.setPowerOnStartup", (OFF,), {"config.power-on": "off"}),
    ("Diagnostic.clearHwErrorStatus", (), {"diagnostics.error": "0"}),
    ("FrontLED.setOff", (), {"led.lit": "off"}),
    ("FrontLED.setColor/3", (4, 5, 6), {"led.color": "4 5 6"}),
    ("FrontLED.setColor/1", (hxaux.HXAuxColor.RED,), {"led.color": "15 0 0"}),
    ("FrontLED.setEnabledDuringStartup", (ON,), {"led.startup": "on"}),
    ("HXAuxPrivate.setEepromProperty", (0, "UNIT_SERIAL", "U-2"), {"eeprom.main.UNIT_SERIAL": "U-2"}),
    ("Lightsensor.setOperatingRange", (hxaux.LightSensorOperationRange.STANDARD,), {"light.range": "0"}),
    ("Power.setBLPowerStatus", (ON,), {"power.backlight": "on"}),
    ("Power.setCanPowerStatus", (ON,), {"power.can": "on"}),
    ("Power.setVideoPowerStatus", (3,), {"power.video.1": "on", "power.video.2": "on", "power.video.4": "off"}),
    ("Power.setExtFanPowerStatus", (OFF,), {"power.fan": "off"}),
    ("Power.ackPowerRequest", (), {"power.transition": "0"}),
    ("TouchScreen.setMode", (hxaux.TouchScreenModeSettings.MODE_3,), {"touch.mode": "3"}),
    ("TouchScreen.setMouseRightClickTime", (900,), {"touch.right-click": "900"}),
    (
        "TouchScreen.setAdvancedSetting",
        (hxaux.TSAdvancedSettingsParameter.SETTING_2, 3000),
        {"touch.register.6": "3000"},
    ),
    ("TouchScreenCalib.SetConfigParam", (hxaux.CalibrationConfigParam.PARAM_3, 3800), {"touch.register.15": "3800"}),
    ("Telematics.setGPRSPowerStatus", (OFF,), {"telematics.gsm": "off"}),
    ("Telematics.setWLANPowerStatus", (ON,), {"telematics.wlan": "on"}),
]

# Operations on video input 2.
VIDEO_READS = [
    ("getDeInterlaceMode", (), {"video.2.control": 4}, hxaux.DeInterlaceMode.BOTH_FIELDS),
    ("getMirroring", (), {"video.2.control": 8}, ON),
    ("getActiveChannel", (), {"video.2.channel": 3}, hxaux.VideoChannel.CHANNEL_3),
    ("getVideoStandard", (), {"video.2.standard": "secam"}, hxaux.VideoStandard.SECAM),
    ("getStatus", (), {"video.2.control": 9}, 9),
]
VIDEO_WRITES = [
    ("showVideo", (True,), {"video.2.shown": "on"}),
    ("setDeInterlaceMode", (hxaux.DeInterlaceMode.SECOND_FIELD,), {"video.2.fields": "second"}),
    ("setMirroring", (ON,), {"video.2.mirrored": "on"}),
    ("setActiveChannel", (hxaux.VideoChannel.CHANNEL_4,), {"video.2.channel": "4"}),
    ("setColorKeys", (1, 2, 3), {"video.2.color-key": "1 2 3"}),
    ("setVideoArea", (10, 20, 30, 40), {"video.2.area": "10 20 30 40"}),
    ("setScaling", (2.0, 1.0), {"video.2.scaling": "64 128 64 64"}),
    ("setCropping", (2, 3, 4, 5), {"video.2.cropping": "1 3 2 5"}),
    ("minimize", (), {"video.2.area": "0 0 0 0"}),
]
# What is written is read again: the operation that reads, the one that writes, and its arguments.
VIDEO_PAIRS = [
    ("getColorKeys", "setColorKeys", (7, 8, 9)),
    ("getVideoArea", "setVideoArea", (1, 2, 3, 4)),
    ("getScaling", "setScaling", (2.0, 1.0)),
    ("getCropping", "setCropping", (6, 7, 8, 9)),
]


def call(operation: str, *arguments: object) -> object:
    interface, name = python_name(operation)
    with interface() as opened:
        return getattr(opened, name)(*arguments)


def on_input_2(operation: str, *arguments: object) -> object:
    with hxaux.Video() as video:
        video.init(2)
        return getattr(video, snake(operation))(*arguments)


def add_tables() -> None:
    for operation, arguments, properties, expected in READS:
        case(operation)(lambda unit, _, o=operation, a=arguments, p=properties, e=expected: reads(unit, o, a, p, e))
    for operation, arguments, expected in WRITES:
        case(operation)(lambda unit, _, o=operation, a=arguments, e=expected: writes(unit, o, a, e))
    for operation, arguments, properties, expected in VIDEO_READS:
        case(f"Video.{operation}")(
            lambda unit, _, o=operation, a=arguments, p=properties, e=expected: reads_video(unit, o, a, p, e)
        )
    for operation, arguments, expected in VIDEO_WRITES:
        case(f"Video.{operation}")(lambda unit, _, o=operation, a=arguments, e=expected: writes_video(unit, o, a, e))
    for reading, writing, arguments in VIDEO_PAIRS:
        case(f"Video.{reading}")(lambda unit, _, r=reading, w=writing, a=arguments: reads_again(r, w, a))


@contextlib.contextmanager
def having(unit: sim.Unit, properties: dict[str, sim.Value]) -> Generator[None, None, None]:
    """The unit so, and then as before."""
    before = {key: unit.get(key) for key in properties}
    for key, value in properties.items():
        unit.set(key, value)
    yield
    for key, value in before.items():
        unit.set(key, value)


def reads(unit: sim.Unit, operation: str, arguments: tuple[object, ...], properties: dict, expected: object) -> None:
    with having(unit, properties):
        assert call(operation, *arguments) == expected


def writes(unit: sim.Unit, operation: str, arguments: tuple[object, ...], expected: dict[str, str]) -> None:
    call(operation, *arguments)
    assert {key: unit.get(key) for key in expected} == expected


def reads_video(unit: sim.Unit, operation: str, arguments: tuple, properties: dict, expected: object) -> None:
    with hxaux.Video() as video:
        video.init(2)
        for key, value in properties.items():
            unit.set(key, value)
        assert getattr(video, snake(operation))(*arguments) == expected


def writes_video(unit: sim.Unit, operation: str, arguments: tuple, expected: dict[str, str]) -> None:
    on_input_2(operation, *arguments)
    assert {key: unit.get(key) for key in expected} == expected


def reads_again(reading: str, writing: str, arguments: tuple) -> None:
    with hxaux.Video() as video:
        video.init(2)
        getattr(video, snake(writing))(*arguments)
        assert getattr(video, snake(reading))() == arguments


add_tables()


@case("Backlight.startAutomaticBL")
@case("Backlight.stopAutomaticBL")
@case("Backlight.getAutomaticBLStatus")
def automatic_backlight(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.Backlight() as backlight:
        backlight.start_automatic_bl()
        assert backlight.get_automatic_bl_status() == 1
        backlight.stop_automatic_bl()
        assert backlight.get_automatic_bl_status() == 0


@case("Backlight.setAutomaticBLParams")
@case("Backlight.getAutomaticBLParams")
def automatic_parameters(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.Backlight() as backlight:
        with hxaux.HXAuxPrivate() as service:
            service.set_file_setting("ABL_k", "50")
        backlight.set_automatic_bl_params(False)
        assert not backlight.get_automatic_bl_params().soft_transitions
        backlight.set_automatic_bl_params(True)
        assert backlight.get_automatic_bl_params() == (True, 50.0)


@case("Backlight.setAutomaticBLFilter")
@case("Backlight.getAutomaticBLFilter")
def automatic_filter(unit: sim.Unit, folder: pathlib.Path) -> None:
    wanted = hxaux.AutomaticBLFilter(4, 3, 20, hxaux.LightSensorSamplingMode.EXTENDED)
    with hxaux.Backlight() as backlight:
        backlight.set_automatic_bl_filter(*wanted)
        assert backlight.get_automatic_bl_filter() == wanted


@case("Backlight.setLedDimming")
@case("Backlight.getLedDimming")
def led_dimming(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.Backlight() as backlight:
        backlight.set_led_dimming(OFF)
        assert backlight.get_led_dimming() is OFF
        backlight.set_led_dimming(ON)
        assert backlight.get_led_dimming() is ON


@case("Buzzer.setTrigger")
def trigger(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.Buzzer() as buzzer:
        buzzer.set_trigger(True)
        assert unit.get("buzzer.sounding") == "on"
        assert buzzer.get_trigger() is True
        buzzer.set_trigger(False)
        assert unit.get("buzzer.sounding") == "off"


@case("Buzzer.buzze")
def beep(unit: sim.Unit, folder: pathlib.Path) -> None:
    before = int(unit.get("buzzer.beeps"))
    with hxaux.Buzzer() as buzzer:
        buzzer.buzze(20, True)
        assert int(unit.get("buzzer.beeps")) == before + 1


@case("CanSetting.getFrameType")
@case("CanSetting.setFrameType")
def frame_type(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.CanSetting() as can:
        with pytest.raises(hxaux.NotSupportedError):
            can.get_frame_type(1)
        with pytest.raises(hxaux.NotSupportedError):
            can.set_frame_type(1, hxaux.CanFrameType.EXTENDED)


@case("Diagnostic.getTimer")
def timer(unit: sim.Unit, folder: pathlib.Path) -> None:
    unit.set("diagnostics.time.3", 3600)
    with hxaux.Diagnostic() as diagnostic:
        timers = diagnostic.get_timer()
    assert isinstance(timers, hxaux.TimerType) and len(timers.seconds) == 7
    assert 3600 <= timers.seconds[3] < 7200


def upgrade_and_verify(target: str, file: pathlib.Path) -> None:
    with hxaux.FirmwareUpgrade() as upgrade:
        getattr(upgrade, f"start_{target}_upgrade")(file, True)
        assert upgrade.get_upgrade_status(False) == (hxaux.UpgradeAction.FINISHED, 0, 0)
        getattr(upgrade, f"start_{target}_verification")(str(file), True)
        assert upgrade.get_upgrade_status(False).error is hxaux.ErrorCode.ERR_SUCCESS


@case("FirmwareUpgrade.startFpgaUpgrade")
@case("FirmwareUpgrade.startFpgaVerification")
@case("FirmwareUpgrade.getUpgradeStatus")
def fpga(unit: sim.Unit, folder: pathlib.Path) -> None:
    upgrade_and_verify("fpga", firmware.mcs_file(folder))
    with hxaux.FirmwareUpgrade() as upgrade, pytest.raises(hxaux.VerifyFailedError):
        upgrade.start_fpga_verification(firmware.mcs_file(folder), True)


@case("FirmwareUpgrade.startSSUpgrade")
@case("FirmwareUpgrade.startSSVerification")
def supervisor(unit: sim.Unit, folder: pathlib.Path) -> None:
    before = unit.get("ss.flash-crc")
    upgrade_and_verify("ss", firmware.hex_file(folder, "ss.hex", 95000))
    assert unit.get("ss.flash-crc") != before


@case("FirmwareUpgrade.startFrontUpgrade")
@case("FirmwareUpgrade.startFrontVerification")
def front(unit: sim.Unit, folder: pathlib.Path) -> None:
    before = unit.get("front.flash-crc")
    upgrade_and_verify("front", firmware.hex_file(folder, "front.hex", 50000))
    assert unit.get("front.flash-crc") != before


@case("FirmwareUpgrade.shutDown")
def shut_down(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.FirmwareUpgrade() as upgrade:
        upgrade.shut_down()
    unit.expect('daemon.commands != "" within 60s')


@case("FrontLED.setSignal")
def signal(unit: sim.Unit, folder: pathlib.Path) -> None:
    unit.set("led.timing", "1 2 3 4")
    with hxaux.FrontLED() as led:
        led.set_signal(1.0, 50)
    assert unit.get("led.timing") == "50 50 3 4"


@case("FrontLED.setOnTime")
@case("FrontLED.setOffTime")
@case("FrontLED.setIdleTime")
@case("FrontLED.setNrOfPulses")
def led_timing(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.FrontLED() as led:
        led.set_on_time(11)
        led.set_off_time(12)
        led.set_idle_time(13)
        led.set_nr_of_pulses(3)
    assert unit.get("led.timing") == "11 12 13 3"


@case("HXAuxPrivate.getFromSmart")
@case("HXAuxPrivate.setToSmart")
def smart(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.HXAuxPrivate() as service:
        service.set_to_smart(95, 0x1234)
        assert service.get_from_smart(95) == 0x1234


@case("HXAuxPrivate.setFileSetting")
@case("HXAuxPrivate.getFileSetting")
def file_setting(unit: sim.Unit, folder: pathlib.Path) -> None:
    long = "long " * 200 + "end"
    with hxaux.HXAuxPrivate() as service:
        service.set_file_setting("KEY", long)
        assert service.get_file_setting("KEY") == long
        with pytest.raises(hxaux.CommandFailedError):
            service.get_file_setting("OTHER")


@case("HXAuxPrivate.automaticBacklightInit")
def automatic_backlight_init(unit: sim.Unit, folder: pathlib.Path) -> None:
    """Its thread lives as long as its process: in one of its own, on a unit of its own."""
    code = (
        "import hxaux, time; hxaux.HXAuxPrivate().automatic_backlight_init(); print('runs', flush=True); time.sleep(60)"
    )
    with sim.Unit({"light": 20}) as own, own.run([sys.executable, "-c", code]):
        own.expect("output runs within 60s")
        own.expect("request /dev/lightsensor * within 60s")


@case("HXAuxPrivate.resumeVideo")
def resume_video(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.HXAuxPrivate() as service, pytest.raises(hxaux.IoctrlFailedError):
        service.resume_video()
    assert "0x" in unit.log().rpartition("video")[2]


@case("Lightsensor.startAverageCalc")
@case("Lightsensor.getAverageIlluminance")
@case("Lightsensor.stopAverageCalc")
def average(unit: sim.Unit, folder: pathlib.Path) -> None:
    unit.set("light", 400)
    with hxaux.Lightsensor() as sensor:
        with pytest.raises(hxaux.NotRunningError):
            sensor.get_average_illuminance()
        sensor.start_average_calc(2, 2, 50, hxaux.LightSensorSamplingMode.AUTO)
        try:
            assert first_average(unit, sensor) == pytest.approx(400, abs=20)
        finally:
            sensor.stop_average_calc()


def first_average(unit: sim.Unit, sensor: hxaux.Lightsensor) -> int:
    """Comes after about 800 ms of the unit; ten minutes are enough."""
    for _ in range(1200):
        unit.sleep(0.5)
        with contextlib.suppress(hxaux.NotRunningError):
            if average := sensor.get_average_illuminance():
                return average
    return 0


@case("Telematics.getGPRSStartUpPowerStatus")
@case("Telematics.setGPRSStartUpPowerStatus")
@case("Telematics.getWLANStartUpPowerStatus")
@case("Telematics.setWLANStartUpPowerStatus")
@case("Telematics.getWLANPowerStatus")
def telematics(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.Telematics() as modules:
        modules.set_wlan_power_status(OFF)
        assert modules.get_wlan_power_status() is OFF
        for wanted in (ON, OFF):
            modules.set_gprs_start_up_power_status(wanted)
            modules.set_wlan_start_up_power_status(wanted)
            assert modules.get_gprs_start_up_power_status() is wanted
            assert modules.get_wlan_start_up_power_status() is wanted


@case("TouchScreenCalib.SetMode")
@case("TouchScreenCalib.SetCalibrationPoint")
@case("TouchScreenCalib.CheckCalibrationPointFinished")
def calibration(unit: sim.Unit, folder: pathlib.Path) -> None:
    before = int(unit.get("touch.calibrated"))
    unit.set("touch.finger", "follow")
    with hxaux.TouchScreenCalib() as calib:
        calib.set_mode(hxaux.CalibrationModeSettings.MODE_5_POINTS)
        assert calib.get_mode() is hxaux.CalibrationModeSettings.MODE_5_POINTS
        for point in range(1, 6):
            calib.set_calibration_point(point)
            while not calib.check_calibration_point_finished(point):
                unit.sleep(0.01)
    unit.expect(f"touch.calibrated = {before + 1} within 60s")
    unit.set("touch.finger", "none")


@case("Video.init")
def video_init(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.Video() as video:
        with pytest.raises(hxaux.OpenFailedError):
            video.get_status()
        video.init(2)
        assert unit.get("video.2.fields") == "both"
        with pytest.raises(hxaux.InvalidParameterError):
            video.init(3)


@case("Video.restore")
def video_restore(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.Video() as video:
        video.init(2)
        video.set_video_area(1, 2, 3, 4)
        video.minimize()
        video.restore()
    assert unit.get("video.2.area") == "1 2 3 4"


@case("Video.getRawImage")
def raw_image(unit: sim.Unit, folder: pathlib.Path) -> None:
    image = on_input_2("getRawImage")
    assert isinstance(image, hxaux.RawImage)
    assert 0 <= image.third <= 63.75


@case("Video.setDecoderReg")
@case("Video.getDecoderReg")
def decoder(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.Video() as video:
        video.init(2)
        video.set_decoder_reg(0x10, 0x5A)
        assert video.get_decoder_reg(0x10) == 0x5A


@case("Video.activateSnapshot")
@case("Video.takeSnapshot")
@case("Video.takeSnapshotRaw")
@case("Video.takeSnapshotBmp")
@case("Video.createBitmap")
def snapshots(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.Video() as video:
        for refused in (
            lambda: video.activate_snapshot(True),
            lambda: video.take_snapshot(folder / "picture", False),
            lambda: video.take_snapshot_raw(100, False),
            lambda: video.take_snapshot_bmp(False, True),
            lambda: video.create_bitmap(b"raw", False, True),
        ):
            with pytest.raises(hxaux.NotSupportedError):
                refused()


@case("Video.freeBmpBuffer")
def free_buffer(unit: sim.Unit, folder: pathlib.Path) -> None:
    with hxaux.Video() as video:
        video.free_bmp_buffer(b"any")
        with pytest.raises(hxaux.InvalidParameterError, match="buffer is None"):
            video.free_bmp_buffer(None)


@pytest.mark.parametrize("operation", headers.operations())
def test_does_what_the_header_says(operation: str, unit: sim.Unit, tmp_path: pathlib.Path) -> None:
    assert operation in CASES, "call it here, and check its effect"
    CASES[operation](unit, tmp_path)


def test_no_case_is_left_of_an_operation_that_is_gone() -> None:
    assert CASES.keys() <= set(headers.operations())


@pytest.mark.parametrize("operation", headers.operations())
def test_is_documented_with_its_name_in_cpp(operation: str) -> None:
    interface, name = python_name(operation)
    documentation = getattr(interface, name).__doc__
    assert documentation.startswith((f"{name}(", "Overloaded"))
    assert f"C++: Halvix::{interface.__name__}::{operation.split('.')[1].split('/')[0]}" in documentation
