"""Suppresses the noise of captured audio: whole recordings with `clean`, live audio with `Stream`.

Samples are numpy arrays of shape (frames,) or (frames, channels); a frame is one sample per channel.

>>> import audio_filter, numpy as np
>>> noisy = np.random.default_rng(1).normal(0, 300, 48000).astype("int16")
>>> cleaned = audio_filter.clean(noisy, 48000)
>>> cleaned.shape, cleaned.dtype
((48000,), dtype('int16'))
"""

from ._clean import clean
from ._library import Error, InvalidArgument, OutOfMemory, __version__
from ._stream import Event, Stream

__all__ = ["Error", "Event", "InvalidArgument", "OutOfMemory", "Stream", "clean", "__version__"]

for _public in (Error, Event, InvalidArgument, OutOfMemory):
    _public.__module__ = __name__
del _public
