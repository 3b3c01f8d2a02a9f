#!/usr/bin/python3
"""Cleans a noisy recording and plots it before and after:

    examples/python/clean_recording.py [PICTURE.png]
"""

# %% Speech: three spoken prompts of Debian's alsa-utils, 16-bit mono at 48000 Hz, with a second of pause around each.
import sys
import wave

import matplotlib
import numpy as np

import audio_filter

matplotlib.use("Agg")  # draws into files, without a display
from matplotlib import pyplot  # noqa: E402

RATE = 48000
PAUSE = np.zeros(RATE, "int16")


def read(name):
    with wave.open(f"/usr/share/sounds/alsa/{name}.wav") as file:
        assert (file.getframerate(), file.getnchannels(), file.getsampwidth()) == (RATE, 1, 2)
        return np.frombuffer(file.readframes(file.getnframes()), "int16")


speech = np.concatenate([PAUSE, read("Front_Left"), PAUSE, read("Front_Right"), PAUSE, read("Rear_Center"), PAUSE])

# %% Noise: white, at -40 dBFS.
random = np.random.default_rng(1)
noisy = (speech * 0.5 + random.normal(0, 32768 * 10 ** (-40 / 20), len(speech))).round().astype("int16")

# %% A whole recording at once. Frame n of the result is frame n of the recording.
cleaned = audio_filter.clean(noisy, RATE, suppression=3)


def dbfs(samples):
    return 20 * np.log10(np.sqrt(np.mean((samples / 32768) ** 2)) + 1e-9)


pause = slice(-RATE * 3 // 4, -RATE // 4)
print(f"noise in the last pause: {dbfs(noisy[pause]):.1f} dBFS before, {dbfs(cleaned[pause]):.1f} dBFS after")

# %% The same live: blocks of 10 ms as a sound card delivers them. The output is late by `latency` frames.
with audio_filter.Stream(RATE, dtype="int16", suppression=3) as stream:
    blocks = [stream.process(noisy[at:at + 480]) for at in range(0, len(noisy), 480)]
    live = np.concatenate([*blocks, stream.drain()])
    print(f"live: {1000 * stream.latency / RATE:.1f} ms late, and else the same: "
          f"{np.array_equal(live[stream.latency:], cleaned)}")

# %% Spectrograms, one above the other: blocks of 512 frames, four of them to a column.
def spectrogram(samples):
    columns = len(samples) // (4 * 512)
    blocks = samples[:columns * 4 * 512].reshape(columns, 4, 512) / 32768 * np.hanning(512)
    power = np.mean(np.abs(np.fft.rfft(blocks)) ** 2, axis=1) / 128**2
    return 10 * np.log10(power.T + 1e-12)


figure, axes = pyplot.subplots(2, 1, figsize=(8, 3.8), sharex=True, layout="constrained")
for axis, title, samples in zip(axes, ("before", "after"), (noisy, cleaned)):
    image = axis.imshow(spectrogram(samples), origin="lower", aspect="auto", interpolation="nearest", vmin=-90, vmax=-26,
                        extent=(0, len(samples) / RATE, 0, RATE / 2000), cmap=pyplot.get_cmap("magma", 8))
    axis.set(title=title, ylim=(0, 12), yticks=[0, 4, 8, 12], ylabel="kHz")
axes[1].set_xlabel("s")
figure.colorbar(image, ax=axes, label="dBFS")
figure.savefig(sys.argv[1] if len(sys.argv) > 1 else "recording.png", dpi=80)
