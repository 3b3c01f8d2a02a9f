/// What every host relies on: as many frames out as in, a constant latency, and an output that does not
/// depend on the blocks.

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

#include "play.h"
#include "signals.h"
#include "stream/stream.h"
#include "support/bytes.h"
#include "support/seed.h"
#include "support/signals.h"

namespace audio_filter {

namespace {

constexpr int kRates[] = {8000, 16000, 32000, 44100, 48000, 96000};

/// A change of every setting, 9 times a second.
std::vector<Change> Changes(std::size_t frames, int rate) {
    std::vector<Change> changes;
    std::minstd_rand random(5);
    const auto step = static_cast<std::size_t>(rate) / 9;
    for (std::size_t at = step; at < frames; at += step) {
        StreamSettings settings;
        settings.suppression.reset();
        if (const int level = static_cast<int>(random() % 5); level < 4) {
            settings.suppression = level;
        }
        if (random() % 2 == 0) {
            settings.gain = static_cast<float>(random() % 11) / 10.0F;
        }
        settings.phaseCheck = random() % 2 == 0;
        settings.mix = random() % 2 == 0;
        settings.music = random() % 2 == 0 ? MusicMode::kKeep : MusicMode::kIgnore;
        settings.highBand = random() % 2 == 0;
        changes.push_back({at, settings});
    }
    return changes;
}

template <typename Sample>
Buffers<Sample> NoisySources(std::size_t frames, int rate, int channels, int sources) {
    Buffers<Sample> buffers;
    std::mt19937 random(7);
    for (int source = 0; source < sources; ++source) {
        buffers.push_back(As<Sample>(
            NoisySpeech(random, frames * static_cast<std::size_t>(channels), rate * channels)));
    }
    return buffers;
}

template <typename Sample>
void ExpectTheSameForAllBlocks(int rate, int channels, int sources) {
    const StreamFormat format = FormatOf(rate, channels, Interleaved<Sample>(), sources);
    const auto frames = static_cast<std::size_t>(rate);
    const Buffers<Sample> in = NoisySources<Sample>(frames, rate, channels, sources);
    const std::vector<Change> changes = Changes(frames, rate);
    const StreamSettings settings = {.gain = 0.5F, .phaseCheck = true, .music = MusicMode::kKeep};
    const Buffers<Sample> expected = PlayAligned(format, settings, in, Blocks(480), changes);
    for (const std::size_t block : {1U, 64U, 137U, 1024U}) {
        const Buffers<Sample> out = PlayAligned(format, settings, in, Blocks(block), changes);
        EXPECT_TRUE(SameBits(out[0], expected[0])) << rate << " Hz, blocks of " << block;
    }
    const Buffers<Sample> out = PlayAligned(format, settings, in, RandomBlocks(Seed()), changes);
    EXPECT_TRUE(SameBits(out[0], expected[0])) << rate << " Hz, random blocks";
}

TEST(StreamContract, OutputBytesAreEqualForBlocksOf1And64And137And480And1024AndRandomOnes) {
    for (const int rate : kRates) {
        ExpectTheSameForAllBlocks<short>(rate, 1, 1);
        ExpectTheSameForAllBlocks<float>(rate, 2, 1);
    }
    ExpectTheSameForAllBlocks<float>(11025, 2, 3);
    ExpectTheSameForAllBlocks<short>(48000, 2, 3);
    ExpectTheSameForAllBlocks<float>(192000, 3, 1);
}

void ExpectTheToldLatency(int rate, int channels, const StreamSettings& settings, bool changing) {
    const StreamFormat format = FormatOf(rate, channels, SAMPLE_FMT_FLTP);
    const std::size_t frames = static_cast<std::size_t>(rate) / 2;
    Buffers<float> in;
    for (int channel = 0; channel < channels; ++channel) {
        in.push_back(Bursts(frames, rate, 0.3F, 0.001F, static_cast<std::uint32_t>(channel + 1)));
    }
    Stream stream;
    ASSERT_EQ(stream.Init(format, settings), RESULT_OK);
    const int told = stream.Latency();
    const Buffers<float> out = Play(stream, format, in, Blocks(137),
                                    changing ? Changes(frames, rate) : std::vector<Change>());
    EXPECT_EQ(stream.Latency(), told);
    for (int channel = 0; channel < channels; ++channel) {
        const auto at = static_cast<std::size_t>(channel);
        const std::size_t lag = CorrelatedLag(in[at], out[at], static_cast<std::size_t>(2 * told));
        EXPECT_NEAR(static_cast<double>(lag), told, 1.0)
            << rate << " Hz, channel " << channel << " of " << channels;
    }
}

TEST(StreamContract, TheToldLatencyIsTheCorrelatedLagWithin1FrameAt6RatesInMonoAndStereo) {
    for (const int rate : kRates) {
        for (const int channels : {1, 2}) {
            ExpectTheToldLatency(rate, channels, Suppressing(2), false);
            ExpectTheToldLatency(rate, channels, AllOff(), false);
        }
    }
}

TEST(StreamContract, TheToldLatencyIsTheCorrelatedLagWithin1FrameWhileSettingsChange) {
    for (const int rate : kRates) {
        for (const int channels : {1, 2}) {
            ExpectTheToldLatency(rate, channels, {}, true);
        }
    }
}

TEST(StreamContract, TheLatencyDependsOnTheRateAlone) {
    for (const int rate : kRates) {
        Stream mono;
        mono.Init(FormatOf(rate, 1, SAMPLE_FMT_S16), AllOff());
        Stream many;
        many.Init(FormatOf(rate, 8, SAMPLE_FMT_FLTP, 16),
                  {.suppression = 3, .gain = 1.0F, .music = MusicMode::kKeep});
        EXPECT_EQ(mono.Latency(), many.Latency()) << rate;
        EXPECT_EQ(mono.BlockFrames(), many.BlockFrames()) << rate;
    }
}

TEST(StreamContract, TheLatencyIsAtMost12MsFrom40000HzTo48000HzAnd16Point5MsAt32000Hz) {
    const auto milliseconds = [](int rate) {
        Stream stream;
        stream.Init(FormatOf(rate, 1, SAMPLE_FMT_S16), {});
        return 1000.0 * stream.Latency() / rate;
    };
    EXPECT_LE(milliseconds(32000), 16.5);
    EXPECT_LE(milliseconds(44100), 12.0);
    EXPECT_LE(milliseconds(48000), 12.0);
    EXPECT_LE(milliseconds(96000), 14.0);
    EXPECT_LE(milliseconds(192000), 14.0);
    EXPECT_LE(milliseconds(16000), 26.5);
    EXPECT_LE(milliseconds(8000), 32.5);
}

/// Any bits, and rows of the values that arithmetic changes.
template <typename Sample>
std::vector<Sample> AnyBits(std::size_t samples, std::mt19937& random) {
    std::vector<Sample> any(samples);
    if constexpr (std::is_same_v<Sample, float>) {
        constexpr std::uint32_t kSpecial[] = {0x7F800001U, 0x7FC12345U, 0xFFC00001U, 0x7F800000U,
                                              0xFF800000U, 0x00000001U, 0x807FFFFFU, 0x80000000U};
        for (Sample& sample : any) {
            const auto bits = static_cast<std::uint32_t>(random());
            sample = std::bit_cast<float>(bits % 3 == 0 ? kSpecial[random() % 8] : bits);
        }
    } else {
        for (Sample& sample : any) {
            sample = static_cast<short>(random());
        }
    }
    return any;
}

template <typename Sample>
void ExpectTheInput(int rate, int channels, SampleFmt samples, bool inPlace) {
    const StreamFormat format = FormatOf(rate, channels, samples);
    std::mt19937 random = SeededRandom();
    const auto buffers = static_cast<std::size_t>(internal::IsPlanar(samples) ? channels : 1);
    const std::size_t frames = 5000;
    Buffers<Sample> in;
    for (std::size_t i = 0; i < buffers; ++i) {
        in.push_back(AnyBits<Sample>(frames * Width(format), random));
    }
    Stream stream;
    ASSERT_EQ(stream.Init(format, AllOff()), RESULT_OK);
    const std::size_t latency = static_cast<std::size_t>(stream.Latency()) * Width(format);
    Buffers<Sample> out = in;
    if (inPlace) {
        for (std::size_t at = 0; at < frames; at += 500) {
            std::vector<void*> block;
            for (std::vector<Sample>& buffer : out) {
                block.push_back(buffer.data() + at * Width(format));
            }
            ASSERT_EQ(stream.Process(block.data(), block.data(), 500), RESULT_OK);
        }
    } else {
        out = Play(stream, format, in, RandomBlocks(Seed()));
    }
    for (std::size_t i = 0; i < buffers; ++i) {
        std::vector<Sample> expected(latency);
        expected.insert(expected.end(), in[i].begin(), in[i].end());
        expected.resize(in[i].size());
        EXPECT_TRUE(SameBits(out[i], expected))
            << rate << " Hz, " << channels << " channels, format " << samples;
    }
}

TEST(StreamContract, WithEverythingOffTheOutputIsTheDelayedInputToTheBitEvenNaN) {
    for (const int rate : kRates) {
        for (const int channels : {1, 2, 5}) {
            for (const bool inPlace : {false, true}) {
                ExpectTheInput<short>(rate, channels, SAMPLE_FMT_S16, inPlace);
                ExpectTheInput<short>(rate, channels, SAMPLE_FMT_S16P, inPlace);
                ExpectTheInput<float>(rate, channels, SAMPLE_FMT_FLT, inPlace);
                ExpectTheInput<float>(rate, channels, SAMPLE_FMT_FLTP, inPlace);
            }
        }
    }
}

TEST(StreamContract, AFiniteStreamWithEverythingOffReturns0ForEachSampleThatIsNotFinite) {
    StreamFormat format = FormatOf(48000, 1, SAMPLE_FMT_FLT);
    format.finite = true;
    StreamSettings off;
    off.suppression.reset();
    std::vector<float> in(9600, 0.25F);
    std::vector<float> expected = in;
    const float bad[] = {std::nanf(""), std::numeric_limits<float>::infinity(),
                         -std::numeric_limits<float>::infinity()};
    for (std::size_t i = 0; i < in.size(); i += 7) {
        in[i] = bad[i % 3];
        expected[i] = 0.0F;
    }
    EXPECT_TRUE(SameBits(PlayAligned(format, off, Buffers<float>{in})[0], expected));
}

TEST(StreamContract, AnOutputMayBeTheBufferOfAnySource) {
    const StreamFormat format = FormatOf(48000, 2, SAMPLE_FMT_S16, 3);
    const Buffers<short> in = NoisySources<short>(9600, 48000, 2, 3);
    Stream stream;
    stream.Init(format, {});
    const Buffers<short> expected = Play(stream, format, in, Blocks(1000));
    for (std::size_t source = 0; source < 3; ++source) {
        Stream inPlace;
        inPlace.Init(format, {});
        Buffers<short> buffers = in;
        for (std::size_t at = 0; at < 9600; at += 1200) {
            const void* from[] = {&buffers[0][2 * at], &buffers[1][2 * at], &buffers[2][2 * at]};
            void* to[] = {&buffers[source][2 * at]};
            ASSERT_EQ(inPlace.Process(from, to, 1200), RESULT_OK);
        }
        EXPECT_EQ(buffers[source], expected[0]) << "source " << source;
    }
}

TEST(StreamContract, PlanarAndInterleavedGiveTheSameSamples) {
    for (const int channels : {2, 3, 8}) {
        Buffers<short> planar;
        for (int channel = 0; channel < channels; ++channel) {
            planar.push_back(As<short>(
                Bursts(16000, 32000, 0.5F, 0.05F, static_cast<std::uint32_t>(channel + 1))));
        }
        const StreamSettings settings = {.gain = 0.3F};
        const Buffers<short> out =
            PlayAligned(FormatOf(32000, channels, SAMPLE_FMT_S16P), settings, planar);
        const Buffers<short> interleaved =
            PlayAligned(FormatOf(32000, channels, SAMPLE_FMT_S16), settings,
                        Buffers<short>{Interleave(planar)});
        EXPECT_EQ(Interleave(out), interleaved[0]) << channels;
    }
}

TEST(StreamContract, EachOf1To8ChannelsEqualsTheMonoStreamOfIt) {
    for (const int rate : {32000, 44100, 48000}) {
        for (int channels = 1; channels <= 8; ++channels) {
            Buffers<short> in;
            for (int channel = 0; channel < channels; ++channel) {
                in.push_back(As<short>(Bursts(static_cast<std::size_t>(rate) / 2, rate, 0.5F, 0.05F,
                                              static_cast<std::uint32_t>(channel + 1))));
            }
            const StreamSettings settings = {.suppression = 3, .gain = 0.5F};
            const Buffers<short> out =
                PlayAligned(FormatOf(rate, channels, SAMPLE_FMT_S16P), settings, in);
            for (std::size_t channel = 0; channel < in.size(); ++channel) {
                const Buffers<short> mono = PlayAligned(FormatOf(rate, 1, SAMPLE_FMT_S16), settings,
                                                        Buffers<short>{in[channel]});
                EXPECT_EQ(out[channel], mono[0])
                    << rate << " Hz, channel " << channel << " of " << channels;
            }
        }
    }
}

TEST(StreamContract, ChannelsThatAreDitheredDifferFromTheirMonoStreamBelowMinus60DbFs) {
    for (const int rate : {8000, 16000, 96000}) {
        Buffers<float> in;
        for (std::uint32_t channel = 0; channel < 3; ++channel) {
            in.push_back(Bursts(static_cast<std::size_t>(rate), rate, 0.5F, 0.05F, channel + 1));
        }
        const Buffers<float> out =
            PlayAligned(FormatOf(rate, 3, SAMPLE_FMT_FLTP), Suppressing(1), in);
        const Buffers<float> mono =
            PlayAligned(FormatOf(rate, 1, SAMPLE_FMT_FLT), Suppressing(1), Buffers<float>{in[2]});
        double energy = 0.0;
        for (std::size_t i = 0; i < in[2].size(); ++i) {
            const double difference = static_cast<double>(out[2][i] - mono[0][i]);
            energy += difference * difference;
        }
        EXPECT_LT(10.0 * std::log10(energy / static_cast<double>(in[2].size())), -60.0) << rate;
        EXPECT_GT(energy, 0.0) << rate;  // the dither of the channels is independent
    }
}

TEST(StreamContract, NoRunOfZerosIsLongerThan1MsWhereTheInputHasNone) {
    for (const int rate : kRates) {
        const auto frames = static_cast<std::size_t>(rate) * 2;
        const std::vector<float> in = Bursts(frames, rate, 0.5F, 0.1F, 3);
        for (const int level : {0, 3}) {
            const auto most = static_cast<std::size_t>(rate / 1000);
            const Buffers<float> floats = PlayAligned(
                FormatOf(rate, 1, SAMPLE_FMT_FLT), Suppressing(level), Buffers<float>{in},
                Blocks(480), {{frames / 2, AllOff()}, {frames * 3 / 4, Suppressing(level)}});
            EXPECT_LE(LongestZeros(floats[0]), most) << rate;
            const Buffers<short> shorts =
                PlayAligned(FormatOf(rate, 1, SAMPLE_FMT_S16), Suppressing(level),
                            Buffers<short>{As<short>(in)});
            EXPECT_LE(LongestZeros({shorts[0].begin(), shorts[0].end()}), most) << rate;
        }
    }
}

TEST(StreamContract, DigitalSilenceStaysDigitalSilenceAtEveryRateAndSetting) {
    for (const int rate : {8000, 11025, 16000, 22050, 32000, 44100, 48000, 88200, 96000, 192000}) {
        for (const std::optional<float>& gain : {std::optional<float>(), std::optional(1.0F)}) {
            const auto frames = static_cast<std::size_t>(rate);
            StreamSettings settings = Suppressing(2);
            settings.gain = gain;
            settings.phaseCheck = settings.mix = true;
            const Buffers<float> in(2, std::vector<float>(2 * frames));
            const Buffers<float> out =
                PlayAligned(FormatOf(rate, 2, SAMPLE_FMT_FLT, 2), settings, in, Blocks(480),
                            {{frames / 3, AllOff()}, {frames / 2, settings}});
            EXPECT_EQ(out[0], in[0]) << rate;
        }
    }
}

TEST(StreamContract, DigitalSilenceAfterSoundReturnsToDigitalSilenceWithin100Ms) {
    for (const int rate : kRates) {
        std::vector<float> in = Bursts(static_cast<std::size_t>(rate), rate, 0.5F, 0.1F, 1);
        const std::size_t sound = in.size();
        in.resize(2 * sound);
        const Buffers<float> out =
            PlayAligned(FormatOf(rate, 1, SAMPLE_FMT_FLT), Suppressing(2), Buffers<float>{in});
        for (std::size_t i = sound + sound / 10; i < out[0].size(); ++i) {
            ASSERT_EQ(out[0][i], 0.0F) << rate << " Hz, " << i - sound << " frames after the sound";
        }
    }
}

TEST(StreamContract, OutputIsFiniteAgainWithin100MsOfABlockOfNaNOrInfinitiesOrTheLargestFloats) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float largest = std::numeric_limits<float>::max();
    for (const int rate : {8000, 16000, 32000, 44100, 48000, 96000, 192000}) {
        for (const float bad : {std::nanf(""), infinity, -infinity, largest, -largest, 1e20F}) {
            for (const bool alternating : {false, true}) {
                if (alternating && bad < 0.0F) {
                    continue;  // the same again
                }
                const auto half = static_cast<std::size_t>(rate) / 2;
                std::vector<float> in = Bursts(2 * half, rate, 0.5F, 0.1F, 1);
                const std::size_t end = half / 2 + half / 25;
                for (std::size_t i = half / 2; i < end; ++i) {
                    in[i] = alternating && i % 8 < 4 ? -bad : bad;
                }
                const StreamSettings settings = {.gain = 0.5F, .music = MusicMode::kKeep};
                const Buffers<float> out =
                    PlayAligned(FormatOf(rate, 1, SAMPLE_FMT_FLT), settings, Buffers<float>{in});
                double energy = 0.0;
                for (std::size_t i = end + half / 5; i < out[0].size(); ++i) {
                    ASSERT_TRUE(std::isfinite(out[0][i])) << rate << " Hz, " << bad;
                    energy += static_cast<double>(out[0][i] * out[0][i]);
                }
                EXPECT_GT(energy / static_cast<double>(half), 1e-4) << rate << " Hz, " << bad;
            }
        }
    }
}

}  // namespace

}  // namespace audio_filter
