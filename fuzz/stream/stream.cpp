/// Stream compared with its reference model.

#include "stream/stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>

#include "common/result_code.h"
#include "common/sample_format.h"
#include "fuzz/support/script.h"
#include "stream/plain_stream.h"
#include "support/block.h"

using namespace audio_filter;
using audio_filter::internal::IsFloat;
using audio_filter::internal::IsPlanar;

namespace {

class StreamScript {
public:
    explicit StreamScript(Script& script) : mScript(script) { Init(); }

    void Step() {
        switch (mScript.Within(0, 15)) {
            case 0: Init(); break;
            case 1: Reset(); break;
            case 2: Refuse(); break;
            case 3: Drain(); break;
            case 4: TakeEvents(); break;
            case 5:
            case 6:
            case 7: Set(); break;
            default: Process(); break;
        }
        ASSERT_EQ(mStream.Latency(), mModel ? static_cast<int>(mModel->Latency()) : 0);
        ASSERT_EQ(mStream.IsMusic(), mModel && mModel->music);
        for (int source = -1; source < 17; ++source) {
            ASSERT_EQ(mStream.IsReversed(source),
                      mModel && mModel->IsReversed(static_cast<std::size_t>(source)));
        }
        ASSERT_GE(mStream.Reduction(), 0.0F);
        ASSERT_TRUE(std::isfinite(mStream.Reduction()));
    }

private:
    StreamSettings AnySettings() {
        StreamSettings settings;
        settings.suppression.reset();
        if (!mScript.OneIn(4)) {
            settings.suppression = mScript.OneIn(8) ? mScript.AnyInt() : mScript.Within(0, 3);
        }
        if (mScript.ConsumeBool()) {
            settings.gain = mScript.OneIn(8) ? mScript.AnyFloat()
                                             : static_cast<float>(mScript.Within(0, 10)) / 10.0F;
        }
        settings.phaseCheck = mScript.ConsumeBool();
        settings.mix = mScript.ConsumeBool();
        settings.music = mScript.OneIn(8) ? MusicMode::kKeep : MusicMode::kIgnore;
        settings.highBand = !mScript.OneIn(4);
        settings.reversed = mScript.OneIn(4) ? mScript.ConsumeIntegral<std::uint16_t>() : 0;
        return settings;
    }

    static StreamSettings Clamped(StreamSettings settings) {
        if (settings.suppression) {
            settings.suppression = std::clamp(*settings.suppression, 0, 3);
        }
        if (settings.gain) {
            const float gain = *settings.gain;
            settings.gain = gain >= 1.0F ? 1.0F : gain > 0.0F ? gain : 0.0F;
        }
        return settings;
    }

    void Init() {
        StreamFormat format;
        format.sampleRate = mScript.Rate();
        format.channels = mScript.OneIn(16) ? mScript.AnyInt() : mScript.Within(1, 3);
        format.samples = mScript.Format();
        format.sources = mScript.OneIn(16) ? mScript.AnyInt() : mScript.Within(1, 3);
        format.finite = mScript.ConsumeBool();
        format.maxFrames = mScript.OneIn(4) ? mScript.AnyInt() : kLongest;
        const StreamSettings settings = AnySettings();
        const auto within = [](int value, int most) { return value >= 1 && value <= most; };
        const int fmt = format.samples;
        const bool valid = format.sampleRate >= 8000 && within(format.sampleRate, 192000) &&
                           within(format.channels, 8) && within(format.sources, 16) &&
                           within(format.maxFrames, 192000) &&
                           (fmt == 1 || fmt == 3 || fmt == 6 || fmt == 8);
        ASSERT_EQ(mStream.Init(format, settings), valid ? RESULT_OK : RESULT_INVALID);
        if (valid) {
            mFormat = format;
            Start(settings);
        }
    }

    void Start(const StreamSettings& settings) {
        mModel = std::make_unique<PlainStream>(mFormat, Clamped(settings));
        mTaken = 0;
    }

    void Reset() {
        ASSERT_EQ(mStream.Reset(), mModel ? RESULT_OK : RESULT_NOT_INITIALISED);
        if (mModel) {
            Start(mModel->settings);
        }
    }

    void Set() {
        const StreamSettings settings = AnySettings();
        mStream.SetSettings(settings);
        if (mModel) {
            mModel->settings = Clamped(settings);
        }
        ASSERT_EQ(mStream.Settings(), mModel ? mModel->settings : StreamSettings());
    }

    void Refuse() {
        float sample = 0.0F;
        const void* from[128] = {};
        void* to[8] = {};
        const int frames = mScript.AnyInt();
        ASSERT_NE(mStream.Process(from, to, frames), RESULT_OK);
        std::fill(std::begin(from), std::end(from), &sample);
        ASSERT_NE(mStream.Process(from, to, frames), RESULT_OK);
        ASSERT_EQ(mStream.Drain(to, frames), 0);
        std::fill(std::begin(to), std::end(to), &sample);
        ASSERT_NE(mStream.Process(from, to, std::min(frames, 0)), RESULT_OK);
        if (!mModel || frames > mFormat.maxFrames) {
            ASSERT_NE(mStream.Process(from, to, frames), RESULT_OK);
            ASSERT_EQ(mStream.Drain(to, frames), 0);
        }
    }

    std::size_t Channels() const { return static_cast<std::size_t>(mFormat.channels); }
    std::size_t Buffers() const { return IsPlanar(mFormat.samples) ? Channels() : 1; }
    std::size_t SampleBytes() const { return IsFloat(mFormat.samples) ? 4 : 2; }

    /// The samples of each channel, from the buffers of each source.
    std::vector<PlainStream::Samples> Separated(const std::vector<std::vector<char>>& buffers) {
        std::vector<PlainStream::Samples> channels;
        for (const std::vector<char>& buffer : buffers) {
            PlainStream::Samples samples;
            if (SampleBytes() == 4) {
                samples = SamplesOf<float>(buffer);
            } else {
                for (const short sample : SamplesOf<short>(buffer)) {
                    samples.push_back(static_cast<float>(sample) / 32768.0F);
                }
            }
            const std::size_t width = Channels() / Buffers();
            for (std::size_t channel = 0; channel < width; ++channel) {
                PlainStream::Samples own;
                for (std::size_t i = channel; i < samples.size(); i += width) {
                    own.push_back(samples[i]);
                }
                channels.push_back(own);
            }
        }
        return channels;
    }

    /// Whether a sample of the stream is that of the model; one NaN is as good as another.
    static bool IsSame(float sample, float expected) {
        return std::bit_cast<std::uint32_t>(sample) == std::bit_cast<std::uint32_t>(expected) ||
               (std::isnan(sample) && std::isnan(expected));
    }

    void ExpectOutput(std::vector<Block>& blocks, std::vector<PlainStream::Samples> expected) {
        std::vector<std::vector<char>> out;
        for (Block& block : blocks) {
            out.push_back(block.Bytes());
        }
        const std::vector<PlainStream::Samples> channels = Separated(out);
        for (std::size_t channel = 0; channel < channels.size(); ++channel) {
            ASSERT_EQ(channels[channel].size(), expected[channel].size());
            for (std::size_t i = 0; i < channels[channel].size(); ++i) {
                float sample = expected[channel][i];
                if (SampleBytes() == 2) {
                    sample = static_cast<float>(internal::NearestS16(sample)) / 32768.0F;
                }
                ASSERT_TRUE(IsSame(channels[channel][i], sample))
                    << "channel " << channel << ", frame " << i << ": " << channels[channel][i]
                    << " and not " << sample;
            }
        }
    }

    void Process() {
        if (!mModel) {
            return;
        }
        const auto most = static_cast<std::size_t>(std::min(mFormat.maxFrames, kLongest));
        const std::size_t frames = 1 + mScript.Count(most - 1);
        const std::size_t bytes = frames * SampleBytes() * Channels() / Buffers();
        const std::size_t count = Buffers() * static_cast<std::size_t>(mFormat.sources);
        std::vector<std::vector<char>> given;
        for (std::size_t i = 0; i < count; ++i) {
            given.push_back(mScript.Bytes(bytes, mFormat.samples));
        }
        const int times = mScript.OneIn(8) ? mScript.Within(1, 12) : 1;
        const bool inPlace = mScript.ConsumeBool();
        const std::size_t shift = SampleBytes() * mScript.Count(3);
        for (int time = 0; time < times && !testing::Test::HasFatalFailure(); ++time) {
            std::vector<Block> in;
            std::vector<Block> out;
            std::vector<const void*> from;
            std::vector<void*> to;
            for (const std::vector<char>& buffer : given) {
                in.emplace_back(buffer, shift);
                from.push_back(in.back().Data());
            }
            for (std::size_t i = 0; i < Buffers() && !inPlace; ++i) {
                out.emplace_back(bytes, shift);
            }
            for (std::size_t i = 0; i < Buffers(); ++i) {
                to.push_back(inPlace ? in[i].Data() : out[i].Data());
            }
            ASSERT_EQ(mStream.Process(from.data(), to.data(), static_cast<int>(frames)), RESULT_OK);
            if (inPlace) {
                in.erase(in.begin() + static_cast<std::ptrdiff_t>(Buffers()), in.end());
            }
            ExpectOutput(inPlace ? in : out, mModel->Play(Separated(given)));
        }
    }

    void Drain() {
        if (!mModel) {
            return;
        }
        const auto most = static_cast<std::size_t>(std::min(mFormat.maxFrames, kLongest));
        const std::size_t room = 1 + mScript.Count(most - 1);
        const std::vector<PlainStream::Samples> expected = mModel->Drain(room);
        const std::size_t frames = expected[0].size();
        std::vector<Block> out;
        std::vector<void*> to;
        for (std::size_t i = 0; i < Buffers(); ++i) {
            out.emplace_back(frames * SampleBytes() * Channels() / Buffers());
            to.push_back(out.back().Data());
        }
        ASSERT_EQ(mStream.Drain(to.data(), static_cast<int>(room)), static_cast<int>(frames));
        ExpectOutput(out, expected);
    }

    /// The queue keeps 64 events.
    void TakeEvents() {
        StreamEvent event;
        std::size_t taken = 0;
        for (; mStream.NextEvent(event); ++taken) {
            ASSERT_LT(mTaken + taken, mModel->events.size());
            const StreamEvent& expected = mModel->events[mTaken + taken];
            ASSERT_EQ(event.type, expected.type);
            ASSERT_EQ(event.on, expected.on);
            ASSERT_EQ(event.source, expected.source);
            ASSERT_EQ(event.frame, expected.frame);
        }
        if (mModel) {
            ASSERT_EQ(taken, std::min<std::size_t>(64, mModel->events.size() - mTaken));
            mTaken = mModel->events.size();
        }
    }

    static constexpr int kLongest = 1000;  ///< frames: enough for any processing block

    Script& mScript;
    Stream mStream;
    StreamFormat mFormat;
    std::unique_ptr<PlainStream> mModel;
    std::size_t mTaken = 0;  ///< events of the model that have been compared or lost
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    StreamScript run(script);
    while (script.GoesOn(32)) {
        run.Step();
    }
    return 0;
}
