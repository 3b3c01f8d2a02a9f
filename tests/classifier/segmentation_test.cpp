#include "classifier/segmentation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

using namespace audio_filter::internal;

namespace {

TEST(Emphasise, Subtracts0_97TimesThePreviousSampleAndStartsFromSilence) {
    const short samples[] = {100, 200, -300, -32768, 32767};
    std::vector<float> out(5);
    Emphasise(PcmView<const short>(samples, 5), 0.97F, std::span<float>(out));
    EXPECT_EQ(out, (std::vector<float>{100.0F, 200.0F - 0.97F * 100.0F, -300.0F - 0.97F * 200.0F,
                                       -32768.0F - 0.97F * -300.0F, 32767.0F - 0.97F * -32768.0F}));
}

TEST(Emphasise, TakesUnscaledFloatsAtAnyAddress) {
    std::vector<char> bytes(13);
    const float samples[] = {0.5F, NAN, 1.0F};
    std::memcpy(bytes.data() + 1, samples, sizeof(samples));
    std::vector<float> out(3);
    Emphasise(PcmView<const float>(bytes.data() + 1, 3), 0.97F, std::span<float>(out));
    EXPECT_EQ(out[0], 0.5F);
    EXPECT_TRUE(std::isnan(out[1]));
    EXPECT_TRUE(std::isnan(out[2]));
}

TEST(HammingWindow, Lengths2To20And1024And1412And1536FollowTheFormula) {
    std::vector<std::size_t> lengths = {1024, 1412, 1536};
    for (std::size_t length = 2; length <= 20; ++length) {
        lengths.push_back(length);
    }
    for (const std::size_t length : lengths) {
        for (const float gain : {1.0F, 0.3F, -2.0F}) {
            std::vector<float> window(length, -9.0F);
            HammingWindow(window, gain);
            for (std::size_t i = 0; i < length; ++i) {
                const std::size_t k = std::min(i, length - 1 - i);
                const float twoPi = 2.0F * std::acos(-1.0F);
                const float angle = static_cast<float>(k) * twoPi / static_cast<float>(length - 1);
                const double cosine = static_cast<double>(std::cos(angle));
                ASSERT_EQ(window[i],
                          static_cast<float>((0.54 - 0.46 * cosine) * static_cast<double>(gain)))
                    << length << ", " << i;
            }
        }
    }
}

TEST(HammingWindow, Of1024RisesFrom0_08ToNearly1AndIsSymmetric) {
    std::vector<float> window(1024);
    HammingWindow(window, 1.0F);
    EXPECT_FLOAT_EQ(window.front(), 0.08F);
    EXPECT_NEAR(window[511], 1.0F, 1e-5F);
    for (std::size_t i = 0; i < 512; ++i) {
        EXPECT_EQ(window[i], window[1023 - i]);
        EXPECT_TRUE(i == 0 || window[i] >= window[i - 1]) << i;
    }
}

TEST(HammingWindow, OfOneCoefficientIsNaNAndOfNoneEmpty) {
    std::vector<float> window(1);
    HammingWindow(window, 2.0F);
    EXPECT_TRUE(std::isnan(window[0]));
    HammingWindow({}, 1.0F);
}

TEST(CountSegments, SignalsOf0To5000SamplesHaveTheTruncatedQuotientPlus1AndNeverBelow0) {
    for (int length = 0; length <= 5000; ++length) {
        const int quotient = (length - 1024) / 512 + 1;
        EXPECT_EQ(CountSegments(static_cast<std::size_t>(length), 1024, 512),
                  quotient < 0 ? 0 : quotient)
            << length;
    }
}

TEST(CountSegments, ASignalOf100SamplesHasNoSegmentOf1024AndOneOf600HasOne) {
    EXPECT_EQ(CountSegments(100, 1024, 512), 0);
    EXPECT_EQ(CountSegments(512, 1024, 512), 0);
    EXPECT_EQ(CountSegments(513, 1024, 512), 1);
    EXPECT_EQ(CountSegments(600, 1024, 512), 1);
    EXPECT_EQ(CountSegments(1024, 1024, 512), 1);
    EXPECT_EQ(CountSegments(1535, 1024, 512), 1);
    EXPECT_EQ(CountSegments(1536, 1024, 512), 2);
    EXPECT_EQ(CountSegments(31744, 1024, 512), 61);
    EXPECT_EQ(CountSegments(0, 65535, 1), 0);
    EXPECT_EQ(CountSegments(100, 10, 0), 0);
}

TEST(CutSegment, CopiesFromIndexTimesHopAndAppliesTheWindow) {
    const std::vector<float> signal = {1, 2, 3, 4, 5, 6};
    const std::vector<float> window = {1, 10, 100};
    std::vector<float> segment(3, -1.0F);
    CutSegment(signal, 1, 2, window, segment);
    EXPECT_EQ(segment, (std::vector<float>{3, 40, 500}));
}

TEST(CutSegment, PadsWithZerosBeyondTheSignal) {
    const std::vector<float> signal = {1, 2, 3, 4, 5, 6};
    const std::vector<float> window = {1, 10, 100};
    std::vector<float> segment(3, -1.0F);
    CutSegment(signal, 2, 2, window, segment);
    EXPECT_EQ(segment, (std::vector<float>{5, 60, 0}));
    CutSegment(signal, 3, 2, window, segment);
    EXPECT_EQ(segment, (std::vector<float>{0, 0, 0}));
    CutSegment(signal, 1000, 1000, window, segment);
    EXPECT_EQ(segment, (std::vector<float>{0, 0, 0}));
}

}  // namespace
