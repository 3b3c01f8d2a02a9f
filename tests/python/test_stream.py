"""Stream: blocks, layouts, settings, events, misuse."""

import copy
import gc
import os
import pickle

import numpy as np
import pytest

import audio_filter
from audio_filter import Event, Stream, _library

EVERY_STAGE_OFF = {"suppression": None}


def in_blocks(stream, samples, frames):
    return np.concatenate([stream.process(samples[at:at + frames]) for at in range(0, len(samples), frames)])


@pytest.mark.parametrize("rate, latency", [(8000, 257), (16000, 386), (44100, 517), (48000, 517), (96000, 1290)])
def test_the_output_is_the_input_of_latency_frames_ago_and_drain_returns_the_rest(noise, rate, latency):
    with Stream(rate, 2, **EVERY_STAGE_OFF) as stream:
        assert stream.latency == latency
        cleaned = np.concatenate([in_blocks(stream, noise[:5000], 137), stream.drain()])
        assert np.array_equal(cleaned[latency:], noise[:5000])
        assert not cleaned[:latency].any()
        assert len(stream.drain()) == 0


def test_blocks_of_137_and_one_of_48000_frames_give_the_same_samples(noise):
    assert np.array_equal(in_blocks(Stream(48000, 2), noise, 137), Stream(48000, 2).process(noise))


def test_after_a_reset_a_stream_gives_the_same_samples_as_a_new_one(noise):
    stream = Stream(48000, 2, suppression=3)
    first = stream.process(noise)
    stream.reset()
    assert stream.suppression == 3 and stream.events() == []
    assert np.array_equal(stream.process(noise), first)


@pytest.mark.parametrize("planar", [False, True])
@pytest.mark.parametrize("dtype", ["int16", "float32"])
def test_several_sources_are_mixed_in_both_layouts_and_dtypes(planar, dtype):
    scale = 1 if dtype == "int16" else np.float32(1 / 32768)
    first = (np.tile([100, 200], (2000, 1)) * scale).astype(dtype)
    second = (np.tile([1000, 2000], (2000, 1)) * scale).astype(dtype)
    with Stream(48000, 2, sources=2, dtype=dtype, planar=planar, **EVERY_STAGE_OFF) as stream:
        mixed = stream.process(first, np.asfortranarray(second))
        assert mixed.flags.f_contiguous == planar and mixed.flags.c_contiguous != planar
        assert np.allclose(mixed[-1], np.multiply([962, 1925], scale), atol=scale)  # 7/8 of the sum: the limiter
        stream.mix = False
        assert np.array_equal(stream.process(first, second)[-1], first[-1])


def test_usable_layouts_are_processed_where_they_lie(noise, monkeypatch):
    monkeypatch.setattr(np, "array", None)  # what makes the copies
    monkeypatch.setattr(np, "empty", None)
    interleaved, mono = noise.copy(), noise[:, 0].copy()
    Stream(48000, 2).process(interleaved, out=interleaved)
    Stream(48000, 2).process(interleaved[100:200], out=interleaved[100:200])
    channels_first = np.ascontiguousarray(noise.T)
    Stream(48000, 2, planar=True).process(channels_first.T, out=channels_first.T)
    Stream(48000, 2, planar=True).process(channels_first[::-1, 5:99].T, out=channels_first[:, 5:99].copy().T)
    for planar in (False, True):
        Stream(48000, planar=planar).process(mono, out=mono)
        Stream(48000, planar=planar).process(mono[:, np.newaxis], out=mono[:, np.newaxis])
    assert not np.array_equal(interleaved, noise)
    unaligned = np.frombuffer(b"x" + noise.tobytes(), "u1")[1:].view("f4").reshape(noise.shape)
    for copied in (channels_first.T, unaligned):
        with pytest.raises(TypeError, match="NoneType"):
            Stream(48000, 2).process(copied, out=interleaved)


@pytest.mark.parametrize("planar", [False, True])
def test_in_place_and_overlapping_outputs_give_the_same_samples(noise, planar):
    samples = noise[:4000]
    expected = Stream(48000, 2).process(samples)
    for order in "CF":
        in_place = np.array(samples, order=order)
        assert Stream(48000, 2, planar=planar).process(in_place, out=in_place) is in_place
        assert np.array_equal(in_place, expected)
        memory = np.array(np.concatenate([samples, samples[:1]]), order=order)
        Stream(48000, 2, planar=planar).process(memory[:-1], out=memory[1:])
        assert np.array_equal(memory[1:], expected)
        swapped = np.array(samples, order=order)
        Stream(48000, 2, planar=planar).process(swapped, out=swapped[:, ::-1])
        assert np.array_equal(swapped[:, ::-1], expected)


def random_view(random, memory, dtype, grid, frames, channels):
    """An array of (frames, channels) in a memory of bytes: in C or Fortran order, strided, reversed or unaligned."""
    step = int(random.choice([1, 1, 2, -1, -2]))
    rows = frames * abs(step)
    size = rows * channels * dtype.itemsize
    start = int(random.integers(0, len(memory) - size)) // grid * grid
    samples = memory[start:start + size].view(dtype)
    wide = samples.reshape(rows, channels) if random.integers(2) else samples.reshape(channels, rows).T
    return wide[::step, ::int(random.choice([1, 1, -1]))]


def test_40_random_sets_of_views_of_one_memory_give_the_samples_of_copies_and_nothing_else_is_written():
    seed = int(os.environ.get("AUDIO_FILTER_SEED", np.random.SeedSequence().entropy % 2**32))
    print(f"AUDIO_FILTER_SEED={seed}")
    random = np.random.default_rng(seed)
    for _ in range(40):
        channels, sources, frames = (int(random.integers(1, end)) for end in (9, 4, 600))
        dtype = np.dtype(random.choice(["int16", "float32"]))
        grid = int(random.choice([dtype.itemsize, dtype.itemsize, 1]))
        samples = random.normal(0, 3000, 10000)
        memory = (samples.astype("int16") if dtype == "int16" else (samples / 32768).astype("float32")).view("u1")
        stored = dtype.newbyteorder(random.choice(["<", "<", ">"]))
        views = [random_view(random, memory, stored, grid, frames % (len(memory) // 64), channels) for _ in range(sources)]
        out = views[0] if random.integers(3) == 0 else random_view(random, memory, stored, grid, len(views[0]), channels)
        format = {"channels": channels, "dtype": dtype, "sources": sources, "planar": bool(random.integers(2))}
        expected = Stream(8000, **format).process(*(view.astype(dtype) for view in views))
        afterwards = memory.copy()
        place = np.lib.stride_tricks.as_strided(afterwards[out.__array_interface__["data"][0] - memory.ctypes.data:]
                                                [:0].view(stored), out.shape, out.strides)
        place[...] = expected
        assert Stream(8000, **format).process(*views, out=out) is out
        assert np.array_equal(memory, afterwards)


def test_settings_are_properties_that_change_while_the_stream_runs(noise):
    stream = Stream(48000, 2)
    assert (stream.suppression, stream.gain, stream.reversed) == (2, None, ())
    assert (stream.phase_check, stream.music_detection, stream.high_band, stream.mix) == (False, False, True, True)
    stream.process(noise[:960])
    stream.suppression, stream.gain, stream.reversed = None, 0.3, [0]
    stream.phase_check = stream.music_detection = True
    stream.high_band = stream.mix = np.False_
    assert (stream.suppression, stream.gain, stream.reversed) == (None, 0.3, (0,))
    assert (stream.phase_check, stream.music_detection, stream.high_band, stream.mix) == (True, True, False, False)
    stream.process(noise[:960])
    assert stream.is_reversed(0) and not stream.is_reversed(1)
    assert set(stream.events()) == {Event("suppression", False, 0, 960), Event("gain", True, 0, 960),
                                    Event("phase_check", True, 0, 960), Event("mix", False, 0, 960),
                                    Event("reversed", True, 0, 960)}
    assert stream.events() == []


def test_more_events_than_the_64_that_the_library_keeps_are_kept_between_calls():
    stream = Stream()
    silence = np.zeros(960, "float32")
    for _ in range(100):
        stream.process(silence)
        stream.mix = not stream.mix
    assert len(stream.events()) == 99


def test_reduction_and_music_report_what_the_stream_does(noise):
    stream = Stream(48000, 2)
    assert stream.reduction == 0 and stream.music is False
    stream.process(noise)
    assert 3 < stream.reduction < 60 and stream.music is False


@pytest.mark.parametrize("name, value, error", [
    ("suppression", 4, ValueError), ("suppression", -1, ValueError), ("suppression", 2**32, ValueError),
    ("suppression", 10**40, ValueError), ("suppression", True, TypeError), ("suppression", 2.0, TypeError),
    ("suppression", "2", TypeError), ("gain", 1.5, ValueError), ("gain", -1, ValueError), ("gain", -0.1, ValueError),
    ("gain", np.nan, ValueError), ("gain", np.inf, ValueError), ("gain", "0.5", TypeError), ("gain", True, TypeError),
    ("mix", None, TypeError), ("mix", 1, TypeError), ("phase_check", "yes", TypeError), ("reversed", [16], ValueError),
    ("reversed", [-1], ValueError), ("reversed", 1, TypeError), ("reversed", [0.5], TypeError),
])
def test_settings_out_of_range_are_refused_and_change_nothing(name, value, error):
    with pytest.raises(error):
        Stream(**{name: value})
    stream = Stream(suppression=1, gain=0.5)
    before = getattr(stream, name)
    with pytest.raises(error):
        setattr(stream, name, value)
    assert getattr(stream, name) == before


def test_a_refusal_is_the_sentence_of_the_library_with_its_code():
    with pytest.raises(audio_filter.InvalidArgument, match="^a setting is out of range: suppression = 4$") as refused:
        Stream().suppression = 4
    assert refused.value.code == -4
    assert pickle.loads(pickle.dumps(refused.value)).code == -4


def test_a_misspelt_setting_is_an_attribute_error():
    with pytest.raises(AttributeError):
        Stream().supression = 3


@pytest.mark.parametrize("format", [
    {"rate": 7999}, {"rate": 192001}, {"rate": 2**32 + 48000}, {"channels": 0}, {"channels": 9}, {"channels": -1},
    {"channels": 2**32 + 1}, {"sources": 0}, {"sources": 17},
])
def test_formats_out_of_range_are_refused(format):
    with pytest.raises(audio_filter.InvalidArgument, match="^unsupported format") as refused:
        Stream(**format)
    assert refused.value.code == -3


@pytest.mark.parametrize("format", [
    {"rate": 48000.0}, {"rate": "48000"}, {"rate": None}, {"channels": 1.5}, {"dtype": "float64"}, {"dtype": ">i2"},
    {"dtype": "no"}, {"dtype": "int32"}, {"planar": "C"}, {"finite": 2},
])
def test_formats_of_another_type_are_refused(format):
    with pytest.raises(TypeError):
        Stream(**format)


def test_arrays_of_another_shape_or_dtype_are_refused_and_change_nothing(noise):
    stream = Stream(48000, 2)
    refused = {
        TypeError: [(noise.astype("float64"),), (noise.astype("int16"),), (None,), ("audio",), ([[0.0, 0.0]],), (), (noise, noise)],
        ValueError: [(noise.T,), (noise[:, 0],), (noise[:, :1],), (noise[np.newaxis],), (noise[0, 0],)],
    }
    for error, calls in refused.items():
        for sources in calls:
            with pytest.raises(error):
                stream.process(*sources)
    with pytest.raises(ValueError, match="pass its transpose"):
        stream.process(noise.T)
    with pytest.raises(ValueError, match="different numbers of frames: 48000, 47999"):
        Stream(48000, 2, sources=2).process(noise, noise[1:])
    assert np.array_equal(stream.process(noise), Stream(48000, 2).process(noise))


def test_outputs_that_cannot_be_written_are_refused(noise):
    stream = Stream(48000, 2)
    for out in (noise, noise[1:].copy()):
        with pytest.raises(ValueError):
            stream.process(noise, out=out)
    for out in (noise.astype("float64"), bytearray(48000 * 8), [0.0]):
        with pytest.raises(TypeError):
            stream.process(noise, out=out)


def test_0_frames_are_a_block_and_the_shape_of_drain_follows_that_of_the_blocks():
    stream = Stream()
    assert stream.process(np.zeros(0, "float32")).shape == (0,)
    assert stream.drain().shape == (0,)
    stream.process(np.zeros((1, 1), "float32"))
    assert stream.drain().shape == (517, 1)


def test_nan_passes_only_where_finite_is_off_and_every_stage_is_off():
    samples = np.full(2000, np.nan, "float32")
    assert np.isnan(Stream(finite=False, **EVERY_STAGE_OFF).process(samples)[517:]).all()
    assert not Stream(**EVERY_STAGE_OFF).process(samples).any()
    assert not Stream(finite=False).process(samples)[1000:].any()


def test_a_closed_stream_refuses_every_call_and_close_may_be_repeated(noise):
    with Stream(48000, 2) as stream:
        assert not stream.closed
    stream.close()
    assert stream.closed and stream.latency == 517 and "closed" in repr(stream)
    for call in (lambda: stream.process(noise), stream.drain, stream.reset, stream.events, stream.is_reversed,
                 stream.__enter__, lambda: stream.gain, lambda: stream.music, lambda: stream.reduction,
                 lambda: setattr(stream, "gain", 0.5)):
        with pytest.raises(audio_filter.InvalidArgument, match="^the stream is closed$"):
            call()


def test_a_stream_is_neither_copied_nor_pickled_nor_opened_twice():
    stream = Stream()
    for copier in (copy.copy, copy.deepcopy, pickle.dumps):
        with pytest.raises(TypeError, match="create one in each process"):
            copier(stream)
    with pytest.raises(audio_filter.Error, match="already open"):
        stream.__init__()


def test_closed_and_forgotten_streams_and_those_in_reference_cycles_are_destroyed(monkeypatch):
    gc.collect()
    destroyed = []
    destroy = _library._destroy
    monkeypatch.setattr(_library, "_destroy", lambda value: destroyed.append(value) or destroy(value))

    class Owner:
        pass

    for _ in range(10):
        owner = Owner()
        owner.stream, owner.self = Stream(), owner
    del owner
    gc.collect()
    assert len(destroyed) == 10
    stream = Stream()
    stream.close()
    assert len(destroyed) == 11
    Stream()
    assert len(destroyed) == 12
    Stream.__new__(Stream)
    with pytest.raises(ValueError):
        Stream(channels=9)
    assert len(destroyed) == 12
