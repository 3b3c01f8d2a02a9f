#include "classifier/spectrum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <cstdint>
#include <vector>

#include "classifier/complex.h"
#include "classifier/plain_model.h"
#include "support/bytes.h"
#include "support/seed.h"

using namespace audio_filter::internal;

namespace {

std::vector<float> Noise(std::mt19937& random, std::size_t samples, float amplitude = 1.0F) {
    std::uniform_real_distribution<float> any(-amplitude, amplitude);
    std::vector<float> noise(samples);
    for (float& sample : noise) {
        sample = any(random);
    }
    return noise;
}

std::vector<float> Magnitudes(const std::vector<float>& signal, std::size_t size) {
    std::vector<float> magnitudes(size / 2 + 1, -1.0F);
    Spectrum(signal, size, magnitudes);
    return magnitudes;
}

TEST(Spectrum, Sizes0To300AndSomeTo2300WithTooFewAllAndTooManySamplesFollowThePlainModelToTheBit) {
    std::mt19937 random = SeededRandom();
    for (std::size_t size = 0; size <= 2300; size += size < 300 ? 1 : 61) {
        for (const std::size_t count : {std::size_t{0}, size / 2, size, size + 9}) {
            const std::vector<float> signal = Noise(random, count);
            ASSERT_TRUE(SameBits(Magnitudes(signal, size), PlainSpectrum(signal, size)))
                << "size " << size << ", " << count << " samples";
        }
    }
}

TEST(Spectrum, Sizes63998And88198And95998FollowThePlainModelToTheBit) {
    std::mt19937 random = SeededRandom();
    for (const std::size_t size : {63998U, 88198U, 95998U}) {
        for (const std::size_t count : {size / 2, size, size + 100}) {
            const std::vector<float> signal = Noise(random, count, 32768.0F);
            ASSERT_TRUE(SameBits(Magnitudes(signal, size), PlainSpectrum(signal, size)))
                << "size " << size << ", " << count << " samples";
        }
    }
}

/// Equal to the bit, except that any NaN equals any other.
bool SameNumbers(const std::vector<float>& a, const std::vector<float>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](float x, float y) {
        return std::isnan(x) ? std::isnan(y) : std::bit_cast<int>(x) == std::bit_cast<int>(y);
    });
}

/// Noise with occasional NaNs, infinities, zeros, subnormals or random bits.
std::vector<float> Odd(std::mt19937& random, std::size_t samples) {
    const std::vector<float> odd = {NAN,    INFINITY, -INFINITY, -0.0F, 0.0F,
                                    1e-40F, -1e-45F,  3e38F,     -3e38F};
    const int choice = RandomInt(random, 0, 4);  // one of these at a time
    std::vector<float> signal = Noise(random, samples, choice == 4 ? 1e-38F : 1.0F);
    const auto oddOnes = RandomInt(random, 0, 3);
    for (int i = 0; i < oddOnes && samples > 0; ++i) {
        const auto place = static_cast<std::size_t>(RandomInt(random, 0, 1 << 30)) % samples;
        signal[place] = odd[static_cast<std::size_t>(RandomInt(random, 0, 8))];
    }
    for (std::size_t n = 0; choice == 3 && n < samples; ++n) {
        signal[n] = odd[static_cast<std::size_t>(RandomInt(random, 3, 8))];
    }
    for (std::size_t n = 0; choice == 2 && n < samples; ++n) {
        signal[n] = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    }
    return signal;
}

TEST(Spectrum, Sizes0To300OfNaNsAndInfinitiesAndZerosAndSubnormalsFollowThePlainModel) {
    std::mt19937 random = SeededRandom();
    for (std::size_t size = 0; size <= 300; ++size) {
        for (int run = 0; run < 10; ++run) {
            const std::vector<float> signal = Odd(random, size);
            ASSERT_TRUE(SameNumbers(Magnitudes(signal, size), PlainSpectrum(signal, size))) << size;
        }
    }
}

TEST(Spectrum, OneHundredRandomSizesTo140000OddAndEvenFollowThePlainModel) {
    std::mt19937 random = SeededRandom();
    for (int run = 0; run < 100; ++run) {
        const auto size =
            static_cast<std::size_t>(RandomInt(random, 300, run % 4 == 0 ? 140'000 : 5000));
        const std::vector<float> signal = Odd(random, size - size / 3 * (run % 3 == 0 ? 1 : 0));
        ASSERT_TRUE(SameNumbers(Magnitudes(signal, size), PlainSpectrum(signal, size))) << size;
    }
}

TEST(Spectrum, SizesAroundPowersOfTwoAndTheir1_5FoldFollowThePlainModelToTheBit) {
    std::mt19937 random = SeededRandom();
    for (std::size_t power = 256; power <= 65536; power *= 2) {
        for (const std::size_t middle : {power, power + power / 2}) {
            for (std::size_t size = middle - 2; size <= middle + 2; ++size) {
                const std::vector<float> signal = Noise(random, size);
                ASSERT_TRUE(SameBits(Magnitudes(signal, size), PlainSpectrum(signal, size)))
                    << size;
            }
        }
    }
}

TEST(Spectrum, RepetitionsThatEndWithABlockOf16To256ElementsFollowThePlainModelToTheBit) {
    std::mt19937 random = SeededRandom();
    for (std::size_t power = 512; power <= 4096; power *= 2) {
        for (std::size_t block = 16; block <= 256; block *= 2) {
            for (std::size_t size = power + block; size <= power + 3 * block; size += block) {
                const std::vector<float> signal = Noise(random, size);
                ASSERT_TRUE(SameBits(Magnitudes(signal, size), PlainSpectrum(signal, size)))
                    << size;
            }
        }
    }
}

TEST(Spectrum, ASingleInfinityInTheUpperHalfFollowsThePlainModel) {
    for (const std::size_t size : {1024U, 1500U, 4096U}) {
        const std::size_t power = size == 4096 ? 4096 : 1024;
        for (const std::size_t place : {power / 2, 3 * power / 4, 5 * power / 8}) {
            std::vector<float> signal(size);
            signal[place] = INFINITY;
            ASSERT_TRUE(SameNumbers(Magnitudes(signal, size), PlainSpectrum(signal, size)))
                << size << ", sample " << place;
        }
    }
}

TEST(Spectrum, AReusedTransformGivesAnyRangeOfBinsLikeANewOne) {
    std::mt19937 random = SeededRandom();
    for (const std::size_t size : {0U, 1U, 77U, 600U, 1100U, 63998U}) {
        SpectrumTransform transform(size);
        for (int run = 0; run < 10; ++run) {
            const std::vector<float> signal = Odd(random, size);
            const std::vector<float> all = PlainSpectrum(signal, size);
            const int bins = static_cast<int>(all.size());
            const int first = RandomInt(random, 0, bins);
            std::vector<float> some(static_cast<std::size_t>(RandomInt(random, 0, bins - first)));
            transform.Run(signal, static_cast<std::size_t>(first), some);
            ASSERT_TRUE(SameNumbers(
                some, std::vector<float>(all.begin() + first,
                                         all.begin() + first + static_cast<int>(some.size()))))
                << size << ", bins from " << first;
        }
    }
}

TEST(Spectrum, OfAPowerOfTwoIsADiscreteFourierTransform) {
    std::mt19937 random = SeededRandom();
    for (std::size_t size = 1; size <= 1024; size *= 2) {
        const std::vector<float> signal = Noise(random, size);
        const std::vector<float> magnitudes = Magnitudes(signal, size);
        for (std::size_t bin = 0; bin < magnitudes.size(); ++bin) {
            std::complex<double> sum;
            for (std::size_t n = 0; n < size; ++n) {
                const double turns =
                    static_cast<double>(bin * n % size) / static_cast<double>(size);
                sum +=
                    static_cast<double>(signal[n]) * std::polar(1.0, 2.0 * std::acos(-1.0) * turns);
            }
            ASSERT_NEAR(magnitudes[bin], std::abs(sum), 1e-6 * static_cast<double>(size) + 1e-6)
                << "size " << size << ", bin " << bin;
        }
    }
}

TEST(Spectrum, Of63998SamplesIsNotAFourierTransform) {
    std::vector<float> sine(63998);
    for (std::size_t n = 0; n < sine.size(); ++n) {
        sine[n] = static_cast<float>(
            std::sin(2.0 * std::acos(-1.0) * static_cast<double>(n * 1000 % 63998) / 63998.0));
    }
    const std::vector<float> magnitudes = Magnitudes(sine, 63998);
    EXPECT_LT(magnitudes[1000], 31999.0F / 2);
}

TEST(Spectrum, Of63998SamplesIgnoresSamplesBeyond32767) {
    std::vector<float> late(63998, 0.0F);
    std::fill(late.begin() + 32768, late.end(), 1.0F);
    for (const float magnitude : Magnitudes(late, 63998)) {
        ASSERT_EQ(magnitude, 0.0F);
    }
    late[32767] = 1.0F;
    EXPECT_GT(Magnitudes(late, 63998)[0], 0.0F);
}

TEST(Spectrum, OfSize0IsOneZeroAndOfSize1TheSample) {
    EXPECT_EQ(Magnitudes({5.0F}, 0), std::vector<float>{0.0F});
    EXPECT_EQ(Magnitudes({-5.0F, 7.0F}, 1), std::vector<float>{5.0F});
}

TEST(Spectrum, OfSize3ReadsZerosBeyondTheSignal1_2_4) {
    // The index table of size 3 is 0, 1, 0: elements 1, 2, 1 and a zero.
    const std::vector<float> magnitudes = Magnitudes({1.0F, 2.0F, 4.0F}, 3);
    EXPECT_EQ(magnitudes, PlainSpectrum({1.0F, 2.0F, 4.0F}, 3));
    EXPECT_EQ(magnitudes[0], 4.0F);  // 1 + 2 + 1; a Fourier transform has 7
}

TEST(Spectrum, SingleNaNsFollowThePlainModel) {
    std::vector<float> signal(64, 1.0F);
    signal[5] = NAN;
    for (const float magnitude : Magnitudes(signal, 64)) {
        EXPECT_TRUE(std::isnan(magnitude));
    }
}

TEST(Complex, IsConstructedAs0AndHoldsTwoFloats) {
    const complex zero;
    EXPECT_EQ(zero.real, 0.0F);
    EXPECT_EQ(zero.imag, 0.0F);
    EXPECT_EQ(sizeof(complex), 2 * sizeof(float));
    EXPECT_EQ(reinterpret_cast<const float*>(&zero), &zero.real);
}

TEST(Complex, AddsSubtractsAndMultiplies1Plus2iAnd3Minus4i) {
    const complex a(1.0F, 2.0F);
    const complex b(3.0F, -4.0F);
    EXPECT_EQ((a + b).real, 4.0F);
    EXPECT_EQ((a + b).imag, -2.0F);
    EXPECT_EQ((a - b).real, -2.0F);
    EXPECT_EQ((a - b).imag, 6.0F);
    EXPECT_EQ((a * b).real, 11.0F);
    EXPECT_EQ((a * b).imag, 2.0F);
}

}  // namespace
