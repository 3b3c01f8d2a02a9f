#include "host/rate_converter.h"

#include <gtest/gtest.h>

#include <cmath>

#include "host/failure.h"
#include "sound_files.h"

namespace {

std::vector<float> SineOf(std::size_t frames, double rate, double hz) {
    std::vector<float> signal(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        signal[i] =
            static_cast<float>(0.5 * std::sin(6.283185307 * hz * static_cast<double>(i) / rate));
    }
    return signal;
}

std::vector<float> ConvertInBlocks(RateConverter& converter, const std::vector<float>& in,
                                   std::size_t block) {
    std::vector<float> out;
    for (std::size_t at = 0; at < in.size(); at += block) {
        const auto end = static_cast<std::ptrdiff_t>(std::min(at + block, in.size()));
        const std::vector<float> part = converter.Convert(
            {in.begin() + static_cast<std::ptrdiff_t>(at), in.begin() + end}, false);
        out.insert(out.end(), part.begin(), part.end());
    }
    const std::vector<float> rest = converter.Convert({}, true);
    out.insert(out.end(), rest.begin(), rest.end());
    return out;
}

TEST(RateConverter, A440HzSineAt48000HzIsThatSineAt32000HzWithoutDelay) {
    RateConverter converter(48000, 32000, 1);
    const std::vector<float> out = ConvertInBlocks(converter, SineOf(48000, 48000, 440), 480);
    EXPECT_NEAR(static_cast<double>(out.size()), 32000.0, 1.0);
    const std::vector<float> expected = SineOf(32000, 32000, 440);
    for (std::size_t i = 200; i + 200 < out.size(); ++i) {
        ASSERT_NEAR(out[i], expected[i], 1e-3F) << i;
    }
}

TEST(RateConverter, TheBlockLengthDoesNotChangeTheOutput) {
    const std::vector<float> in = Bursts(30000, 44100);
    RateConverter whole(44100, 32000, 1);
    const std::vector<float> expected = ConvertInBlocks(whole, in, in.size());
    for (const std::size_t block : {std::size_t{1}, std::size_t{97}, std::size_t{5000}}) {
        RateConverter converter(44100, 32000, 1);
        const std::vector<float> out = ConvertInBlocks(converter, in, block);
        ASSERT_EQ(out.size(), expected.size()) << block;
        for (std::size_t i = 0; i < out.size(); ++i) {
            ASSERT_NEAR(out[i], expected[i], 1e-5F);
        }
    }
}

TEST(RateConverter, StereoChannelsStaySeparate) {
    RateConverter converter(22050, 32000, 2);
    std::vector<float> in(2 * 22050);
    for (std::size_t i = 0; i < in.size(); i += 2) {
        in[i] = 0.5F;
    }
    const std::vector<float> out = ConvertInBlocks(converter, in, 882);
    EXPECT_EQ(out.size() % 2, 0U);
    for (std::size_t i = 2000; i + 2000 < out.size(); i += 2) {
        ASSERT_NEAR(out[i], 0.5F, 1e-3F);
        ASSERT_EQ(out[i + 1], 0.0F);
    }
}

TEST(RateConverter, RatesTooFarApartAreRefused) {
    EXPECT_THROW(RateConverter(1, 32000, 1), Failure);
    EXPECT_THROW(RateConverter(32000, 100, 1), Failure);
    EXPECT_NO_THROW(RateConverter(200, 32000, 1));
}

}  // namespace
