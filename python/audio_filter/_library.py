"""libaudiofilter through ctypes, which releases the GIL during every call."""

from __future__ import annotations

import ctypes
from ctypes import POINTER, c_char_p, c_double, c_float, c_int, c_int32, c_int64, c_size_t, c_uint32, c_void_p
from typing import Any

NAME = "libaudiofilter.so.0"
OLDEST = 100  # 0.1.0, as audio_filter_version() counts

S16, FLOAT, S16_PLANAR, FLOAT_PLANAR = 1, 3, 6, 8
OFF = -1
ERROR_ARGUMENT, ERROR_FORMAT, ERROR_VALUE, ERROR_FRAMES, ERROR_MEMORY = -1, -3, -4, -5, -6
MOST_FRAMES = 192000


class Error(Exception):
    """An error of libaudiofilter, with its sentence. `code` is its result code (`audio_filter/c.h`)."""

    def __init__(self, message: str, code: int = ERROR_ARGUMENT) -> None:
        super().__init__(message)
        self.code = code


class InvalidArgument(Error, ValueError):
    """A format or a setting out of range, or a stream that is closed."""


class OutOfMemory(Error, MemoryError):
    """No memory."""


class Format(ctypes.Structure):
    _fields_ = [(name, c_uint32 if name == "size" else c_int32)
                for name in ("size", "sample_rate", "channels", "samples", "sources", "max_frames", "finite")]


class Settings(ctypes.Structure):
    _fields_ = [("size", c_uint32), ("suppression", c_int32), ("gain", c_float), ("phase_check", c_int32),
                ("music_detection", c_int32), ("high_band", c_int32), ("mix", c_int32), ("reversed", c_uint32)]


class Event(ctypes.Structure):
    _fields_ = [("size", c_uint32), ("type", c_int32), ("on", c_int32), ("source", c_int32), ("frame", c_int64)]


class Handle(c_void_p):
    """A stream of the library. It lives as long as a call uses it, even when Stream.close() has dropped it."""

    def __del__(self) -> None:
        if self.value and _destroy is not None:  # None at the end of the interpreter
            value, self.value = self.value, None
            _destroy(value)


_FUNCTIONS: dict[str, tuple[Any, ...]] = {
    "strerror": (c_char_p, c_int),
    "version": (c_uint32,),
    "version_string": (c_char_p,),
    "default_format": (c_int, POINTER(Format), c_size_t),
    "default_settings": (c_int, POINTER(Settings), c_size_t),
    "create": (c_int, POINTER(Handle), POINTER(Format), POINTER(Settings)),
    "destroy": (None, c_void_p),
    "reset": (c_int, Handle),
    "process": (c_int, Handle, POINTER(c_void_p), POINTER(c_void_p), c_int32),
    "drain": (c_int32, Handle, POINTER(c_void_p), c_int32),
    "set": (c_int, Handle, c_int, c_double),
    "get": (c_int, Handle, c_int, POINTER(c_double)),
    "latency": (c_int32, Handle),
    "is_music": (c_int, Handle),
    "is_reversed": (c_int, Handle, c_int32),
    "reduction": (c_float, Handle),
    "next_event": (c_int, Handle, POINTER(Event)),
}


class Library:
    """The functions of the C interface without their prefix. Raises ImportError when they are not there."""

    def __init__(self) -> None:
        try:
            loaded = ctypes.CDLL(NAME)
        except OSError as error:
            raise ImportError(f"audio_filter needs {NAME} (Debian package libaudio-filter0), which the loader does not "
                              f"find or cannot load: {error}") from error
        try:
            for name, (result, *arguments) in _FUNCTIONS.items():
                function = getattr(loaded, f"audio_filter_{name}")
                function.restype, function.argtypes = result, arguments
                setattr(self, name, function)
        except AttributeError as error:
            raise ImportError(f"audio_filter cannot use {NAME}: {error}") from error
        version: int = self.version()
        if version < OLDEST or version // 10000 != OLDEST // 10000:
            raise ImportError(f"audio_filter needs {NAME} of version {OLDEST // 10000}.{OLDEST // 100 % 100} or a later "
                              f"{OLDEST // 10000}.x, and not {self.version_string().decode()}")

    def __getattr__(self, name: str) -> Any:  # for type checkers: __init__ sets every function
        raise AttributeError(name)

    def check(self, result: int, detail: str = "") -> int:
        """Returns a result that is not an error, and raises the library's sentence for one that is."""
        if result >= 0:
            return result
        sentence = self.strerror(result).decode() + (f": {detail}" if detail else "")
        if result == ERROR_MEMORY:
            raise OutOfMemory(sentence, result)
        if result in (ERROR_ARGUMENT, ERROR_FORMAT, ERROR_VALUE, ERROR_FRAMES):
            raise InvalidArgument(sentence, result)
        raise Error(sentence, result)


library = Library()
_destroy = library.destroy
__version__: str = library.version_string().decode()


def clamped(value: int) -> int:
    """A number as int32. One that does not fit becomes the nearest, which is out of every range of the library, too."""
    return max(-2**31, min(value, 2**31 - 1))
