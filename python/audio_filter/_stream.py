"""The class Stream."""

from __future__ import annotations

import ctypes
import operator
import os
import threading
import weakref
from collections import deque
from types import TracebackType
from typing import Any, Iterable, NamedTuple, NoReturn, Optional, cast

import numpy as np
from numpy.typing import ArrayLike, DTypeLike

from . import _settings
from ._layout import Samples, buffers, is_same, is_usable, usable, with_channels
from ._library import (ERROR_ARGUMENT, FLOAT, FLOAT_PLANAR, MOST_FRAMES, OFF, S16, S16_PLANAR, Error, Format, Handle,
                       InvalidArgument, Settings, clamped, library)
from ._library import Event as CEvent
from ._settings import Setting

_SAMPLES = {("int16", False): S16, ("float32", False): FLOAT, ("int16", True): S16_PLANAR, ("float32", True): FLOAT_PLANAR}
_EVENTS = ("suppression", "gain", "phase_check", "mix", "music", "reversed")
_MOST_EVENTS = 10000


class Event(NamedTuple):
    """A change in a stream."""

    type: str
    """"suppression", "gain", "phase_check" or "mix": a stage was switched; "music": music detection;
    "reversed": whether the left channel of `source` is now negated."""
    on: bool
    source: int
    """0..15, for "reversed"; else 0"""
    frame: int
    """Frames that the stream had received at the start of the processing block (about 7 to 10 ms)"""


class Stream:
    """Suppresses the noise of captured audio in real time, at any rate, in blocks of any length.

    Each call of `process` returns as many frames as it receives (a frame is one sample per channel): the input of
    `latency` frames ago, cleaned.

    rate:      Hz, 8000..192000
    channels:  1..8
    dtype:     "float32", full scale at -1..1, or "int16"
    sources:   1..16, which are mixed
    planar:    the layout that is processed where it lies; other arrays are copied.
               False: arrays of (frames, channels) in C order, the common layout.
               True: the samples of each channel lie side by side, as in Fortran order and in the transpose of an array
               of (channels, frames).
               One channel has no layout: every contiguous array is processed where it lies.
    finite:    NaN and infinity count as 0 with every stage off as well

    The other arguments are the settings, which are properties, too, and may change at any time. Every change crossfades over
    10 ms.

    Threads. Any thread may use a stream. Calls of `process`, `drain` and `reset` run one after another; settings, reports and
    `close` do not wait for a block that another thread is processing. The GIL is released while audio is processed, so that
    streams in several threads use several processors.

    >>> import numpy as np
    >>> noise = np.random.default_rng(1).normal(0, 0.01, (48000, 2)).astype("float32")
    >>> with Stream(48000, channels=2, suppression=3) as stream:
    ...     cleaned = np.concatenate([stream.process(noise[at:at + 480]) for at in range(0, 48000, 480)])
    ...     rest = stream.drain()
    >>> stream.latency, cleaned.shape, rest.shape, bool(cleaned[24000:].std() < noise.std() / 5)
    (517, (48000, 2), (517, 2), True)
    """

    __slots__ = ("_handle", "_lock", "_guard", "_events", "_rate", "_channels", "_dtype", "_sources", "_planar", "_latency",
                 "_dimensions", "__weakref__")
    _handle: Optional[Handle]

    def __init__(self, rate: int = 48000, channels: int = 1, *, dtype: DTypeLike = "float32", sources: int = 1,
                 planar: bool = False, finite: bool = True, suppression: Optional[int] = 2, gain: Optional[float] = None,
                 phase_check: bool = False, music_detection: bool = False, high_band: bool = True, mix: bool = True,
                 reversed: Iterable[int] = ()) -> None:
        if hasattr(self, "_handle"):
            raise Error("the stream is already open")
        self._dtype = np.dtype(dtype)
        self._planar = bool(_settings.switch(planar))
        samples = _SAMPLES.get((self._dtype.name, self._planar))
        if samples is None or not self._dtype.isnative:
            raise TypeError(f"a stream processes float32 or int16, not {self._dtype.name}")
        self._rate, self._channels, self._sources = map(operator.index, (rate, channels, sources))
        self._dimensions = 1 if self._channels == 1 else 2
        format = Format(ctypes.sizeof(Format), clamped(self._rate), clamped(self._channels), samples,
                        clamped(self._sources), MOST_FRAMES, _settings.switch(finite))
        settings = Settings(ctypes.sizeof(Settings), _settings.level(suppression), _settings.share(gain),
                            _settings.switch(phase_check), _settings.switch(music_detection), _settings.switch(high_band),
                            _settings.switch(mix), _settings.mask(reversed))
        handle = Handle()
        library.check(library.create(ctypes.byref(handle), ctypes.byref(format), ctypes.byref(settings)),
                      f"rate {rate}, channels {channels}, sources {sources}, suppression {suppression}, gain {gain}")
        self._lock = threading.RLock()   # process, drain, reset
        self._guard = threading.RLock()  # everything else, and reset
        self._events: deque[Event] = deque(maxlen=_MOST_EVENTS)
        self._latency = library.latency(handle)
        self._handle = handle
        _streams.add(self)

    suppression: Setting[Optional[int]] = Setting(
        1, _settings.level, lambda value: None if value == OFF else int(value),
        "Noise suppression: level, 0 mild .. 3 most aggressive, or None for off; default 2.")
    gain: Setting[Optional[float]] = Setting(
        2, _settings.share, lambda value: None if value == OFF else round(value, 7),
        "Gain curve after suppression: 0..1, or None for off; default None.")
    phase_check: Setting[bool] = Setting(
        3, _settings.switch, bool, "Detect a reversed channel of stereo sources and correct it; default False.")
    music_detection: Setting[bool] = Setting(
        4, _settings.switch, bool, "Suppress at level 0 while music is detected; default False.")
    high_band: Setting[bool] = Setting(
        5, _settings.switch, bool, "Above 48000 Hz, keep what lies above the suppressor's band; default True.")
    mix: Setting[bool] = Setting(
        6, _settings.switch, bool, "Mix all sources, through a limiter; False: the first one alone. Default True.")
    reversed: Setting[Iterable[int]] = Setting(
        7, _settings.mask, _settings.sources,
        "Stereo only: the sources, 0..15, whose left channel is negated; default (). Read as a tuple.")

    @property
    def rate(self) -> int:
        """Hz."""
        return self._rate

    @property
    def channels(self) -> int:
        """1..8."""
        return self._channels

    @property
    def dtype(self) -> np.dtype[Any]:
        """int16, or float32 with full scale at -1..1."""
        return self._dtype

    @property
    def sources(self) -> int:
        """How many arrays `process` takes, 1..16."""
        return self._sources

    @property
    def planar(self) -> bool:
        """Whether arrays are processed where they lie if the samples of each channel lie side by side."""
        return self._planar

    @property
    def latency(self) -> int:
        """The delay of the output, in frames. It depends on the rate alone."""
        return cast(int, self._latency)

    @property
    def music(self) -> bool:
        """Whether music is detected."""
        with self._guard:
            return bool(library.check(library.is_music(self._open())))

    @property
    def reduction(self) -> float:
        """The attenuation by noise suppression in the last processing block, in dB, 0 or above."""
        with self._guard:
            return cast(float, library.reduction(self._open()))

    def is_reversed(self, source: int = 0) -> bool:
        """Whether the left channel of a source, 0..15, is negated."""
        with self._guard:
            return bool(library.check(library.is_reversed(self._open(), clamped(operator.index(source))),
                                      f"source {source}"))

    def process(self, *sources: ArrayLike, out: Optional[Samples] = None) -> Samples:
        """Processes a block and returns as many frames as it receives.

        sources: an array for each source, of the dtype of the stream and of shape (frames, channels), or of shape (frames,) for
                 one channel; 0 frames or more. Strided, unaligned and byte-swapped arrays and those in the other layout
                 (see `planar`) are copied, 192000 frames at a time; all others are read where they lie.
        out:     where to write; of the shape of the first source, in any layout. It may be one of the sources (processed in place),
                 and overlap them. Without it, a new array in the layout of the stream is returned.

        >>> import numpy as np
        >>> silence = np.zeros((1000, 2), "int16")
        >>> stream = Stream(44100, 2, dtype="int16", sources=2)
        >>> stream.process(silence, silence).shape
        (1000, 2)
        >>> stream.process(silence, silence, out=silence) is silence
        True
        """
        if len(sources) != self._sources:
            raise TypeError(f"the stream has {self._sources} sources, and {len(sources)} were given")
        arrays = [self._checked(np.asarray(source), "source") for source in sources]
        if any(len(array) != len(arrays[0]) for array in arrays):
            raise ValueError("the sources have different numbers of frames: "
                             + ", ".join(str(len(array)) for array in arrays))
        if out is None:
            result = target = np.empty(arrays[0].shape, self._dtype, order="F" if self._planar else "C")
        else:
            result, target = out, self._checked_out(out, arrays[0].shape)
            arrays = [array.copy() if np.may_share_memory(array, target) and not is_same(array, target) else array
                      for array in arrays]
        self._dimensions = target.ndim
        self._process([with_channels(array) for array in arrays], with_channels(target))
        return result

    def drain(self) -> Samples:
        """Ends the input and returns what is pending: `latency` frames after `process`, 0 after `drain` and `reset`.

        Of shape (frames, channels), or of (frames,) if `process` has last received such arrays. A later call of `process`
        continues after this silence.
        """
        rest = np.empty((self._latency, self._channels), self._dtype, order="F" if self._planar else "C")
        with self._lock:
            handle = self._open()
            frames = library.check(library.drain(handle, buffers([rest], self._planar), len(rest)))
            self._collect()
        return rest[:frames, 0] if self._dimensions == 1 else rest[:frames]

    def reset(self) -> None:
        """Starts again with the same format and settings: no history, no pending output, no events."""
        with self._lock, self._guard:
            library.check(library.reset(self._open()))
            self._events.clear()

    def events(self) -> list[Event]:
        """The changes since the last call, oldest first; the latest 10000 are kept.

        >>> import numpy as np
        >>> with Stream() as stream:
        ...     _ = stream.process(np.zeros(960, "float32"))
        ...     stream.suppression = None
        ...     _ = stream.process(np.zeros(960, "float32"))
        ...     stream.events()
        [Event(type='suppression', on=False, source=0, frame=960)]
        """
        with self._guard:
            self._open()
            taken = list(self._events)
            self._events.clear()
        return taken

    def close(self) -> None:
        """Ends the use of the stream. Its memory is freed as soon as no call in another thread uses it."""
        self._handle = None

    @property
    def closed(self) -> bool:
        """Whether the stream is closed: every call but `close`, and every setting, then raises InvalidArgument."""
        return self._handle is None

    def __enter__(self) -> Stream:
        self._open()
        return self

    def __exit__(self, kind: Optional[type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def __repr__(self) -> str:
        return (f"<audio_filter.Stream: {self._rate} Hz, {self._channels} channels, {self._dtype.name}, "
                f"{self._sources} sources{', planar' if self._planar else ''}{', closed' if self.closed else ''}>")

    def __reduce__(self) -> NoReturn:
        raise TypeError("a stream cannot be copied or pickled: create one in each process")

    def _open(self) -> Handle:
        handle = self._handle
        if handle is None:
            raise InvalidArgument("the stream is closed", ERROR_ARGUMENT)
        return handle

    def _get(self, number: int) -> float:
        value = ctypes.c_double()
        with self._guard:
            library.check(library.get(self._open(), number, ctypes.byref(value)))
        return value.value

    def _set(self, number: int, value: float, detail: str) -> None:
        with self._guard:
            library.check(library.set(self._open(), number, value), detail)

    def _checked(self, array: Samples, name: str) -> Samples:
        """A view, which stays as it is whatever other threads do to the shape of the array."""
        view = array.view()
        if view.dtype.newbyteorder("=") != self._dtype:
            raise TypeError(f"the stream processes {self._dtype.name}, and {name} is {view.dtype.name}: convert it, or create "
                            "the stream with another dtype")
        if view.ndim == 1 and self._channels == 1 or view.ndim == 2 and view.shape[1] == self._channels:
            return view
        wanted = "(frames,) or (frames, 1)" if self._channels == 1 else f"(frames, {self._channels})"
        hint = "; pass its transpose" if view.ndim == 2 and view.shape[0] == self._channels else ""
        raise ValueError(f"{name} is of shape {view.shape}, not {wanted}{hint}")

    def _checked_out(self, out: Samples, shape: tuple[int, ...]) -> Samples:
        if not isinstance(out, np.ndarray):
            raise TypeError(f"out is of type {type(out).__name__}, not numpy.ndarray")
        if not out.flags.writeable:
            raise ValueError("out is read-only")
        view = self._checked(np.asarray(out), "out")
        if view.shape != shape:
            raise ValueError(f"out is of shape {view.shape}, and the first source of {shape}")
        return view

    def _process(self, sources: list[Samples], out: Samples) -> None:
        """Processes arrays of (frames, channels) of any dtype and layout. Sources that overlap `out` are `out`."""
        dtype, planar = self._dtype, self._planar
        with self._lock:
            handle = self._open()
            for start in range(0, len(out), MOST_FRAMES):
                blocks = [usable(source[start:start + MOST_FRAMES], dtype, planar) for source in sources]
                target = out[start:start + MOST_FRAMES]
                written = target if is_usable(target, dtype, planar) else np.empty(
                    target.shape, dtype, order="F" if planar else "C")
                library.check(library.process(handle, buffers(blocks, planar), buffers([written], planar), len(target)))
                if written is not target:
                    target[...] = written
                self._collect()

    def _collect(self) -> None:
        """Takes the events of the library, which keeps 64."""
        event = CEvent(ctypes.sizeof(CEvent))
        with self._guard:
            handle = self._handle
            while handle is not None and library.next_event(handle, ctypes.byref(event)) == 1:
                name = _EVENTS[event.type] if 0 <= event.type < len(_EVENTS) else str(event.type)
                self._events.append(Event(name, bool(event.on), event.source, event.frame))

    def _close_if_in_use(self) -> None:
        """In the child of a fork: the threads that held the locks are gone, and what they processed is incomplete."""
        if self._lock.acquire(blocking=False):
            self._lock.release()
            if self._guard.acquire(blocking=False):
                self._guard.release()
                return
        self._lock, self._guard = threading.RLock(), threading.RLock()
        self.close()


_streams: weakref.WeakSet[Stream] = weakref.WeakSet()


def _after_fork() -> None:
    for stream in list(_streams):
        stream._close_if_in_use()


if hasattr(os, "register_at_fork"):
    os.register_at_fork(after_in_child=_after_fork)
