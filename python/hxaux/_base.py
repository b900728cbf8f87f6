# SPDX-License-Identifier: LicenseRef-HXAux
"""What the generated enumerations and errors have in common."""
from __future__ import annotations

import enum
from typing import Any, Generic, TypeVar

Code = TypeVar("Code", bound="Enumeration")


class Enumeration(enum.IntEnum):
    """Values of the library. The unit may answer a value without a name: it becomes a member called VALUE_n."""

    @classmethod
    def _missing_(cls, value: object) -> Any:
        if not isinstance(value, int) or not -(2**31) <= value < 2**31:
            return None
        member = int.__new__(cls, value)
        member._name_ = f"VALUE_{value}".replace("-", "MINUS_")
        member._value_ = value
        return member


class Failure(Exception, Generic[Code]):
    """An answer other than success: its code, the library's text for it, the operation and what its documentation says."""

    def __init__(self, code: Code, text: str, operation: str = "", reason: str = "") -> None:
        super().__init__(code, text, operation, reason)
        self.code = code
        self.text = text
        self.operation = operation
        self.reason = reason

    def __str__(self) -> str:
        where = f"{self.operation}: " if self.operation else ""
        return f"{where}{self.text} ({self.code.name})" + (f": {self.reason}" if self.reason else "")
