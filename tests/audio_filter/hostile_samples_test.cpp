/// Samples that no microphone makes, in every format through every chain: while they last nothing
/// breaks, and within a second of clean input the output is finite and in range again.

#include <gtest/gtest.h>

#include <cmath>

#include "filter_fixture.h"
#include "support/hostile_signals.h"
#include "support/seed.h"
#include "support/signals.h"

namespace {

class HostileSamples : public FilterTest {
protected:
    HostileSamples() {
        PR_LOG_ENABLE(false);
        std::mt19937 random = SeededRandom();
        // Enough for two stereo sources of 48000 Hz, 1.2 s.
        speech = NoisySpeech(random, 480 * 2 * 2 * 120, 48000.0);
    }

    /// Ten milliseconds of each source, through Process and, if it is handed back, ProcessResample.
    template <typename Sample>
    std::vector<Sample> Block(std::vector<Sample> samples,
                              const std::vector<AVSourceType>& sources) {
        std::vector<Sample> room(samples.size() + 1280);
        int bytes = ByteCount(samples);
        int code = filter->Process(BytesOf(samples), BytesOf(room), bytes, sources, param, 0);
        if (code == 9) {
            std::vector<Sample> handed(room.begin(),
                                       room.begin() + bytes / static_cast<int>(sizeof(Sample)));
            filter->SyncProcessDelay(BytesOf(handed), BytesOf(handed), bytes,
                                     {AV_SOURCE_MICROPHONE});
            code = filter->ProcessResample(BytesOf(handed), BytesOf(room), bytes,
                                           {AV_SOURCE_MICROPHONE}, param, 0);
        }
        EXPECT_TRUE(code == 0 || code == 12) << code;
        room.resize(static_cast<std::size_t>(bytes) / sizeof(Sample));
        return room;
    }

    template <typename Sample>
    void Recovers(const HostileSignal& hostile, int rate, int channels, SampleFmt fmt,
                  const std::vector<AVSourceType>& sources, bool gain) {
        std::vector<ProcessType> kinds = {AP_DENOISE, AP_PHASE_CHECK, AP_MIXING};
        if (gain) {
            kinds.push_back(AP_GAIN);
        }
        ASSERT_EQ(Start(rate, channels, fmt, kinds), 0);
        const std::size_t perBlock =
            static_cast<std::size_t>(rate / 100 * channels) * sources.size();
        const std::vector<Sample> clean = As<Sample>(speech);
        std::vector<Sample> block(perBlock);
        for (std::size_t n = 0; n < 60; ++n) {
            for (std::size_t i = 0; i < perBlock; ++i) {
                block[i] = Converted<Sample>(hostile.Sample(n * perBlock + i));
            }
            Block(block, sources);
        }
        for (std::size_t n = 0; n < 120; ++n) {
            const auto from = clean.begin() + static_cast<std::ptrdiff_t>(n * perBlock);
            const std::vector<Sample> result = Block(
                std::vector<Sample>(from, from + static_cast<std::ptrdiff_t>(perBlock)), sources);
            for (std::size_t i = 0; n >= 100 && i < result.size(); ++i) {
                const auto sample = static_cast<double>(result[i]);
                const double most = std::is_same_v<Sample, float> ? 1.0 : 32768.0;
                ASSERT_TRUE(std::abs(sample) <= most)
                    << hostile.name << " at " << rate << " Hz, " << channels << " channels, format "
                    << fmt << ", " << sources.size() << " sources: " << sample;
            }
        }
    }

    std::vector<float> speech;
};

TEST_F(HostileSamples, LeaveNoTraceAfterASecondOfSpeech) {
    const std::vector<AVSourceType> microphone = {AV_SOURCE_MICROPHONE};
    const std::vector<AVSourceType> two = {AV_SOURCE_MICROPHONE, AV_SOURCE_1};
    for (const HostileSignal& hostile : kHostileSignals) {
        for (const int rate : {8000, 44100, 48000}) {
            for (const int channels : {1, 2}) {
                for (const auto& sources : {microphone, two}) {
                    const bool gain = channels == 2;
                    Recovers<short>(hostile, rate, channels, SAMPLE_FMT_S16, sources, gain);
                    Recovers<float>(hostile, rate, channels, SAMPLE_FMT_FLT, sources, gain);
                    Recovers<short>(hostile, rate, channels, SAMPLE_FMT_S16P, sources, gain);
                    Recovers<float>(hostile, rate, channels, SAMPLE_FMT_FLTP, sources, gain);
                }
            }
        }
    }
}

TEST_F(HostileSamples, InThreeChannelsLeaveNoTraceEither) {
    for (const HostileSignal& hostile : kHostileSignals) {
        Recovers<short>(hostile, 32000, 3, SAMPLE_FMT_S16, {AV_SOURCE_MICROPHONE}, true);
        Recovers<float>(hostile, 32000, 3, SAMPLE_FMT_FLT, {AV_SOURCE_MICROPHONE}, true);
    }
}

}  // namespace
