/// The operations of Stream: set-up, refused arguments, draining, settings and events.

#include "stream/stream.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "play.h"
#include "signals.h"
#include "support/signals.h"

namespace audio_filter {

namespace {

using Type = StreamEvent::Type;

constexpr StreamFormat kMono = {.samples = SAMPLE_FMT_FLT, .maxFrames = 1000};

/// Processes a number of processing blocks.
void PlayBlocks(Stream& stream, const StreamFormat& format, int blocks) {
    const auto frames = static_cast<std::size_t>(blocks * stream.BlockFrames());
    const Buffers<float> in(
        static_cast<std::size_t>(format.sources),
        std::vector<float>(frames * static_cast<std::size_t>(format.channels), 0.1F));
    Play(stream, format, in, Blocks(100));
}

TEST(Stream, BeforeInitEveryOperationReturnsItsNeutralValue) {
    Stream stream;
    float sample = 1.0F;
    const void* in[] = {&sample};
    void* out[] = {&sample};
    StreamEvent event;
    EXPECT_EQ(stream.Process(in, out, 1), RESULT_NOT_INITIALISED);
    EXPECT_EQ(stream.Drain(out, 1), 0);
    EXPECT_EQ(stream.Reset(), RESULT_NOT_INITIALISED);
    EXPECT_EQ(stream.Latency(), 0);
    EXPECT_EQ(stream.BlockFrames(), 0);
    EXPECT_EQ(stream.Reduction(), 0.0F);
    EXPECT_FALSE(stream.IsMusic());
    EXPECT_FALSE(stream.IsReversed(0));
    EXPECT_FALSE(stream.NextEvent(event));
    stream.SetSettings(AllOff());
    EXPECT_EQ(stream.Settings(), StreamSettings());
    EXPECT_EQ(sample, 1.0F);
}

TEST(Stream, InitTakes8000To192000Hz1To8Channels1To16SourcesAnd4Formats) {
    const auto init = [](StreamFormat format) { return Stream().Init(format, {}); };
    const StreamFormat good = {};
    for (const int rate : {8000, 8001, 24000, 24001, 47999, 48001, 191999, 192000}) {
        EXPECT_EQ(init({.sampleRate = rate}), RESULT_OK) << rate;
    }
    for (const int rate : {-1, 0, 7999, 192001, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(init({.sampleRate = rate}), RESULT_INVALID) << rate;
    }
    for (int channels = -1; channels <= 10; ++channels) {
        StreamFormat format = good;
        format.channels = channels;
        EXPECT_EQ(init(format), channels >= 1 && channels <= 8 ? RESULT_OK : RESULT_INVALID)
            << channels;
    }
    for (int sources = -1; sources <= 18; ++sources) {
        StreamFormat format = good;
        format.sources = sources;
        EXPECT_EQ(init(format), sources >= 1 && sources <= 16 ? RESULT_OK : RESULT_INVALID)
            << sources;
    }
    for (int samples = -2; samples <= 11; ++samples) {
        StreamFormat format = good;
        format.samples = static_cast<SampleFmt>(samples);
        const bool known = samples == 1 || samples == 3 || samples == 6 || samples == 8;
        EXPECT_EQ(init(format), known ? RESULT_OK : RESULT_INVALID) << samples;
    }
    for (const int frames : {-1, 0, 192001}) {
        StreamFormat format = good;
        format.maxFrames = frames;
        EXPECT_EQ(init(format), RESULT_INVALID) << frames;
    }
}

TEST(Stream, ARefusedInitKeepsTheEarlierStream) {
    const Buffers<float> in = {Bursts(9600, 48000, 0.5F, 0.1F, 1)};
    const Buffers<float> expected = PlayAligned(kMono, {}, in);
    Stream stream;
    ASSERT_EQ(stream.Init(kMono, {}), RESULT_OK);
    const Buffers<float> first = {{in[0].begin(), in[0].begin() + 5000}};
    Buffers<float> out = Play(stream, kMono, first);
    EXPECT_EQ(stream.Init({.channels = 9}, AllOff()), RESULT_INVALID);
    const Buffers<float> second = {{in[0].begin() + 5000, in[0].end()}};
    const Buffers<float> rest = PlayAligned(stream, kMono, second);
    out[0].insert(out[0].end(), rest[0].begin(), rest[0].end());
    EXPECT_EQ(out[0].size(), expected[0].size());
    const auto latency = static_cast<std::size_t>(stream.Latency());
    for (std::size_t i = latency; i < 5000; ++i) {
        ASSERT_EQ(out[0][i], expected[0][i - latency]) << i;
    }
    for (std::size_t i = 5000; i < expected[0].size(); ++i) {
        ASSERT_EQ(out[0][i], expected[0][i]) << i;
    }
}

TEST(Stream, RefusedArgumentsReadAndWriteNothing) {
    const StreamFormat format = {
        .channels = 2, .samples = SAMPLE_FMT_FLTP, .sources = 2, .maxFrames = 480};
    Buffers<float> in(4, Bursts(4800, 48000, 0.5F, 0.1F, 1));
    const Buffers<float> expected = PlayAligned(format, {}, in, Blocks(480));
    Stream stream;
    ASSERT_EQ(stream.Init(format, {}), RESULT_OK);
    const Buffers<float> first(4, {in[0].begin(), in[0].begin() + 480});
    const Buffers<float> begin = Play(stream, format, first);

    std::vector<float> buffer(481, 5.0F);
    const std::vector<float> before = buffer;
    const void* good[] = {buffer.data(), buffer.data(), buffer.data(), buffer.data()};
    void* to[] = {buffer.data(), buffer.data()};
    EXPECT_EQ(stream.Process(nullptr, to, 10), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(stream.Process(good, nullptr, 10), RESULT_BAD_ARGUMENT);
    for (std::size_t i = 0; i < 4; ++i) {
        const void* bad[] = {good[0], good[1], good[2], good[3]};
        bad[i] = nullptr;
        EXPECT_EQ(stream.Process(bad, to, 10), RESULT_BAD_ARGUMENT) << i;
    }
    for (std::size_t i = 0; i < 2; ++i) {
        void* bad[] = {to[0], to[1]};
        bad[i] = nullptr;
        EXPECT_EQ(stream.Process(good, bad, 10), RESULT_BAD_ARGUMENT) << i;
        EXPECT_EQ(stream.Drain(bad, 10), 0) << i;
    }
    for (const int frames : {0, -1, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(stream.Process(good, to, frames), RESULT_BAD_ARGUMENT) << frames;
        EXPECT_EQ(stream.Drain(to, frames), 0) << frames;
    }
    for (const int frames : {481, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(stream.Process(good, to, frames), RESULT_INVALID) << frames;
        EXPECT_EQ(stream.Drain(to, frames), 0) << frames;
    }
    EXPECT_EQ(stream.Drain(nullptr, 10), 0);
    EXPECT_EQ(buffer, before);

    const Buffers<float> rest(4, {in[0].begin() + 480, in[0].end()});
    const Buffers<float> end = PlayAligned(stream, format, rest);
    EXPECT_EQ(end[0].size(), 4320U);
    EXPECT_TRUE(std::equal(end[0].begin(), end[0].end(), expected[0].begin() + 480));
    EXPECT_TRUE(std::equal(end[1].begin(), end[1].end(), expected[1].begin() + 480));
}

TEST(Stream, DrainReturnsTheLatencyInPiecesAndThenNothing) {
    const Buffers<float> in = {Bursts(3000, 48000, 0.5F, 0.1F, 1)};
    const Buffers<float> whole = PlayAligned(kMono, {}, in);
    for (const int piece : {1, 7, 100, 1000}) {
        Stream stream;
        stream.Init(kMono, {});
        std::vector<float> out = Play(stream, kMono, in)[0];
        std::vector<float> buffer(1000);
        void* to[] = {buffer.data()};
        int drained = 0;
        for (int count = 0; (count = stream.Drain(to, piece)) > 0; drained += count) {
            out.insert(out.end(), buffer.begin(), buffer.begin() + count);
        }
        EXPECT_EQ(drained, stream.Latency()) << piece;
        EXPECT_EQ(stream.Drain(to, piece), 0);
        out.erase(out.begin(), out.begin() + stream.Latency());
        EXPECT_EQ(out, whole[0]) << piece;
    }
}

TEST(Stream, ANewStreamHasNothingToDrain) {
    Stream stream;
    stream.Init(kMono, {});
    float sample = 5.0F;
    void* to[] = {&sample};
    EXPECT_EQ(stream.Drain(to, 1), 0);
    EXPECT_EQ(sample, 5.0F);
}

TEST(Stream, ProcessAfterAPartialDrainContinuesAfterThatSilence) {
    const std::vector<float> sound = Bursts(3000, 48000, 0.5F, 0.1F, 1);
    std::vector<float> withSilence = sound;
    withSilence.resize(3200);
    withSilence.insert(withSilence.end(), sound.begin(), sound.end());
    const Buffers<float> expected = PlayAligned(kMono, {}, Buffers<float>{withSilence});

    Stream stream;
    stream.Init(kMono, {});
    std::vector<float> out = Play(stream, kMono, Buffers<float>{sound})[0];
    std::vector<float> silence(200);
    void* to[] = {silence.data()};
    ASSERT_EQ(stream.Drain(to, 200), 200);
    out.insert(out.end(), silence.begin(), silence.end());
    const std::vector<float> second = Play(stream, kMono, Buffers<float>{sound})[0];
    out.insert(out.end(), second.begin(), second.end());
    std::vector<float> rest(1000);
    to[0] = rest.data();
    ASSERT_EQ(stream.Drain(to, 1000), stream.Latency());
    out.insert(out.end(), rest.begin(), rest.begin() + stream.Latency());
    out.erase(out.begin(), out.begin() + stream.Latency());
    EXPECT_EQ(out, expected[0]);
}

TEST(Stream, ResetStartsAgainWithTheLatestSettings) {
    const StreamFormat format = {.channels = 2, .samples = SAMPLE_FMT_FLT, .maxFrames = 1000};
    const Buffers<float> in = {Bursts(20000, 96000, 0.5F, 0.1F, 1)};
    StreamSettings settings = {.suppression = 1, .gain = 0.2F, .phaseCheck = true, .reversed = 1};
    Stream stream;
    stream.Init(format, AllOff());
    Play(stream, format, in);
    stream.SetSettings(settings);
    Play(stream, format, in);
    ASSERT_EQ(stream.Reset(), RESULT_OK);
    EXPECT_EQ(stream.Settings(), settings);
    EXPECT_EQ(stream.Reduction(), 0.0F);
    EXPECT_TRUE(EventsOf(stream).empty());
    std::vector<float> buffer(2000);
    void* to[] = {buffer.data()};
    EXPECT_EQ(stream.Drain(to, 1000), 0);
    EXPECT_EQ(PlayAligned(stream, format, in), PlayAligned(format, settings, in));
}

TEST(Stream, SettingsAreClampedToLevels0To3AndGains0To1) {
    Stream stream;
    stream.Init(kMono, {.suppression = 9, .gain = -2.0F});
    EXPECT_EQ(stream.Settings().suppression, 3);
    EXPECT_EQ(stream.Settings().gain, 0.0F);
    stream.SetSettings({.suppression = -9, .gain = std::numeric_limits<float>::infinity()});
    EXPECT_EQ(stream.Settings().suppression, 0);
    EXPECT_EQ(stream.Settings().gain, 1.0F);
    stream.SetSettings({.gain = std::nanf("")});
    EXPECT_EQ(stream.Settings().gain, 0.0F);
    StreamSettings settings = {.suppression = {}, .music = MusicMode::kKeep, .reversed = 0xA5C3};
    settings.mix = false;
    stream.SetSettings(settings);
    EXPECT_EQ(stream.Settings(), settings);
}

TEST(Stream, EachSwitchGivesOneEventAtTheStartOfItsBlock) {
    const StreamFormat format = {.channels = 2, .samples = SAMPLE_FMT_FLT, .sources = 2};
    Stream stream;
    stream.Init(format, AllOff());
    PlayBlocks(stream, format, 3);
    EXPECT_TRUE(EventsOf(stream).empty());
    stream.SetSettings(
        {.suppression = 1, .gain = 0.5F, .phaseCheck = true, .mix = true, .reversed = 3});
    PlayBlocks(stream, format, 5);
    stream.SetSettings(AllOff());
    PlayBlocks(stream, format, 1);
    const std::vector<StreamEvent> events = EventsOf(stream);
    const Type expected[] = {Type::kSuppression, Type::kGain,     Type::kPhaseCheck,
                             Type::kMixing,      Type::kReversed, Type::kReversed};
    ASSERT_EQ(events.size(), 12U);
    for (std::size_t i = 0; i < 12; ++i) {
        EXPECT_EQ(events[i].type, expected[i % 6]) << i;
        EXPECT_EQ(events[i].on, i < 6) << i;
        EXPECT_EQ(events[i].source, i % 6 == 5 ? 1 : 0) << i;
        EXPECT_EQ(events[i].frame, (i < 6 ? 3 : 8) * stream.BlockFrames()) << i;
    }
}

TEST(Stream, AChangeOfALevelOrAGainIsNoEvent) {
    Stream stream;
    stream.Init(kMono, {.suppression = 0, .gain = 0.1F});
    PlayBlocks(stream, kMono, 3);
    stream.SetSettings({.suppression = 3, .gain = 0.9F});
    PlayBlocks(stream, kMono, 3);
    EXPECT_TRUE(EventsOf(stream).empty());
}

TEST(Stream, TheQueueKeeps64EventsAndLosesLaterOnes) {
    Stream stream;
    stream.Init(kMono, AllOff());
    for (int block = 0; block <= 100; ++block) {
        stream.SetSettings(block % 2 == 0 ? AllOff() : Suppressing(1));
        PlayBlocks(stream, kMono, 1);
    }
    const std::vector<StreamEvent> events = EventsOf(stream);
    ASSERT_EQ(events.size(), 64U);
    for (std::size_t i = 0; i < 64; ++i) {
        EXPECT_EQ(events[i].frame, static_cast<std::int64_t>(i + 1) * stream.BlockFrames());
    }
    stream.SetSettings(Suppressing(1));
    PlayBlocks(stream, kMono, 1);
    ASSERT_EQ(EventsOf(stream).size(), 1U);
}

TEST(Stream, ReversedSourcesAreToldFromTheFirstBlockAndOnlySources0To15Exist) {
    const StreamFormat format = {.channels = 2, .samples = SAMPLE_FMT_FLT, .sources = 16};
    Stream stream;
    StreamSettings settings = AllOff();
    settings.reversed = 0x8005;
    stream.Init(format, settings);
    PlayBlocks(stream, format, 1);
    for (int source = -2; source < 40; ++source) {
        EXPECT_EQ(stream.IsReversed(source), source == 0 || source == 2 || source == 15) << source;
    }
    EXPECT_TRUE(EventsOf(stream).empty());
}

TEST(Stream, ReductionIs0InTheBlockThatSwitchesSuppressionOn) {
    for (const int rate : {8000, 16000, 48000, 96000}) {
        const StreamFormat format = {.sampleRate = rate, .samples = SAMPLE_FMT_FLT};
        Stream stream;
        stream.Init(format, AllOff());
        const auto block = static_cast<std::size_t>(stream.BlockFrames());
        const Buffers<float> tone = {Tone(10 * block, 440.0, rate, 0.1)};
        Play(stream, format, tone);
        stream.SetSettings(Suppressing(0));
        // The suppressor starts with silence in its delay; its output is not yet faded in.
        const Buffers<float> next = {Tone(block, 440.0, rate, 0.1)};
        Play(stream, format, next);
        EXPECT_EQ(stream.Reduction(), 0.0F) << rate;
    }
}

TEST(Stream, ReductionIsTheFallOfSteadyNoiseAnd0WhenOffAndInSilence) {
    for (const int rate : {8000, 48000, 96000}) {
        const StreamFormat format = {.sampleRate = rate, .samples = SAMPLE_FMT_FLT};
        const Buffers<float> noise = {WhiteNoise(static_cast<std::size_t>(3 * rate), 0.02F, 1)};
        Stream stream;
        stream.Init(format, Suppressing(2));
        const Buffers<float> out = PlayAligned(stream, format, noise);
        double before = 0.0;
        double after = 0.0;
        for (std::size_t i = static_cast<std::size_t>(2 * rate); i < noise[0].size(); ++i) {
            before += static_cast<double>(noise[0][i] * noise[0][i]);
            after += static_cast<double>(out[0][i] * out[0][i]);
        }
        // Draining ended in silence.
        const Buffers<float> silence = {std::vector<float>(static_cast<std::size_t>(rate))};
        Play(stream, format, silence);
        EXPECT_EQ(stream.Reduction(), 0.0F) << rate;
        Play(stream, format, noise);
        EXPECT_NEAR(static_cast<double>(stream.Reduction()), 10.0 * std::log10(before / after), 3.0)
            << rate;
        EXPECT_GT(stream.Reduction(), 6.0F) << rate;
        stream.SetSettings(AllOff());
        Play(stream, format, noise);
        EXPECT_EQ(stream.Reduction(), 0.0F) << rate;
    }
}

}  // namespace

}  // namespace audio_filter
