#include "units/analysis_window.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

using namespace audio_filter::internal;

namespace {

/// A silent block with one sample of `value`.
class Window {
public:
    explicit Window(int rate) { window.Reset(rate); }

    bool IsSilentWith(std::size_t position, float value) {
        std::array<float, 160> band = {};
        band[position] = value;
        return window.IsSilentAfter(band.data());
    }
    bool IsSilent() { return IsSilentWith(0, 0.0F); }

private:
    AnalysisWindow window;
};

TEST(AnalysisWindow, StartsSilentAndStaysSilentOverZeros) {
    Window window(32000);
    EXPECT_TRUE(window.IsSilent());
    EXPECT_TRUE(window.IsSilent());
}

TEST(AnalysisWindow, ASampleAmongTheLast96CountsInTheNextBlockToo) {
    Window window(32000);
    EXPECT_FALSE(window.IsSilentWith(159, 1.0F));
    EXPECT_FALSE(window.IsSilent());
    EXPECT_TRUE(window.IsSilent());
    EXPECT_FALSE(window.IsSilentWith(65, 1.0F));  // becomes the second of the old ones
    EXPECT_FALSE(window.IsSilent());
    EXPECT_TRUE(window.IsSilent());
}

TEST(AnalysisWindow, TheFirstWeightIsZeroSoTheOldestSampleDoesNotCount) {
    Window window(32000);
    EXPECT_FALSE(window.IsSilentWith(64, 1.0F));  // becomes the first of the old ones
    EXPECT_TRUE(window.IsSilent());
}

TEST(AnalysisWindow, SamplesBeforeTheLast96DoNotCount) {
    Window window(32000);
    EXPECT_FALSE(window.IsSilentWith(63, 1e9F));
    EXPECT_TRUE(window.IsSilent());
}

TEST(AnalysisWindow, At8000HzEightyNewSamplesAnd48OldOnesCount) {
    Window window(8000);
    EXPECT_TRUE(window.IsSilentWith(80, 1.0F)) << "beyond the new ones";
    EXPECT_FALSE(window.IsSilentWith(79, 1.0F));
    EXPECT_FALSE(window.IsSilent());
    EXPECT_TRUE(window.IsSilent());
    EXPECT_FALSE(window.IsSilentWith(32, 1.0F));
    EXPECT_TRUE(window.IsSilent());
    EXPECT_FALSE(window.IsSilentWith(33, 1.0F));
    EXPECT_FALSE(window.IsSilent());
}

TEST(AnalysisWindow, SquaresThatUnderflowInSinglePrecisionAreSilent) {
    Window window(32000);
    EXPECT_TRUE(
        window.IsSilentWith(30, std::ldexp(1.0F, -75)));  // its square rounds to even, which is 0
    EXPECT_TRUE(window.IsSilent());
    EXPECT_FALSE(window.IsSilentWith(30, std::nextafter(std::ldexp(1.0F, -75), 1.0F)));
}

TEST(AnalysisWindow, AResetDropsAllSamples) {
    AnalysisWindow window;
    std::array<float, 160> loud;
    loud.fill(1.0F);
    window.Reset(16000);
    EXPECT_FALSE(window.IsSilentAfter(loud.data()));
    window.Reset(16000);
    EXPECT_TRUE(window.IsSilentAfter(std::array<float, 160>{}.data()));
}

}  // namespace
