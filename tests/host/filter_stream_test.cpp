#include "host/filter_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "common/result_code.h"
#include "sound_files.h"
#include "support/bytes.h"
#include "support/seed.h"
#include "units/audio_denoise.h"
#include "units/audio_gain.h"
#include "units/audio_mixing.h"
#include "units/phase_check.h"

namespace {

using SourceTypes = std::vector<AVSourceType>;
using Refusals = std::map<std::string, int>;

template <typename Sample>
std::vector<Sample> Part(const std::vector<Sample>& samples, std::size_t from, std::size_t to) {
    return {samples.begin() + static_cast<std::ptrdiff_t>(std::min(from, samples.size())),
            samples.begin() + static_cast<std::ptrdiff_t>(std::min(to, samples.size()))};
}

template <typename Sample>
std::vector<float> Floats(const std::vector<Sample>& samples) {
    std::vector<float> floats;
    for (const Sample sample : samples) {
        floats.push_back(ToFloat(sample));
    }
    return floats;
}

/// A stream and its output.
template <typename Sample>
struct StreamRun {
    StreamRun(const FilterSettings& settings, int rate, int channels,
              const SourceTypes& types = {AV_SOURCE_MICROPHONE})
        : channelCount(static_cast<std::size_t>(channels)),
          stream(settings,
                 {rate, channels,
                  std::is_same_v<Sample, short> ? SampleFormat::kS16 : SampleFormat::kFloat},
                 types, [this](const std::vector<Sample>& block) {
                     out.insert(out.end(), block.begin(), block.end());
                 }) {}

    /// Pushes frames from..to of each source, in blocks.
    void Push(const std::vector<std::vector<Sample>>& sources, std::size_t from, std::size_t to,
              std::size_t blockFrames) {
        for (std::size_t at = from; at < to; at += blockFrames) {
            const std::size_t end = std::min(at + blockFrames, to);
            std::vector<Sample> blocks;
            for (const std::vector<Sample>& source : sources) {
                const std::vector<Sample> block =
                    Part(source, at * channelCount, end * channelCount);
                blocks.insert(blocks.end(), block.begin(), block.end());
            }
            stream.Push(std::move(blocks));
        }
    }

    std::size_t channelCount;
    std::vector<Sample> out;
    FilterStream<Sample> stream;
};

template <typename Sample>
struct Filtered {
    std::vector<Sample> samples;
    FilterRecord record;
};

/// Runs a single source with constant settings.
template <typename Sample>
Filtered<Sample> Filter(const FilterSettings& settings, int rate, int channels,
                        const std::vector<Sample>& in, std::size_t blockFrames) {
    StreamRun<Sample> run(settings, rate, channels);
    run.Push({in}, 0, in.size() / run.channelCount, blockFrames);
    run.stream.Finish();
    return {run.out, run.stream.Record()};
}

constexpr FilterSettings kOff = {std::nullopt, std::nullopt, false, false};
constexpr FilterSettings kMild = {0, std::nullopt, false, false};
constexpr FilterSettings kUsual = {3, std::nullopt, false, false};

FilterSettings WithGain(float gain) {
    FilterSettings settings = kOff;
    settings.gain = gain;
    return settings;
}

FilterSettings CheckingPhase() {
    FilterSettings settings = kOff;
    settings.phaseCheck = true;
    return settings;
}

/// Low-passed noise that swells and fades three times a second and is never silent.
std::vector<float> Murmur(std::size_t frames, int rate) {
    std::mt19937 random(11);
    std::normal_distribution<double> gauss(0.0, 1.0);
    std::vector<float> signal(frames);
    const double smoothing = std::exp(-6.28 * 600.0 / rate);
    double low = 0.0;
    double lower = 0.0;
    for (std::size_t i = 0; i < frames; ++i) {
        const double swell = 1.0 + 0.8 * std::sin(18.85 * static_cast<double>(i) / rate);
        low = smoothing * low + (1.0 - smoothing) * gauss(random) * std::sqrt(rate / 8000.0);
        lower = smoothing * lower + (1.0 - smoothing) * low;
        signal[i] = static_cast<float>(0.3 * swell * lower);
    }
    return signal;
}

std::vector<short> LeftReversed(const std::vector<short>& right) {
    std::vector<short> stereo;
    for (const short sample : right) {
        stereo.push_back(static_cast<short>(-sample));
        stereo.push_back(sample);
    }
    return stereo;
}

double Power(const std::vector<float>& samples) {
    double sum = 0.0;
    for (const float sample : samples) {
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    }
    return sum / static_cast<double>(samples.size());
}

TEST(FilterStream, OutputsAsManyFramesAsItReceivesAtAnyRateAndLength) {
    for (const int rate : {8000, 11025, 16000, 22050, 32000, 37800, 44100, 48000, 96000, 12345}) {
        for (const std::size_t frames : {std::size_t{1}, std::size_t{2}, std::size_t{319},
                                         std::size_t{320}, std::size_t{20011}}) {
            for (const int channels : {1, 2}) {
                const std::vector<short> in(frames * static_cast<std::size_t>(channels), 1000);
                EXPECT_EQ(Filter({}, rate, channels, in, 441).samples.size(), in.size())
                    << rate << " Hz, " << frames << " frames";
            }
        }
    }
}

TEST(FilterStream, WithEverythingOffTheStreamIsUntouchedAtAnyRate) {
    for (const int rate : {8000, 22050, 44100, 48000, 96000}) {
        const std::vector<float> in = Bursts(5000, rate);
        EXPECT_EQ(Filter(kOff, rate, 1, As<short>(in), 80).samples, As<short>(in)) << rate;
        EXPECT_TRUE(SameBits(Filter(kOff, rate, 2, in, 80).samples, in)) << rate;
    }
}

TEST(FilterStream, TheLatencyIsRemovedAtEveryRate) {
    for (const int rate : {22050, 24000, 32000, 37800, 44100, 48000, 96000}) {
        const std::vector<float> in = Bursts(static_cast<std::size_t>(rate) * 3, rate);
        EXPECT_LE(
            std::abs(Lag(in, Floats(Filter(kMild, rate, 1, As<short>(in), 480).samples), 300)), 1)
            << rate << " Hz, 16-bit";
        EXPECT_LE(std::abs(Lag(in, Filter(kMild, rate, 1, in, 480).samples, 300)), 1)
            << rate << " Hz, float";
    }
}

TEST(FilterStream, At8000And16000HzAndAtRatesResampledToThemTheOutputIsAligned) {
    for (const int rate : {4000, 8000, 11025, 12345, 16000}) {
        const std::vector<float> in = Bursts(static_cast<std::size_t>(rate) * 3, rate);
        EXPECT_LE(std::abs(Lag(in, Filter(kMild, rate, 1, in, 160).samples, 100)), 1) << rate;
    }
}

TEST(FilterStream, TheBlockLengthDoesNotChangeTheOutput) {
    const FilterSettings settings = {3, 0.5F, false, false};
    const std::vector<short> in = As<short>(Bursts(64000, 32000));
    const std::vector<short> expected = Filter(settings, 32000, 2, in, 32000).samples;
    for (const std::size_t block : {std::size_t{1}, std::size_t{224}, std::size_t{321}}) {
        EXPECT_EQ(Filter(settings, 32000, 2, in, block).samples, expected) << block;
    }
}

TEST(FilterStream, TheBlockLengthChangesResampledOutputByTheConvertersRoundingOnly) {
    const std::vector<float> in = Bursts(96000, 48000);
    const std::vector<float> expected = Filter(kMild, 48000, 1, in, 48000).samples;
    for (const std::size_t block : {std::size_t{48}, std::size_t{481}}) {
        const std::vector<float> out = Filter(kMild, 48000, 1, in, block).samples;
        ASSERT_EQ(out.size(), expected.size());
        for (std::size_t i = 0; i < out.size(); ++i) {
            ASSERT_NEAR(out[i], expected[i], 1e-3F) << block << ", frame " << i;
        }
    }
}

TEST(FilterStream, RunsThePhaseCheckThenTheSuppressorThenTheGain) {
    // Left reversed against right, for five seconds, in blocks of 100 ms.
    std::vector<short> in = LeftReversed(As<short>(Bursts(32000 * 5, 32000)));
    const Filtered<short> filtered = Filter({2, 0.5F, true, false}, 32000, 2, in, 3200);

    PhaseCheck check;
    AudioDenoise denoise;
    AudioGain gain;
    check.Init(32000, false);
    denoise.Init(32000, 2, SAMPLE_FMT_S16, 2);
    gain.Init(SAMPLE_FMT_S16);
    gain.SetGain(0.5F);
    std::vector<short> expected;
    std::int64_t corrected = 0;
    in.resize(in.size() + 6400);  // to flush the suppressor
    for (std::size_t at = 0; at < in.size(); at += 6400) {
        std::vector<short> block = Part(in, at, at + 6400);
        const std::vector<short> before = block;
        check.Check(block.data(), 6400);
        corrected += block != before ? 3200 : 0;
        std::vector<short> out(7040);
        int size = 12800;
        denoise.Process(BytesOf(block), BytesOf(out), size);
        gain.Process(BytesOf(out), size);
        expected.insert(expected.end(), out.begin(), out.begin() + size / 2);
    }
    constexpr std::size_t kDelay = 196;
    constexpr std::size_t kLastFrames = 320;  // flushed with reversed history
    const std::size_t compared = filtered.samples.size() - 2 * kLastFrames;
    EXPECT_EQ(Part(filtered.samples, 0, compared),
              Part(expected, 2 * kDelay, 2 * kDelay + compared));
    EXPECT_EQ(filtered.record.correctedFrames, corrected);
    EXPECT_GT(corrected, 0);
}

TEST(FilterStream, TheReportedProcessingRateIsTheFilters) {
    const std::vector<std::pair<int, int>> rates = {{4000, 8000},   {8000, 8000},   {8001, 16000},
                                                    {11025, 16000}, {16000, 16000}, {16001, 32000},
                                                    {22050, 32000}, {32000, 32000}, {44100, 32000},
                                                    {48000, 32000}, {96000, 32000}};
    for (const auto& [rate, expected] : rates) {
        const StreamRun<short> run({}, rate, 1);
        EXPECT_EQ(run.stream.Record().processingRate, expected) << rate;
    }
}

TEST(FilterStream, TwoSecondsAt48000HzInBlocksOf10msAre200HandOffsAndNoneAtDirectlyProcessedRates) {
    for (const int rate : {11025, 22050, 48000, 96000}) {
        const auto frames = static_cast<std::size_t>(rate / 100);
        const std::vector<short> in(frames * 200, 1000);
        EXPECT_EQ(Filter({}, rate, 1, in, frames).record.handOffs, 200) << rate;
        EXPECT_EQ(Filter(kOff, rate, 1, in, frames).record.handOffs, 0) << rate;
    }
    for (const int rate : {8000, 16000, 32000, 37800, 44100}) {
        const std::vector<short> in(static_cast<std::size_t>(rate) * 2, 1000);
        EXPECT_EQ(Filter({}, rate, 1, in, 160).record.handOffs, 0) << rate;
    }
}

TEST(FilterStream, AMixIsSuppressedAt48000HzAsItIsAt32000) {
    std::mt19937 random(5);
    std::normal_distribution<float> gauss(0.0F, 0.01F);
    for (const int rate : {32000, 48000}) {
        const auto second = static_cast<std::size_t>(rate);
        std::vector<std::vector<float>> sources(2, std::vector<float>(second * 5));
        for (std::vector<float>& source : sources) {
            std::generate(source.begin(), source.end(), [&] { return gauss(random); });
        }
        std::vector<double> powers;
        for (const std::optional<int> level : {std::optional<int>(), std::optional<int>(3)}) {
            StreamRun<float> run({level, std::nullopt, false, true}, rate, 1,
                                 {AV_SOURCE_MICROPHONE, AV_SOURCE_1});
            run.Push(sources, 0, second * 5, second / 100);
            run.stream.Finish();
            EXPECT_EQ(run.out.size(), second * 5);
            EXPECT_TRUE(run.stream.Record().refused.empty());
            powers.push_back(Power(Part(run.out, second * 4, second * 5)));
        }
        EXPECT_LT(10.0 * std::log10(powers[1] / powers[0]), -10.0) << rate;
    }
}

TEST(FilterStream, WithoutMixingTheFirstSourceIsSuppressedAloneAtAnyRate) {
    for (const int rate : {32000, 48000}) {
        const auto frames = static_cast<std::size_t>(rate);
        const std::vector<float> first = Bursts(frames, rate);
        StreamRun<float> run(kUsual, rate, 1, {AV_SOURCE_MICROPHONE, AV_SOURCE_1});
        run.Push({first, Murmur(frames, rate)}, 0, frames, frames / 100);
        run.stream.Finish();
        EXPECT_TRUE(SameBits(run.out, Filter(kUsual, rate, 1, first, frames / 100).samples));
        EXPECT_TRUE(run.stream.Record().refused.empty());
    }
}

TEST(FilterStream, SourcesWithoutAMicrophoneAreNotSuppressed) {
    const std::vector<short> in = As<short>(Bursts(9600, 48000));
    StreamRun<short> run({3, std::nullopt, false, true}, 48000, 1, {AV_SOURCE_2});
    run.Push({in}, 0, in.size(), 480);
    run.stream.Finish();
    EXPECT_EQ(run.out, in);
    EXPECT_EQ(run.stream.Record().handOffs, 0);
}

TEST(FilterStream, MixingSwitchedInMidStreamTakesEffectAtThatFrame) {
    const std::vector<short> a = As<short>(Murmur(32000, 32000));
    const std::vector<short> b = As<short>(Bursts(32000, 32000));
    StreamRun<short> run(kOff, 32000, 1, {AV_SOURCE_MICROPHONE, AV_SOURCE_1});
    FilterSettings mixed = kOff;
    mixed.mix = true;
    run.Push({a, b}, 0, 9999, 320);
    run.stream.Apply(mixed);
    run.Push({a, b}, 9999, 20001, 320);
    run.stream.Apply(kOff);
    run.Push({a, b}, 20001, 32000, 320);
    run.stream.Finish();

    std::vector<short> expected = Part(a, 0, 9999);
    std::vector<short> both = Part(a, 9999, 20001);
    const std::vector<short> other = Part(b, 9999, 20001);
    both.insert(both.end(), other.begin(), other.end());
    std::vector<short> mix(other.size());
    AudioMixing mixing;
    mixing.Init(SAMPLE_FMT_S16);
    int size = ByteCount(both);
    ASSERT_EQ(mixing.Process(BytesOf(both), BytesOf(mix), size, 2), RESULT_OK);
    expected.insert(expected.end(), mix.begin(), mix.end());
    expected.insert(expected.end(), a.begin() + 20001, a.end());
    EXPECT_EQ(run.out, expected);
}

TEST(FilterStream, MixingSwitchedDuringSuppressionKeepsTheAlignment) {
    for (const int rate : {32000, 44100, 48000}) {
        const auto second = static_cast<std::size_t>(rate);
        const std::vector<float> a = Murmur(second * 3, rate);
        const std::vector<float> silence(second * 3);
        FilterSettings mixed = kUsual;
        mixed.mix = true;
        // From a microphone alone to a mix, and from another source alone, not suppressed, to a mix.
        for (const SourceTypes& types : {SourceTypes{AV_SOURCE_MICROPHONE, AV_SOURCE_1},
                                         SourceTypes{AV_SOURCE_1, AV_SOURCE_MICROPHONE}}) {
            StreamRun<float> run(kUsual, rate, 1, types);
            run.Push({a, silence}, 0, second, 441);
            run.stream.Apply(mixed);
            run.Push({a, silence}, second, second * 2, 441);
            run.stream.Apply(kUsual);
            run.Push({a, silence}, second * 2, second * 3, 441);
            run.stream.Finish();
            ASSERT_EQ(run.out.size(), a.size());
            EXPECT_TRUE(run.stream.Record().refused.empty());
            for (std::size_t part = 0; part < 3; ++part) {
                const std::size_t start = part * second;
                EXPECT_LE(std::abs(Lag(Part(a, start, start + second),
                                       Part(run.out, start, start + second), 60)),
                          2)
                    << rate << " Hz, second " << part;
            }
        }
    }
}

class FilterStreamAtRate : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(DirectAndHandedBack, FilterStreamAtRate,
                         testing::Values(8000, 11025, 16000, 22050, 32000, 44100, 48000, 96000));

TEST_P(FilterStreamAtRate, SuppressionSwitchedAtRandomPointsKeepsLengthAndAlignment) {
    const int rate = GetParam();
    std::mt19937 random = SeededRandom();
    const std::vector<float> in = Murmur(static_cast<std::size_t>(rate) * 6, rate);
    StreamRun<float> run(kUsual, rate, 1);
    struct Segment {
        std::size_t from;
        std::size_t to;
        bool suppressed;
    };
    std::vector<Segment> segments;
    bool suppressed = true;
    for (std::size_t at = 0; at < in.size();) {
        const std::size_t to =
            std::min(in.size(), at + static_cast<std::size_t>(RandomInt(random, rate / 4, rate)));
        run.Push({in}, at, to, static_cast<std::size_t>(RandomInt(random, rate / 1000, rate)));
        segments.push_back({at, to, suppressed});
        suppressed = !suppressed;
        run.stream.Apply(suppressed ? kUsual : kOff);
        EXPECT_EQ(run.out.size(), to) << "nothing is held back at a change";
        at = to;
    }
    run.stream.Finish();
    ASSERT_EQ(run.out.size(), in.size());
    EXPECT_TRUE(run.stream.Record().refused.empty());
    for (const auto& [from, to, on] : segments) {
        if (!on) {
            EXPECT_TRUE(SameBits(Part(run.out, from, to), Part(in, from, to))) << from;
        } else if (to - from > static_cast<std::size_t>(rate) / 4) {
            EXPECT_LE(std::abs(Lag(Part(in, from, to), Part(run.out, from, to), 60)), 2) << from;
        }
    }
}

TEST_P(FilterStreamAtRate, SuppressionSwitchedAfterEveryBlockKeepsTheLength) {
    const int rate = GetParam();
    std::mt19937 random = SeededRandom();
    const std::vector<short> in = As<short>(Murmur(static_cast<std::size_t>(rate), rate));
    StreamRun<short> run(kUsual, rate, 1);
    bool suppressed = true;
    for (std::size_t at = 0; at < in.size();) {
        const auto frames = static_cast<std::size_t>(RandomInt(random, 1, rate / 30));
        run.Push({in}, at, std::min(in.size(), at + frames), frames);
        at += frames;
        suppressed = !suppressed;
        run.stream.Apply(suppressed ? kUsual : kOff);
    }
    run.stream.Finish();
    EXPECT_EQ(run.out.size(), in.size());
}

double LargestStep(const std::vector<float>& samples, std::size_t from, std::size_t to) {
    double largest = 0.0;
    for (std::size_t i = std::max<std::size_t>(1, from); i < std::min(to, samples.size()); ++i) {
        largest = std::max(largest, std::abs(static_cast<double>(samples[i]) -
                                             static_cast<double>(samples[i - 1])));
    }
    return largest;
}

/// A voice without pauses: six harmonics of about 110 Hz.
std::vector<float> Hum(std::size_t frames, int rate) {
    std::vector<float> signal(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / rate;
        const double swell = 0.5 + 0.5 * std::sin(19.5 * t + 0.3 * std::sin(4.4 * t));
        double voice = 0.0;
        for (int overtone = 1; overtone <= 6; ++overtone) {
            voice +=
                std::sin(overtone * 6.283185 * (110.0 * t + 5.0 * std::sin(2.0 * t))) / overtone;
        }
        signal[i] = static_cast<float>(0.2 * swell * voice);
    }
    return signal;
}

TEST(FilterStream, SwitchingSuppressionAddsNoStepLargerThanTheSignalsOwnAndTheSuppressedPart) {
    for (const int rate : {22050, 32000, 44100, 48000}) {
        const auto second = static_cast<std::size_t>(rate);
        const std::vector<float> in = Hum(second * 6, rate);
        // What the suppressor itself removes: compare with one that never stops.
        const std::vector<float> steady = Filter(kMild, rate, 1, in, second / 100).samples;
        StreamRun<float> run(kMild, rate, 1);
        std::mt19937 random(3);
        std::vector<std::size_t> cuts;
        double spliced = 0.0;
        for (std::size_t at = 0; at < in.size();) {
            const auto length = static_cast<std::size_t>(RandomInt(random, rate / 20, rate / 2));
            const std::size_t to = std::min(in.size(), at + length);
            run.Push({in}, at, to, second / 100);
            run.stream.Apply(cuts.size() % 2 == 0 ? kOff : kMild);
            cuts.push_back(to);
            at = to;
            if (to < in.size()) {
                spliced = std::max({spliced, std::abs(static_cast<double>(steady[to] - in[to - 1])),
                                    std::abs(static_cast<double>(in[to] - steady[to - 1]))});
            }
        }
        run.stream.Finish();
        const double own = LargestStep(in, 0, in.size());
        for (const std::size_t cut : cuts) {
            EXPECT_LE(LargestStep(run.out, cut - second / 400, cut + second / 400), own + spliced)
                << rate << " Hz, frame " << cut;
        }
    }
}

TEST(FilterStream, SwitchingInMidStreamAddsNoHandOffsAndNoCorrections) {
    const std::vector<short> in = LeftReversed(As<short>(Bursts(48000 * 3, 48000)));
    const auto record = [&in](const FilterSettings& other) {
        StreamRun<short> run({3, std::nullopt, true, false}, 48000, 2);
        run.Push({in}, 0, 48000 * 2, 480);
        run.stream.Apply(other);
        run.stream.Apply({3, std::nullopt, true, false});
        run.Push({in}, 48000 * 2, 48000 * 3, 480);
        run.stream.Finish();
        EXPECT_EQ(run.out.size(), in.size());
        return run.stream.Record();
    };
    const FilterRecord once = record({3, std::nullopt, true, false});
    const FilterRecord twice = record({std::nullopt, std::nullopt, true, false});
    EXPECT_EQ(once.handOffs, 300);
    EXPECT_EQ(twice.handOffs, 300);
    EXPECT_EQ(twice.correctedFrames, once.correctedFrames);
    EXPECT_GT(once.correctedFrames, 0);
}

TEST(FilterStream, ListenerEventsCarryTheTimeOfTheStream) {
    StreamRun<short> run({3, std::nullopt, true, true}, 48000, 2,
                         {AV_SOURCE_MICROPHONE, AV_SOURCE_1});
    const std::vector<short> in(96000, 1000);
    run.Push({in, in}, 0, 12000, 480);
    run.stream.Apply({std::nullopt, 0.4F, true, true});
    run.Push({in, in}, 12000, 36000, 700);
    run.stream.Apply({3, 0.4F, true, false});
    run.stream.Finish();
    struct Expected {
        double seconds;
        int code;
        const char* text;
    };
    const std::vector<Expected> expected = {
        {0.0, 150001, "AP_DENOISE turn on"},  {0.0, 150003, "AP_PHASE_CHECK turn on"},
        {0.0, 150009, "AP_MIXING turn on"},   {0.25, 150002, "AP_DENOISE turn off"},
        {0.25, 150007, "AP_GAIN turn on"},    {0.75, 150001, "AP_DENOISE turn on"},
        {0.75, 150010, "AP_MIXING turn off"},
    };
    const std::vector<FilterEvent>& events = run.stream.Record().events;
    ASSERT_EQ(events.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(events[i].seconds, expected[i].seconds) << i;
        EXPECT_EQ(events[i].code, expected[i].code) << i;
        EXPECT_EQ(events[i].text, expected[i].text) << i;
    }
}

TEST(FilterStream, APhaseCheckRefusedAt96000HzIsRecorded) {
    const std::vector<short> in(96000, 1000);
    EXPECT_EQ(Filter(CheckingPhase(), 96000, 2, in, 960).record.refused,
              (Refusals{{"switching on AudioPhaseCheck: not initialised", 1}}));
    EXPECT_EQ(Filter(CheckingPhase(), 48000, 2, in, 480).record.refused, Refusals());
}

TEST(FilterStream, ALevelRejectedForAMonoStreamIsRecordedAndTheDefaultLevelIsNotSet) {
    const std::vector<short> in(3200, 1000);
    EXPECT_EQ(Filter(kMild, 32000, 1, in, 320).record.refused,
              (Refusals{{"setting the suppression level: rejected", 1}}));
    EXPECT_EQ(Filter(kMild, 32000, 2, in, 320).record.refused, Refusals());
    StreamRun<short> run({}, 32000, 1);
    run.stream.Apply({3, 0.5F, false, false});
    run.stream.Apply({std::nullopt, 0.5F, false, false});
    run.stream.Apply({});
    EXPECT_EQ(run.stream.Record().refused, Refusals());
}

TEST(FilterStream, SixteenSourcesAreMixed) {
    StreamRun<short> run({std::nullopt, std::nullopt, false, true}, 32000, 1,
                         SourceTypes(16, AV_SOURCE_1));
    const std::vector<std::vector<short>> sources(16, std::vector<short>(640, 100));
    run.Push(sources, 0, 640, 320);
    run.stream.Finish();
    EXPECT_EQ(run.out, std::vector<short>(640, 1400)) << "7/8 of 16 * 100";
}

TEST(FilterStream, ABlockThatTheFilterRefusesIsRecordedAndPassesUnchanged) {
    StreamRun<short> run({3, 0.5F, false, false}, 32000, 1);
    const std::vector<short> in(32001, 1000);  // more than a second
    run.stream.Push(in);
    run.stream.Finish();
    EXPECT_EQ(run.out, in);
    EXPECT_EQ(run.stream.Record().refused.count("Process: 3"), 1U);
}

TEST(FilterStream, GainDoesNotChangeTheCountOfCorrectedFrames) {
    std::vector<short> in = LeftReversed(As<short>(Bursts(48000 * 3, 48000)));
    for (std::size_t i = 0; i < 48000; ++i) {
        in[i] = static_cast<short>(i % 2 == 0 ? -1 : 1);  // values that the gain changes
    }
    FilterSettings settings = CheckingPhase();
    const std::int64_t corrected = Filter(settings, 48000, 2, in, 480).record.correctedFrames;
    EXPECT_GT(corrected, 48000);
    EXPECT_LT(corrected, 48000 * 3);
    for (const float gain : {0.0F, 0.01F, 0.5F, 1.0F}) {
        settings.gain = gain;
        EXPECT_EQ(Filter(settings, 48000, 2, in, 480).record.correctedFrames, corrected) << gain;
        EXPECT_EQ(Filter(WithGain(gain), 48000, 2, in, 480).record.correctedFrames, 0) << gain;
    }
    settings.denoiseLevel = 3;
    EXPECT_EQ(Filter(settings, 48000, 2, in, 480).record.correctedFrames, corrected)
        << "suppression does not either";
}

TEST(FilterStream, NaNDoesNotCountAsACorrection) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinite = std::numeric_limits<float>::infinity();
    std::vector<float> in = Floats(LeftReversed(As<short>(Bursts(48000 * 3, 48000))));
    const std::int64_t corrected =
        Filter(CheckingPhase(), 48000, 2, in, 480).record.correctedFrames;
    EXPECT_GT(corrected, 0);
    for (std::size_t i = 0; i < in.size(); i += 960) {  // the first frames of every block
        in[i] = nan;
        in[i + 1] = -nan;
        in[i + 2] = -infinite;
    }
    for (const float gain : {0.5F, 1.0F}) {
        EXPECT_EQ(Filter(WithGain(gain), 48000, 2, in, 480).record.correctedFrames, 0);
        FilterSettings both = CheckingPhase();
        both.gain = gain;
        const std::int64_t now = Filter(both, 48000, 2, in, 480).record.correctedFrames;
        EXPECT_NEAR(static_cast<double>(now), static_cast<double>(corrected), 48000.0);
        EXPECT_GT(now, 0);
    }
    const std::vector<float> allNan(9600, nan);
    EXPECT_EQ(Filter({3, 0.5F, true, false}, 48000, 2, allNan, 480).record.correctedFrames, 0);
}

TEST(FilterStream, CorrectedFramesOfSeveralSourcesAddUp) {
    const std::vector<short> reversed = LeftReversed(As<short>(Bursts(48000 * 3, 48000)));
    const std::int64_t corrected =
        Filter(CheckingPhase(), 48000, 2, reversed, 480).record.correctedFrames;
    FilterSettings settings = CheckingPhase();
    settings.mix = true;
    StreamRun<short> run(settings, 48000, 2, {AV_SOURCE_MICROPHONE, AV_SOURCE_1});
    run.Push({reversed, reversed}, 0, 48000 * 3, 480);
    run.stream.Finish();
    EXPECT_EQ(run.stream.Record().correctedFrames, 2 * corrected);
}

}  // namespace
