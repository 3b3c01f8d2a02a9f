"""The function clean."""

from __future__ import annotations

from typing import Iterable, Optional

import numpy as np
from numpy.typing import ArrayLike

from ._layout import Samples, is_usable, with_channels
from ._stream import Stream

_DTYPES = {"int16": "int16", "float32": "float32", "float64": "float32"}


def clean(array: ArrayLike, rate: int, *, suppression: Optional[int] = 2, gain: Optional[float] = None,
          phase_check: bool = False, music_detection: bool = False, high_band: bool = True,
          reversed: Iterable[int] = ()) -> Samples:
    """Suppresses the noise of a whole recording: frame n of the result is frame n of the array, cleaned.

    array: of shape (frames,) or (frames, channels), 1..8 channels, in any layout; 0 frames or more. int16, or float32 or float64
           with full scale at -1..1. It is not changed.
    rate:  Hz, 8000..192000

    The settings are those of `Stream`. Returns a new array of the same shape and dtype; float64 is processed as float32. NaN and
    infinity count as 0. Arrays in C order, in Fortran order and transposed ones are read where they lie; others, and float64, are
    copied in blocks of 192000 frames. Releases the GIL.

    >>> import numpy as np
    >>> channels_first = np.random.default_rng(1).normal(0, 0.01, (2, 48000))
    >>> cleaned = clean(channels_first.T, 48000, suppression=3).T
    >>> cleaned.shape, cleaned.dtype, bool(cleaned[:, 24000:].std() < channels_first.std() / 5)
    ((2, 48000), dtype('float64'), True)
    """
    given = np.asarray(array).view()
    dtype = _DTYPES.get(given.dtype.newbyteorder("=").name)
    if dtype is None:
        raise TypeError(f"the array is {given.dtype.name}, not int16, float32 or float64")
    if given.ndim not in (1, 2):
        raise ValueError(f"the array is of shape {given.shape}, not (frames,) or (frames, channels)")
    samples = with_channels(given)
    if not 1 <= samples.shape[1] <= 8:
        raise ValueError(f"the array is of shape {given.shape}, which is {samples.shape[1]} channels; 1..8 are supported. "
                         "Pass the transpose of an array of (channels, frames).")
    planar = samples.shape[1] > 1 and not samples.flags.c_contiguous and is_usable(samples, samples.dtype, True)
    cleaned = np.empty(given.shape, given.dtype, order="F" if planar else "C")
    out = with_channels(cleaned)
    with Stream(rate, samples.shape[1], dtype=dtype, planar=planar, suppression=suppression, gain=gain,
                phase_check=phase_check, music_detection=music_detection, high_band=high_band, reversed=reversed) as stream:
        latency, frames = stream.latency, len(samples)
        head = samples[:latency]
        stream._process([head], np.empty(head.shape, dtype))
        stream._process([samples[latency:]], out[:max(frames - latency, 0)])
        pending = with_channels(stream.drain())
        out[max(frames - latency, 0):] = pending[len(pending) - len(head):]
    return cleaned
