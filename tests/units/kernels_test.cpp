#include "units/kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <limits>
#include <random>
#include <vector>

#include "support/bytes.h"
#include "support/seed.h"
#include "units/plain_kernels.h"

using namespace audio_filter::internal;

namespace {

/// Longer than two of the widest vectors, with every remainder.
constexpr std::size_t kLongest = 70;

/// Samples `shift` bytes past an aligned address, between guard bytes.
template <typename Sample>
class Unaligned {
public:
    Unaligned(const std::vector<Sample>& samples, std::size_t shift)
        : mShift(kMargin + shift),
          mSize(samples.size()),
          mBytes(mSize * sizeof(Sample) + 2 * kMargin + shift, 0x5A) {
        if (mSize > 0) {
            std::memcpy(mBytes.data() + mShift, samples.data(), mSize * sizeof(Sample));
        }
    }

    PcmView<Sample> View() { return {mBytes.data() + mShift, mSize}; }
    PcmView<const Sample> Source() const { return {mBytes.data() + mShift, mSize}; }
    bool operator==(const Unaligned& other) const { return mBytes == other.mBytes; }

private:
    static constexpr std::size_t kMargin = 64;

    std::size_t mShift;
    std::size_t mSize;
    std::vector<char> mBytes;
};

/// Special floats, and the bounds of the kernels with their neighbours.
std::vector<float> SpecialFloats() {
    using Limits = std::numeric_limits<float>;
    std::vector<float> specials = {0.0F,
                                   Limits::denorm_min(),
                                   Limits::min(),
                                   std::nextafter(Limits::min(), 0.0F),
                                   Limits::max(),
                                   Limits::infinity(),
                                   Limits::quiet_NaN(),
                                   std::bit_cast<float>(0x7FC12345U),
                                   1e-30F,
                                   1.0F / 3.0F,
                                   32768.0F,
                                   65538.0F,
                                   65539.0F};
    for (const float bound : {0.016F, 0.25F, 0.3F, 0.5F, 1.0F}) {
        specials.insert(specials.end(),
                        {std::nextafter(bound, 0.0F), bound, std::nextafter(bound, 2.0F)});
    }
    const std::vector<float> positive = specials;
    for (const float value : positive) {
        specials.push_back(-value);
    }
    return specials;
}

/// Any 16-bit value; any 32 bits one time in four, else a float in -2..2 or a special one.
template <typename Sample>
std::vector<Sample> RandomSamples(std::mt19937& random, std::size_t size) {
    static const std::vector<float> specials = SpecialFloats();
    std::vector<Sample> samples(size);
    for (Sample& sample : samples) {
        if constexpr (sizeof(Sample) == 2) {
            // Small ones too, for the silence of the phase check.
            sample = static_cast<short>(RandomInt(random, -32768, 32767) >>
                                        (4 * RandomInt(random, 0, 3)));
        } else {
            const int choice = RandomInt(random, 0, 3);
            sample = choice == 0   ? std::bit_cast<float>(static_cast<std::uint32_t>(random()))
                     : choice == 1 ? specials[random() % specials.size()]
                                   : static_cast<float>(RandomInt(random, -2000, 2000)) /
                                         static_cast<float>(choice == 2 ? 1000 : 100'000);
        }
    }
    return samples;
}

std::vector<short> AllShorts() {
    std::vector<short> samples;
    for (int x = -32768; x <= 32767; ++x) {
        samples.push_back(static_cast<short>(x));
    }
    return samples;
}

std::vector<float> Gains() {
    return {1e-6F, 0.01F, 0.37F, 0.5F, 0.8F, 0.999F, 1.0F};
}

/// `visit(level, random, length, shift)` for every level of this machine, every length up to 70 and
/// every address modulo four.
template <typename Visit>
void AtEveryLevelLengthAndAddress(Visit visit) {
    std::mt19937 random = SeededRandom();
    for (const Kernels& level : KernelLevels()) {
        for (std::size_t length = 0; length <= kLongest; ++length) {
            for (std::size_t shift = 0; shift < 4; ++shift) {
                SCOPED_TRACE(testing::Message()
                             << level.level << ", " << length << " samples, address + " << shift);
                visit(level, random, length, shift);
                if (testing::Test::HasFatalFailure()) {
                    return;
                }
            }
        }
    }
}

TEST(Kernels, TheBaselineLevelComesFirstAndTheLastIsInUse) {
    ASSERT_GE(KernelLevels().size(), 1U);
    EXPECT_STREQ(KernelLevels().front().level, "plain");
    EXPECT_EQ(&BestKernels(), &KernelLevels().back());
    for (const Kernels& level : KernelLevels()) {
        std::cout << "level: " << level.level << std::endl;
    }
}

template <typename Sample, typename Curve>
void GainsLikeThePlainOne(const Curve& curve,
                          void (*Kernels::*gain)(const Curve&, PcmView<Sample>)) {
    AtEveryLevelLengthAndAddress(
        [&](const Kernels& level, std::mt19937& random, std::size_t length, std::size_t shift) {
            Unaligned<Sample> expected(RandomSamples<Sample>(random, length), shift);
            Unaligned<Sample> mapped = expected;
            plain::Gain(curve, expected.View());
            (level.*gain)(curve, mapped.View());
            ASSERT_TRUE(mapped == expected);
        });
}

TEST(Kernels, GainOfEveryLengthUpTo70AtAnyAddressEqualsThePlainKernel) {
    for (const float gain : Gains()) {
        GainsLikeThePlainOne(MakeGainCurveS16(gain), &Kernels::gainS16);
        GainsLikeThePlainOne(MakeGainCurveFloat(gain), &Kernels::gainFloat);
    }
}

TEST(Kernels, GainOfAll65536SamplesEqualsThePlainKernel) {
    for (const Kernels& level : KernelLevels()) {
        for (const float gain : Gains()) {
            std::vector<short> expected = AllShorts();
            std::vector<short> mapped = expected;
            plain::Gain(MakeGainCurveS16(gain), {expected.data(), expected.size()});
            level.gainS16(MakeGainCurveS16(gain), {mapped.data(), mapped.size()});
            ASSERT_EQ(mapped, expected) << level.level << " at gain " << gain;
        }
    }
}

TEST(Kernels, All8192GainCurvesStayWithin16Bits) {
    for (int knee = 8192; knee <= 16383; ++knee) {
        const int lifted = 32767 - knee;
        const int outer = knee * 1024 / lifted;
        const int offset = knee * (lifted * 1024 / knee);
        ASSERT_LE((offset + (32767 - knee) * outer) >> 10, 32767) << knee;
        ASSERT_GE((-offset - (32768 - knee) * outer) >> 10, -32768) << knee;
    }
}

TEST(Kernels, GainOfEvery1021stFloatEqualsThePlainKernelToTheBit) {
    std::vector<float> all;
    for (std::uint64_t bits = 0; bits <= 0xFFFFFFFFU; bits += 1021) {
        all.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
    }
    for (const Kernels& level : KernelLevels()) {
        for (const float gain : Gains()) {
            std::vector<float> expected = all;
            std::vector<float> mapped = all;
            plain::Gain(MakeGainCurveFloat(gain), {expected.data(), expected.size()});
            level.gainFloat(MakeGainCurveFloat(gain), {mapped.data(), mapped.size()});
            ASSERT_TRUE(SameBits(mapped, expected)) << level.level << " at gain " << gain;
        }
    }
}

template <typename Sample>
void EntersLikeThePlainOne(void (*Kernels::*enter)(PcmView<const Sample>, short*)) {
    AtEveryLevelLengthAndAddress(
        [&](const Kernels& level, std::mt19937& random, std::size_t length, std::size_t shift) {
            const std::vector<Sample> samples = RandomSamples<Sample>(random, length);
            Unaligned<Sample> in(samples, shift);
            std::vector<short> expected(length + 1, 77);
            std::vector<short> row = expected;
            for (std::size_t i = 0; i < length; ++i) {
                expected[i] = plain::ToMixer(samples[i]);
            }
            (level.*enter)(in.Source(), row.data());
            ASSERT_EQ(row, expected);
        });
}

template <typename Sample>
void MixesLikeThePlainOne(void (*Kernels::*mix)(const short*, std::size_t, std::size_t,
                                                PcmView<Sample>)) {
    for (const std::size_t count : {1U, 2U, 3U, 4U, 5U, 16U}) {
        AtEveryLevelLengthAndAddress(
            [&](const Kernels& level, std::mt19937& random, std::size_t length, std::size_t shift) {
                const std::size_t stride = kLongest + 3;
                std::vector<short> rows = RandomSamples<short>(random, count * stride);
                if (length % 3 == 0) {
                    std::fill(rows.begin(), rows.end(), static_cast<short>(-32768));
                }
                Unaligned<Sample> expected(std::vector<Sample>(length), shift);
                Unaligned<Sample> mixed = expected;
                plain::Mix(rows.data(), stride, count, expected.View());
                (level.*mix)(rows.data(), stride, count, mixed.View());
                ASSERT_TRUE(mixed == expected) << count << " rows";
            });
    }
}

TEST(Kernels, MixingOfEveryLengthUpTo70AtAnyAddressEqualsThePlainKernel) {
    EntersLikeThePlainOne(&Kernels::toMixerS16);
    EntersLikeThePlainOne(&Kernels::toMixerFloat);
    MixesLikeThePlainOne(&Kernels::mixS16);
    MixesLikeThePlainOne(&Kernels::mixFloat);
}

TEST(Kernels, MixingOfAll65536SamplesWithOthersEqualsThePlainKernel) {
    constexpr std::size_t kStride = 65536;
    for (const Kernels& level : KernelLevels()) {
        for (const int other : {-32768, -32767, -12345, -1, 0, 1, 77, 32766, 32767}) {
            std::vector<short> rows = AllShorts();
            rows.resize(5 * kStride, static_cast<short>(other));
            for (const std::size_t count : {2U, 3U, 4U, 5U}) {
                std::vector<short> expected(kStride);
                std::vector<short> mixed(kStride);
                plain::Mix<short>(rows.data(), kStride, count, {expected.data(), kStride});
                level.mixS16(rows.data(), kStride, count, {mixed.data(), kStride});
                ASSERT_EQ(mixed, expected) << level.level << ", " << count << " times " << other;
            }
        }
    }
}

template <typename Sample>
void CountsLikeThePlainOne(const Kernels& level, const std::vector<Sample>& samples,
                           std::size_t shift,
                           PhaseCounts (*count)(PcmView<Sample>, const StereoLayout&, bool)) {
    for (const bool planar : {false, true}) {
        for (const bool negate : {false, true}) {
            const StereoLayout layout = {samples.size() / 2, planar};
            Unaligned<Sample> expected(samples, shift);
            Unaligned<Sample> walked = expected;
            const PhaseCounts plainCounts = plain::CountPhases(expected.View(), layout, negate);
            const PhaseCounts counts = count(walked.View(), layout, negate);
            ASSERT_EQ(counts.inPhase, plainCounts.inPhase) << level.level << " planar " << planar;
            ASSERT_EQ(counts.opposed, plainCounts.opposed) << level.level << " planar " << planar;
            ASSERT_EQ(counts.silent, plainCounts.silent) << level.level << " planar " << planar;
            ASSERT_TRUE(walked == expected) << level.level << " planar " << planar;
        }
    }
}

TEST(Kernels, PhasesOfEveryLengthUpTo70FramesAtAnyAddressEqualThePlainKernel) {
    AtEveryLevelLengthAndAddress(
        [](const Kernels& level, std::mt19937& random, std::size_t frames, std::size_t shift) {
            ASSERT_NO_FATAL_FAILURE(CountsLikeThePlainOne(
                level, RandomSamples<short>(random, 2 * frames), shift, level.countPhasesS16));
            ASSERT_NO_FATAL_FAILURE(CountsLikeThePlainOne(
                level, RandomSamples<float>(random, 2 * frames), shift, level.countPhasesFloat));
        });
}

TEST(Kernels, PhasesOfAll65536SamplesPairedWithOthersEqualThePlainKernel) {
    for (const Kernels& level : KernelLevels()) {
        for (const int other : {-32768, -492, -491, -1, 0, 1, 491, 492, 32767}) {
            std::vector<short> samples;
            for (const short sample : AllShorts()) {
                samples.push_back(sample);
                samples.push_back(static_cast<short>(other));
            }
            ASSERT_NO_FATAL_FAILURE(CountsLikeThePlainOne(level, samples, 0, level.countPhasesS16));
        }
    }
}

TEST(Kernels, PhasesOfBlocksBeyondThe16BitTallyEqualThePlainKernel) {
    std::mt19937 random = SeededRandom();
    for (const Kernels& level : KernelLevels()) {
        for (const std::size_t frames : {2047U, 2048U, 2049U, 100'003U}) {
            ASSERT_NO_FATAL_FAILURE(CountsLikeThePlainOne(
                level, RandomSamples<short>(random, 2 * frames), 1, level.countPhasesS16));
            ASSERT_NO_FATAL_FAILURE(CountsLikeThePlainOne(
                level, RandomSamples<float>(random, 2 * frames), 1, level.countPhasesFloat));
            ASSERT_NO_FATAL_FAILURE(CountsLikeThePlainOne(level, std::vector<short>(2 * frames, 0),
                                                          0, level.countPhasesS16));
        }
    }
}

TEST(Kernels, TheSingleAndDoubleBoundsOfSilenceAgreeForEveryFloat) {
    // The comparisons are monotonic, so agreement around the bound is agreement everywhere.
    const auto bound = std::bit_cast<std::uint32_t>(0.016F);
    for (std::uint32_t bits = bound - 1'000'000; bits <= bound + 1'000'000; ++bits) {
        const auto value = std::bit_cast<float>(bits);
        ASSERT_EQ(value < 0.016F, static_cast<double>(value) < 0.016) << value;
        ASSERT_EQ(-value > -0.016F, static_cast<double>(-value) > -0.016) << value;
    }
}

TEST(Kernels, PhasesOfEveryPairOfSpecialFloatsEqualThePlainKernel) {
    const std::vector<float> specials = SpecialFloats();
    std::vector<float> samples;
    for (const float left : specials) {
        for (const float right : specials) {
            samples.push_back(left);
            samples.push_back(right);
        }
    }
    for (const Kernels& level : KernelLevels()) {
        ASSERT_NO_FATAL_FAILURE(CountsLikeThePlainOne(level, samples, 0, level.countPhasesFloat));
    }
}

std::vector<short> RoundedBy(const Kernels& level, const std::vector<float>& samples) {
    std::vector<short> rounded(samples.size() + 1, 0x5A5A);
    level.roundToS16(samples, rounded.data());
    EXPECT_EQ(rounded.back(), 0x5A5A) << level.level;
    rounded.pop_back();
    return rounded;
}

std::vector<short> RoundedPlainly(const std::vector<float>& samples) {
    std::vector<short> rounded;
    for (const float sample : samples) {
        rounded.push_back(plain::Round(sample));
    }
    return rounded;
}

TEST(Kernels, RoundingIsToTheNearest16BitValueHalvesAwayFromZeroAndSaturates) {
    const std::vector<float> samples = {0.5F,  -0.5F,    0.49999997F, -0.49999997F, 2.5F,
                                        -3.5F, 32766.5F, 32767.5F,    1e9F,         -32768.4F,
                                        -1e9F, INFINITY, -INFINITY,   NAN,          -0.0F};
    const std::vector<short> expected = {1,     -1,     0,      0,     3,      -4,     32767, 32767,
                                         32767, -32768, -32768, 32767, -32768, -32768, 0};
    for (const Kernels& level : KernelLevels()) {
        EXPECT_EQ(RoundedBy(level, samples), expected) << level.level;
        for (std::size_t i = 0; i < samples.size(); ++i) {  // as remainders of a vector
            EXPECT_EQ(RoundedBy(level, {samples[i]}).front(), expected[i]) << samples[i];
        }
    }
}

TEST(Kernels, RoundingOfEveryLengthUpTo140EqualsThePlainKernel) {
    std::mt19937 random = SeededRandom();
    for (const Kernels& level : KernelLevels()) {
        for (std::size_t length = 0; length <= 2 * kLongest; ++length) {
            std::vector<float> samples(length);
            for (float& sample : samples) {
                sample = static_cast<float>(RandomInt(random, -70000 * 8, 70000 * 8)) / 16.0F;
            }
            ASSERT_EQ(RoundedBy(level, samples), RoundedPlainly(samples)) << level.level;
        }
    }
}

TEST(Kernels, RoundingOfEvery1021stFloatEqualsThePlainKernel) {
    std::vector<float> all;
    for (std::uint64_t bits = 0; bits <= 0xFFFFFFFFU; bits += 1021) {
        all.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
    }
    const std::vector<short> expected = RoundedPlainly(all);
    for (const Kernels& level : KernelLevels()) {
        ASSERT_TRUE(RoundedBy(level, all) == expected) << level.level;
    }
}

}  // namespace
