#include "stream/sample_layout.h"

#include <gtest/gtest.h>

#include <vector>

namespace audio_filter::internal {

namespace {

TEST(SampleLayout, ReadsAndWritesEveryChannelOf1To8InterleavedAndPlanar) {
    for (int channels = 1; channels <= 8; ++channels) {
        const auto width = static_cast<std::size_t>(channels);
        const SampleLayout interleaved({.channels = channels, .samples = SAMPLE_FMT_S16});
        const SampleLayout planar({.channels = channels, .samples = SAMPLE_FMT_S16P});
        EXPECT_EQ(interleaved.Buffers(), 1U);
        EXPECT_EQ(planar.Buffers(), width);
        std::vector<short> frames(10 * width);
        for (std::size_t i = 0; i < frames.size(); ++i) {
            frames[i] = static_cast<short>(i);
        }
        std::vector<std::vector<short>> planes(width, std::vector<short>(10, -1));
        std::vector<void*> to;
        for (std::vector<short>& plane : planes) {
            to.push_back(plane.data());
        }
        const void* from[] = {frames.data()};
        for (std::size_t channel = 0; channel < width; ++channel) {
            std::vector<float> samples(6);
            interleaved.Read(from, 3, channel, samples);
            for (std::size_t i = 0; i < 6; ++i) {
                ASSERT_EQ(samples[i] * 32768.0F, static_cast<float>((3 + i) * width + channel));
            }
            planar.Write(samples, channel, to.data(), 2);
            ASSERT_EQ(planes[channel][1], -1);
            ASSERT_EQ(planes[channel][2], static_cast<short>(3 * width + channel));
            ASSERT_EQ(planes[channel][7], static_cast<short>(8 * width + channel));
            ASSERT_EQ(planes[channel][8], -1);
        }
    }
}

TEST(SampleLayout, All65536SamplesOf16BitsComeBack) {
    const SampleLayout layout({.samples = SAMPLE_FMT_S16});
    std::vector<short> all;
    for (int value = -32768; value <= 32767; ++value) {
        all.push_back(static_cast<short>(value));
    }
    std::vector<float> samples(all.size());
    const void* from[] = {all.data()};
    layout.Read(from, 0, 0, samples);
    std::vector<short> back(all.size());
    void* to[] = {back.data()};
    layout.Write(samples, 0, to, 0);
    EXPECT_EQ(back, all);
}

}  // namespace

}  // namespace audio_filter::internal
