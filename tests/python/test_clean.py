"""clean() over whole arrays."""

import numpy as np
import pytest

import audio_filter
from audio_filter import clean

LAYOUTS = {
    "Fortran order": np.asfortranarray,
    "transposed channels": lambda a: np.ascontiguousarray(a.T).T,
    "every second frame": lambda a: np.repeat(a, 2, axis=0)[::2],
    "backwards in memory": lambda a: a[::-1].copy()[::-1],
    "columns of a wider array": lambda a: np.hstack([a, a])[:, 2:],
    "columns of a wider array in Fortran order": lambda a: np.asfortranarray(np.hstack([a, a]))[:, 1:3][:, ::-1],
    "other byte order": lambda a: a.astype(">f4"),
    "float64": lambda a: a.astype("float64"),
    "unaligned": lambda a: np.frombuffer(b"x" + a.tobytes(), "u1")[1:].view("f4").reshape(a.shape),
    "memory map": lambda a: a.view(np.memmap),
}


@pytest.mark.parametrize("layout", LAYOUTS)
def test_every_layout_gives_the_same_samples_in_the_dtype_it_came_in(noise, layout):
    given = LAYOUTS[layout](noise)
    assert np.array_equal(given, noise)
    cleaned = clean(given, 48000)
    assert cleaned.dtype == given.dtype and cleaned.shape == given.shape
    assert np.array_equal(cleaned, clean(noise, 48000))


def test_arrays_in_c_order_in_fortran_order_and_transposed_are_read_where_they_lie(noise, monkeypatch):
    given = [noise, noise[100:200], noise[:, 0].copy(), *(LAYOUTS[name](noise) for name in list(LAYOUTS)[:3])]
    monkeypatch.setattr(np, "array", None)  # what makes the copies
    for array in given[:-1]:
        clean(array, 48000)
    with pytest.raises(TypeError, match="NoneType"):
        clean(given[-1], 48000)


@pytest.mark.parametrize("frames", [0, 1, 516, 517, 518, 1034, 48000])
def test_with_every_stage_off_the_result_is_the_input_for_lengths_around_the_latency_of_517(noise, frames):
    for given in (noise[:frames], noise[:frames, 0], noise[:frames, :1], (noise[:frames] * 30000).astype("int16")):
        assert np.array_equal(clean(given, 48000, suppression=None), given)


def test_a_recording_longer_than_the_longest_block_of_192000_frames_is_processed_in_blocks():
    samples = np.random.default_rng(2).normal(0, 0.05, 400000)
    assert np.array_equal(clean(samples.astype("float32"), 8000, suppression=None), samples.astype("float32"))
    strided = np.repeat(samples.astype("float32"), 3)[::3]
    assert np.array_equal(clean(strided, 8000), clean(samples, 8000).astype("float32"))


def test_noise_falls_by_more_than_18_db_at_level_3_and_by_more_at_each_level(noise):
    levels = [clean(noise, 48000, suppression=level)[24000:].std() for level in range(4)]
    assert levels == sorted(levels, reverse=True)
    assert levels[3] < noise[24000:].std() / 8


def test_a_sweep_in_noise_stays_within_1_frame_of_where_it_is():
    time = np.arange(72000) / 48000
    sweep = np.where(time > 1, 0.3 * np.sin(2 * np.pi * (500 + 2000 * time) * time), 0)
    cleaned = clean(sweep + np.random.default_rng(3).normal(0, 0.003, len(time)), 48000)
    lags = np.correlate(cleaned[50000:70000], sweep[49980:70020], "valid")
    assert abs(np.argmax(lags) - 20) <= 1
    assert 0.7 < cleaned[50000:].std() / sweep[50000:].std() < 1.05


def test_nan_infinity_and_numbers_too_large_for_float32_count_as_zero():
    for value in (np.nan, np.inf, -np.inf, 1e300):
        samples = np.zeros(4800)
        samples[100] = value
        assert np.array_equal(clean(samples, 48000), np.zeros(4800))
        assert np.array_equal(clean(samples, 48000, suppression=None), np.zeros(4800))


def test_reversed_negates_the_left_channel_from_the_first_frame(noise):
    assert np.array_equal(clean(noise, 48000, suppression=None, reversed=[0]), noise * np.float32([-1, 1]))


@pytest.mark.parametrize("array, sentence", [
    (np.zeros((2, 48000), "float32"), "48000 channels; 1..8 are supported"),
    (np.zeros((100, 0), "float32"), "0 channels"),
    (np.zeros((1, 2, 3)), r"\(1, 2, 3\)"),
    (np.float32(1), "of shape"),
])
def test_shapes_other_than_frames_by_1_to_8_channels_are_refused(array, sentence):
    with pytest.raises(ValueError, match=sentence):
        clean(array, 48000)


@pytest.mark.parametrize("dtype", ["int8", "uint8", "uint16", "int32", "int64", "float16", "complex64", "bool", "object", "U1"])
def test_dtypes_other_than_int16_float32_and_float64_are_refused(dtype):
    with pytest.raises(TypeError, match="not int16, float32 or float64"):
        clean(np.zeros(100, dtype), 48000)


@pytest.mark.parametrize("rate", [7999, 192001, 0, -48000, 2**32 + 48000, 10**30])
def test_rates_outside_8000_to_192000_hz_are_refused_even_for_0_frames(rate):
    with pytest.raises(audio_filter.InvalidArgument, match="unsupported format"):
        clean(np.zeros(0), rate)


def test_a_list_of_floats_is_an_array():
    assert np.array_equal(clean([0.5, 0.25], 8000, suppression=None), [0.5, 0.25])
