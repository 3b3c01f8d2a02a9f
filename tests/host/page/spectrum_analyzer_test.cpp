#include "host/page/spectrum_analyzer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

std::vector<float> SineAt(std::size_t frames, double cycles, double amplitude) {
    std::vector<float> samples(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        const double turn = cycles * static_cast<double>(i) / static_cast<double>(frames);
        samples[i] = static_cast<float>(amplitude * std::sin(2.0 * std::numbers::pi * turn));
    }
    return samples;
}

double Power(const std::vector<std::complex<float>>& bins) {
    double power = 0.0;
    for (const std::complex<float>& bin : bins) {
        power += static_cast<double>(std::norm(bin));
    }
    return power;
}

TEST(SpectrumAnalyzer, ASineOf37CyclesPeaksAtBin37) {
    SpectrumAnalyzer analyzer(512);
    const auto bins = analyzer.Analyze(SineAt(512, 37.0, 0.5).data());
    ASSERT_EQ(bins.size(), 257U);
    const auto peak = std::max_element(bins.begin(), bins.end(), [](const auto& a, const auto& b) {
        return std::norm(a) < std::norm(b);
    });
    EXPECT_EQ(peak - bins.begin(), 37);
}

TEST(SpectrumAnalyzer, ThePowersOfASineOfAmplitude0_5AddUpToItsMeanSquare) {
    SpectrumAnalyzer analyzer(1024);
    EXPECT_NEAR(Power(analyzer.Analyze(SineAt(1024, 100.25, 0.5).data())), 0.125, 1e-4);
}

TEST(SpectrumAnalyzer, AConstantOf0_25HasItsMeanSquareAt0Hz) {
    SpectrumAnalyzer analyzer(512);
    const auto bins = analyzer.Analyze(std::vector<float>(512, 0.25F).data());
    // The window spreads it over two bins, the first of which stands for one and not for a pair.
    EXPECT_NEAR(Power(bins), 0.0625, 1e-4);
    EXPECT_NEAR(static_cast<double>(std::norm(bins[2])), 0.0, 1e-9);
}

}  // namespace
