"""The GIL, threads, forks, and the end of the interpreter."""

import ctypes
import faulthandler
import multiprocessing
import os
import subprocess
import sys
import threading

import numpy as np
import pytest

import audio_filter
from audio_filter import Stream
from audio_filter._library import NAME

libc = ctypes.CDLL(None)


@pytest.fixture(autouse=True)
def end_after_a_deadlock():
    faulthandler.dump_traceback_later(60, exit=True, file=sys.__stderr__)
    yield
    faulthandler.cancel_dump_traceback_later()


class BlockedInProcess:
    """A stream whose process(), in another thread, does not return from the library until release().

    The library calls back for each of two events, and each callback waits at a barrier for this thread. This thread
    passes the first one, and returns to Python while the other thread is on its way to the second one.
    """

    def __init__(self, stream, samples=np.zeros(960, "float32")):
        self.stream, self.finished = stream, False
        stream.process(np.zeros(960, "float32"))
        stream.mix, stream.gain = False, 0.5
        self._barrier = ctypes.create_string_buffer(64)
        assert libc.pthread_barrier_init(self._barrier, None, 2) == 0
        set_callback = ctypes.CDLL(NAME).audio_filter_set_event_callback
        assert set_callback(stream._handle, libc.pthread_barrier_wait, self._barrier) == 0

        def process():
            self.result = stream.process(samples)
            self.finished = True

        self._thread = threading.Thread(target=process)
        self._thread.start()
        libc.pthread_barrier_wait(self._barrier)

    def release(self):
        libc.pthread_barrier_wait(self._barrier)
        self._thread.join()


def test_the_gil_is_released_while_a_block_is_processed():
    blocked = BlockedInProcess(Stream())
    assert not blocked.finished  # reached only where process() has released the GIL
    blocked.release()
    assert blocked.finished


def test_settings_reports_and_close_do_not_wait_for_a_block_that_is_processed():
    blocked = BlockedInProcess(Stream())
    stream = blocked.stream
    stream.suppression = 3
    assert stream.suppression == 3 and stream.reduction >= 0 and not stream.music and stream.events() == []
    stream.close()
    assert not blocked.finished
    blocked.release()
    assert blocked.finished and stream.closed


def test_the_shape_of_an_array_may_change_while_it_is_processed():
    samples = np.linspace(-0.1, 0.1, 400000, dtype="float32")[:, np.newaxis].copy()
    stream = Stream(suppression=None, mix=False, gain=0.5)
    stream.process(np.zeros(960, "float32"))
    expected = stream.process(samples)
    blocked = BlockedInProcess(Stream(suppression=None), samples)
    samples.shape = (1, 400000)
    with pytest.raises(ValueError):
        samples.resize(10)
    blocked.release()
    assert np.array_equal(blocked.result[1000:], expected[1000:])


def test_after_a_fork_a_stream_that_was_idle_goes_on_and_one_that_was_in_use_is_closed(noise):
    idle, blocked = Stream(48000, 2), BlockedInProcess(Stream())
    before = idle.process(noise[:24000])
    context = multiprocessing.get_context("fork")
    mine, childs = context.Pipe()

    def child():
        childs.send((blocked.stream.closed, idle.process(noise[24000:])))

    process = context.Process(target=child)
    process.start()
    closed, after = mine.recv()
    process.join()
    assert closed and not blocked.stream.closed and process.exitcode == 0
    assert np.array_equal(np.concatenate([before, after]), Stream(48000, 2).process(noise))
    blocked.release()


def test_8_threads_with_a_stream_each_give_the_samples_of_one_thread(noise):
    expected = Stream(48000, 2).process(noise)
    results = [None] * 8

    def run(index):
        results[index] = Stream(48000, 2).process(noise)

    threads = [threading.Thread(target=run, args=(index,)) for index in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert all(np.array_equal(result, expected) for result in results)


def test_threads_that_use_and_close_one_stream_end_in_order_or_with_the_stream_closed():
    silence = np.zeros((200, 2), "float32")
    for _ in range(5):
        stream, errors = Stream(48000, 2), []

        def run(call):
            try:
                for _ in range(50):
                    call()
            except audio_filter.InvalidArgument as error:
                errors.append(str(error))

        calls = (lambda: stream.process(silence), stream.drain, stream.reset, stream.events,
                 lambda: setattr(stream, "gain", 0.5), lambda: stream.reduction)
        threads = [threading.Thread(target=run, args=(call,)) for call in calls]
        for thread in threads:
            thread.start()
        stream.close()
        for thread in threads:
            thread.join()
        assert set(errors) <= {"the stream is closed"}


def run_python(code, **environment):
    return subprocess.run([sys.executable, "-W", "error", "-c", code], env={**os.environ, **environment},
                          capture_output=True, text=True)


def test_a_stream_that_is_open_when_the_interpreter_ends_is_no_error():
    ended = run_python("import audio_filter, builtins, sys\n"
                       "stream = audio_filter.Stream()\n"
                       "sys.kept, builtins.kept = audio_filter.Stream(), audio_filter.Stream()\n")
    assert (ended.returncode, ended.stdout, ended.stderr) == (0, "", "")


def test_a_daemon_thread_that_processes_when_the_interpreter_ends_is_no_error():
    ended = run_python("import audio_filter, numpy, threading\n"
                       "entered = threading.Event()\n"
                       "def run():\n"
                       "    stream = audio_filter.Stream(48000, 8)\n"
                       "    while True:\n"
                       "        entered.set()\n"
                       "        stream.process(numpy.zeros((48000, 8), 'float32'))\n"
                       "threading.Thread(target=run, daemon=True).start()\n"
                       "entered.wait()\n")
    assert (ended.returncode, ended.stdout, ended.stderr) == (0, "", "")


def build(folder, source):
    subprocess.run(["g++", "-shared", "-fPIC", "-x", "c++", "-", "-o", folder / NAME], input=source, text=True, check=True)


def test_a_library_that_is_missing_is_an_import_error_that_names_its_package():
    ended = run_python("import ctypes, numpy\n"
                       "load = ctypes.CDLL\n"
                       "ctypes.CDLL = lambda name: load('/nowhere/' + name)  # even where the library is installed\n"
                       "import audio_filter\n")
    assert ended.returncode == 1
    assert "ImportError: audio_filter needs libaudiofilter.so.0 (Debian package libaudio-filter0)" in ended.stderr


def test_another_file_of_that_name_is_an_import_error(tmp_path):
    (tmp_path / NAME).write_bytes(b"no library")
    assert "ImportError: audio_filter needs libaudiofilter" in run_python(
        "import audio_filter", LD_LIBRARY_PATH=str(tmp_path)).stderr
    build(tmp_path, "")
    assert "ImportError: audio_filter cannot use libaudiofilter" in run_python(
        "import audio_filter", LD_LIBRARY_PATH=str(tmp_path)).stderr


@pytest.mark.parametrize("version", [99, 10000])
def test_libraries_of_version_0_0_99_and_1_0_0_are_an_import_error(tmp_path, version):
    from audio_filter._library import _FUNCTIONS
    functions = "".join(f"void audio_filter_{name}() {{}}\n" for name in _FUNCTIONS if not name.startswith("version"))
    build(tmp_path, f'extern "C" {{ {functions} unsigned audio_filter_version() {{ return {version}; }}\n'
                    'const char* audio_filter_version_string() { return "9.9"; } }')
    ended = run_python("import audio_filter", LD_LIBRARY_PATH=str(tmp_path))
    assert "ImportError: audio_filter needs libaudiofilter.so.0 of version 0.1 or a later 0.x, and not 9.9" in ended.stderr
