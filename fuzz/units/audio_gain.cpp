/// AudioGain compared with its reference model, at every level of the kernels.

#include <gtest/gtest.h>

#include "common/result_code.h"
#include "fuzz/support/script.h"
#include "support/block.h"
#include "units/audio_gain.h"
#include "units/kernels.h"
#include "units/plain_gain.h"

using namespace audio_filter::internal;

namespace {

void RunLevel(const Kernels& kernels, float gain, PcmView<short> samples) {
    kernels.gainS16(MakeGainCurveS16(gain), samples);
}
void RunLevel(const Kernels& kernels, float gain, PcmView<float> samples) {
    kernels.gainFloat(MakeGainCurveFloat(gain), samples);
}

class GainScript {
public:
    explicit GainScript(Script& script) : mScript(script) {}

    void Step() {
        switch (mScript.Within(0, 9)) {
            case 0: Init(); break;
            case 1: Clear(); break;
            case 2: SetGain(); break;
            case 3: ThreeSlopes<short>(); break;
            case 4: ThreeSlopes<float>(); break;
            case 5: ProcessAs(mScript.Format()); break;
            default: Process(); break;
        }
        ASSERT_EQ(mUnit.IsInited(), mInited);
    }

private:
    void Init() {
        const SampleFmt fmt = mScript.Format();
        mInited = fmt == 1 || fmt == 3 || fmt == 6 || fmt == 8;
        ASSERT_EQ(mUnit.Init(fmt), mInited ? RESULT_OK : RESULT_INVALID);
        if (mInited) {
            mFmt = fmt == 1 || fmt == 6 ? 1 : 3;
            mGain = 0.8F;
        }
    }

    void Clear() {
        ASSERT_TRUE(mUnit.Clear());
        mInited = false;
        mFmt = -1;
        mGain = 0.0F;
    }

    void SetGain() {
        const float gain = mScript.ConsumeBool() ? mScript.ConsumeFloatingPointInRange(0.0F, 1.0F)
                                                 : mScript.AnyFloat();
        ASSERT_TRUE(mUnit.SetGain(gain));
        mGain = gain > 1.0F ? 1.0F : gain > 0.0F ? gain : 0.0F;
    }

    void Process() {
        const std::vector<char> in = Bytes();
        Block block(in, mScript.Count(7));
        const int size = mScript.OneIn(20) ? mScript.Within(-5, 0) : static_cast<int>(in.size());
        const bool null = mScript.OneIn(20);
        const int code = mUnit.Process(null ? nullptr : block.Data(), size);
        ASSERT_EQ(code, null || size < 1 ? RESULT_BAD_ARGUMENT
                        : mInited        ? RESULT_OK
                                         : RESULT_NOT_INITIALISED);
        ASSERT_EQ(block.Bytes(), code == RESULT_OK ? Mapped(in, mFmt) : in);
    }

    void ProcessAs(SampleFmt fmt) {
        const std::vector<char> in = Bytes();
        Block block(in, mScript.Count(7));
        const bool known = fmt == SAMPLE_FMT_S16 || fmt == SAMPLE_FMT_FLT;
        ASSERT_EQ(mUnit.Process(block.Data(), static_cast<int>(in.size()), fmt),
                  known ? RESULT_OK : RESULT_UNSUPPORTED_FORMAT);
        ASSERT_EQ(block.Bytes(), known ? Mapped(in, fmt) : in);
        ASSERT_EQ(mUnit.Process(nullptr, mScript.AnyInt(), fmt),
                  known ? RESULT_OK : RESULT_UNSUPPORTED_FORMAT);
        ASSERT_EQ(mUnit.Process(block.Data(), mScript.Within(-1000, 0), fmt),
                  known ? RESULT_OK : RESULT_UNSUPPORTED_FORMAT);
    }

    template <typename Sample>
    void ThreeSlopes() {
        std::vector<char> expected = Bytes();
        Block block(expected, mScript.Count(7));
        auto* samples = reinterpret_cast<Sample*>(block.Data());
        ASSERT_EQ(mUnit.ProcessCore(samples, static_cast<int>(expected.size())), RESULT_OK);
        std::vector<Sample> plain = SamplesOf<Sample>(expected);
        for (Sample& sample : plain) {
            sample = mGain > 0.0F ? PlainThreeSlopeGain(mGain, sample) : sample;
        }
        PutSamples(plain, expected);
        ASSERT_EQ(block.Bytes(), expected);
    }

    std::vector<char> Bytes() {
        return mScript.Bytes(mScript.Count(600), static_cast<SampleFmt>(mFmt));
    }

    std::vector<char> Mapped(const std::vector<char>& in, int fmt) const {
        return fmt == 1 ? MappedAs<short>(in) : MappedAs<float>(in);
    }

    template <typename Sample>
    std::vector<char> MappedAs(std::vector<char> bytes) const {
        if (mGain > 0.0F) {
            const std::vector<char> in = bytes;
            std::vector<Sample> samples = SamplesOf<Sample>(in);
            for (Sample& sample : samples) {
                sample = PlainGain(mGain, sample);
            }
            PutSamples(samples, bytes);
            for (const Kernels& kernels : KernelLevels()) {
                Block block(in, 1);
                RunLevel(kernels, mGain, PcmView<Sample>(block.Data(), samples.size()));
                EXPECT_EQ(block.Bytes(), bytes) << kernels.level;
            }
        }
        return bytes;
    }

    Script& mScript;
    AudioGain mUnit;
    bool mInited = false;
    int mFmt = -1;
    float mGain = 0.8F;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    GainScript run(script);
    while (script.GoesOn()) {
        run.Step();
    }
    return 0;
}
