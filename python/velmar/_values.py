"""Checks of values before they are passed to the library."""
from __future__ import annotations

import enum
import operator
import os
import sys
from typing import Any, Callable, Sequence, Tuple, Type, TypeVar, Union

Vector = Sequence[float]
Path = Union[str, "os.PathLike[str]"]
E = TypeVar("E", bound=enum.Enum)

INT32_MAX = 2**31 - 1
UINT32_MAX = 2**32 - 1


def number(what: str, value: Any) -> float:
    if isinstance(value, (str, bytes)) or not hasattr(value, "__float__"):
        raise TypeError(f"{what} must be a number, not {type(value).__name__}")
    return float(value)


def whole(what: str, value: Any, minimum: int, maximum: int) -> int:
    try:
        result = operator.index(value)
    except TypeError:
        raise TypeError(f"{what} must be a whole number, not {type(value).__name__}") from None
    if not minimum <= result <= maximum:
        raise ValueError(f"{what} must be from {minimum} to {maximum}, not {result}")
    return result


def int32(what: str, value: Any) -> int:
    return whole(what, value, -INT32_MAX - 1, INT32_MAX)


def uint32(what: str, value: Any) -> int:
    return whole(what, value, 0, UINT32_MAX)


def one_of(enumeration: Type[E]) -> Callable[[str, Any], E]:
    """The check of an enumeration's values."""
    return lambda what, value: enumeration(value)


def flag(what: str, value: Any) -> bool:
    if isinstance(value, (str, bytes)):
        raise TypeError(f"{what} must be true or false, not {type(value).__name__}")
    return bool(value)


def vector(what: str, value: Any) -> Tuple[float, float, float]:
    try:
        if isinstance(value, (str, bytes)):
            raise TypeError
        x, y, z = value
    except TypeError:
        raise TypeError(f"{what} must be three numbers, not {type(value).__name__}") from None
    except ValueError:
        raise ValueError(f"{what} must be three numbers") from None
    return number(f"{what}: x", x), number(f"{what}: y", y), number(f"{what}: z", z)


def text(what: str, value: Any) -> bytes:
    """UTF-8 without a zero byte, at which the text would end for the library."""
    if not isinstance(value, str):
        raise TypeError(f"{what} must be a str, not {type(value).__name__}")
    if "\0" in value:
        raise ValueError(f"{what} must not contain a zero character")
    return value.encode("utf-8")


def path(what: str, value: Path) -> str:
    """A path for the library."""
    result = os.fspath(value)
    if not isinstance(result, str):
        raise TypeError(f"{what} must be a str or a path, not {type(result).__name__}")
    if not result:
        raise ValueError(f"{what} must not be empty")
    if sys.platform != "win32" and "\\" in result:
        raise ValueError(f"{what} must not contain a backslash, which the library takes for a separator")
    text(what, result)
    return result
