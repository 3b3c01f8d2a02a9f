/// Hostile samples in every format through every chain: the calls succeed, and after a second of
/// speech the output is finite, in range and audible again.

#include <gtest/gtest.h>

#include <cmath>

#include "common/result_code.h"
#include "filter_fixture.h"
#include "support/hostile_signals.h"
#include "support/seed.h"
#include "support/signals.h"

namespace {

using Kinds = std::vector<ProcessType>;

const Kinds kAll = {AP_DENOISE, AP_PHASE_CHECK, AP_MIXING, AP_GAIN};
const Kinds kWithoutGain = {AP_DENOISE, AP_PHASE_CHECK, AP_MIXING};
const Kinds kWithoutDenoise = {AP_PHASE_CHECK, AP_MIXING, AP_GAIN};

/// The suppressor outputs silence for planar samples, hostile or not.
bool IsSilenced(SampleFmt fmt, const Kinds& kinds) {
    return (fmt == SAMPLE_FMT_S16P || fmt == SAMPLE_FMT_FLTP) && kinds != kWithoutDenoise;
}

class HostileSamples : public FilterTest {
protected:
    HostileSamples() {
        PR_LOG_ENABLE(false);
        std::mt19937 random = SeededRandom();
        // Enough for two sources of two channels at 48000 Hz, or of three at 32000, for 1.2 s.
        floats = NoisySpeech(random, 480 * 2 * 2 * 120, 48000.0);
        shorts = As<short>(floats);
    }

    template <typename Sample>
    const std::vector<Sample>& Speech() const {
        if constexpr (std::is_same_v<Sample, short>) {
            return shorts;
        } else {
            return floats;
        }
    }

    /// 10 ms of each source through Process and, after a hand-off, ProcessResample.
    template <typename Sample>
    std::vector<Sample> Block(std::vector<Sample> samples,
                              const std::vector<AVSourceType>& sources) {
        std::vector<Sample> room(samples.size() + 1280);
        int bytes = ByteCount(samples);
        int code = filter->Process(BytesOf(samples), BytesOf(room), bytes, sources, param, 0);
        if (code == RESULT_NEEDS_RESAMPLING) {
            std::vector<Sample> handed(room.begin(),
                                       room.begin() + bytes / static_cast<int>(sizeof(Sample)));
            filter->SyncProcessDelay(BytesOf(handed), BytesOf(handed), bytes,
                                     {AV_SOURCE_MICROPHONE});
            code = filter->ProcessResample(BytesOf(handed), BytesOf(room), bytes,
                                           {AV_SOURCE_MICROPHONE}, param, 0);
        }
        EXPECT_TRUE(code == RESULT_OK || code == RESULT_RESAMPLED) << code;
        room.resize(static_cast<std::size_t>(bytes) / sizeof(Sample));
        return room;
    }

    template <typename Sample>
    void Recovers(const HostileSignal& hostile, int rate, int channels, SampleFmt fmt,
                  const std::vector<AVSourceType>& sources, const Kinds& kinds) {
        ASSERT_EQ(Start(rate, channels, fmt, kinds), RESULT_OK);
        const std::size_t perBlock =
            static_cast<std::size_t>(rate / 100 * channels) * sources.size();
        const std::vector<Sample>& clean = Speech<Sample>();
        std::vector<Sample> block(perBlock);
        for (std::size_t n = 0; n < 30; ++n) {
            for (std::size_t i = 0; i < perBlock; ++i) {
                block[i] = Converted<Sample>(hostile.Sample(n * perBlock + i));
            }
            Block(block, sources);
        }
        double power = 0.0;
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
                power += sample * sample / (most * most);
            }
        }
        EXPECT_EQ(power > 1e-6, !IsSilenced(fmt, kinds))
            << hostile.name << " at " << rate << " Hz, " << channels << " channels, format " << fmt
            << ", " << sources.size() << " sources: power " << power;
    }

    std::vector<float> floats;
    std::vector<short> shorts;
};

TEST_F(HostileSamples, LeaveNoTraceAfterASecondOfSpeech) {
    const std::vector<AVSourceType> microphone = {AV_SOURCE_MICROPHONE};
    const std::vector<AVSourceType> two = {AV_SOURCE_MICROPHONE, AV_SOURCE_1};
    for (const HostileSignal& hostile : kHostileSignals) {
        for (const int rate : {8000, 44100, 48000}) {
            for (const int channels : {1, 2}) {
                for (const auto& sources : {microphone, two}) {
                    const Kinds& kinds = channels == 2 ? kAll : kWithoutGain;
                    Recovers<short>(hostile, rate, channels, SAMPLE_FMT_S16, sources, kinds);
                    Recovers<float>(hostile, rate, channels, SAMPLE_FMT_FLT, sources, kinds);
                }
            }
        }
    }
}

TEST_F(HostileSamples, InPlanarFormatsAndThreeChannelsLeaveTheCallsSuccessful) {
    const std::vector<AVSourceType> microphone = {AV_SOURCE_MICROPHONE};
    const std::vector<AVSourceType> two = {AV_SOURCE_MICROPHONE, AV_SOURCE_1};
    for (const HostileSignal& hostile : kHostileSignals) {
        for (const auto& sources : {microphone, two}) {
            for (const Kinds& kinds : {kAll, kWithoutDenoise}) {
                for (const int rate : {8000, 44100, 48000}) {
                    Recovers<short>(hostile, rate, 2, SAMPLE_FMT_S16P, sources, kinds);
                    Recovers<float>(hostile, rate, 2, SAMPLE_FMT_FLTP, sources, kinds);
                }
                Recovers<short>(hostile, 32000, 3, SAMPLE_FMT_S16, sources, kinds);
                Recovers<float>(hostile, 32000, 3, SAMPLE_FMT_FLT, sources, kinds);
            }
        }
    }
}

}  // namespace
