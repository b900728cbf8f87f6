# SPDX-License-Identifier: LicenseRef-HXAux
"""A simulated unit in a test: start it, run the application on it, change it, and wait for what must happen.

    with sim.Unit({"light": 20}) as unit:
        unit.run(["./console"])
        unit.wait_for("backlight.level", "<", 40, timeout=2)

The program hx-sim is found by the variable HX_SIM, or like a command of the shell. Times are seconds of the unit.
"""
from __future__ import annotations

import decimal
import os
import pathlib
import types
from collections.abc import Iterable, Mapping, Sequence
from typing import NamedTuple, TypeVar, Union

from . import _sim
from ._sim import Error

__all__ = ["Error", "NotMet", "Program", "Result", "Unit"]

Error.__module__ = __name__  # where users find it

Value = Union[str, bool, int, float]
Word = Union[str, "os.PathLike[str]"]
Self = TypeVar("Self", bound="_Ended")


class NotMet(Error, AssertionError):
    """An expectation was not met; the text says what was seen instead."""


class Result(NamedTuple):
    """What an expectation came to. It is true when the expectation was met."""

    met: bool
    time: float
    """Of the unit, when it was decided."""
    seen: str
    """ "backlight.level was 128, then 90" """

    def __bool__(self) -> bool:
        return self.met


class _Ended:
    """Something that ends with a `with` block."""

    def stop(self) -> None:
        raise NotImplementedError

    def __enter__(self: Self) -> Self:
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: types.TracebackType | None
    ) -> None:
        self.stop()


class Program(_Ended):
    """A program on a unit. It is stopped when nothing refers to it."""

    def __init__(self, inside: _sim.Program, command: Sequence[str]) -> None:
        self._inside = inside
        self.command = list(command)

    def wait(self, timeout: float | None = None) -> int:
        """Waits for its end; returns its exit status, or 128 plus the number of the signal that ended it.

        Raises TimeoutError when it is still running after this many real seconds.
        """
        status = self._inside.wait(timeout)
        if status is None:
            raise TimeoutError(f"{self.command[0]} is still running after {timeout} s")
        return status

    def stop(self) -> None:
        """Ends it: TERM, and KILL after some seconds."""
        self._inside.stop()

    @property
    def is_running(self) -> bool:
        return self._inside.is_running()

    @property
    def output(self) -> str:
        """What it has printed until now, output and error output: all of it when it has ended."""
        return self._inside.output()

    def __repr__(self) -> str:
        return f"<hxaux.sim.Program {' '.join(self.command)}>"


class Unit(_Ended):
    """A simulated unit of its own, which stops with the `with` block, with the object, and with the process.

    Args:
        settings: how it differs from a healthy one: {"light": 20}, or lines of a description:
            ["light = 20", "absent = /dev/lightsensor"].
        scale: how many times faster than real its time runs.
        virtual: its time passes only while its programs and this process wait, and then at once; without a scale.
    """

    def __init__(
        self, settings: Mapping[str, Value] | Iterable[str] = (), scale: float = 1, *, virtual: bool = False
    ) -> None:
        if isinstance(settings, str):
            raise TypeError("settings must be a mapping or several lines, not one text")
        if isinstance(settings, Mapping):
            settings = [f"{key} = {_text(value)}" for key, value in settings.items()]
        self._begin(_sim.Unit(list(settings), scale, virtual))

    @classmethod
    def attach(cls, name: str | None = None) -> Unit:
        """Uses a running unit, which continues afterwards; without a name the one that this process runs on."""
        if name is None:
            folder = os.environ.get("HXSIM_UNIT")
            if not folder:
                raise Error("this process does not run on a unit; 'hx-sim run -- python3 ...' runs it on one")
            name = pathlib.PurePath(folder).name
        unit = cls.__new__(cls)
        unit._begin(_sim.Unit.attach(name))
        return unit

    def _begin(self, inside: _sim.Unit) -> None:
        self._inside = inside
        self.programs: list[Program] = []

    @property
    def name(self) -> str:
        """For `hx-sim --unit NAME` in a shell."""
        return self._inside.name

    def stop(self) -> None:
        """Stops its programs, and the unit unless it was attached."""
        for program in self.programs:
            program.stop()
        self._inside.stop()

    def get(self, property: str) -> str:
        """A property as a text: get("voltage.0") == "24"."""
        return self._inside.get(property)

    def set(self, property: str, value: Value) -> None:
        """A property from a text, a number, or True and False for a switch."""
        self._inside.set(property, _text(value))

    def act(self, action: str) -> None:
        """An action of the unit and its words: act("touch 3")."""
        self._inside.act(action)

    def press(self, button: str) -> None:
        """Presses a button."""
        self.act(f"press {button}")

    def fail(self, node: str, call: str, error: str = "EIO", count: int = 0) -> None:
        """Injects failures: the next `count` such calls fail, all of them with 0.

        fail("/dev/adc-id", "get 3", "EIO", 2)
        """
        if count < 0:
            raise ValueError("count must not be negative")
        self._inside.fail(node, call, error, count)

    def unfail(self, node: str = "") -> None:
        """Clears the failures of a node, or all."""
        self._inside.unfail(node)

    def remove(self, path: str) -> None:
        """Removes a device."""
        self._inside.remove(path)

    def restore(self, path: str) -> None:
        """Restores a device."""
        self._inside.restore(path)

    def follow(self, property: str) -> None:
        """Notices the changes of a property from now on; for a value that is over before it is expected."""
        self._inside.follow(property)

    def run(self, command: Sequence[Word]) -> Program:
        """Starts a program on the unit: run(["./console", "--verbose"])."""
        if isinstance(command, (str, bytes)):
            raise TypeError("the command must be a sequence of words, not one text")
        words = [os.fspath(word) for word in command]
        program = Program(self._inside.run(words), words)
        self.programs.append(program)
        return program

    def check(self, expectation: str) -> Result:
        """Checks an expectation, as `hx-sim expect` does: "backlight.level = 40 within 1s".

        Its time begins with the last action (set, act, fail, run, ...). Waits until it is decided.
        """
        return Result(*self._inside.check(expectation))

    def expect(self, expectation: str) -> Result:
        """The same, but raises NotMet with what was seen when it is not met."""
        __tracebackhide__ = True  # pytest shows the line of the test
        return _met(expectation, self.check(expectation))

    def wait(self, expectation: str) -> Result:
        """The same, and the time of what is checked next begins with the moment for which it waited, as after an action:
        wait("output ready within 10s")."""
        __tracebackhide__ = True
        return _met(expectation, Result(*self._inside.wait(expectation)))

    def wait_for(self, property: str, operator: str, value: Value, timeout: float) -> Result:
        """Waits so until a property compares with a value; raises NotMet when it does not in this time of the unit.

        wait_for("backlight.level", "<", 40, timeout=1)
        """
        __tracebackhide__ = True
        literal = _text(value).replace("\\", "\\\\").replace('"', '\\"')
        return self.wait(f'{property} {operator} "{literal}" within {_text(float(timeout))}s')

    def sleep(self, seconds: float) -> None:
        """Lets the unit's time advance by this."""
        self._inside.sleep(seconds)

    @property
    def time(self) -> float:
        """The unit's time."""
        return self._inside.time()

    def log(self) -> str:
        """The calls on the unit until now, one per line."""
        return self._inside.log()

    def __repr__(self) -> str:
        return f"<hxaux.sim.Unit {self.name}>"


def _met(expectation: str, result: Result) -> Result:
    __tracebackhide__ = True
    if not result:
        raise NotMet(f"expected {expectation}; {result.seen}")
    return result


def _text(value: Value) -> str:
    """A value as the unit reads it."""
    if isinstance(value, bool):
        return "on" if value else "off"
    if isinstance(value, float):
        return format(decimal.Decimal(repr(value)).normalize(), "f")
    return str(int(value)) if isinstance(value, int) else value
