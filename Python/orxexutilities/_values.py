"""Values for which Python has no type, and the errors."""

import re
from dataclasses import dataclass
from typing import Any, Final, final


def _check(what: str, pattern: str, text: str, expected: str) -> None:
    if not isinstance(text, str):
        raise TypeError(f"{what}: a str expected, found {type(text).__name__}")
    if re.fullmatch(pattern, text, re.ASCII) is None:
        raise ValueError(f"{what}: {expected} expected, found {text!r}")


@final
@dataclass(frozen=True, slots=True)
class Enum:
    """An item of an enumeration, by its name: Enum("MILLI")."""

    name: str

    def __post_init__(self) -> None:
        _check("Enum", r"[A-Za-z_]\w*", self.name, "the name of an item")
        object.__setattr__(self, "name", self.name.upper())

    def __repr__(self) -> str:
        return f"Enum({self.name!r})"

    def __str__(self) -> str:
        return self.name


@final
@dataclass(frozen=True, slots=True)
class Binary:
    """A binary, by its digits in an exchange file: the number of unused bits (0 to 3), then hexadecimal
    digits: Binary("0A")."""

    digits: str

    def __post_init__(self) -> None:
        _check("Binary", r"[0-3][0-9A-Fa-f]*", self.digits, "a digit 0 to 3 and hexadecimal digits")
        object.__setattr__(self, "digits", self.digits.upper())

    def __repr__(self) -> str:
        return f"Binary({self.digits!r})"

    def __str__(self) -> str:
        return self.digits


@final
@dataclass(frozen=True, slots=True)
class Typed:
    """A value of a SELECT with the defined type under which it was selected:
    Typed("LENGTH_MEASURE", 2.5). A number in it can be read with float() and int()."""

    type: str
    value: Any

    def __post_init__(self) -> None:
        _check("Typed", r"[A-Za-z_]\w*", self.type, "the name of a defined type")
        object.__setattr__(self, "type", self.type.upper())

    def __repr__(self) -> str:
        return f"Typed({self.type!r}, {self.value!r})"

    def __float__(self) -> float:
        return float(self.value)

    def __int__(self) -> int:
        return int(self.value)

    def __str__(self) -> str:
        return str(self.value)


@final
class Unknown:
    """The third truth value. It is false in a condition, as in a WHERE."""

    __slots__ = ()
    _one: "Unknown | None" = None

    def __new__(cls) -> "Unknown":
        if cls._one is None:
            cls._one = super().__new__(cls)
        return cls._one

    def __bool__(self) -> bool:
        return False

    def __repr__(self) -> str:
        return "orxexutilities.UNKNOWN"

    def __reduce__(self) -> str:
        return "UNKNOWN"


UNKNOWN: Final = Unknown()


class Error(ValueError):
    """Data that cannot be read, written or found. `file`, `line` and `column` are the place, if known;
    `messages` contains all messages as texts."""

    def __init__(
        self,
        message: str,
        file: str | None = None,
        line: int | None = None,
        column: int | None = None,
        messages: tuple[str, ...] = (),
    ) -> None:
        super().__init__(message)
        self.file = file
        self.line = line
        self.column = column
        self.messages = messages or (message,)

    def __str__(self) -> str:
        return str(self.args[0])

    def __reduce__(self) -> tuple[Any, ...]:
        place = (self.file, self.line, self.column, self.messages)
        return (type(self), (self.args[0], *place))


class NotFound(Error, KeyError):
    """A model does not contain the instance or entity type."""


class DataWarning(UserWarning):
    """Contents of a data set that are wrong, but were read."""
