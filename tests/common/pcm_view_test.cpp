#include "common/pcm_view.h"

#include <gtest/gtest.h>

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

}  // namespace
