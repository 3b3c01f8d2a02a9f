"""Where the samples of an array lie, as the library takes them."""

from __future__ import annotations

import ctypes
from typing import Any

import numpy as np
from numpy.typing import NDArray

Samples = NDArray[Any]


def address(array: Samples) -> int:
    return int(array.__array_interface__["data"][0])


def is_usable(array: Samples, dtype: np.dtype[Any], planar: bool) -> bool:
    """Whether the library can work on an array of (frames, channels) where it lies."""
    if array.dtype != dtype or not array.flags.aligned:
        return False
    if planar:
        return len(array) <= 1 or array.strides[0] == array.itemsize
    return bool(array.flags.c_contiguous)


def usable(array: Samples, dtype: np.dtype[Any], planar: bool) -> Samples:
    """The array, or a copy if the library cannot work on it where it lies."""
    if is_usable(array, dtype, planar):
        return array
    with np.errstate(over="ignore", invalid="ignore"):  # what does not fit becomes infinite and counts as 0
        return np.array(array, dtype=dtype, order="F" if planar else "C")


def buffers(arrays: list[Samples], planar: bool) -> Any:
    """The buffers of usable arrays: one each, or one for each channel."""
    if not planar:
        addresses = [address(array) for array in arrays]
    else:
        addresses = [address(array) + channel * array.strides[1]
                     for array in arrays for channel in range(array.shape[1])]
    return (ctypes.c_void_p * len(addresses))(*addresses)


def is_same(a: Samples, b: Samples) -> bool:
    """Whether two arrays are the same samples in the same places."""
    return address(a) == address(b) and a.shape == b.shape and a.strides == b.strides and a.dtype == b.dtype


def with_channels(array: Samples) -> Samples:
    """A view of (frames, channels)."""
    return array[:, np.newaxis] if array.ndim == 1 else array
