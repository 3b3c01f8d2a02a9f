#include "tests/plugins/obs/obs_host.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <thread>
#include <utility>

namespace {

obs_source_info filterInfo = {};
std::string modulePath;

std::atomic<int> instances = 0;  ///< of the test's input and of the filter

std::mutex logLock;
std::string logText;

void Log(int /*level*/, const char* format, va_list arguments, void* /*unused*/) {
    std::array<char, 1024> line = {};
    std::vsnprintf(line.data(), line.size(), format, arguments);
    const std::lock_guard hold(logLock);
    logText += line.data();
    logText += '\n';
}

/// A source that plays what the tests send.
obs_source_info InputInfo() {
    static int data = 0;
    obs_source_info info = {};
    info.id = "test_input";
    info.type = OBS_SOURCE_TYPE_INPUT;
    info.output_flags = OBS_SOURCE_AUDIO;
    info.get_name = [](void*) { return "Test input"; };
    info.create = [](obs_data_t*, obs_source_t*) -> void* {
        ++instances;
        return &data;
    };
    info.destroy = [](void*) { --instances; };
    return info;
}

}  // namespace

/// Takes a copy of what the plug-in registers, and counts its instances.
void obs_register_source_s(const obs_source_info* info, std::size_t size) {
    obs_source_info counted = *info;
    if (std::strcmp(info->id, "audio_filter") == 0) {
        filterInfo = *info;
        counted.create = [](obs_data_t* settings, obs_source_t* source) {
            ++instances;
            return filterInfo.create(settings, source);
        };
        counted.destroy = [](void* filter) {
            filterInfo.destroy(filter);
            --instances;
        };
    }
    using Register = void(const obs_source_info*, std::size_t);
    reinterpret_cast<Register*>(dlsym(RTLD_NEXT, "obs_register_source_s"))(&counted, size);
}

namespace audio_filter::obs {

std::string TakeLog() {
    const std::lock_guard hold(logLock);
    return std::exchange(logText, {});
}

std::string ModulePath() {
    return modulePath;
}

const obs_source_info& FilterInfo() {
    return filterInfo;
}

bool StartObs(const std::string& folder) {
    base_set_log_handler(Log, nullptr);
    modulePath = folder + "/bin/64bit/audio-filter.so";
    obs_module_t* module = nullptr;
    if (!obs_startup("en-US", nullptr, nullptr) ||
        obs_open_module(&module, modulePath.c_str(), (folder + "/data").c_str()) !=
            MODULE_SUCCESS ||
        !obs_init_module(module)) {
        return false;
    }
    const obs_source_info input = InputInfo();
    obs_register_source(&input);
    return filterInfo.id != nullptr;
}

long StopObs() {
    obs_shutdown();
    return bnum_allocs();
}

void WaitForDestruction() {
    constexpr int kTries = 10000;
    for (int i = 0; i < kTries && instances > 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(instances, 0);
    obs_wait_for_destroy_queue();
}

void SetAudio(std::uint32_t rate, speaker_layout speakers) {
    const obs_audio_info info = {.samples_per_sec = rate, .speakers = speakers};
    ASSERT_TRUE(obs_reset_audio(&info));
}

FilteredSource::FilteredSource(const char* settings)
    : mSource(obs_source_create("test_input", "microphone", nullptr, nullptr)) {
    obs_data_t* data = obs_data_create_from_json(settings);
    mFilter = obs_source_create("audio_filter", "cleaner", data, nullptr);
    obs_data_release(data);
    obs_source_filter_add(mSource, mFilter);
    obs_source_add_audio_capture_callback(mSource, OnAudio, this);
}

FilteredSource::~FilteredSource() {
    obs_source_remove_audio_capture_callback(mSource, OnAudio, this);
    obs_source_filter_remove(mSource, mFilter);
    obs_source_release(mFilter);
    obs_source_release(mSource);
}

Block FilteredSource::Play(const Channels& in, std::uint64_t timestamp) {
    obs_source_audio audio = {};
    for (std::size_t channel = 0; channel < in.size(); ++channel) {
        audio.data[channel] = reinterpret_cast<const std::uint8_t*>(in[channel].data());
    }
    const audio_output_info* info = audio_output_get_info(obs_get_audio());
    audio.frames = static_cast<std::uint32_t>(in[0].size());
    audio.speakers = info->speakers;
    audio.format = AUDIO_FORMAT_FLOAT_PLANAR;
    audio.samples_per_sec = info->samples_per_sec;
    audio.timestamp = timestamp;
    mBlocks.clear();
    obs_source_output_audio(mSource, &audio);
    EXPECT_EQ(mBlocks.size(), 1U);
    return mBlocks.empty() ? Block{} : mBlocks[0];
}

Channels FilteredSource::PlayAll(const Channels& in, std::size_t frames) {
    Channels out(in.size());
    const std::uint32_t rate = audio_output_get_sample_rate(obs_get_audio());
    for (std::size_t start = 0; start < in[0].size(); start += frames) {
        const std::size_t end = std::min(start + frames, in[0].size());
        Channels block;
        for (const std::vector<float>& samples : in) {
            block.emplace_back(samples.data() + start, samples.data() + end);
        }
        const Block cleaned = Play(block, mTime);
        mTime += audio_frames_to_ns(rate, end - start);
        for (std::size_t channel = 0; channel < cleaned.samples.size(); ++channel) {
            out[channel].insert(out[channel].end(), cleaned.samples[channel].begin(),
                                cleaned.samples[channel].end());
        }
    }
    return out;
}

Block FilteredSource::Call(const Channels& in, std::uint64_t timestamp) {
    Block block = {in, timestamp};
    obs_audio_data audio = {};
    for (std::size_t channel = 0; channel < in.size(); ++channel) {
        audio.data[channel] = reinterpret_cast<std::uint8_t*>(block.samples[channel].data());
    }
    audio.frames = static_cast<std::uint32_t>(in.empty() ? 0 : in[0].size());
    audio.timestamp = timestamp;
    const obs_audio_data* returned = FilterInfo().filter_audio(obs_obj_get_data(mFilter), &audio);
    EXPECT_EQ(returned, &audio);
    EXPECT_EQ(returned->frames, in.empty() ? 0 : in[0].size());
    block.timestamp = returned->timestamp;
    return block;
}

void FilteredSource::Update(const char* settings) {
    obs_data_t* data = obs_data_create_from_json(settings);
    obs_source_update(mFilter, data);
    obs_data_release(data);
}

void FilteredSource::OnAudio(void* self, obs_source_t* /*source*/, const audio_data* audio,
                             bool /*muted*/) {
    Block block = {{}, audio->timestamp};
    for (std::size_t channel = 0; channel < audio_output_get_channels(obs_get_audio()); ++channel) {
        const auto* samples = reinterpret_cast<const float*>(audio->data[channel]);
        block.samples.emplace_back(samples, samples + audio->frames);
    }
    static_cast<FilteredSource*>(self)->mBlocks.push_back(block);
}

}  // namespace audio_filter::obs
