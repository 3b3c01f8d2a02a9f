#include "units/suppressor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "support/seed.h"
#include "units/suppressor_block.h"
#include "units/webrtc_ns.h"

using namespace audio_filter::internal;

namespace {

template <typename Sample>
using Band = std::array<Sample, kBandSamples>;

std::unique_ptr<Suppressor> ReadySuppressor(int rate, int level = 3) {
    std::unique_ptr<Suppressor> suppressor = Suppressor::Create();
    EXPECT_TRUE(suppressor->Init(rate));
    EXPECT_TRUE(suppressor->SetLevel(level));
    return suppressor;
}

Band<float> Noise(std::mt19937& random, float level) {
    Band<float> band;
    for (float& sample : band) {
        sample = std::uniform_real_distribution<float>(-level, level)(random);
    }
    return band;
}

TEST(Suppressor, Takes8000_16000_32000HzAndRefuses48000AndTheRest) {
    const std::unique_ptr<Suppressor> suppressor = Suppressor::Create();
    for (const int rate : {8000, 16000, 32000}) {
        EXPECT_TRUE(suppressor->Init(rate)) << rate;
    }
    for (const int rate : {48000, 44100, 0, 1, -8000, 7999}) {
        EXPECT_FALSE(suppressor->Init(rate)) << rate;
    }
}

TEST(Suppressor, TakesLevels0To3AndInitResetsTheLevelTo0) {
    const std::unique_ptr<Suppressor> suppressor = ReadySuppressor(32000);
    for (int level = -2; level < 7; ++level) {
        EXPECT_EQ(suppressor->SetLevel(level), level >= 0 && level <= 3) << level;
    }
    EXPECT_EQ(suppressor->mLevel, 3);
    EXPECT_TRUE(suppressor->Init(32000));
    EXPECT_EQ(suppressor->mLevel, 0);
}

/// The window weights each place of the analysis buffer differently. At every place, values around
/// the one whose weighted square underflows must give the suppressor's own decision, which shows in
/// its high band: only an early exit delays it without changing it.
void DetectsTheEarlyExitOfUnderflowingBlocks(int rate) {
    const std::size_t fresh = rate == 8000 ? 80 : 160;
    const std::size_t old = rate == 8000 ? 48 : 96;
    AnalysisWindow weights;
    weights.Reset(rate);
    int early = 0;
    int normal = 0;
    for (std::size_t place = 1; place < old + fresh; ++place) {
        for (int step = -2; step <= 2; ++step) {
            float value = std::ldexp(1.0F, -75) / weights.mWeights[place];
            for (int i = 0; i < std::abs(step); ++i) {
                value = std::nextafter(value, step < 0 ? 0.0F : 1.0F);
            }
            const std::unique_ptr<Suppressor> suppressor = ReadySuppressor(rate);
            AnalysisWindow twin;
            twin.Reset(rate);
            std::mt19937 random(1);
            Band<float> high = {};
            Band<float> previous = {};
            Band<float> out = {};
            bool silent = false;
            const auto run = [&](const Band<float>& low) {
                previous = high;
                high = Noise(random, 1000.0F);
                Band<float> lowOut = {};
                suppressor->Run(low.data(), high.data(), lowOut.data(), out.data());
                silent = twin.IsSilentAfter(low.data());
            };
            for (int block = 0; block < 6; ++block) {
                run(Noise(random, 1000.0F));
            }
            run({});
            run({});
            Band<float> low = {};
            low[place >= old ? place - old : fresh - old + place] = value;
            run(low);
            if (place < old) {
                run({});
            }
            bool delayedOnly = true;
            for (std::size_t i = 0; i < fresh; ++i) {
                delayedOnly &= out[i] == (i < old ? previous[fresh - old + i] : high[i - old]);
            }
            ASSERT_EQ(silent, delayedOnly) << "place " << place << ", step " << step;
            early += delayedOnly ? 1 : 0;
            normal += delayedOnly ? 0 : 1;
        }
    }
    EXPECT_GT(early, 100);
    EXPECT_GT(normal, 100);
}

TEST(Suppressor, DetectsTheEarlyExitOfUnderflowingBlocksAt32000Hz) {
    DetectsTheEarlyExitOfUnderflowingBlocks(32000);
}
TEST(Suppressor, DetectsTheEarlyExitOfUnderflowingBlocksAt16000Hz) {
    DetectsTheEarlyExitOfUnderflowingBlocks(16000);
}
TEST(Suppressor, DetectsTheEarlyExitOfUnderflowingBlocksAt8000Hz) {
    DetectsTheEarlyExitOfUnderflowingBlocks(8000);
}

TEST(Suppressor, AnEarlyExitOfAFloatBlockReturnsTheHighBandOf96SamplesAgo) {
    const std::unique_ptr<Suppressor> suppressor = ReadySuppressor(32000);
    std::mt19937 random = SeededRandom();
    const Band<float> silence = {};
    // Below full scale, because the package limits the band to 32767 / 32768.
    const Band<float> first = Noise(random, 0.9F);
    const Band<float> second = Noise(random, 0.9F);
    Band<float> low;
    Band<float> out;
    suppressor->Process(silence.data(), first.data(), low.data(), out.data());
    suppressor->Process(silence.data(), second.data(), low.data(), out.data());
    EXPECT_EQ(low, silence);
    for (std::size_t i = 0; i < kBandSamples; ++i) {
        ASSERT_EQ(out[i], i < 96 ? first[64 + i] : second[i - 96]) << i;
    }
}

TEST(Suppressor, AFloatBlockWithoutAnEarlyExitHasAHighBandOfExactly0) {
    const std::unique_ptr<Suppressor> suppressor = ReadySuppressor(32000);
    std::mt19937 random = SeededRandom();
    for (int block = 0; block < 50; ++block) {
        const Band<float> low = Noise(random, 1.0F);
        const Band<float> high = Noise(random, 1.0F);
        Band<float> lowOut;
        Band<float> highOut;
        suppressor->Process(low.data(), high.data(), lowOut.data(), highOut.data());
        for (std::size_t i = 0; i < kBandSamples; ++i) {
            ASSERT_EQ(highOut[i], 0.0F);
            ASSERT_FALSE(std::signbit(highOut[i]));
            ASSERT_LE(std::abs(lowOut[i]), 1.0F);
        }
    }
}

TEST(Suppressor, TheFloatLowBandIsTheSuppressorsResultOn32768TimesTheInput) {
    const std::unique_ptr<Suppressor> suppressor = ReadySuppressor(16000, 1);
    NsHandleT* bare = WebRtcNs_Create();
    WebRtcNs_Init(bare, 16000);
    WebRtcNs_set_policy(bare, 1);
    std::mt19937 random = SeededRandom();
    for (int block = 0; block < 100; ++block) {
        const Band<float> low = Noise(random, block % 20 < 10 ? 0.01F : 0.9F);
        const Band<float> high = Noise(random, 0.1F);
        Band<float> lowOut;
        Band<float> highOut;
        suppressor->Process(low.data(), high.data(), lowOut.data(), highOut.data());
        Band<float> scaled[2] = {low, high};
        for (Band<float>& band : scaled) {
            std::for_each(band.begin(), band.end(), [](float& sample) { sample *= 32768.0F; });
        }
        Band<float> result[2] = {};
        const float* in[2] = {scaled[0].data(), scaled[1].data()};
        float* out[2] = {result[0].data(), result[1].data()};
        WebRtcNs_Analyze(bare, in[0]);
        WebRtcNs_Process(bare, in, 2, out);
        for (std::size_t i = 0; i < kBandSamples; ++i) {
            ASSERT_EQ(lowOut[i], result[0][i] / 32768.0F) << block;
        }
    }
    WebRtcNs_Free(bare);
}

TEST(Suppressor, At8000HzSamplesFrom80OnComeOutAsZeros) {
    const std::unique_ptr<Suppressor> suppressor = ReadySuppressor(8000);
    std::mt19937 random = SeededRandom();
    for (int block = 0; block < 10; ++block) {
        const Band<float> low = Noise(random, 1.0F);
        Band<float> lowOut;
        Band<float> highOut;
        lowOut.fill(7.0F);
        highOut.fill(7.0F);
        suppressor->Process(low.data(), low.data(), lowOut.data(), highOut.data());
        EXPECT_TRUE(
            std::all_of(lowOut.begin() + 80, lowOut.end(), [](float s) { return s == 0.0F; }));
        EXPECT_TRUE(std::all_of(highOut.begin(), highOut.end(), [](float s) { return s == 0.0F; }));
        Band<short> s16;
        s16.fill(1000);
        Band<short> s16Low;
        Band<short> s16High;
        s16Low.fill(7);
        s16High.fill(7);
        suppressor->Process(s16.data(), s16.data(), s16Low.data(), s16High.data());
        EXPECT_TRUE(std::all_of(s16Low.begin() + 80, s16Low.end(), [](short s) { return s == 0; }));
        EXPECT_TRUE(
            std::all_of(s16High.begin() + 80, s16High.end(), [](short s) { return s == 0; }));
    }
}

TEST(Suppressor, ABlockThatOverflowsItYieldsZerosAndRestartsIt) {
    const std::unique_ptr<Suppressor> suppressor = ReadySuppressor(32000, 2);
    const std::unique_ptr<Suppressor> fresh = ReadySuppressor(32000, 2);
    std::mt19937 random = SeededRandom();
    Band<float> lowOut;
    Band<float> highOut;
    const Band<float> silence = {};
    for (const float huge : {1e20F, 1e30F, 3.4e38F}) {
        Band<float> low = Noise(random, 0.5F);
        suppressor->Process(low.data(), silence.data(), lowOut.data(), highOut.data());
        low.fill(huge);
        int blocks = 0;
        do {
            suppressor->Process(low.data(), silence.data(), lowOut.data(), highOut.data());
            ASSERT_LT(++blocks, 4);
        } while (lowOut != silence);
        fresh->Init(32000);
        fresh->SetLevel(2);
        for (int block = 0; block < 100; ++block) {
            low = Noise(random, 0.5F);
            Band<float> expected;
            Band<float> expectedHigh;
            suppressor->Process(low.data(), silence.data(), lowOut.data(), highOut.data());
            fresh->Process(low.data(), silence.data(), expected.data(), expectedHigh.data());
            ASSERT_EQ(lowOut, expected) << huge << ", block " << block;
        }
    }
}

TEST(SuppressorBands, SixteenBitSplitAndMergeAreThePackagedFilters) {
    std::mt19937 random = SeededRandom();
    std::array<std::array<std::int32_t, 6>, 8> m = {};
    for (int block = 0; block < 20; ++block) {
        std::array<short, kBlockSamples> in;
        for (short& sample : in) {
            sample = static_cast<short>(RandomInt(random, -32768, 32767));
        }
        Band<short> low, high, bareLow, bareHigh;
        std::array<short, kBlockSamples> out, bareOut;
        SplitBands(in.data(), low.data(), high.data(), m[0].data(), m[1].data());
        MergeBands(low.data(), high.data(), out.data(), m[2].data(), m[3].data());
        WebRtcSpl_AnalysisQMF(in.data(), 320, bareLow.data(), bareHigh.data(), m[4].data(),
                              m[5].data());
        WebRtcSpl_SynthesisQMF(bareLow.data(), bareHigh.data(), 160, bareOut.data(), m[6].data(),
                               m[7].data());
        ASSERT_EQ(low, bareLow);
        ASSERT_EQ(high, bareHigh);
        ASSERT_EQ(out, bareOut);
    }
}

}  // namespace
