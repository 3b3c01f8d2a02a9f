/// PhaseCheck compared with its reference model.

#include <gtest/gtest.h>

#include <limits>

#include "common/result_code.h"
#include "fuzz/support/script.h"
#include "support/block.h"
#include "units/phase_check.h"
#include "units/plain_detectors.h"

namespace {

class PhaseScript {
public:
    explicit PhaseScript(Script& script) : mScript(script) {}

    void Step() {
        switch (mScript.Within(0, 9)) {
            case 0: Init(); break;
            case 1: Clear(); break;
            case 2: Refuse(); break;
            case 3:
            case 4:
            case 5: Check<float>(SAMPLE_FMT_FLT); break;
            default: Check<short>(SAMPLE_FMT_S16); break;
        }
        ExpectSameDetectors(mUnit, mPlain);
        ExpectShares();
    }

private:
    void Init() {
        const int rate = mScript.Rate();
        const bool planar = mScript.ConsumeBool();
        mInited = rate >= 8000 && rate <= 48000;
        ASSERT_EQ(mUnit.Init(rate, planar), mInited ? RESULT_OK : RESULT_FAILURE);
        if (mInited) {
            mPlain = {};
            mPlain.rate = rate;
            mPlain.planar = planar;
        }
    }

    void Clear() {
        ASSERT_TRUE(mUnit.Clear());
        mInited = false;
        mPlain.inPhase = mPlain.opposed = mPlain.silence = mPlain.total = 0;
        mPlain.score2 = 0;
        mPlain.invert = false;
    }

    /// Counts without samples.
    void Refuse() {
        const int count = mScript.AnyInt();
        const bool none = count <= 0 && count % 2 == 0 && mInited;
        if (none && count < 0) {
            ASSERT_EQ(mUnit.Check(static_cast<short*>(nullptr), count), RESULT_OK);
            ASSERT_EQ(mUnit.Check2(static_cast<float*>(nullptr), count), RESULT_OK);
        } else if (!none) {
            ASSERT_EQ(mUnit.Check(static_cast<float*>(nullptr), count), RESULT_FAILURE);
            ASSERT_EQ(mUnit.Check2(static_cast<short*>(nullptr), count), RESULT_FAILURE);
        }
    }

    /// Repeats one block, because decisions take seconds of audio.
    template <typename Sample>
    void Check(SampleFmt fmt) {
        const std::size_t samples = mScript.OneIn(4) ? 16'000 : mScript.Count(400);
        const std::vector<char> given = mScript.Bytes(samples * sizeof(Sample), fmt);
        const bool second = mScript.ConsumeBool();
        const int times = mScript.OneIn(4) ? mScript.Within(1, 50) : 1;
        const std::size_t shift = mScript.Count(7);
        for (int time = 0; time < times; ++time) {
            Block block(given, shift);
            auto* data = reinterpret_cast<Sample*>(block.Data());
            const int count = static_cast<int>(samples);
            const int code = second ? mUnit.Check2(data, count) : mUnit.Check(data, count);
            ASSERT_EQ(code, mInited && samples % 2 == 0 ? RESULT_OK : RESULT_FAILURE);
            std::vector<char> expected = given;
            if (code == RESULT_OK) {
                std::vector<Sample> plain = SamplesOf<Sample>(given);
                mPlain.Run(plain, second);
                PutSamples(plain, expected);
            }
            ASSERT_EQ(block.Bytes(), expected);
            ExpectSameDetectors(mUnit, mPlain);
        }
    }

    void ExpectShares() {
        const auto share = [this](std::uint64_t frames) {
            return mPlain.total == 0
                       ? 0.0F
                       : static_cast<float>(frames) / static_cast<float>(mPlain.total);
        };
        ASSERT_EQ(mUnit.GetInPhaseRatio(), share(mPlain.inPhase));
        ASSERT_EQ(mUnit.GetOpposedPhaseRatio(), share(mPlain.opposed));
        ASSERT_EQ(mUnit.GetSilenceRatio(), share(mPlain.silence));
        ASSERT_EQ(mUnit.IsInited(), mInited);
    }

    Script& mScript;
    PhaseCheck mUnit;
    PlainDetectors mPlain;
    bool mInited = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    PhaseScript run(script);
    while (script.GoesOn()) {
        run.Step();
    }
    return 0;
}
