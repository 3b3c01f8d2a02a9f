/// The stages of a stream against the units alone, and the crossfades between them.

#include "stream/engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "bands.h"
#include "classifier/audio_classifier.h"
#include "play.h"
#include "signals.h"
#include "support/bytes.h"
#include "support/signals.h"
#include "units/audio_denoise.h"
#include "units/audio_gain.h"
#include "units/audio_mixing.h"

namespace audio_filter {

namespace {

using Type = StreamEvent::Type;

/// AudioDenoise alone, in blocks of 320 samples, with levels from some blocks on.
std::vector<short> Denoised(const std::vector<short>& in, int level,
                            const std::vector<std::pair<std::size_t, int>>& levels) {
    AudioDenoise denoise;
    denoise.Init(32000, 1, SAMPLE_FMT_S16, level);
    std::vector<short> out(in.size());
    for (std::size_t at = 0; at + 320 <= in.size(); at += 320) {
        for (const auto& [frame, later] : levels) {
            if (frame == at) {
                denoise.Config(later);
            }
        }
        int size = 640;
        denoise.Process(reinterpret_cast<const char*>(&in[at]), reinterpret_cast<char*>(&out[at]),
                        size);
    }
    return out;
}

TEST(Engine, At32000And44100And48000HzAnd16BitItEqualsAudioDenoiseOnBlocksOf320SamplesToTheBit) {
    for (const int rate : {32000, 44100, 48000}) {
        for (int level = 0; level <= 3; ++level) {
            std::mt19937 random(static_cast<std::uint32_t>(level + 1));
            const std::vector<short> in = As<short>(NoisySpeech(random, 320 * 400, rate));
            const StreamFormat format = FormatOf(rate, 1, SAMPLE_FMT_S16);
            Stream stream;
            stream.Init(format, Suppressing(level));
            const int later = 3 - level;
            const Buffers<short> out = Play(stream, format, Buffers<short>{in}, RandomBlocks(1),
                                            {{320 * 200, Suppressing(later)}});
            std::vector<short> expected = Denoised(in, level, {{320 * 200, later}});
            expected.insert(expected.begin(), 320, 0);
            expected.resize(in.size());
            EXPECT_TRUE(SameBits(out[0], expected)) << rate << " Hz, level " << level;
        }
    }
}

TEST(Engine, At16BitItMixes1To5SourcesAsAudioMixingToTheBit) {
    for (int sources = 1; sources <= 5; ++sources) {
        for (const int channels : {1, 2, 3}) {
            constexpr std::size_t kFrames = 4000;
            Buffers<short> in;
            std::vector<short> all;
            std::minstd_rand random(1);
            for (int source = 0; source < sources; ++source) {
                std::vector<short> samples(kFrames * static_cast<std::size_t>(channels));
                for (short& sample : samples) {
                    sample = static_cast<short>(random());
                }
                all.insert(all.end(), samples.begin(), samples.end());
                in.push_back(std::move(samples));
            }
            const auto mixing = std::make_unique<AudioMixing>();
            mixing->Init(SAMPLE_FMT_S16);
            int size = ByteCount(all);
            ASSERT_EQ(mixing->Process(BytesOf(all), BytesOf(all), size, sources), RESULT_OK);
            all.resize(in[0].size());
            StreamSettings settings = AllOff();
            settings.mix = true;
            const Buffers<short> out =
                PlayAligned(FormatOf(48000, channels, SAMPLE_FMT_S16, sources), settings, in);
            EXPECT_EQ(out[0], all) << sources << " sources of " << channels << " channels";
        }
    }
}

TEST(Engine, WithMixingOffTheFirstSourceIsUnchanged) {
    const Buffers<float> in = {WhiteNoise(3000, 1.0F, 1), WhiteNoise(3000, 1.0F, 2)};
    const Buffers<float> out = PlayAligned(FormatOf(44100, 1, SAMPLE_FMT_FLT, 2), AllOff(), in);
    EXPECT_EQ(out[0], in[0]);
}

TEST(Engine, AFloatMixKeepsASignalOfMinus140DbFs) {
    const Buffers<float> in = {WhiteNoise(3000, 1e-7F, 1), WhiteNoise(3000, 1e-7F, 2)};
    StreamSettings settings = AllOff();
    settings.mix = true;
    const Buffers<float> out = PlayAligned(FormatOf(48000, 1, SAMPLE_FMT_FLT, 2), settings, in);
    for (std::size_t i = 0; i < in[0].size(); ++i) {
        const double sum = static_cast<double>(in[0][i]) + static_cast<double>(in[1][i]);
        ASSERT_NEAR(static_cast<double>(out[0][i]), 0.875 * sum, 1e-14) << i;
    }
}

TEST(Engine, GainEqualsAudioGainToTheBitIn16BitAndFloat) {
    StreamSettings settings = AllOff();
    settings.gain = 0.6F;
    AudioGain gain;
    gain.SetGain(0.6F);
    std::vector<float> floats = WhiteNoise(5000, 1.2F, 1);
    const Buffers<float> out =
        PlayAligned(FormatOf(96000, 1, SAMPLE_FMT_FLTP), settings, Buffers<float>{floats});
    gain.Process(BytesOf(floats), ByteCount(floats), SAMPLE_FMT_FLT);
    EXPECT_TRUE(SameBits(out[0], floats));
    std::vector<short> shorts = As<short>(WhiteNoise(5000, 1.0F, 1));
    const Buffers<short> out16 =
        PlayAligned(FormatOf(8000, 1, SAMPLE_FMT_S16), settings, Buffers<short>{shorts});
    gain.Process(BytesOf(shorts), ByteCount(shorts), SAMPLE_FMT_S16);
    EXPECT_TRUE(SameBits(out16[0], shorts));
}

TEST(Engine, FromOneSwitchOnTheOutputIsTheInputAgainToTheBitAfter10Ms) {
    for (const int rate : {8000, 48000, 96000}) {
        const auto second = static_cast<std::size_t>(rate);
        const std::vector<float> in = Bursts(2 * second, rate, 0.5F, 0.1F, 1);
        StreamSettings all = {.suppression = 2, .gain = 0.5F, .phaseCheck = true, .reversed = 1};
        const Buffers<float> both = {Interleave(Buffers<float>{in, in})};
        const Buffers<float> out = PlayAligned(FormatOf(rate, 2, SAMPLE_FMT_FLT), all, both,
                                               Blocks(480), {{second, AllOff()}});
        // The next processing block, the latency of the suppression, and the crossfade.
        const std::size_t after = second + second / 20;
        EXPECT_TRUE(std::equal(out[0].begin() + static_cast<std::ptrdiff_t>(2 * after),
                               out[0].end(),
                               both[0].begin() + static_cast<std::ptrdiff_t>(2 * after)))
            << rate;
    }
}

/// The largest step of a stream of -20 dBFS with one change after a second, as a multiple of the larger of the
/// steps before and long after it.
double StepAtAChange(int rate, int channels, int sources, const StreamSettings& before,
                     const StreamSettings& after) {
    const auto second = static_cast<std::size_t>(rate);
    const std::vector<float> tone = Tone(3 * second, 440.0, rate, 0.1);
    const Buffers<float> in(static_cast<std::size_t>(channels * sources), tone);
    const Buffers<float> out = PlayAligned(FormatOf(rate, channels, SAMPLE_FMT_FLTP, sources),
                                           before, in, Blocks(480), {{second, after}});
    const float steady = std::max(LargestStep(out[0], second * 9 / 10, second * 95 / 100),
                                  LargestStep(out[0], second * 29 / 10, second * 295 / 100));
    return static_cast<double>(LargestStep(out[0], second * 95 / 100, second * 12 / 10) / steady);
}

TEST(Engine, NoSwitchStepsFurtherThan1PercentBeyondAToneOfMinus20DbFs) {
    StreamSettings gain = AllOff();
    gain.gain = 0.9F;
    StreamSettings littleGain = AllOff();
    littleGain.gain = 0.1F;
    StreamSettings reversed = AllOff();
    reversed.reversed = 1;
    StreamSettings mixed = AllOff();
    mixed.mix = true;
    struct Case {
        const char* name;
        int channels, sources;
        StreamSettings one, other;
    };
    const Case cases[] = {{"gain", 1, 1, AllOff(), gain},
                          {"gain changed", 1, 1, littleGain, gain},
                          {"polarity", 2, 1, AllOff(), reversed},
                          {"mixing", 1, 3, AllOff(), mixed}};
    for (const int rate : {8000, 16000, 32000, 44100, 48000, 96000}) {
        for (const Case& each : cases) {
            EXPECT_LE(StepAtAChange(rate, each.channels, each.sources, each.one, each.other), 1.01)
                << each.name << " on at " << rate << " Hz";
            EXPECT_LE(StepAtAChange(rate, each.channels, each.sources, each.other, each.one), 1.01)
                << each.name << " off at " << rate << " Hz";
        }
    }
}

/// The peak of the fifth difference, in dB: a tone of 440 Hz nearly disappears in it, a click does not.
double ClickLevel(const std::vector<float>& signal, std::size_t begin, std::size_t end) {
    double largest = 0.0;
    for (std::size_t i = begin + 5; i < end; ++i) {
        const auto at = [&signal, i](std::size_t back) {
            return static_cast<double>(signal[i - back]);
        };
        const double difference =
            at(0) - 5.0 * at(1) + 10.0 * at(2) - 10.0 * at(3) + 5.0 * at(4) - at(5);
        largest = std::max(largest, std::abs(difference) / 16.0);
    }
    return 20.0 * std::log10(largest + 1e-9);
}

void ExpectNoClick(int rate, const std::string& name, const StreamSettings& before,
                   const StreamSettings& after) {
    const auto second = static_cast<std::size_t>(rate);
    const Buffers<float> in = {Tone(3 * second, 440.0, rate, 0.1)};
    const Buffers<float> out =
        PlayAligned(FormatOf(rate, 1, SAMPLE_FMT_FLTP), before, in, Blocks(480), {{second, after}});
    const double steady = std::max(ClickLevel(out[0], second / 2, second * 95 / 100),
                                   ClickLevel(out[0], second * 2, second * 295 / 100));
    EXPECT_LE(ClickLevel(out[0], second * 95 / 100, second * 12 / 10),
              std::max(steady + 6.0, -70.0))
        << name << " at " << rate << " Hz, steady " << steady;
    const float step = LargestStep(in[0], 0, second);
    EXPECT_LE(LargestStep(out[0], second * 95 / 100, second * 12 / 10), 1.02F * step)
        << name << " at " << rate << " Hz";
}

TEST(Engine, NoSwitchOfSuppressionOrLevelClicksOnAToneOfMinus20DbFs) {
    for (const int rate : {8000, 16000, 32000, 44100, 48000, 96000}) {
        ExpectNoClick(rate, "suppression on", AllOff(), Suppressing(2));
        ExpectNoClick(rate, "suppression off", Suppressing(2), AllOff());
        ExpectNoClick(rate, "level 0 to 3", Suppressing(0), Suppressing(3));
        ExpectNoClick(rate, "level 3 to 0", Suppressing(3), Suppressing(0));
    }
}

TEST(Engine, SuppressionSwitchedEvery7MsClicksNowhere) {
    for (const int rate : {16000, 48000, 96000}) {
        const auto second = static_cast<std::size_t>(rate);
        const Buffers<float> in = {Tone(2 * second, 440.0, rate, 0.1)};
        std::vector<Change> changes;
        for (std::size_t i = 0; i < 100; ++i) {
            changes.push_back(
                {second / 2 + i * second * 7 / 1000, i % 2 == 0 ? Suppressing(3) : AllOff()});
        }
        const Buffers<float> out =
            PlayAligned(FormatOf(rate, 1, SAMPLE_FMT_FLTP), AllOff(), in, Blocks(137), changes);
        EXPECT_LE(LargestStep(out[0], 0, out[0].size()), 1.02F * LargestStep(in[0], 0, second))
            << rate;
    }
}

TEST(Engine, TheMusicVerdictEqualsAudioClassifierOnTheSame10MsBlocksAt32000Hz16Bit) {
    const StreamFormat format = FormatOf(32000, 1, SAMPLE_FMT_S16);
    std::vector<float> signal;
    for (std::uint32_t part = 0; part < 4; ++part) {
        const std::vector<float> noise = WhiteNoise(320000, 0.1F, part + 1);
        std::mt19937 random(part + 1);
        const std::vector<float> speech = NoisySpeech(random, 320000, 32000);
        const std::vector<float>& next = part % 2 == 0 ? noise : speech;
        signal.insert(signal.end(), next.begin(), next.end());
    }
    std::vector<short> in = As<short>(signal);
    Stream stream;
    stream.Init(format, {.music = MusicMode::kKeep});
    AudioClassifier classifier;
    classifier.Init(1, 32000, SAMPLE_FMT_S16);
    int music = 0;
    int changes = 0;
    bool last = false;
    std::vector<short> out(320);
    for (std::size_t at = 0; at + 320 <= in.size(); at += 320) {
        const void* from[] = {&in[at]};
        void* to[] = {out.data()};
        stream.Process(from, to, 320);
        const bool expected = classifier.MusicCheck(reinterpret_cast<unsigned char*>(&in[at]), 640);
        ASSERT_EQ(stream.IsMusic(), expected) << at;
        music += expected ? 1 : 0;
        changes += expected != last ? 1 : 0;
        last = expected;
    }
    EXPECT_GT(music, 400);
    EXPECT_EQ(EventsOf(stream).size(), static_cast<std::size_t>(changes));
}

TEST(Engine, TheMusicVerdictDoesNotDependOnTheHostsBlocks) {
    for (const int rate : {24001, 44100, 48000, 96000}) {
        const StreamFormat format = FormatOf(rate, 1, SAMPLE_FMT_FLT);
        const std::vector<float> in = WhiteNoise(static_cast<std::size_t>(4 * rate), 0.1F, 1);
        std::vector<std::vector<StreamEvent>> all;
        for (const BlockLengths& lengths : {Blocks(1), Blocks(137), RandomBlocks(9)}) {
            Stream stream;
            stream.Init(format, {.music = MusicMode::kKeep});
            Play(stream, format, Buffers<float>{in}, lengths);
            all.push_back(EventsOf(stream));
            EXPECT_FALSE(all.back().empty()) << rate;
            ASSERT_EQ(all.back().size(), all.front().size());
            for (std::size_t i = 0; i < all.front().size(); ++i) {
                EXPECT_EQ(all.back()[i].type, Type::kMusic);
                EXPECT_EQ(all.back()[i].frame, all.front()[i].frame) << rate;
            }
        }
    }
}

TEST(Engine, WhileMusicIsDetectedTheLevelIs0AndItsChangeClicksNowhere) {
    const int rate = 48000;
    const StreamFormat format = FormatOf(rate, 1, SAMPLE_FMT_FLTP);
    const Buffers<float> in = {
        Tone(rate / 4, 440.0, rate, 0.1)};  // ends at a multiple of its period
    Stream stream;
    stream.Init(format, {.suppression = 3, .music = MusicMode::kKeep});
    std::vector<float> out;
    for (int part = 0; part < 3; ++part) {
        // Shorter than an analysis.
        stream.mEngine->mMusic.mIsMusic = part == 1;
        stream.mEngine->mMusic.mClassifier.mSmoothedResult = part == 1;
        const Buffers<float> next = Play(stream, format, in);
        out.insert(out.end(), next[0].begin(), next[0].end());
        EXPECT_EQ(stream.mEngine->mLevel, part == 1 ? 0 : 3);
        EXPECT_EQ(stream.IsMusic(), part == 1);
    }
    EXPECT_LE(LargestStep(out, 0, out.size()), 1.02F * LargestStep(in[0], 0, in[0].size()));
    EXPECT_EQ(EventsOf(stream).size(), 2U);
}

TEST(Engine, WithoutSuppressionMusicIsNotDetected) {
    const StreamFormat format = FormatOf(32000, 1, SAMPLE_FMT_FLT);
    StreamSettings settings = AllOff();
    settings.music = MusicMode::kKeep;
    Stream stream;
    stream.Init(format, settings);
    Play(stream, format, Buffers<float>{WhiteNoise(32000 * 8, 0.1F, 1)});
    EXPECT_FALSE(stream.IsMusic());
    EXPECT_TRUE(EventsOf(stream).empty());
}

TEST(Engine, TheStereoPhaseCheckCatchesAReversedSourceWithin2SecondsAtEveryRate) {
    for (const int rate : {8000, 11025, 16000, 22050, 24000, 24001, 32000, 44100, 48000, 64000,
                           88200, 96000, 176400, 192000}) {
        for (const int reversed : {0, 1}) {
            const StreamFormat format = FormatOf(rate, 2, SAMPLE_FMT_FLTP, 2);
            const auto frames = static_cast<std::size_t>(3 * rate);
            const std::vector<float> right = Bursts(frames, rate, 0.5F, 0.1F, 1);
            std::vector<float> left = right;
            for (float& sample : left) {
                sample = -sample;
            }
            Buffers<float> in(4, right);
            in[static_cast<std::size_t>(2 * reversed)] = left;
            StreamSettings settings = AllOff();
            settings.phaseCheck = true;
            Stream stream;
            stream.Init(format, settings);
            const Buffers<float> out = Play(stream, format, in);
            const std::vector<StreamEvent> events = EventsOf(stream);
            ASSERT_EQ(events.size(), 1U) << rate;
            EXPECT_EQ(events[0].type, Type::kReversed);
            EXPECT_EQ(events[0].source, reversed);
            EXPECT_TRUE(events[0].on);
            EXPECT_LT(events[0].frame, 2 * rate);
            EXPECT_TRUE(stream.IsReversed(reversed));
            EXPECT_FALSE(stream.IsReversed(1 - reversed));
            if (reversed == 0) {
                const auto latency = static_cast<std::size_t>(stream.Latency());
                const auto fade = static_cast<std::size_t>(rate / 100);
                for (std::size_t i = latency; i < frames; ++i) {
                    const auto now = static_cast<std::int64_t>(i - latency) - events[0].frame + 1;
                    const double weight =
                        std::clamp(static_cast<double>(now) / static_cast<double>(fade), 0.0, 1.0);
                    ASSERT_NEAR(static_cast<double>(out[0][i]),
                                static_cast<double>(left[i - latency]) * (1.0 - 2.0 * weight), 1e-6)
                        << rate << " Hz, " << now << " frames after the verdict";
                }
            }
        }
    }
}

TEST(Engine, InPhaseStereoIsNeverReversed) {
    for (const int rate : {8000, 44100, 192000}) {
        const StreamFormat format = FormatOf(rate, 2, SAMPLE_FMT_FLTP);
        const Buffers<float> in(2, Bursts(static_cast<std::size_t>(3 * rate), rate, 0.5F, 0.1F, 1));
        StreamSettings settings = AllOff();
        settings.phaseCheck = true;
        Stream stream;
        stream.Init(format, settings);
        Play(stream, format, in);
        EXPECT_FALSE(stream.IsReversed(0)) << rate;
        EXPECT_TRUE(EventsOf(stream).empty()) << rate;
    }
}

/// What suppression changes in the bands of a signal, from the second second on.
class BandChange {
public:
    BandChange(const std::vector<float>& in, int rate, int level)
        : mBefore(in, static_cast<std::size_t>(rate), rate),
          mAfter(PlayAligned(FormatOf(rate, 1, SAMPLE_FMT_FLT), Suppressing(level),
                             Buffers<float>{in})[0],
                 static_cast<std::size_t>(rate), rate) {}

    /// In dB, between two frequencies.
    double In(double low, double high) const {
        return mAfter.Level(low, high) - mBefore.Level(low, high);
    }

private:
    Bands mBefore;
    Bands mAfter;
};

TEST(Engine,
     CleanVoiceKeepsTheBalanceOf8To16KhzAndTheBandAboveWithin1DbAt96000HzAnd1Point5DbAtOthers) {
    for (const int rate : {64000, 96000, 192000}) {
        const std::vector<float> in = Voice(static_cast<std::size_t>(2 * rate), rate);
        for (const int level : {0, 2, 3}) {
            const BandChange change(in, rate, level);
            const double reference = change.In(8000, 16000);
            EXPECT_NEAR(change.In(16000, 0.5 * rate), reference, rate == 96000 ? 1.0 : 1.5)
                << rate << " Hz, level " << level;
            // The resampled band and the band above cross over in the last fifth below 24 kHz.
            EXPECT_NEAR(change.In(20000, 24000), reference, 1.5) << rate << " Hz, level " << level;
        }
    }
}

TEST(Engine, WithoutTheHighBandSuppressionAt96000HzRemovesAllAbove28KhzAndNothingBelow16Khz) {
    const std::vector<float> in = Voice(192000, 96000);
    StreamSettings settings = Suppressing(2);
    const auto play = [&] {
        return PlayAligned(FormatOf(96000, 1, SAMPLE_FMT_FLT), settings, Buffers<float>{in})[0];
    };
    const Bands with(play(), 96000, 96000);
    settings.highBand = false;
    const Bands without(play(), 96000, 96000);
    EXPECT_LT(without.Level(28000, 48000) - with.Level(28000, 48000), -60.0);
    EXPECT_NEAR(without.Level(100, 16000), with.Level(100, 16000), 0.1);
}

TEST(Engine, From64000HzOnNoiseAbove16KhzFallsAs8To16KhzWithin3Db) {
    for (const int rate : {64000, 96000, 192000}) {
        const std::vector<float> in = WhiteNoise(static_cast<std::size_t>(2 * rate), 0.02F, 1);
        for (const int level : {0, 2, 3}) {
            const BandChange change(in, rate, level);
            const double reference = change.In(8000, 16000);
            EXPECT_LT(reference, -3.0) << rate << " Hz, level " << level;
            for (const double low : {16000.0, 20000.0, 24000.0, 28000.0}) {
                EXPECT_NEAR(change.In(low, low + 4000.0), reference, 3.0)
                    << rate << " Hz, level " << level << ", " << low << " Hz";
            }
        }
    }
}

}  // namespace

}  // namespace audio_filter
