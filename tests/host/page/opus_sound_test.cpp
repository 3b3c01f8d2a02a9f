#include "host/page/opus_sound.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "host/sound_files.h"

namespace {

Sound<float> Decoded(const std::string& bytes) {
    const TempDir dir;
    WriteFile(dir.File("sound.ogg"), bytes);
    return ReadSound<float>(dir.File("sound.ogg"));
}

TEST(OpusSound, ASoundAt44100HzKeepsItsLengthAndPlace) {
    const std::vector<float> signal = Bursts(22050, 44100);
    const Sound<float> decoded = Decoded(EncodeOpus(As<short>(signal), 44100, 1, 64000.0));
    EXPECT_EQ(decoded.sampleRate, 48000);
    EXPECT_NEAR(static_cast<double>(decoded.samples.size()), 24000.0, 1.0);
    const auto loudest = [](const std::vector<float>& samples) {
        const auto peak = std::max_element(samples.begin(), samples.end());
        return static_cast<double>(peak - samples.begin()) / static_cast<double>(samples.size());
    };
    EXPECT_NEAR(loudest(decoded.samples), loudest(signal), 0.01);
}

TEST(OpusSound, TwoChannelsStayApart) {
    std::vector<short> stereo;
    for (const short sample : As<short>(Bursts(8000, 16000))) {
        stereo.push_back(sample);
        stereo.push_back(0);
    }
    const Sound<float> decoded = Decoded(EncodeOpus(stereo, 16000, 2, 64000.0));
    ASSERT_EQ(decoded.channels, 2);
    float left = 0.0F;
    float right = 0.0F;
    for (std::size_t i = 0; i < decoded.samples.size(); i += 2) {
        left = std::max(left, decoded.samples[i]);
        right = std::max(right, decoded.samples[i + 1]);
    }
    EXPECT_GT(left, 0.1F);
    EXPECT_LT(right, 0.1F * left);
}

TEST(OpusSound, HalfTheBitRateMakesAboutHalfTheSize) {
    const std::vector<short> signal = As<short>(Bursts(16000, 16000));
    const auto more = static_cast<double>(EncodeOpus(signal, 16000, 1, 48000.0).size());
    const auto less = static_cast<double>(EncodeOpus(signal, 16000, 1, 24000.0).size());
    EXPECT_NEAR(more, 6000.0, 1500.0);
    EXPECT_NEAR(less, 3000.0, 1000.0);
}

}  // namespace
