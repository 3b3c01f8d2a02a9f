#include "common/pcm_view.h"

#include <gtest/gtest.h>

#include <cstdint>

using namespace audio_filter::internal;

namespace {

TEST(PcmView, ReadsAndWritesAtOddAddresses) {
    alignas(8) char bytes[9] = {};
    PcmView<float> samples(bytes + 1, 2);
    samples.Set(0, 0.25F);
    samples.Set(1, -0.5F);
    EXPECT_EQ(samples.Get(0), 0.25F);
    EXPECT_EQ(samples.Get(1), -0.5F);
    EXPECT_EQ(samples.Size(), 2U);
    EXPECT_EQ(bytes[0], 0);
}

TEST(PcmView, AViewOfConstSamplesReadsConstBytes) {
    const short values[2] = {7, -8};
    const PcmView<const short> samples(values, 2);
    EXPECT_EQ(samples.Get(1), -8);
}

TEST(PcmView, APartIsAViewOfConsecutiveSamples) {
    short values[4] = {1, 2, 3, 4};
    PcmView<short> part = PcmView<short>(values, 4).Part(1, 2);
    EXPECT_EQ(part.Size(), 2U);
    EXPECT_EQ(part.Get(0), 2);
    part.Set(1, 30);
    EXPECT_EQ(values[2], 30);
    EXPECT_EQ(PcmView<short>(values, 4).Part(4, 0).Size(), 0U);
}

TEST(PcmView, FiveShortsAreTwoWordsOf32Bits) {
    const short values[5] = {-1, -1, 0, 0, 7};
    const auto words = PcmView<const short>(values, 5).As<const std::uint32_t>();
    EXPECT_EQ(words.Size(), 2U);
    EXPECT_EQ(words.Get(0), 0xFFFFFFFFU);
    EXPECT_EQ(words.Get(1), 0U);
}

}  // namespace
