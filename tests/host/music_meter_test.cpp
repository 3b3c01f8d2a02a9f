#include "host/music_meter.h"

#include <gtest/gtest.h>

#include <iostream>
#include <memory>

#include "host/audio_reader.h"
#include "host/source_feed.h"
#include "sound_files.h"

namespace {

/// The spoken prompts of alsa-utils, without its Noise.wav.
const std::vector<std::string> kPrompts = {"Front_Center", "Front_Left", "Front_Right",
                                           "Rear_Center",  "Rear_Left",  "Rear_Right",
                                           "Side_Left",    "Side_Right"};

/// Free music from the package tuxmath-data.
const std::string kRush = "/usr/share/tuxmath/sounds/01_rush.ogg";
const std::string kTuxi = "/usr/share/tuxmath/sounds/tuxi.ogg";

struct Verdict {
    double seconds;
    double music;
};

/// Feeds the files one after another, converted to a format, in 10 ms blocks. A missing file throws,
/// which fails the test.
template <typename Sample>
Verdict Detect(const std::vector<std::string>& files, const AudioFormat& format) {
    MusicMeter<Sample> meter(format);
    std::int64_t pushed = 0;
    for (const std::string& file : files) {
        SourceFeed<Sample> feed(std::make_unique<AudioReader>(file), format);
        while (const std::size_t frames =
                   feed.Fill(static_cast<std::size_t>(format.sampleRate) / 100)) {
            std::vector<Sample> block;
            feed.Take(frames, block);
            meter.Add(std::move(block));
            pushed += static_cast<std::int64_t>(frames);
        }
    }
    const auto seconds = [&](std::int64_t frames) {
        return static_cast<double>(frames) / format.sampleRate;
    };
    const Verdict verdict = {seconds(pushed), seconds(meter.MusicFrames())};
    std::cout << files.front() << " at " << format.sampleRate << " Hz: " << verdict.music
              << " s of " << verdict.seconds << " s detected as music\n";
    return verdict;
}

std::vector<std::string> PromptFiles() {
    std::vector<std::string> files;
    for (const std::string& prompt : kPrompts) {
        files.push_back("/usr/share/sounds/alsa/" + prompt + ".wav");
    }
    return files;
}

TEST(MusicMeter, ElevenSecondsOfSpokenPromptsContainNoMusicAt32000And44100Hz) {
    for (const int rate : {32000, 44100}) {
        const Verdict s16 = Detect<short>(PromptFiles(), {rate, 1, SampleFormat::kS16});
        EXPECT_GT(s16.seconds, 11.0);
        EXPECT_EQ(s16.music, 0.0);
        EXPECT_EQ(Detect<float>(PromptFiles(), {rate, 1, SampleFormat::kFloat}).music, 0.0);
    }
}

TEST(MusicMeter, ASongAt32000HzIsMusicForMoreThanHalfOfItsDuration) {
    const Verdict verdict = Detect<short>({kRush}, {32000, 2, SampleFormat::kS16});
    EXPECT_GT(verdict.seconds, 57.0);
    EXPECT_GT(verdict.music, 0.5 * verdict.seconds);
}

TEST(MusicMeter, ASongAt44100HzIsMusicForMoreThanHalfOfItsDuration) {
    const Verdict verdict = Detect<short>({kTuxi}, {44100, 2, SampleFormat::kS16});
    EXPECT_GT(verdict.seconds, 109.0);
    EXPECT_GT(verdict.music, 0.5 * verdict.seconds);
}

TEST(MusicMeter, CountsTheFramesOfTheBlocksInWhichTheFiltersDetectorReportsMusic) {
    const AudioFormat format = {44100, 2, SampleFormat::kS16};
    SourceFeed<short> feed(std::make_unique<AudioReader>(kTuxi), format);
    MusicMeter<short> meter(format);
    AudioClassifier classifier;
    classifier.Init(2, 44100, SAMPLE_FMT_S16);
    std::int64_t expected = 0;
    for (int i = 0; i < 30; ++i) {
        std::vector<short> block;
        feed.Fill(20000);
        feed.Take(20000, block);
        meter.Add(block);
        expected += classifier.MusicCheck(reinterpret_cast<unsigned char*>(block.data()), 80000)
                        ? 20000
                        : 0;
    }
    EXPECT_EQ(meter.MusicFrames(), expected);
    EXPECT_GT(expected, 0);
}

TEST(MusicMeter, SilenceIsNoMusicAtAnyRate) {
    for (const int rate : {8000, 22050, 32000, 44100, 48000, 96000}) {
        MusicMeter<float> meter({rate, 1, SampleFormat::kFloat});
        for (int i = 0; i < 500; ++i) {
            meter.Add(std::vector<float>(static_cast<std::size_t>(rate) / 100));
        }
        EXPECT_EQ(meter.MusicFrames(), 0) << rate;
    }
}

}  // namespace
