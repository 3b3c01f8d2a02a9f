/// Settings, reports and events from other threads during processing, also run under ThreadSanitizer.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "play.h"
#include "signals.h"
#include "stream/stream.h"

namespace audio_filter {

namespace {

TEST(StreamThreads, SettingsChangeAndReportsAreReadDuringProcessing) {
    const StreamFormat format = {
        .sampleRate = 32000, .channels = 2, .samples = SAMPLE_FMT_FLT, .sources = 2};
    Stream stream;
    stream.Init(format, {});
    std::atomic<bool> done = false;
    std::thread control([&] {
        for (int round = 0; !done; ++round) {
            StreamSettings settings;
            settings.suppression = round % 5 == 4 ? std::nullopt : std::optional(round % 5);
            settings.gain = round % 3 == 2 ? std::nullopt
                                           : std::optional(static_cast<float>(round % 10) / 10.0F);
            settings.phaseCheck = round % 2 == 0;
            settings.mix = round % 7 < 4;
            settings.music = round % 4 == 0 ? MusicMode::kKeep : MusicMode::kIgnore;
            settings.reversed = static_cast<std::uint16_t>(round);
            stream.SetSettings(settings);
            EXPECT_EQ(stream.Settings(), settings);
        }
    });
    std::atomic<int> events = 0;
    std::thread meter([&] {
        std::int64_t last = 0;
        while (!done) {
            EXPECT_GE(stream.Reduction(), 0.0F);
            static_cast<void>(stream.IsMusic() || stream.IsReversed(1));
            EXPECT_EQ(stream.Latency(), 517);
            for (StreamEvent event; stream.NextEvent(event); ++events) {
                EXPECT_GE(event.frame, last);
                EXPECT_EQ(event.frame % stream.BlockFrames(), 0);
                last = event.frame;
            }
        }
    });
    const Buffers<float> in(2, Bursts(2 * 32000, 32000, 0.5F, 0.1F, 1));
    // Until a change has had an effect, however late the threads start.
    for (int second = 0; second < 5 || events == 0; ++second) {
        const Buffers<float> out = Play(stream, format, in, RandomBlocks(1));
        for (const float sample : out[0]) {
            EXPECT_LE(std::abs(sample), 2.0F);
        }
    }
    done = true;
    control.join();
    meter.join();
}

}  // namespace

}  // namespace audio_filter
