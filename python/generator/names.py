# SPDX-License-Identifier: LicenseRef-HXAux
"""How the library's names become those of Python. docs/python.md describes these rules; tests check them."""
from __future__ import annotations

import keyword
import os
import re

from .headers import Enumeration, Function

# Words that the library does not separate with a capital.
WORDS = {"HWversion": "HwVersion", "I2C": "I2c"}
# Operations with the same name whose results differ: interface, name and number of parameters.
OVERLOADS = {
    ("FrontLED", "getColor", 3): "get_color_rgb",
    ("Lightsensor", "getIlluminance", 3): "get_illuminance_channels",
}
FUNCTIONS = {
    "GetErrorStringA": "get_error_string",
    "GetHwErrorStatusStringA": "get_hw_error_status_string",
    "GetStartupReasonStringA": "get_startup_reason_string",
}
ENUMERATIONS = {"eErr": "ErrorCode", "videoStandard": "VideoStandard"}
# Classes of results with several values; all others are called like their operation, without "get".
RESULTS = {
    "AuxVersion.get_fpga_version": "Version",
    "AuxVersion.get_ss_version": "Version",
    "AuxVersion.get_front_version": "Version",
    "AuxVersion.get_hx_aux_version": "Version",
    "AuxVersion.get_os_version": "Version",
    "AuxVersion.get_hx_aux_drv_version": "Version",
    "FrontLED.get_color_rgb": "Rgb",
    "FrontLED.get_signal": "LedSignal",
    "Lightsensor.get_illuminance_channels": "IlluminanceChannels",
    "Diagnostic.get_pm_temp": "ModuleTemperature",
}


def words(name: str, digits_apart: bool = False) -> list[str]:
    for joined, separate in WORDS.items():
        name = name.replace(joined, separate)
    pattern = r"[A-Z]+(?=[A-Z][a-z])|[A-Z]?[a-z0-9]+|[A-Z0-9]+"
    if digits_apart:
        pattern = r"[A-Z]+(?=[A-Z][a-z])|[A-Z]?[a-z]+|[A-Z]+|\d+"
    return re.findall(pattern, name)


def snake(name: str) -> str:
    made = "_".join(words(name)).lower()
    return made + "_" if keyword.iskeyword(made) else made


def camel(name: str) -> str:
    return name[0].lower() + name[1:]


def operation(interface: str, function: Function) -> str:
    return OVERLOADS.get((interface, function.name, len(function.parameters)), snake(function.name))


def function(name: str) -> str:
    return FUNCTIONS.get(name, snake(name))


def enumeration(name: str) -> str:
    return ENUMERATIONS.get(name, name)


def members(enumeration_: Enumeration) -> list[str]:
    """The enumerators in capitals, without the words that all begin with. Error codes keep their names: texts, tools
    and documents have them."""
    names = [name for name, _, _ in enumeration_.members]
    if enumeration_.name == "eErr":
        return names
    split = [words(name, digits_apart=True) for name in names]
    shared = len(os.path.commonprefix(split)) if len(split) > 1 else len(split[0]) - 1
    while any(len(each) == shared or each[shared].isdigit() for each in split):
        shared -= 1
    return ["_".join(each[shared:]).upper() for each in split]


def error_class(code: str) -> str:
    return "".join(word.capitalize() for word in code.removeprefix("ERR_").split("_")) + "Error"


def result_class(interface: str, python_name: str, library_name: str) -> str:
    default = library_name.removeprefix("get").removeprefix("Get")
    return RESULTS.get(f"{interface}.{python_name}", default)
