"""Test signals and measures: spoken prompts in noise, intelligibility, signal-to-distortion ratio."""

import numpy as np
from scipy import signal
from scipy.io import wavfile

RATE = 48000
PROMPTS = ["Front_Left", "Front_Right", "Front_Center", "Rear_Left", "Rear_Right", "Side_Left", "Side_Right",
           "Rear_Center"]


def read(path):
    rate, samples = wavfile.read(path)
    return rate, samples.astype(float) / 32768 if samples.dtype == np.int16 else samples.astype(float)


def write(path, samples, rate=RATE):
    wavfile.write(path, rate, np.clip(np.round(samples * 32768), -32768, 32767).astype("<i2"))


def prompts():
    """The prompts of alsa-utils, one after another with pauses of 0.8 s."""
    parts = [np.zeros(RATE * 3 // 2)]
    for name in PROMPTS:
        parts += [read(f"/usr/share/sounds/alsa/{name}.wav")[1], np.zeros(RATE * 4 // 5)]
    return np.concatenate(parts)


def noise(kind, frames, random):
    """White or pink noise; a fan: noise that falls by 6 dB per octave from 40 Hz on, with three tones of its blades; or
    babble: twelve voices that read the prompts at slightly different speeds."""
    if kind == "white":
        return random.standard_normal(frames)
    if kind == "pink":
        spectrum = np.fft.rfft(random.standard_normal(frames))
        return np.fft.irfft(spectrum / np.sqrt(np.maximum(np.arange(len(spectrum)), 1)), frames)
    if kind == "fan":
        spectrum = np.fft.rfft(random.standard_normal(frames))
        hertz = np.fft.rfftfreq(frames, 1 / RATE)
        air = np.fft.irfft(spectrum / np.maximum(hertz, 40), frames)
        blades = sum(np.sin(2 * np.pi * 115 * k * np.arange(frames) / RATE) / k for k in (1, 2, 3))
        return air / np.std(air) + 0.5 * blades
    voice = np.concatenate([read(f"/usr/share/sounds/alsa/{name}.wav")[1] for name in PROMPTS])
    babble = np.zeros(frames)
    for _ in range(12):
        start, speed = random.integers(len(voice)), 0.94 + 0.12 * random.random()
        own = np.interp(np.arange(0, len(voice), speed), np.arange(len(voice)), np.roll(voice, start))
        babble += np.resize(own, frames) * (0.6 + 0.8 * random.random())
    return babble


def envelope(samples):
    """The power over 50 ms."""
    window = RATE // 20
    return signal.lfilter(np.ones(window) / window, 1, samples**2)


def mix(speech, added, snr):
    """Speech and noise at a ratio in dB of the power of the spoken parts; also the speech alone, at the same scale."""
    power = np.mean(speech[envelope(speech) > 1e-5] ** 2)
    mixed = speech + added * np.sqrt(power / np.mean(added**2)) * 10 ** (-snr / 20)
    scale = 0.5 / max(1.0, np.abs(mixed).max())
    return mixed * scale, speech * scale


def si_sdr(reference, estimate):
    """Scale-invariant signal-to-distortion ratio in dB (Le Roux et al., "SDR - half-baked or well done?", 2019)."""
    target = np.dot(reference, estimate) / np.dot(reference, reference) * reference
    return 10 * np.log10(np.sum(target**2) / np.sum((estimate - target) ** 2))


def stoi(clean, processed):
    """Short-time objective intelligibility, 0..1 (Taal et al., IEEE Trans. Audio Speech Lang. Process., 2011)."""
    clean, processed = (signal.resample_poly(x, 10000, RATE) for x in (clean, processed))
    window = np.hanning(258)[1:-1]
    frames = [np.array([x[i:i + 256] * window for i in range(0, len(x) - 256, 128)]) for x in (clean, processed)]
    energy = 20 * np.log10(np.linalg.norm(frames[0], axis=1) + 1e-12)
    spoken = energy > energy.max() - 40
    frequencies = np.linspace(0, 5000, 257)
    bands = np.zeros((15, 257))
    for k in range(15):
        low, high = (np.argmin(np.abs(frequencies - 150 * 2 ** (k / 3 + edge))) for edge in (-1 / 6, 1 / 6))
        bands[k, low:high] = 1

    def band_levels(pieces):
        joined = np.zeros(128 * (len(pieces) + 1))
        for i, piece in enumerate(pieces):
            joined[128 * i:128 * i + 256] += piece
        pieces = np.array([joined[i:i + 256] * window for i in range(0, len(joined) - 256, 128)])
        return np.sqrt(bands @ np.abs(np.fft.rfft(pieces, 512)).T ** 2)

    x, y = (band_levels(f[spoken]) for f in frames)
    scores = []
    for end in range(30, x.shape[1] + 1):
        a, b = x[:, end - 30:end], y[:, end - 30:end]
        scale = np.linalg.norm(a, axis=1, keepdims=True) / (np.linalg.norm(b, axis=1, keepdims=True) + 1e-12)
        b = np.minimum(b * scale, a * (1 + 10 ** (15 / 20)))
        a, b = (v - v.mean(1, keepdims=True) for v in (a, b))
        norms = np.linalg.norm(a, axis=1) * np.linalg.norm(b, axis=1) + 1e-12
        scores.append(np.mean(np.sum(a * b, axis=1) / norms))
    return float(np.mean(scores))
