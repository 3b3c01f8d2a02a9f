#include "classifier/features.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "classifier/audio_classifier.h"
#include "classifier/segmentation.h"
#include "support/seed.h"

using namespace audio_filter::internal;

namespace {

TEST(SegmentEnergy, OfThreeAndFourIs25AndOfNothing0) {
    EXPECT_EQ(SegmentEnergy(std::vector<float>{3.0F, -4.0F}), 25.0);
    EXPECT_EQ(SegmentEnergy({}), 0.0);
}

TEST(SegmentEnergy, IsSummedInDoublePrecision) {
    EXPECT_EQ(SegmentEnergy(std::vector<float>{16777217.0F, 1.0F}), 16777216.0 * 16777216.0 + 1.0);
    EXPECT_GT(SegmentEnergy(std::vector<float>{3e38F}), 8e76);
}

TEST(SegmentEnergies,
     Of0To20SegmentsWithWindowsAroundTheLoopLengthsEqualThoseOfSegmentsCutOneByOne) {
    std::mt19937 random = SeededRandom();
    std::uniform_real_distribution<float> any(-30000.0F, 30000.0F);
    for (const std::size_t length : {1U, 7U, 63U, 64U, 65U, 130U, 1412U}) {
        for (std::size_t segments = 0; segments <= 20; ++segments) {
            const std::size_t hop = std::max<std::size_t>(length / 2, 1);
            const auto spare = static_cast<std::size_t>(RandomInt(random, 0, 3)) * length;
            std::vector<float> signal((segments + 1) * hop - std::min((segments + 1) * hop, spare));
            std::generate(signal.begin(), signal.end(), [&] { return any(random); });
            std::vector<float> window(length);
            HammingWindow(window, 1.0F);
            std::vector<double> energies(segments, -1.0);
            SegmentEnergies(signal, hop, window, energies);
            std::vector<float> segment(length);
            for (std::size_t j = 0; j < segments; ++j) {
                CutSegment(signal, j, hop, window, segment);
                const double expected = SegmentEnergy(segment);
                ASSERT_TRUE(energies[j] == expected || (length == 1 && std::isnan(energies[j])))
                    << "segment " << j << " of " << segments << ", " << length << " samples";
            }
        }
    }
}

TEST(LowEnergyRate, CountsTheSegmentsStrictlyBelowTheRatioTimesTheMean) {
    const std::vector<double> energies = {1.0, 2.0, 3.0, 10.0};  // mean 4
    EXPECT_EQ(LowEnergyRate(energies, 0.5F), 0.25F);             // 2 is not below 2
    EXPECT_EQ(LowEnergyRate(energies, 0.25F), 0.0F);
    EXPECT_EQ(LowEnergyRate(energies, 1.0F), 0.75F);
    EXPECT_EQ(LowEnergyRate(energies, 4.0F), 1.0F);
}

TEST(LowEnergyRate, WithoutSegmentsIsNaNAndOfSilenceOrNaN0) {
    EXPECT_TRUE(std::isnan(LowEnergyRate({}, 0.5F)));
    EXPECT_EQ(LowEnergyRate(std::vector<double>(10, 0.0), 0.5F), 0.0F);
    EXPECT_EQ(LowEnergyRate(std::vector<double>{1.0, std::nan("")}, 0.5F), 0.0F);
}

TEST(SubBandRatios, SumTheBinsInOrderForAnyNumberOfBins) {
    std::mt19937 random = SeededRandom();
    std::uniform_real_distribution<float> any(0.0F, 1000.0F);
    for (std::size_t start = 1; start < 60; ++start) {
        const auto bins = static_cast<std::size_t>(RandomInt(random, 0, 130));
        std::vector<float> magnitudes(bins);
        std::generate(magnitudes.begin(), magnitudes.end(), [&] { return any(random); });
        const auto power = [&](std::size_t begin, std::size_t end) {
            double sum = 0.0;
            for (std::size_t k = begin; k < std::min(end, bins); ++k) {
                sum += static_cast<double>(magnitudes[k]) * static_cast<double>(magnitudes[k]);
            }
            return sum;
        };
        const double total = power(start, 2 * start);
        const double sums[] = {power(start, start + start / 8),
                               power(start + start / 4, start + start / 2),
                               power(start + start / 2, 2 * start)};
        const std::array<float, 3> ratios = SubBandRatios(magnitudes, start);
        for (std::size_t band = 0; band < 3; ++band) {
            const auto expected = static_cast<float>(sums[band] / total);
            EXPECT_TRUE(ratios[band] == expected || (std::isnan(expected) && total == 0.0))
                << start << ", " << bins << " bins, band " << band;
        }
    }
}

TEST(SubBandRatios, OfEqualBinsFrom16Are2And4And8Sixteenths) {
    const std::vector<float> magnitudes(32, 3.0F);
    EXPECT_EQ(SubBandRatios(magnitudes, 16),
              (std::array<float, 3>{2.0F / 16.0F, 4.0F / 16.0F, 8.0F / 16.0F}));
}

TEST(SubBandRatios, BoundsAreTruncatedAndBins1_125To1_25CountOnlyInTheTotal) {
    // From 22050: bands 22050..24805, 27562..33074, 33075..44099; 24806..27561 in none.
    const std::vector<std::pair<std::size_t, std::array<float, 3>>> bins = {
        {22050, {1, 0, 0}}, {24805, {1, 0, 0}}, {24806, {0, 0, 0}}, {27561, {0, 0, 0}},
        {27562, {0, 1, 0}}, {33074, {0, 1, 0}}, {33075, {0, 0, 1}}, {44099, {0, 0, 1}}};
    for (const auto& [bin, ratios] : bins) {
        std::vector<float> magnitudes(44100);
        magnitudes[bin] = 2.0F;
        magnitudes[22049] = 100.0F;  // below all bands
        EXPECT_EQ(SubBandRatios(magnitudes, 22050), ratios) << bin;
    }
}

TEST(SubBandRatios, OfSilenceAreNaNAndMissingBinsCountAs0) {
    for (const float ratio : SubBandRatios(std::vector<float>(32), 16)) {
        EXPECT_TRUE(std::isnan(ratio));
    }
    for (const float ratio : SubBandRatios({}, 16000)) {
        EXPECT_TRUE(std::isnan(ratio));
    }
    EXPECT_EQ(SubBandRatios(std::vector<float>(17, 1.0F), 16), (std::array<float, 3>{1, 0, 0}));
}

TEST(Distance, Of345Is5AndOfNothing0) {
    const std::vector<float> a = {1.0F, 2.0F};
    const std::vector<float> b = {4.0F, -2.0F};
    EXPECT_EQ(Distance(a, b), 5.0F);
    EXPECT_EQ(Distance(b, a), 5.0F);
    EXPECT_EQ(Distance({}, {}), 0.0F);
}

TEST(Distance, TakesDifferencesInSinglePrecisionAndSquaresInDouble) {
    const std::vector<float> big = {16777216.0F};
    const std::vector<float> small = {-1.0F};
    EXPECT_EQ(Distance(big, small), 16777216.0F);
    const std::vector<float> huge = {3e38F};
    EXPECT_EQ(Distance(huge, std::vector<float>{0.0F}),
              3e38F);  // its square overflows single precision
}

TEST(IsNearestToCentre0, ATieGoesToCentre0) {
    EXPECT_TRUE(IsNearestToCentre0(0.5F, std::vector<float>{0.25F, 0.75F, 0.9F, 0.9F}));
    EXPECT_TRUE(IsNearestToCentre0(0.5F, std::vector<float>{0.5F, 0.5F, 0.5F, 0.5F}));
    EXPECT_FALSE(IsNearestToCentre0(0.5F, std::vector<float>{0.25F, 0.625F, 0.9F, 0.9F}));
}

TEST(IsNearestToCentre0, WithFourDistancesOf1OrMoreOnlyExactly1ToCentre0IsNearest) {
    EXPECT_FALSE(IsNearestToCentre0(0.0F, std::vector<float>{1.5F, 2.0F, 2.0F, 2.0F}));
    EXPECT_FALSE(IsNearestToCentre0(0.0F, std::vector<float>{1.5F, 1.0F, 1.0F, 1.0F}));
    EXPECT_FALSE(IsNearestToCentre0(0.0F, std::vector<float>{1.0000001F, 2.0F, 2.0F, 2.0F}));
    EXPECT_TRUE(IsNearestToCentre0(0.0F, std::vector<float>{1.0F, 2.0F, 2.0F, 2.0F}));
    EXPECT_TRUE(IsNearestToCentre0(0.0F, std::vector<float>{-1.0F, 1.0F, 1.0F, 1.0F}));
}

TEST(IsNearestToCentre0, NaNIsNotNearestToCentre0) {
    EXPECT_FALSE(IsNearestToCentre0(NAN, std::vector<float>{0.1F, 0.2F, 0.3F, 0.4F}));
    EXPECT_FALSE(IsNearestToCentre0(0.1F, std::vector<float>{NAN, 0.2F, 0.3F, 0.4F}));
    EXPECT_TRUE(IsNearestToCentre0(0.1F, std::vector<float>{0.1F, NAN, NAN, NAN}));
}

TEST(IsSpeechByLowEnergy, AnyOneOfFourRowsDecides) {
    const std::vector<double> energies = {1.0, 1.0, 1.0, 13.0};  // rates 0.75 down to ratio 1/4
    const float thresholds[] = {0.5F, 0.25F, 0.125F, 0.0625F};
    const float far[4] = {0.5F, 0.75F, 0.75F, 0.75F};
    for (std::size_t decisive = 0; decisive < 5; ++decisive) {
        float centres[4][4];
        for (std::size_t row = 0; row < 4; ++row) {
            std::copy(far, far + 4, centres[row]);
            if (row >= 1) {  // 1 is not below 0.25 * 4
                centres[row][0] = 0.5F;
                centres[row][1] = 0.0F;
            }
        }
        if (decisive < 4) {
            centres[decisive][0] = decisive == 0 ? 0.75F : 0.0F;
        }
        EXPECT_EQ(IsSpeechByLowEnergy(energies, thresholds, centres), decisive < 4) << decisive;
    }
}

TEST(IsSpeechByLowEnergy, WithoutSegmentsNoRowIsSpeech) {
    AudioClassifier classifier;
    const algoParam param = classifier.getAlgoParam(32000);
    EXPECT_FALSE(IsSpeechByLowEnergy({}, param.lowEnergyThresholds, param.lowEnergyCentres));
}

}  // namespace
