# SPDX-License-Identifier: LicenseRef-HXAux
"""The generator of the bindings refuses what it does not understand; nothing of a header is left out in silence."""
from __future__ import annotations

import pathlib
import subprocess
import sys

import headers
import pytest

GENERATE = pathlib.Path(__file__).resolve().parents[3] / "python/generate.py"
HEADER = """
namespace Halvix {
/// @brief Blows.
class Fan {
public:
    /// @brief Reads the speed.
    /// @param[out] speed  Turns a second.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Always.
    virtual eErr getSpeed(unsigned short* speed) = 0;
    /// @brief Releases it.
    virtual eErr Release() = 0;
protected:
    ~Fan() {}
};
} // namespace Halvix
/// @brief Creates a fan.
HX_EXPORT Halvix::Fan* GetFan();
"""


def generate(folder: pathlib.Path, text: str) -> subprocess.CompletedProcess[str]:
    source = folder / "headers"
    source.mkdir()
    for header in headers.FOLDER.glob("*.h"):
        (source / header.name).write_text(header.read_text())
    (source / "Fan.h").write_text(text)
    words = [sys.executable, str(GENERATE), str(source), str(folder)]
    return subprocess.run(words, capture_output=True, text=True)


def test_binds_a_new_interface(tmp_path: pathlib.Path) -> None:
    assert generate(tmp_path, HEADER).returncode == 0
    stub = (tmp_path / "_hxaux.pyi").read_text()
    assert "class Fan:" in stub and "def get_speed(self) -> int:" in stub


@pytest.mark.parametrize(
    "text, instead, message",
    [
        ("unsigned short* speed)", "Gale* speed)", "no type of Python for Gale"),
        ("@param[out] speed", "@param[out] sped", "the parameter speed is not documented"),
        ("unsigned short* speed)", "unsigned short speed)", "the output speed is not a pointer"),
        ("@param[out] speed", "@param[in] speed", "the parameter speed is not understood"),
        ("virtual eErr getSpeed", "virtual bool getSpeed", "Fan::getSpeed does not return eErr"),
        (
            "getSpeed(unsigned short* speed) = 0",
            "getSpeed(unsigned short* speed)",
            "an operation of Fan is not understood",
        ),
        ("    virtual eErr Release() = 0;", "", "an operation of Fan is not understood"),
        ("@brief Reads", "@summary Reads", "@summary in a comment is not understood"),
        ("Halvix::Fan* GetFan();", "Halvix::Fan* GetFan(int which);", "Fan.h"),
        ("HX_EXPORT Halvix::Fan* GetFan();", "", "no function creates a Fan"),
        (
            "HX_EXPORT Halvix",
            "HX_EXPORT int unknown[3];\nHX_EXPORT Halvix",
            "not understood: HX_EXPORT int unknown[3];",
        ),
        (
            "class Fan {",
            "enum Gust HX_32BIT { Soft = 0, Hard };\nclass Fan {",
            "the enumeration Gust is not understood",
        ),
    ],
)
def test_refuses_what_it_does_not_understand(text: str, instead: str, message: str, tmp_path: pathlib.Path) -> None:
    assert text in HEADER
    result = generate(tmp_path, HEADER.replace(text, instead))
    assert result.returncode == 1
    assert message in result.stderr
    assert not (tmp_path / "_hxaux.cpp").exists()


def test_refuses_two_operations_with_one_name_in_python(tmp_path: pathlib.Path) -> None:
    operation = HEADER[HEADER.index("    /// @brief Reads") : HEADER.index("    /// @brief Releases")]
    other = operation.replace("unsigned short*", "double*")
    result = generate(tmp_path, HEADER.replace(operation, operation + other))
    assert result.returncode == 1
    assert "Fan.get_speed has two meanings" in result.stderr
