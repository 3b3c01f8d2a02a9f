/// AudioFilter compared with its reference model over random sequences of calls.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "common/result_code.h"
#include "compared_filters.h"
#include "support/seed.h"

namespace {

template <typename Value>
Value OneOf(std::mt19937& random, const std::vector<Value>& values) {
    return values[static_cast<std::size_t>(
        RandomInt(random, 0, static_cast<int>(values.size()) - 1))];
}

bool Chance(std::mt19937& random, int percent) {
    return RandomInt(random, 1, 100) <= percent;
}

/// Both filters, and a stream that continues from call to call.
class RandomCalls {
public:
    explicit RandomCalls(std::uint32_t seed) : mRandom(seed) {}

    void Step() {
        const int action = RandomInt(mRandom, 1, 1000);
        if (action <= (mFilters.Filter().mInited ? 4 : 300)) {
            Init();
        } else if (action <= 6) {
            mFilters.Clear();
        } else if (action <= 70) {
            const ProcessSwitchMap switches = RandomSwitches(75);
            mFilters.SetMethod(Chance(mRandom, 5) ? nullptr : &switches);
        } else if (action <= 120) {
            SetParameter();
        } else if (action <= 130) {
            mFilters.SetListener(Chance(mRandom, 70));
        } else {
            Entry();
        }
    }

    int corrections = 0;
    std::map<int, int> codes;

private:
    void Init() {
        const bool valid = Chance(mRandom, 90);
        mRate = OneOf<int>(mRandom, {8000, 16000, 32000, 32000, 44100, 44100, 48000, 22050, 96000});
        mChannels = OneOf<int>(mRandom, {1, 1, 2, 2, 2, 3});
        mFmt = OneOf<int>(mRandom, {1, 1, 1, 3, 3, 6, 8, 4, 0, 77});
        mWidth = mFmt == 0 ? 1 : mFmt == 1 || mFmt == 6 ? 2 : mFmt == 4 ? 8 : 4;
        mOpposed = Chance(mRandom, 50);
        mTonal = Chance(mRandom, 50);
        mTones = Tones(mRate);
        const ProcessSwitchMap switches = RandomSwitches(80);
        const bool null = Chance(mRandom, 10);
        const int rate = valid ? mRate : RandomInt(mRandom, -1, 1);
        const int channels = valid ? mChannels : RandomInt(mRandom, 0, 1);
        const auto fmt = static_cast<SampleFmt>(valid ? mFmt : RandomInt(mRandom, -1, 1));
        mFilters.Init(rate, channels, fmt, null ? nullptr : &switches);
    }

    ProcessSwitchMap RandomSwitches(int percentOn) {
        ProcessSwitchMap switches;
        for (int kind = 0; kind < 15; ++kind) {
            if (Chance(mRandom, 80)) {
                switches[static_cast<ProcessType>(kind)] = Chance(mRandom, percentOn);
            }
        }
        return switches;
    }

    void SetParameter() {
        ProcessParam param;
        param.gain = static_cast<float>(RandomInt(mRandom, -2, 12)) / 10.0F;
        param.level = RandomInt(mRandom, -2, 7);
        const auto type = static_cast<ProcessType>(RandomInt(mRandom, -1, 5));
        mFilters.SetParameter(Chance(mRandom, 2) ? nullptr : &param, type);
    }

    std::vector<AVSourceType> RandomSources() {
        std::vector<AVSourceType> sources(static_cast<std::size_t>(
            OneOf<int>(mRandom, {0, 1, 1, 1, 1, 1, 1, 2, 2, 2, 3, 4, 17})));
        for (AVSourceType& source : sources) {
            source = static_cast<AVSourceType>(Chance(mRandom, 40)   ? 0
                                               : Chance(mRandom, 95) ? RandomInt(mRandom, 0, 3)
                                                                     : RandomInt(mRandom, -1, 5));
        }
        return sources;
    }

    /// A second of two tones, which repeat each second.
    static std::vector<double> Tones(int rate) {
        std::vector<double> tones(static_cast<std::size_t>(rate));
        for (std::size_t i = 0; i < tones.size(); ++i) {
            const double t = static_cast<double>(i) / rate;
            tones[i] = 0.3 * std::sin(2.0 * 3.14159265 * 440.0 * t) +
                       0.2 * std::sin(2.0 * 3.14159265 * 9000.0 * t);
        }
        return tones;
    }

    double Signal(int channel) {
        const double value = mTonal ? mTones[static_cast<std::size_t>(mFrame % mRate)]
                                    : std::uniform_real_distribution<double>(-0.3, 0.3)(mRandom);
        mLatest = channel == 0 ? value : mLatest;
        return channel == 1 && mOpposed ? -mLatest : value;
    }

    std::vector<char> RandomBytes(int bytes) {
        std::vector<char> data(static_cast<std::size_t>(bytes));
        const std::size_t width = static_cast<std::size_t>(mWidth);
        for (std::size_t i = 0; i + width <= data.size(); i += width) {
            const int channel = static_cast<int>(i / width) % mChannels;
            mFrame += channel == 0 ? 1 : 0;
            const double value = Signal(channel);
            if (mFmt == 3 || mFmt == 8) {
                const auto sample = static_cast<float>(value);
                std::memcpy(&data[i], &sample, width);
            } else if (mFmt == 1 || mFmt == 6) {
                const auto sample = static_cast<short>(value * 32767.0);
                std::memcpy(&data[i], &sample, width);
            } else {
                data[i] = static_cast<char>(RandomInt(mRandom, 0, 255));
            }
        }
        return data;
    }

    int RandomSize(int sources) {
        const int perFrame = mWidth * mChannels;
        const int frames = Chance(mRandom, 70)   ? mRate / 100
                           : Chance(mRandom, 80) ? RandomInt(mRandom, 1, mRate / 20)
                                                 : RandomInt(mRandom, 1, mRate + 2);
        int size = frames * perFrame * std::max(sources, 1);
        if (Chance(mRandom, 4)) {
            size += RandomInt(mRandom, -5, 5);
        }
        return Chance(mRandom, 1) ? RandomInt(mRandom, -1, 0) : size;
    }

    void Entry() {
        using Entry = ComparedFilters::Entry;
        const Entry entry = OneOf<Entry>(
            mRandom, {Entry::kProcess, Entry::kProcess, Entry::kProcess, Entry::kProcess,
                      Entry::kProcessResample, Entry::kSyncProcessDelay});
        PlainFilter::Call call;
        call.sources = RandomSources();
        call.size = RandomSize(static_cast<int>(call.sources.size()));
        call.nullIn = Chance(mRandom, 1);
        call.nullOut = Chance(mRandom, 1);
        call.inPlace = entry != Entry::kProcessResample && Chance(mRandom, 20);
        call.in = RandomBytes(std::max(call.size, 0));
        call.param.audioSampleRate = mFilters.Filter().mProcessRate;
        call.param.audioChannels = mFilters.Filter().mChannels;
        call.param.audioSampleFmt = mFilters.Filter().mSampleFmt;
        if (Chance(mRandom, 20)) {
            OneOf<std::int32_t*>(mRandom, {&call.param.audioSampleRate, &call.param.audioChannels,
                                           &call.param.audioSampleFmt})[0] += 1;
        }
        ++codes[mFilters.Run(entry, call, static_cast<std::size_t>(RandomInt(mRandom, 0, 3)))];
        corrections += mFilters.HasCorrected() ? 1 : 0;
    }

    std::mt19937 mRandom;
    ComparedFilters mFilters;
    int mRate = 32000;
    int mChannels = 1;
    int mFmt = 1;
    int mWidth = 2;
    bool mOpposed = false;
    bool mTonal = false;
    std::vector<double> mTones = Tones(32000);
    double mLatest = 0.0;
    std::int64_t mFrame = 0;
};

TEST(RandomCalls, SixThousandFollowTheReferenceModel) {
    RandomCalls calls(Seed());
    for (int call = 0; call < 6'000; ++call) {
        calls.Step();
        ASSERT_FALSE(testing::Test::HasFailure()) << "in call " << call;
    }
    for (const int code : {0, 2, 3, 9, 12}) {
        EXPECT_GT(calls.codes[code], 20) << "calls that returned " << code;
    }
    EXPECT_GT(calls.codes[RESULT_NOT_INITIALISED], 0);
    EXPECT_GT(calls.corrections, 20) << "calls that wrote into their input";
}

}  // namespace
