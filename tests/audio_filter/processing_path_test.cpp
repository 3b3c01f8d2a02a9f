/// Counts the allocations and blocking calls of a processing call. It replaces functions of the C
/// library and is therefore a separate executable.

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "common/result_code.h"
#include "support/allocations.h"
#include "support/posix/lock_calls.h"
#include "support/signals.h"

namespace {

constexpr std::size_t kBlocks = 500;
constexpr std::size_t kSpeechBlocks = 100;  ///< a second of speech, repeated

struct Counts {
    std::size_t allocations = 0;
    int locks = 0;
    int waits = 0;
    int calls = 0;
};

/// Five seconds of blocks of 10 ms with everything on, of which music detection analyses the last, and
/// the counts of the calls.
Counts FiveSeconds(int rate, int channels, SampleFmt fmt, std::vector<AVSourceType> sources) {
    const auto filter = std::make_unique<AudioFilter>();
    ProcessSwitchMap switches = {
        {AP_DENOISE, true}, {AP_PHASE_CHECK, true}, {AP_GAIN, true}, {AP_MIXING, true}};
    filter->Init(rate, channels, fmt, &switches);
    std::mt19937 random(3);
    const auto samples = static_cast<std::size_t>(rate / 100 * channels) * sources.size();
    const std::vector<float> signal = NoisySpeech(random, samples * kSpeechBlocks, rate);
    const std::vector<short> shorts = As<short>(signal);
    const std::size_t width = fmt == SAMPLE_FMT_S16 ? 2 : 4;
    const char* bytes = width == 2 ? reinterpret_cast<const char*>(shorts.data())
                                   : reinterpret_cast<const char*>(signal.data());
    std::vector<char> in(samples * width);
    std::vector<char> out(samples * width + 320 * 8);
    AVParam param;
    Counts counts;
    for (std::size_t block = 0; block < kBlocks; ++block) {
        std::copy_n(bytes + block % kSpeechBlocks * in.size(), in.size(), in.begin());
        // The caller makes the source list, so it is made before counting.
        std::vector<AVSourceType> list = sources;
        std::vector<AVSourceType> one = {AV_SOURCE_MICROPHONE};
        int size = static_cast<int>(in.size());
        const LockCalls calls;
        Allocations allocations;
        const int code = filter->Process(in.data(), out.data(), size, std::move(list), param, 0);
        if (code == RESULT_NEEDS_RESAMPLING) {
            filter->ProcessResample(in.data(), out.data(), size, std::move(one), param, 0);
        }
        counts.allocations += allocations.Stop();
        counts.locks += calls.Locks();
        counts.waits += calls.Waits();
        counts.calls += code == RESULT_NEEDS_RESAMPLING ? 2 : 1;
    }
    return counts;
}

TEST(ProcessingPath, AllocatesNothingAndBlocksOnlyOnItsOwnLock) {
    const std::vector<AVSourceType> microphone = {AV_SOURCE_MICROPHONE};
    const std::vector<AVSourceType> three = {AV_SOURCE_MICROPHONE, AV_SOURCE_1, AV_SOURCE_2};
    for (const int rate : {8000, 16000, 32000, 44100, 48000}) {
        for (const int channels : {1, 2}) {
            for (const SampleFmt fmt : {SAMPLE_FMT_S16, SAMPLE_FMT_FLT}) {
                for (const auto& sources : {microphone, three}) {
                    const Counts counts = FiveSeconds(rate, channels, fmt, sources);
                    const std::string stream = std::to_string(rate) + " Hz, " +
                                               std::to_string(channels) + " channels, format " +
                                               std::to_string(fmt);
                    EXPECT_EQ(counts.allocations, 0U) << stream;
                    EXPECT_EQ(counts.locks, counts.calls) << stream;
                    EXPECT_EQ(counts.waits, 0) << stream;
                }
            }
        }
    }
}

}  // namespace
