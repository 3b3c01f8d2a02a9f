#include <obs.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

/// Sends a recording through a filter in libobs, in stereo at 48000 Hz and in OBS's blocks, and prints the user time in ms for
/// each second of audio.
///
/// Usage: obs_pull RECORDING ROUNDS [MODULE DATA FILTER SETTINGS]
///   RECORDING  mono floats at 48000 Hz
///   SETTINGS   JSON

namespace {

constexpr std::uint32_t kRate = 48000;
constexpr std::size_t kBlockFrames = AUDIO_OUTPUT_FRAMES;

void IgnoreLog(int /*level*/, const char* /*format*/, va_list /*arguments*/, void* /*unused*/) {}

/// Checks that the filter is in the way of the audio.
void CountFrames(void* frames, obs_source_t* /*source*/, const audio_data* audio, bool /*muted*/) {
    *static_cast<std::uint64_t*>(frames) += audio->frames;
}

double UserMs() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return 1e3 * static_cast<double>(usage.ru_utime.tv_sec) +
           1e-3 * static_cast<double>(usage.ru_utime.tv_usec);
}

void RegisterInput() {
    static int data = 0;
    obs_source_info info = {};
    info.id = "recording";
    info.type = OBS_SOURCE_TYPE_INPUT;
    info.output_flags = OBS_SOURCE_AUDIO;
    info.get_name = [](void*) { return "Recording"; };
    info.create = [](obs_data_t*, obs_source_t*) -> void* { return &data; };
    info.destroy = [](void*) {};
    obs_register_source(&info);
}

std::vector<float> Read(const char* path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    std::vector<float> samples(bytes.size() / sizeof(float));
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
    return samples;
}

[[noreturn]] void Fail(const char* message) {
    std::fprintf(stderr, "obs_pull: %s\n", message);
    std::_Exit(1);
}

obs_source_t* AddFilter(obs_source_t* source, char** arguments) {
    obs_module_t* module = nullptr;
    if (obs_open_module(&module, arguments[0], arguments[1]) != MODULE_SUCCESS ||
        !obs_init_module(module)) {
        Fail("the module does not load");
    }
    obs_data_t* settings = obs_data_create_from_json(arguments[3]);
    obs_source_t* filter = obs_source_create(arguments[2], "filter", settings, nullptr);
    obs_data_release(settings);
    if (obs_obj_get_data(filter) == nullptr) {
        Fail("the filter does not start");
    }
    obs_source_filter_add(source, filter);
    return filter;
}

void Play(obs_source_t* source, const std::vector<float>& samples, std::uint64_t& time) {
    for (std::size_t start = 0; start + kBlockFrames <= samples.size(); start += kBlockFrames) {
        obs_source_audio audio = {};
        audio.data[0] = reinterpret_cast<const std::uint8_t*>(samples.data() + start);
        audio.data[1] = audio.data[0];
        audio.frames = kBlockFrames;
        audio.speakers = SPEAKERS_STEREO;
        audio.format = AUDIO_FORMAT_FLOAT_PLANAR;
        audio.samples_per_sec = kRate;
        audio.timestamp = time;
        obs_source_output_audio(source, &audio);
        time += audio_frames_to_ns(kRate, kBlockFrames);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 && argc != 7) {
        Fail("RECORDING ROUNDS [MODULE DATA FILTER SETTINGS]");
    }
    base_set_log_handler(IgnoreLog, nullptr);
    const obs_audio_info format = {.samples_per_sec = kRate, .speakers = SPEAKERS_STEREO};
    if (!obs_startup("en-US", nullptr, nullptr) || !obs_reset_audio(&format)) {
        Fail("OBS does not start");
    }
    RegisterInput();
    obs_source_t* source = obs_source_create("recording", "recording", nullptr, nullptr);
    obs_source_t* filter = argc == 7 ? AddFilter(source, argv + 3) : nullptr;
    std::uint64_t frames = 0;
    obs_source_add_audio_capture_callback(source, CountFrames, &frames);

    const std::vector<float> samples = Read(argv[1]);
    const int rounds = std::atoi(argv[2]);
    std::uint64_t time = 1'000'000'000;
    Play(source, samples, time);
    frames = 0;
    const double start = UserMs();
    for (int round = 0; round < rounds; ++round) {
        Play(source, samples, time);
    }
    const double used = UserMs() - start;
    if (frames == 0) {
        Fail("no audio came out");
    }
    std::printf("%.4f\n", used / (static_cast<double>(frames) / kRate));

    obs_source_remove_audio_capture_callback(source, CountFrames, &frames);
    obs_source_release(filter);
    obs_source_release(source);
    obs_shutdown();
    return 0;
}
