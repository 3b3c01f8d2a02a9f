#!/usr/bin/python3
"""Records a noisy talk through the plug-in in OBS Studio while its settings change, and checks the recording.

Usage: record.py FOLDER: holds speech.wav, 48000 Hz mono, and config/obs-studio/plugins with the plug-in
"""
import pathlib, random, sys, threading, time, wave

import numpy

from obs_studio import ObsStudio

RATE = 48000
OFF_SECONDS, CLEAN_SECONDS, CHANGES_SECONDS = 4, 6, 5
SETTLING_SECONDS = 1.5  # of the suppressor, after it was switched on
CHANGE_EVERY = 0.1
LOWEST_REDUCTION = 15  # dB
PAUSE_FRAMES = RATE // 10
BUFFERING_MS = 800
STALL_SECONDS = 0.5
ATTEMPTS = 4
ZEROS = 24  # the longest run in the talk


def read(path):
    """The samples of the first channel, full scale at 1."""
    data = path.read_bytes()
    header = data.index(b"data") + 8
    layout = data.index(b"fmt ") + 8
    channels = int.from_bytes(data[layout + 2:layout + 4], "little")
    bits = int.from_bytes(data[layout + 14:layout + 16], "little")
    data = data[header:header + (len(data) - header) // (channels * bits // 8) * (channels * bits // 8)]
    if bits == 16:
        return numpy.frombuffer(data, "<i2")[::channels] / 32768.0
    return numpy.frombuffer(data, "<f4")[::channels].astype(float)


def write_talk(path, speech):
    """Speech in white noise at -45 dBFS, with half a millisecond of silence in each second."""
    noise = numpy.random.default_rng(1).uniform(-0.01, 0.01, len(speech))
    talk = numpy.round(numpy.clip(speech + noise, -1, 0.9999) * 32768)
    for start in range(RATE // 2, len(talk) - ZEROS, RATE):
        talk[start:start + ZEROS] = 0
    with wave.open(str(path), "wb") as file:
        file.setparams((1, 2, RATE, 0, "NONE", ""))
        file.writeframes(talk.astype("<i2").tobytes())
    return talk / 32768.0


def lag_of(recording, talk):
    """The frame of `talk` at which `recording` starts, by correlation."""
    size = 1 << (len(recording) + len(talk)).bit_length()
    product = numpy.fft.rfft(talk, size) * numpy.conj(numpy.fft.rfft(recording, size))
    lag = int(numpy.argmax(numpy.fft.irfft(product, size)))
    return lag if lag < len(talk) else lag - size


def longest_zeros(samples):
    """@return the length of the longest run of zeros, and where it starts"""
    edges = numpy.flatnonzero(numpy.diff(numpy.concatenate(([1], samples != 0, [1]))))
    runs = edges[1::2] - edges[::2]
    if not len(runs):
        return 0, 0
    longest = int(numpy.argmax(runs))
    return int(runs[longest]), int(edges[2 * longest])


def level(samples):
    return 10 * numpy.log10(numpy.mean(samples ** 2) + 1e-20)


def pauses(speech, start, end):
    """Blocks of the talk without speech, a tenth of a second from any."""
    loud = numpy.abs(speech) > 0
    for block in range(start, end - PAUSE_FRAMES, PAUSE_FRAMES):
        if not loud[max(block - PAUSE_FRAMES, 0):block + 2 * PAUSE_FRAMES].any():
            yield slice(block, block + PAUSE_FRAMES)


def start_talk(obs, path):
    """Plays the talk, and makes OBS mix later: on a busy machine, OBS drops blocks of a source that is late, filter or not.

    OBS adds buffering for a source that starts late, and keeps it.
    """
    offset = lambda ms: obs.call("SetInputAudioSyncOffset", inputName="talk", inputAudioSyncOffset=ms)
    offset(-BUFFERING_MS)
    obs.call("SetInputSettings", inputName="talk", inputSettings={"local_file": str(path)})
    obs.wait_for("buffering", lambda: "milliseconds of audio buffering" in obs.log())
    offset(0)
    time.sleep(1)


class StallWatch(threading.Thread):
    """Measures for how long this process was not run although it could."""

    def __init__(self):
        super().__init__(daemon=True)
        self.longest = 0.0
        self.running = True
        self.start()

    def run(self):
        last = time.monotonic()
        while self.running:
            time.sleep(0.01)
            now = time.monotonic()
            self.longest = max(self.longest, now - last)
            last = now


def record_undisturbed(folder):
    """Records again where machine or OBS stood still for longer than OBS's buffering can hide."""
    for _ in range(ATTEMPTS):
        watch = StallWatch()
        result = record(folder)
        watch.running = False
        stall = max(watch.longest, result[-1])
        if stall < STALL_SECONDS:
            return result[:-1]
        print(f"the machine or OBS stood still for {stall:.2f} s: once more")
    sys.exit(f"record: the machine or OBS stood still in each of {ATTEMPTS} recordings")


def record(folder):
    """@return the recording, the seconds at which its parts start, and the longest time that OBS took to respond"""
    with ObsStudio(folder) as obs:
        obs.wait_for("the scene", lambda: obs.call("GetSceneList")["scenes"])
        scene = obs.call("GetSceneList")["scenes"][0]["sceneName"]
        obs.call("CreateInput", sceneName=scene, inputName="talk", inputKind="ffmpeg_source")
        change = lambda **settings: obs.call("SetSourceFilterSettings", sourceName="talk", filterName="cleaner",
                                             filterSettings=settings)
        obs.call("CreateSourceFilter", sourceName="talk", filterName="cleaner", filterKind="audio_filter",
                 filterSettings={"suppression": -1})
        start_talk(obs, folder / "noisy.wav")
        obs.slowest = 0.0
        obs.call("StartRecord")
        start = time.monotonic()
        time.sleep(OFF_SECONDS)
        switched_on = time.monotonic() - start
        change(suppression=3)
        time.sleep(CLEAN_SECONDS)
        changes_start = time.monotonic() - start
        generator = random.Random(1)
        changes = 0
        while time.monotonic() - start < changes_start + CHANGES_SECONDS:
            change(suppression=generator.randint(-1, 3), gain_on=generator.random() < 0.5, gain=generator.random(),
                   phase_check=generator.random() < 0.5, music_detection=generator.random() < 0.5,
                   high_band=generator.random() < 0.5)
            changes += 1
            time.sleep(CHANGE_EVERY)
        change(suppression=99)
        if obs.call("GetSourceFilter", sourceName="talk", filterName="cleaner")["filterSettings"]["suppression"] != 3:
            sys.exit("record: a level of 99 was not clamped to 3")
        slowest = obs.slowest
        path = pathlib.Path(obs.call("StopRecord")["outputPath"])
        obs.wait_for("the end of the recording", lambda: not obs.call("GetRecordStatus")["outputActive"])
        print(f"{changes} changes of settings while recording")
    log = obs.log()
    for line in log.splitlines():
        if "audio_filter" in line or "buffering," in line or "lagging" in line:
            print(line)
    if "suppression 99 is out of range (-1 to 3): 3 is used" not in log:
        sys.exit("record: a level of 99 was not logged")
    return read(path), switched_on, changes_start, slowest


def main():
    folder = pathlib.Path(sys.argv[1])
    speech = read(folder / "speech.wav")
    talk = write_talk(folder / "noisy.wav", speech)
    recording, switched_on, changes_start = record_undisturbed(folder)
    print(f"recorded {len(recording) / RATE:.1f} s")

    # Parts, with half a second between them for what the times of requests leave open.
    off = slice(0, int((switched_on - 0.5) * RATE))
    clean = slice(int((switched_on + SETTLING_SECONDS) * RATE), int((changes_start - 0.5) * RATE))
    lag = lag_of(recording[off], talk)
    clean_lag = lag_of(recording[clean], talk) - clean.start
    print(f"the recording starts at frame {lag} of the talk; by the part with suppression, at {clean_lag}")

    played = talk[lag:lag + len(recording)]
    failures = []
    if lag < 0 or len(played) < len(recording):
        failures.append("the recording reaches beyond the talk")
    if not numpy.array_equal(recording[off].astype("f4"), played[off].astype("f4")):
        failures.append("with everything off, the recording is not the talk to the bit")
    if abs(clean_lag - lag) > 1:
        failures.append("the delay changed when suppression was switched on")

    silent = list(pauses(speech[lag:], clean.start, clean.stop))
    before = level(numpy.concatenate([played[pause] for pause in silent]))
    after = level(numpy.concatenate([recording[pause] for pause in silent]))
    print(f"floor in {len(silent) / 10:.1f} s of pauses: {before:.1f} to {after:.1f} dBFS ({after - before:.1f} dB)")
    if after - before > -LOWEST_REDUCTION:
        failures.append(f"the floor is not {LOWEST_REDUCTION} dB lower")

    (zeros, where), (talk_zeros, _) = longest_zeros(recording), longest_zeros(played)
    print(f"longest run of zeros: {zeros} frames at {where / RATE:.3f} s, in the talk {talk_zeros}")
    if zeros > talk_zeros:
        failures.append("the recording has a longer run of zeros than the talk")
    sys.exit("\n".join("record: " + failure for failure in failures) or 0)


main()
