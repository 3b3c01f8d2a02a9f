/// The C interface through its shared library.

#include "audio_filter/c.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "support/signals.h"

extern "C" int UseEveryFunctionOfTheInterface(void);
int UseEveryFunctionOfTheInterfaceInCxx11();

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

audio_filter_format DefaultFormat() {
    audio_filter_format format;
    EXPECT_EQ(audio_filter_default_format(&format, sizeof(format)), AUDIO_FILTER_OK);
    return format;
}

audio_filter_settings DefaultSettings() {
    audio_filter_settings settings;
    EXPECT_EQ(audio_filter_default_settings(&settings, sizeof(settings)), AUDIO_FILTER_OK);
    return settings;
}

/// A stream that is destroyed with the object.
class CStream {
public:
    explicit CStream(const audio_filter_format& format = DefaultFormat(),
                     const audio_filter_settings& settings = DefaultSettings()) {
        EXPECT_EQ(audio_filter_create(&mStream, &format, &settings), AUDIO_FILTER_OK);
    }
    ~CStream() { audio_filter_destroy(mStream); }
    CStream(const CStream&) = delete;
    CStream& operator=(const CStream&) = delete;

    operator audio_filter_stream*() const { return mStream; }

private:
    audio_filter_stream* mStream = nullptr;
};

std::vector<float> TwoSeconds() {
    std::mt19937 random(1);
    return NoisySpeech(random, 96000, 48000.0);
}

double EnergyOf(const std::vector<float>& signal, std::size_t from) {
    double energy = 0.0;
    for (std::size_t i = from; i < signal.size(); ++i) {
        energy += static_cast<double>(signal[i] * signal[i]);
    }
    return energy;
}

TEST(C, AProgramInC99AndCxx11UsesEveryFunction) {
    EXPECT_EQ(UseEveryFunctionOfTheInterface(), 0);
    EXPECT_EQ(UseEveryFunctionOfTheInterfaceInCxx11(), 0);
}

TEST(C, TheVersionsOfHeaderAndLibraryAreEqual) {
    EXPECT_EQ(audio_filter_version(), static_cast<std::uint32_t>(AUDIO_FILTER_VERSION));
    EXPECT_STREQ(audio_filter_version_string(), AUDIO_FILTER_VERSION_STRING);
}

/// Compiled into hosts and bindings; a comparison of binaries does not see constants.
TEST(C, ConstantsAndStructuresKeepTheirNumbers) {
    static_assert(AUDIO_FILTER_OK == 0 && AUDIO_FILTER_ERROR_ARGUMENT == -1 &&
                  AUDIO_FILTER_ERROR_SIZE == -2 && AUDIO_FILTER_ERROR_FORMAT == -3 &&
                  AUDIO_FILTER_ERROR_VALUE == -4 && AUDIO_FILTER_ERROR_FRAMES == -5 &&
                  AUDIO_FILTER_ERROR_MEMORY == -6 && AUDIO_FILTER_ERROR_INTERNAL == -7 &&
                  AUDIO_FILTER_ERROR_NESTED == -8);
    static_assert(AUDIO_FILTER_S16 == 1 && AUDIO_FILTER_FLOAT == 3 &&
                  AUDIO_FILTER_S16_PLANAR == 6 && AUDIO_FILTER_FLOAT_PLANAR == 8);
    static_assert(AUDIO_FILTER_OFF == -1 && AUDIO_FILTER_SUPPRESSION == 1 &&
                  AUDIO_FILTER_GAIN == 2 && AUDIO_FILTER_PHASE_CHECK == 3 &&
                  AUDIO_FILTER_MUSIC_DETECTION == 4 && AUDIO_FILTER_HIGH_BAND == 5 &&
                  AUDIO_FILTER_MIX == 6 && AUDIO_FILTER_REVERSED == 7);
    static_assert(AUDIO_FILTER_EVENT_SUPPRESSION == 0 && AUDIO_FILTER_EVENT_GAIN == 1 &&
                  AUDIO_FILTER_EVENT_PHASE_CHECK == 2 && AUDIO_FILTER_EVENT_MIX == 3 &&
                  AUDIO_FILTER_EVENT_MUSIC == 4 && AUDIO_FILTER_EVENT_REVERSED == 5);
    static_assert(AUDIO_FILTER_LOG_ERROR == 0 && AUDIO_FILTER_LOG_INFO == 1);
    EXPECT_EQ(sizeof(audio_filter_format), 28U);
    EXPECT_EQ(sizeof(audio_filter_settings), 32U);
    EXPECT_EQ(sizeof(audio_filter_event), 24U);
    EXPECT_EQ(offsetof(audio_filter_event, frame), 16U);
}

TEST(C, EachOf9ResultsHasItsOwnSentenceAndOthersAreUnknown) {
    for (int a = AUDIO_FILTER_ERROR_NESTED; a <= 0; ++a) {
        EXPECT_STRNE(audio_filter_strerror(a), "unknown error") << a;
        for (int b = a + 1; b <= 0; ++b) {
            EXPECT_STRNE(audio_filter_strerror(a), audio_filter_strerror(b));
        }
    }
    for (const int other :
         {1, -9, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_STREQ(audio_filter_strerror(other), "unknown error");
    }
}

TEST(C, BlocksOf480And137AndInPlaceGiveTheSameSamplesAfterALatencyOf517Frames) {
    const std::vector<float> in = TwoSeconds();
    const CStream first;
    const CStream second;
    EXPECT_EQ(audio_filter_latency(first), 517);
    std::vector<float> out(in.size());
    std::vector<float> inPlace = in;
    for (std::size_t at = 0; at < in.size(); at += 480) {
        ASSERT_EQ(audio_filter_process_float(first, &in[at], &out[at], 480), AUDIO_FILTER_OK);
    }
    for (std::size_t at = 0; at < in.size(); at += 137) {
        const auto frames = static_cast<std::int32_t>(std::min<std::size_t>(137, in.size() - at));
        ASSERT_EQ(audio_filter_process_float(second, &inPlace[at], &inPlace[at], frames), 0);
    }
    EXPECT_EQ(out, inPlace);
    EXPECT_LT(EnergyOf(out, 48000), EnergyOf(in, 48000));
}

TEST(C, WithEveryStageOffDrainReturnsTheRestOfTheInput) {
    audio_filter_settings settings = DefaultSettings();
    settings.suppression = AUDIO_FILTER_OFF;
    const CStream stream(DefaultFormat(), settings);
    const std::vector<float> in = TwoSeconds();
    std::vector<float> out(in.size() + 517);
    ASSERT_EQ(audio_filter_process_float(stream, in.data(), out.data(), 96000), AUDIO_FILTER_OK);
    void* rest = &out[96000];
    EXPECT_EQ(audio_filter_drain(stream, &rest, 500), 500);
    rest = &out[96500];
    EXPECT_EQ(audio_filter_drain(stream, &rest, 500), 17);
    EXPECT_EQ(audio_filter_drain(stream, &rest, 500), 0);
    EXPECT_EQ(std::vector<float>(out.begin() + 517, out.end()), in);
}

TEST(C, PlanarSamplesOfTwoSourcesIn16BitsAreMixed) {
    audio_filter_format format = DefaultFormat();
    format.samples = AUDIO_FILTER_S16_PLANAR;
    format.channels = 2;
    format.sources = 2;
    audio_filter_settings settings = DefaultSettings();
    settings.suppression = AUDIO_FILTER_OFF;
    const CStream stream(format, settings);
    const std::vector<std::int16_t> in[4] = {
        std::vector<std::int16_t>(2000, 100), std::vector<std::int16_t>(2000, 200),
        std::vector<std::int16_t>(2000, 1000), std::vector<std::int16_t>(2000, 2000)};
    const void* from[] = {in[0].data(), in[1].data(), in[2].data(), in[3].data()};
    std::vector<std::int16_t> left(2000);
    std::vector<std::int16_t> right(2000);
    void* to[] = {left.data(), right.data()};
    ASSERT_EQ(audio_filter_process(stream, from, to, 2000), AUDIO_FILTER_OK);
    EXPECT_EQ(left.back(), 962);  // 7/8 of 1100: the limiter's slope below full scale
    EXPECT_EQ(right.back(), 1925);
}

TEST(C, NaNAndInfinityGiveAFiniteOutputWithEveryStageOff) {
    audio_filter_settings settings = DefaultSettings();
    settings.suppression = AUDIO_FILTER_OFF;
    const CStream stream(DefaultFormat(), settings);
    std::vector<float> samples(4800, INFINITY);
    samples[7] = std::nanf("");
    ASSERT_EQ(audio_filter_process_float(stream, samples.data(), samples.data(), 4800), 0);
    EXPECT_EQ(samples, std::vector<float>(4800, 0.0F));
}

TEST(C, NullPointersReturnErrorArgument) {
    const CStream stream;
    audio_filter_settings settings = DefaultSettings();
    audio_filter_event event = {};
    double value = 0.0;
    float sample = 0.0F;
    const void* in[] = {&sample};
    void* out[] = {&sample};
    void* none[] = {nullptr};
    constexpr int kError = AUDIO_FILTER_ERROR_ARGUMENT;
    EXPECT_EQ(audio_filter_default_format(nullptr, sizeof(audio_filter_format)), kError);
    EXPECT_EQ(audio_filter_default_settings(nullptr, sizeof(audio_filter_settings)), kError);
    EXPECT_EQ(audio_filter_create(nullptr, nullptr, nullptr), kError);
    audio_filter_destroy(nullptr);
    EXPECT_EQ(audio_filter_reset(nullptr), kError);
    EXPECT_EQ(audio_filter_process(nullptr, in, out, 1), kError);
    EXPECT_EQ(audio_filter_process(stream, nullptr, out, 1), kError);
    EXPECT_EQ(audio_filter_process(stream, in, nullptr, 1), kError);
    EXPECT_EQ(audio_filter_process(stream, none, out, 1), kError);
    EXPECT_EQ(audio_filter_process(stream, in, none, 1), kError);
    EXPECT_EQ(audio_filter_process_float(nullptr, &sample, &sample, 1), kError);
    EXPECT_EQ(audio_filter_process_float(stream, nullptr, &sample, 1), kError);
    EXPECT_EQ(audio_filter_process_float(stream, &sample, nullptr, 1), kError);
    EXPECT_EQ(audio_filter_drain(nullptr, out, 1), kError);
    EXPECT_EQ(audio_filter_drain(stream, nullptr, 1), kError);
    EXPECT_EQ(audio_filter_drain(stream, none, 1), kError);
    EXPECT_EQ(audio_filter_set_settings(nullptr, &settings), kError);
    EXPECT_EQ(audio_filter_set_settings(stream, nullptr), kError);
    EXPECT_EQ(audio_filter_get_settings(nullptr, &settings), kError);
    EXPECT_EQ(audio_filter_get_settings(stream, nullptr), kError);
    EXPECT_EQ(audio_filter_set(nullptr, AUDIO_FILTER_MIX, 1.0), kError);
    EXPECT_EQ(audio_filter_get(nullptr, AUDIO_FILTER_MIX, &value), kError);
    EXPECT_EQ(audio_filter_get(stream, AUDIO_FILTER_MIX, nullptr), kError);
    EXPECT_EQ(audio_filter_latency(nullptr), kError);
    EXPECT_EQ(audio_filter_is_music(nullptr), kError);
    EXPECT_EQ(audio_filter_is_reversed(nullptr, 0), kError);
    EXPECT_EQ(audio_filter_is_reversed(stream, -1), kError);
    EXPECT_EQ(audio_filter_is_reversed(stream, 16), kError);
    EXPECT_EQ(audio_filter_reduction(nullptr), 0.0F);
    EXPECT_EQ(audio_filter_set_event_callback(nullptr, nullptr, nullptr), kError);
    EXPECT_EQ(audio_filter_next_event(nullptr, &event), kError);
    EXPECT_EQ(audio_filter_next_event(stream, nullptr), kError);
}

TEST(C, StructuresThatAreSmallerThanTheFirstVersionOrLargerThanThisOneAreRefused) {
    struct Larger {
        audio_filter_settings settings;
        std::int32_t member;
    };
    const CStream stream;
    audio_filter_format format = DefaultFormat();
    Larger larger = {DefaultSettings(), 7};
    audio_filter_event event = {};
    audio_filter_stream* none = nullptr;
    for (const std::size_t size : {std::size_t{0}, std::size_t{4}, sizeof(Larger)}) {
        EXPECT_EQ(audio_filter_default_format(&format, size), AUDIO_FILTER_ERROR_SIZE);
        EXPECT_EQ(audio_filter_default_settings(&larger.settings, size), AUDIO_FILTER_ERROR_SIZE);
        larger.settings.size = static_cast<std::uint32_t>(size);
        EXPECT_EQ(audio_filter_set_settings(stream, &larger.settings), AUDIO_FILTER_ERROR_SIZE);
        EXPECT_EQ(audio_filter_get_settings(stream, &larger.settings), AUDIO_FILTER_ERROR_SIZE);
        EXPECT_EQ(audio_filter_create(&none, nullptr, &larger.settings), AUDIO_FILTER_ERROR_SIZE);
        format.size = static_cast<std::uint32_t>(size);
        EXPECT_EQ(audio_filter_create(&none, &format, nullptr), AUDIO_FILTER_ERROR_SIZE);
        event.size = static_cast<std::uint32_t>(size);
        EXPECT_EQ(audio_filter_next_event(stream, &event), AUDIO_FILTER_ERROR_SIZE);
    }
    EXPECT_EQ(larger.member, 7);
    EXPECT_EQ(none, nullptr);
}

TEST(C, FormatsOutOfRangeAreRefusedAndLeaveANullStream) {
    const auto refused = [](auto change) {
        audio_filter_format format = DefaultFormat();
        change(format);
        auto* stream = reinterpret_cast<audio_filter_stream*>(&format);
        const int error = audio_filter_create(&stream, &format, nullptr);
        return error == AUDIO_FILTER_ERROR_FORMAT && stream == nullptr;
    };
    for (const int value : {std::numeric_limits<int>::min(), -1, 7999, 192001}) {
        EXPECT_TRUE(refused([=](auto& format) { format.sample_rate = value; })) << value;
        EXPECT_TRUE(refused([=](auto& format) { format.channels = value; })) << value;
        EXPECT_TRUE(refused([=](auto& format) { format.samples = value; })) << value;
        EXPECT_TRUE(refused([=](auto& format) { format.sources = value; })) << value;
        EXPECT_TRUE(refused([=](auto& format) { format.finite = value; })) << value;
    }
    EXPECT_TRUE(refused([](auto& format) { format.max_frames = 0; }));
    EXPECT_TRUE(refused([](auto& format) { format.max_frames = 192001; }));
}

TEST(C, FramesOutOfRangeAreRefusedAnd0FramesReadAndWriteNothing) {
    audio_filter_format format = DefaultFormat();
    format.max_frames = 10;
    const CStream stream(format);
    float samples[11] = {};
    void* out = samples;
    for (const int frames : {-1, 11, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(audio_filter_process_float(stream, samples, samples, frames),
                  AUDIO_FILTER_ERROR_FRAMES);
        EXPECT_EQ(audio_filter_drain(stream, &out, frames), AUDIO_FILTER_ERROR_FRAMES);
    }
    EXPECT_EQ(audio_filter_process(stream, nullptr, nullptr, 0), AUDIO_FILTER_OK);
    EXPECT_EQ(audio_filter_process_float(stream, samples, samples, 10), AUDIO_FILTER_OK);
}

TEST(C, CallsForAnotherSampleFormatOrSeveralSourcesAreRefused) {
    std::int16_t shorts[10] = {};
    float floats[10] = {};
    const CStream stream;
    EXPECT_EQ(audio_filter_process_s16(stream, shorts, shorts, 10), AUDIO_FILTER_ERROR_FORMAT);
    audio_filter_format format = DefaultFormat();
    format.sources = 2;
    const CStream two(format);
    EXPECT_EQ(audio_filter_process_float(two, floats, floats, 10), AUDIO_FILTER_ERROR_FORMAT);
    format.sources = 1;
    format.samples = AUDIO_FILTER_S16;
    const CStream s16(format);
    EXPECT_EQ(audio_filter_process_float(s16, floats, floats, 10), AUDIO_FILTER_ERROR_FORMAT);
    EXPECT_EQ(audio_filter_process_s16(s16, shorts, shorts, 10), AUDIO_FILTER_OK);
}

TEST(C, EverySettingIsReadAsItWasSetAndValuesOutOfRangeChangeNothing) {
    struct Case {
        int setting;
        std::vector<double> valid;
        std::vector<double> invalid;
    };
    const std::vector<double> switched = {0.0, 1.0};
    const std::vector<double> notSwitched = {-1.0, 2.0, 0.5, kNaN, INFINITY};
    const Case cases[] = {
        {AUDIO_FILTER_SUPPRESSION, {-1.0, 0.0, 1.0, 3.0}, {-2.0, 4.0, 0.5, kNaN, INFINITY}},
        {AUDIO_FILTER_GAIN, {-1.0, 0.0, 0.25, 1.0}, {-0.5, 1.01, kNaN, -INFINITY}},
        {AUDIO_FILTER_PHASE_CHECK, switched, notSwitched},
        {AUDIO_FILTER_MUSIC_DETECTION, switched, notSwitched},
        {AUDIO_FILTER_HIGH_BAND, switched, notSwitched},
        {AUDIO_FILTER_MIX, switched, notSwitched},
        {AUDIO_FILTER_REVERSED, {0.0, 1.0, 65535.0}, {-1.0, 65536.0, 1.5, kNaN}},
    };
    const CStream stream;
    for (const Case& each : cases) {
        for (const double value : each.valid) {
            EXPECT_EQ(audio_filter_set(stream, each.setting, value), AUDIO_FILTER_OK);
            double read = 7.0;
            EXPECT_EQ(audio_filter_get(stream, each.setting, &read), AUDIO_FILTER_OK);
            EXPECT_EQ(read, value) << each.setting;
            for (const double wrong : each.invalid) {
                EXPECT_EQ(audio_filter_set(stream, each.setting, wrong), AUDIO_FILTER_ERROR_VALUE)
                    << each.setting << " " << wrong;
                EXPECT_EQ(audio_filter_get(stream, each.setting, &read), AUDIO_FILTER_OK);
                EXPECT_EQ(read, value) << each.setting;
            }
        }
    }
    for (const int unknown : {-1, 0, 8}) {
        double read = 0.0;
        EXPECT_EQ(audio_filter_set(stream, unknown, 0.0), AUDIO_FILTER_ERROR_ARGUMENT);
        EXPECT_EQ(audio_filter_get(stream, unknown, &read), AUDIO_FILTER_ERROR_ARGUMENT);
    }
    audio_filter_settings settings = DefaultSettings();
    EXPECT_EQ(audio_filter_get_settings(stream, &settings), AUDIO_FILTER_OK);
    EXPECT_EQ(settings.suppression, 3);
    EXPECT_EQ(settings.gain, 1.0F);
    EXPECT_EQ(settings.reversed, 65535U);
    settings.gain = 2.0F;
    EXPECT_EQ(audio_filter_set_settings(stream, &settings), AUDIO_FILTER_ERROR_VALUE);
    settings.gain = AUDIO_FILTER_OFF;
    EXPECT_EQ(audio_filter_set_settings(stream, &settings), AUDIO_FILTER_OK);
    double gain = 0.0;
    EXPECT_EQ(audio_filter_get(stream, AUDIO_FILTER_GAIN, &gain), AUDIO_FILTER_OK);
    EXPECT_EQ(gain, AUDIO_FILTER_OFF);
}

TEST(C, TwoThreadsThatSetDifferentSettings10000TimesDoNotUndoEachOthers) {
    const CStream stream;
    std::atomic<int> undone = 0;
    const auto set = [&](int setting, int values) {
        for (int i = 0; i < 10000; ++i) {
            double read = -7.0;
            audio_filter_set(stream, setting, i % values);
            audio_filter_get(stream, setting, &read);
            undone += read == i % values ? 0 : 1;
        }
    };
    std::thread other(set, AUDIO_FILTER_SUPPRESSION, 4);
    set(AUDIO_FILTER_REVERSED, 1000);
    other.join();
    EXPECT_EQ(undone, 0);
}

struct Heard {
    audio_filter_stream* stream = nullptr;
    std::vector<audio_filter_event> events;
    std::vector<int> results;
};

TEST(C, TheEventCallbackMaySetSettingsAndItsOtherCallsAreRefusedAsNested) {
    const CStream stream;
    Heard heard = {stream, {}, {}};
    const auto callback = [](void* user, const audio_filter_event* event) {
        auto& self = *static_cast<Heard*>(user);
        self.events.push_back(*event);
        float sample = 0.0F;
        void* out = &sample;
        self.results = {audio_filter_process_float(self.stream, &sample, &sample, 1),
                        audio_filter_drain(self.stream, &out, 1), audio_filter_reset(self.stream),
                        audio_filter_set_event_callback(self.stream, nullptr, nullptr),
                        audio_filter_set(self.stream, AUDIO_FILTER_PHASE_CHECK, 0.0)};
    };
    ASSERT_EQ(audio_filter_set_event_callback(stream, callback, &heard), AUDIO_FILTER_OK);
    std::vector<float> samples(1000);
    audio_filter_process_float(stream, samples.data(), samples.data(), 1000);
    audio_filter_set(stream, AUDIO_FILTER_GAIN, 0.5);
    EXPECT_TRUE(heard.events.empty());
    audio_filter_process_float(stream, samples.data(), samples.data(), 1000);
    ASSERT_EQ(heard.events.size(), 1U);
    EXPECT_EQ(heard.events[0].size, sizeof(audio_filter_event));
    EXPECT_EQ(heard.events[0].type, AUDIO_FILTER_EVENT_GAIN);
    EXPECT_EQ(heard.events[0].on, 1);
    EXPECT_EQ(heard.events[0].frame, 960);
    constexpr int kNested = AUDIO_FILTER_ERROR_NESTED;
    EXPECT_EQ(heard.results, (std::vector<int>{kNested, kNested, kNested, kNested, 0}));
}

TEST(C, WithoutACallbackEventsAreTakenOneByOne) {
    const CStream stream;
    std::vector<float> samples(1000);
    audio_filter_process_float(stream, samples.data(), samples.data(), 1000);
    audio_filter_set(stream, AUDIO_FILTER_SUPPRESSION, AUDIO_FILTER_OFF);
    audio_filter_process_float(stream, samples.data(), samples.data(), 1000);
    audio_filter_event event = {};
    event.size = sizeof(event);
    ASSERT_EQ(audio_filter_next_event(stream, &event), 1);
    EXPECT_EQ(event.type, AUDIO_FILTER_EVENT_SUPPRESSION);
    EXPECT_EQ(event.on, 0);
    EXPECT_EQ(audio_filter_next_event(stream, &event), 0);
}

TEST(C, WithACallbackNextEventTakesNoneFromIt) {
    const CStream stream;
    std::vector<int> events;
    const auto callback = [](void* user, const audio_filter_event* event) {
        static_cast<std::vector<int>*>(user)->push_back(event->type);
    };
    std::vector<float> samples(1000);
    audio_filter_process_float(stream, samples.data(), samples.data(), 1000);
    audio_filter_set(stream, AUDIO_FILTER_SUPPRESSION, AUDIO_FILTER_OFF);
    audio_filter_process_float(stream, samples.data(), samples.data(), 1000);
    ASSERT_EQ(audio_filter_set_event_callback(stream, callback, &events), AUDIO_FILTER_OK);
    audio_filter_event event = {};
    event.size = sizeof(event);
    EXPECT_EQ(audio_filter_next_event(stream, &event), 0);
    audio_filter_process_float(stream, samples.data(), samples.data(), 1000);
    EXPECT_EQ(events, std::vector<int>{AUDIO_FILTER_EVENT_SUPPRESSION});
}

TEST(C, AResetStreamGivesTheSameOutputAsAFreshOneAndKeepsItsSettings) {
    const std::vector<float> in = TwoSeconds();
    const CStream stream;
    audio_filter_set(stream, AUDIO_FILTER_SUPPRESSION, 3);
    std::vector<float> out(in.size());
    std::vector<float> again(in.size());
    audio_filter_process_float(stream, in.data(), out.data(), 96000);
    ASSERT_EQ(audio_filter_reset(stream), AUDIO_FILTER_OK);
    audio_filter_process_float(stream, in.data(), again.data(), 96000);
    EXPECT_EQ(out, again);
    double level = 0.0;
    audio_filter_get(stream, AUDIO_FILTER_SUPPRESSION, &level);
    EXPECT_EQ(level, 3.0);
}

TEST(C, TheLogHoldsAMessageForEachStreamAndEachRefusal) {
    std::vector<std::string> messages;
    audio_filter_set_log(
        [](void* user, int level, const char* message) {
            static_cast<std::vector<std::string>*>(user)->push_back(std::to_string(level) + " " +
                                                                    message);
        },
        &messages);
    { const CStream stream; }
    audio_filter_format format = DefaultFormat();
    format.channels = 9;
    audio_filter_stream* none = nullptr;
    audio_filter_create(&none, &format, nullptr);
    audio_filter_set_log(nullptr, nullptr);
    { const CStream stream; }
    EXPECT_EQ(messages, (std::vector<std::string>{
                            "1 stream: 48000 Hz, channels 1, sources 1, latency 517 frames",
                            "0 no stream: unsupported format"}));
}

}  // namespace
