/// AudioFilter beside the units driven by hand, over random sequences of calls.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "audio_filter/audio_filter.h"
#include "log_capture.h"
#include "plain_filter.h"
#include "support/seed.h"

namespace {

class Listener : public FilterListener {
public:
    void OnEvent(int code, std::string message) override { events.emplace_back(code, message); }
    std::vector<std::pair<int, std::string>> events;
};

template <typename Value>
Value OneOf(std::mt19937& random, const std::vector<Value>& values) {
    return values[static_cast<std::size_t>(
        RandomInt(random, 0, static_cast<int>(values.size()) - 1))];
}

bool Chance(std::mt19937& random, int percent) {
    return RandomInt(random, 1, 100) <= percent;
}

/// Both filters, and a stream that goes on from call to call.
class Pair {
public:
    explicit Pair(std::uint32_t seed) : mRandom(seed) {}

    void Step() {
        mExpected.messages.clear();
        mExpected.events.clear();
        mListener.events.clear();
        const int action = RandomInt(mRandom, 1, 1000);
        if (action <= (mFilter->mInited ? 4 : 300)) {
            Init();
        } else if (action <= 6) {
            mExpected.Clear();
            EXPECT_TRUE(mFilter->Clear());
        } else if (action <= 70) {
            Switch();
        } else if (action <= 120) {
            SetParameter();
        } else if (action <= 130) {
            mExpected.hasListener = Chance(mRandom, 70);
            mFilter->SetListener(mExpected.hasListener ? &mListener : nullptr);
        } else {
            Entry();
        }
        EXPECT_EQ(mLog.Lines(), mExpected.messages);
        EXPECT_EQ(mListener.events, mExpected.events);
        EXPECT_EQ(mFilter->mSwitchState, mExpected.on);
        EXPECT_EQ(mFilter->mDenoiseLevel, mExpected.level);
        EXPECT_EQ(mFilter->mSrcNum, mExpected.sourceCount);
        EXPECT_EQ(mFilter->mIsMusic, mExpected.music);
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
        ProcessSwitchMap given = RandomSwitches(80);
        ProcessSwitchMap model = given;
        const bool null = Chance(mRandom, 10);
        const int rate = valid ? mRate : RandomInt(mRandom, -1, 1);
        const int channels = valid ? mChannels : RandomInt(mRandom, 0, 1);
        const auto fmt = static_cast<SampleFmt>(valid ? mFmt : RandomInt(mRandom, -1, 1));
        EXPECT_EQ(mFilter->Init(rate, channels, fmt, null ? nullptr : &given),
                  mExpected.Init(rate, channels, fmt, null ? nullptr : &model));
        EXPECT_EQ(given, model);
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

    void Switch() {
        ProcessSwitchMap given = RandomSwitches(75);
        ProcessSwitchMap model = given;
        const bool null = Chance(mRandom, 5);
        EXPECT_EQ(mFilter->SetMethod(null ? nullptr : &given),
                  mExpected.SetMethod(null ? nullptr : &model));
        EXPECT_EQ(given, model);
    }

    void SetParameter() {
        ProcessParam param;
        param.gain = static_cast<float>(RandomInt(mRandom, -2, 12)) / 10.0F;
        param.level = RandomInt(mRandom, -2, 7);
        const auto type = static_cast<ProcessType>(RandomInt(mRandom, -1, 5));
        EXPECT_EQ(mFilter->SetParameter(&param, type),
                  mExpected.SetParameter(param.gain, param.level, type));
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

    double Signal(int channel) {
        const double t = static_cast<double>(mFrame) / mRate;
        const double value = mTonal ? 0.3 * std::sin(2.0 * 3.14159265 * 440.0 * t) +
                                          0.2 * std::sin(2.0 * 3.14159265 * 9000.0 * t)
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
        const int entry = OneOf<int>(mRandom, {0, 0, 0, 0, 1, 2});
        PlainFilter::Call call;
        call.sources = RandomSources();
        call.size = RandomSize(static_cast<int>(call.sources.size()));
        call.nullIn = Chance(mRandom, 1);
        call.nullOut = Chance(mRandom, 1);
        call.inPlace = entry != 1 && Chance(mRandom, 20);
        call.in = RandomBytes(std::max(call.size, 0));
        const std::size_t frame = static_cast<std::size_t>(320 * 8 * mChannels);
        call.out.assign(call.in.size() + frame, '\x5A');
        if (call.inPlace) {
            call.in.resize(call.out.size());
        }
        call.param.audioSampleRate = mFilter->mProcessRate;
        call.param.audioChannels = mFilter->mChannels;
        call.param.audioSampleFmt = mFilter->mSampleFmt;
        if (Chance(mRandom, 20)) {
            OneOf<std::int32_t*>(mRandom, {&call.param.audioSampleRate, &call.param.audioChannels,
                                           &call.param.audioSampleFmt})[0] += 1;
        }

        std::vector<char> in = call.in;
        std::vector<char> out = call.out;
        AVParam param = call.param;
        int size = call.size;
        const char* inData = call.nullIn ? nullptr : in.data();
        char* outData = call.nullOut ? nullptr : call.inPlace ? in.data() : out.data();
        call.inAddress = inData;
        call.outAddress = outData;
        call.workAddress = mFilter->mBuffer;
        call.nullOut = outData == nullptr;

        int expected = 0;
        int code = 0;
        const std::vector<char> asGiven = call.in;
        if (entry == 0) {
            expected = mExpected.Process(call);
            code = mFilter->Process(inData, outData, size, call.sources, param, 7);
        } else if (entry == 1) {
            expected = mExpected.ProcessResample(call);
            code = mFilter->ProcessResample(inData, outData, size, call.sources, param, 7);
        } else {
            expected = mExpected.SyncProcessDelay(call);
            code = mFilter->SyncProcessDelay(inData, outData, size, call.sources);
        }
        ++codes[code];
        corrections += !call.inPlace && call.in != asGiven ? 1 : 0;
        EXPECT_EQ(code, expected);
        EXPECT_EQ(size, call.size);
        EXPECT_TRUE(in == call.in) << "what is left in the input";
        EXPECT_TRUE(out == call.out) << "what is in the output, and behind it";
        EXPECT_EQ(param.audioSampleRate, call.param.audioSampleRate);
        EXPECT_EQ(param.audioChannels, call.param.audioChannels);
        EXPECT_EQ(param.audioSampleFmt, call.param.audioSampleFmt);
    }

    std::mt19937 mRandom;
    LogCapture mLog;
    Listener mListener;
    std::unique_ptr<AudioFilter> mFilter = std::make_unique<AudioFilter>();
    PlainFilter mExpected;
    int mRate = 32000;
    int mChannels = 1;
    int mFmt = 1;
    int mWidth = 2;
    bool mOpposed = false;
    bool mTonal = false;
    double mLatest = 0.0;
    std::int64_t mFrame = 0;
};

TEST(RandomCalls, TwelveThousandOfThemDoWhatTheUnitsDoByHand) {
    Pair pair(Seed());
    for (int call = 0; call < 12'000; ++call) {
        pair.Step();
        ASSERT_FALSE(testing::Test::HasFailure()) << "in call " << call;
    }
    for (const int code : {0, 2, 3, 9, 12}) {
        EXPECT_GT(pair.codes[code], 20) << "calls that answered " << code;
    }
    EXPECT_GT(pair.codes[4], 0);
    EXPECT_GT(pair.corrections, 20) << "calls that wrote into their input";
}

}  // namespace
