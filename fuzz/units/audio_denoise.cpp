/// AudioDenoise compared with a queue of samples and an NSWrap per channel.

#include "units/audio_denoise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <deque>
#include <vector>

#include "common/result_code.h"
#include "fuzz/support/script.h"
#include "support/block.h"
#include "units/ns_wrap.h"

namespace {

/// One channel, which buffers samples until it has 10 ms.
class PlainChannel {
public:
    PlainChannel(int rate, SampleFmt fmt, int level)
        : mBlock(rate / 100), mWidth(fmt == SAMPLE_FMT_S16 || fmt == SAMPLE_FMT_S16P ? 2 : 4) {
        Silence();
        mWrap.Init(rate, fmt, level);
    }

    int Width() const { return mWidth; }
    std::size_t Waiting() const { return mWaiting.size(); }
    bool Level(int level) { return mWrap.setLevel(level); }

    void Reset() {
        Silence();
        mWrap.Reset();
    }

    /// Takes one sample. @return 10 ms of output once they are complete, else nothing
    std::vector<char> Take(const char* sample) {
        mWaiting.insert(mWaiting.end(), sample, sample + mWidth);
        if (mBlock == 0 || mWaiting.size() < static_cast<std::size_t>(mBlock * mWidth)) {
            return {};
        }
        std::copy_n(mWaiting.begin(), std::min(mWaiting.size(), mIn.size()), mIn.begin());
        mWaiting.clear();
        mWrap.Process(mIn.data(), mOut.data());
        std::vector<char> out = mOut;
        out.resize(static_cast<std::size_t>(mBlock * mWidth), '\0');
        return out;
    }

private:
    void Silence() {
        mWaiting.clear();
        mIn.assign(static_cast<std::size_t>(320 * mWidth), '\0');
        mOut = mIn;
    }

    int mBlock;
    int mWidth;
    std::vector<char> mWaiting;
    std::vector<char> mIn;
    std::vector<char> mOut;
    NSWrap mWrap;
};

class DenoiseScript {
public:
    explicit DenoiseScript(Script& script) : mScript(script) {}

    void Step() {
        switch (mScript.Within(0, 15)) {
            case 0:
            case 1: Init(); break;
            case 2: Clear(); break;
            case 3: Reset(); break;
            case 4: Config(); break;
            case 5: Refuse(); break;
            default: Process(); break;
        }
        ASSERT_EQ(mUnit.IsInited(), mInited);
    }

private:
    void Init() {
        const int rate = mScript.Rate();
        const int channels = mScript.OneIn(8) ? mScript.AnyInt() : mScript.Within(1, 2);
        const SampleFmt fmt = mScript.Format();
        const int level = mScript.OneIn(8) ? mScript.AnyInt() : mScript.Within(0, 3);
        mInited = rate > 0 && channels > 0 && (fmt == 1 || fmt == 3 || fmt == 6 || fmt == 8);
        ASSERT_EQ(mUnit.Init(rate, channels, fmt, level), mInited ? RESULT_OK : RESULT_INVALID);
        if (mInited) {
            mChannels = channels;
            mFmt = fmt;
            mPlain.clear();
            for (int i = 0; i < (channels == 2 ? 2 : 1); ++i) {
                mPlain.emplace_back(rate, fmt, level);
            }
        }
    }

    void Clear() {
        ASSERT_TRUE(mUnit.Clear());
        mInited = false;
        mPlain.clear();
    }

    void Reset() {
        ASSERT_TRUE(mUnit.Reset());
        for (PlainChannel& channel : mPlain) {
            channel.Reset();
        }
    }

    void Config() {
        const int level = mScript.AnyInt();
        bool taken = mPlain.size() == 2;
        for (PlainChannel& channel : mPlain) {
            taken = channel.Level(std::clamp(level, 0, 3)) && taken;
        }
        ASSERT_EQ(mUnit.Config(level), taken);
    }

    void Refuse() {
        char byte = 0;
        int size = mScript.AnyInt();
        ASSERT_EQ(mUnit.Process(nullptr, &byte, size), RESULT_BAD_ARGUMENT);
        ASSERT_EQ(mUnit.Process(&byte, nullptr, size), RESULT_BAD_ARGUMENT);
        size = std::min(size, 0);
        ASSERT_EQ(mUnit.Process(&byte, &byte + 1, size), RESULT_BAD_ARGUMENT);
    }

    void Process() {
        const std::size_t bytes = 1 + mScript.Count(mScript.OneIn(6) ? 20'000 : 3000);
        const std::vector<char> given = mScript.Bytes(bytes, mFmt);
        Block in(given, mScript.Count(7));
        const bool refused = mChannels < 3 && mChannels > 0 && bytes % Channels() != 0;
        const int code = mChannels >= 3  ? RESULT_PASSED_THROUGH
                         : mChannels < 1 ? RESULT_NOT_INITIALISED
                         : refused       ? RESULT_INVALID
                         : mInited       ? RESULT_OK
                                         : RESULT_NOT_INITIALISED;
        Block out(bytes + Waiting(), mScript.Count(7));  // at most 10 ms less one sample
        std::vector<char> expected = code == RESULT_PASSED_THROUGH ? given
                                     : code == RESULT_OK           ? Suppressed(given)
                                                                   : std::vector<char>();
        const std::size_t produced = code == RESULT_OK ? expected.size() : bytes;
        expected.resize(out.Size(), '\x5A');
        int size = static_cast<int>(bytes);
        ASSERT_EQ(mUnit.Process(in.Data(), out.Data(), size), code);
        ASSERT_EQ(size, static_cast<int>(produced));
        ASSERT_EQ(out.Bytes(), expected);
        ASSERT_EQ(in.Bytes(), given);
    }

    std::size_t Waiting() const {
        std::size_t bytes = 0;
        for (const PlainChannel& channel : mPlain) {
            bytes += channel.Waiting();
        }
        return bytes;
    }

    std::size_t Channels() const { return static_cast<std::size_t>(mChannels); }

    std::vector<char> Suppressed(const std::vector<char>& given) {
        const auto width = static_cast<std::size_t>(mPlain[0].Width());
        const std::size_t step = width * Channels();
        std::vector<char> out;
        for (std::size_t at = 0; at + step <= given.size(); at += step) {
            std::vector<std::vector<char>> blocks;
            for (std::size_t i = 0; i < mPlain.size(); ++i) {
                blocks.push_back(mPlain[i].Take(&given[at + i * width]));
            }
            for (std::size_t sample = 0; sample < blocks[0].size(); sample += width) {
                for (const std::vector<char>& block : blocks) {
                    out.insert(out.end(), &block[sample], &block[sample] + width);
                }
            }
        }
        return out;
    }

    Script& mScript;
    AudioDenoise mUnit;
    bool mInited = false;
    int mChannels = 0;
    SampleFmt mFmt = SAMPLE_FMT_S16;
    std::deque<PlainChannel> mPlain;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    DenoiseScript run(script);
    while (script.GoesOn()) {
        run.Step();
    }
    return 0;
}
