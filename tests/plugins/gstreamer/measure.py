#!/usr/bin/python3
"""Compares a recording before and after the element: its length, the lag, the noise floor in a pause, the level of the
speech, and the longest run of zeros. Fails unless they are as wanted.

    measure.py BEFORE.wav AFTER.wav [--most-lag FRAMES] [--least-drop DB] [--most-speech-change DB] [--any-length]"""

import argparse
import sys

import numpy as np
from scipy import signal
from scipy.io import wavfile

PAUSE = (0.9, 1.4)  # s, of noise alone


def read(path):
    rate, samples = wavfile.read(path)
    if samples.dtype == np.int16:
        samples = samples / 32768
    return rate, samples.astype(float) if samples.ndim == 1 else samples[:, 0].astype(float)


def decibels(samples):
    return 20 * np.log10(np.sqrt(np.mean(samples**2)) + 1e-9)


def longest_zeros(samples):
    edges = np.flatnonzero(np.diff(np.concatenate([[0], samples == 0, [0]]).astype(int)))
    return max(edges[1::2] - edges[::2], default=0)


def main():
    options = argparse.ArgumentParser()
    options.add_argument("before")
    options.add_argument("after")
    options.add_argument("--most-lag", type=int, default=1)
    options.add_argument("--least-drop", type=float, default=15)
    options.add_argument("--most-speech-change", type=float, default=1)
    options.add_argument("--any-length", action="store_true")
    wanted = options.parse_args()
    (rate, before), (rate_after, after) = read(wanted.before), read(wanted.after)
    if rate != rate_after or len(after) < rate:
        sys.exit(f"{len(before)} frames at {rate} Hz became {len(after)} at {rate_after} Hz")
    length = min(len(before), len(after))
    product = signal.fftconvolve(after[:length], before[:length][::-1])
    lag = int(np.argmax(product)) - length + 1
    pause = slice(*(int(at * rate) for at in PAUSE))
    drop = decibels(before[pause]) - decibels(after[pause])
    power = signal.lfilter(np.ones(rate // 20) / (rate // 20), 1, before[:length]**2)
    spoken = power > 0.1 * np.max(power)
    change = decibels(after[:length][spoken]) - decibels(before[:length][spoken])
    zeros, own = longest_zeros(after), longest_zeros(before)
    print(f"{len(before)} -> {len(after)} frames at {rate} Hz, lag {lag}, floor {-drop:.1f} dB, speech {change:+.2f} dB, "
          f"longest run of zeros {own} -> {zeros}")
    failures = [text for text, failed in {
        "length": len(before) != len(after) and not wanted.any_length,
        "lag": abs(lag) > wanted.most_lag,
        "floor": drop < wanted.least_drop,
        "speech": abs(change) > wanted.most_speech_change,
        "zeros": zeros > max(own, rate // 500) and not wanted.any_length,
    }.items() if failed]
    if failures:
        sys.exit("out of bounds: " + ", ".join(failures))


main()
