"""The settings of a stream: between Python and the numbers of the library."""

from __future__ import annotations

import operator
from typing import TYPE_CHECKING, Any, Callable, Generic, Iterable, Optional, TypeVar, overload

import numpy as np

from ._library import ERROR_VALUE, OFF, InvalidArgument, clamped, library

if TYPE_CHECKING:
    from ._stream import Stream

Value = TypeVar("Value")


def _out_of_range(value: object) -> InvalidArgument:
    return InvalidArgument(f"{library.strerror(ERROR_VALUE).decode()}: {value!r}", ERROR_VALUE)


def level(value: Optional[int]) -> int:
    if value is None:
        return OFF
    if isinstance(value, (bool, np.bool_)):
        raise TypeError("suppression is a level, 0..3, or None for off")
    number = operator.index(value)
    if number < 0:  # None is the only word for off
        raise _out_of_range(value)
    return clamped(number)


def share(value: Optional[float]) -> float:
    if value is None:
        return OFF
    if isinstance(value, (bool, np.bool_, str, bytes)):
        raise TypeError("gain is a number, 0..1, or None for off")
    number = float(value)
    if number < 0:
        raise _out_of_range(value)
    return number


def switch(value: bool) -> int:
    if not isinstance(value, (bool, np.bool_)):
        raise TypeError(f"{value!r} is neither True nor False")
    return int(value)


def mask(value: Iterable[int]) -> int:
    bits = 0
    for source in value:
        if not 0 <= operator.index(source) < 16:
            raise _out_of_range(source)
        bits |= 1 << operator.index(source)
    return bits


def sources(bits: float) -> tuple[int, ...]:
    return tuple(source for source in range(16) if int(bits) >> source & 1)


class Setting(Generic[Value]):
    """A property of Stream that is a setting of the library."""

    def __init__(self, number: int, encode: Callable[[Value], float], decode: Callable[[float], Value], doc: str) -> None:
        self._number, self._encode, self._decode, self.__doc__ = number, encode, decode, doc

    def __set_name__(self, owner: type, name: str) -> None:
        self._name = name

    @overload
    def __get__(self, stream: None, owner: type) -> Setting[Value]: ...

    @overload
    def __get__(self, stream: Stream, owner: type) -> Value: ...

    def __get__(self, stream: Optional[Stream], owner: type) -> Any:
        return self if stream is None else self._decode(stream._get(self._number))

    def __set__(self, stream: Stream, value: Value) -> None:
        stream._set(self._number, self._encode(value), f"{self._name} = {value!r}")
