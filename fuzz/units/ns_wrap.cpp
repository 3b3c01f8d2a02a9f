/// NSWrap compared with the bare band filters and suppressor.

#include "units/ns_wrap.h"

#include <gtest/gtest.h>

#include <optional>

#include "common/result_code.h"
#include "fuzz/support/script.h"
#include "support/bare_float_suppressor.h"
#include "support/bare_suppressor.h"
#include "support/block.h"

namespace {

class WrapScript {
public:
    explicit WrapScript(Script& script) : mScript(script) {}

    void Step() {
        switch (mScript.Within(0, 15)) {
            case 0:
            case 1: Init(); break;
            case 2: Clear(); break;
            case 3: Reset(); break;
            case 4: SetLevel(); break;
            case 5: Refuse(); break;
            default: Process(); break;
        }
    }

private:
    void Init() {
        const int rate =
            mScript.OneIn(6) ? mScript.AnyInt() : mScript.PickValueInArray({8000, 16000, 32000});
        const SampleFmt fmt = mScript.Format();
        const int level = mScript.OneIn(6) ? mScript.AnyInt() : mScript.Within(0, 3);
        const bool stored = rate >= 0 && fmt != SAMPLE_FMT_NONE && level >= 0 && level <= 3;
        const bool taken = stored && (rate == 8000 || rate == 16000 || rate == 32000);
        const bool processed = fmt == SAMPLE_FMT_S16 || fmt == SAMPLE_FMT_FLT;
        ASSERT_EQ(mWrap.Init(rate, fmt, level), taken && processed);
        if (stored) {
            mFmt = fmt;
            mCreated = true;
        }
        if (!taken) {
            return;
        }
        if (processed && fmt != mBuffers) {
            mBuffers = fmt;
            mS16.reset();
            mFloat.reset();
        }
        if (mBuffers == SAMPLE_FMT_S16) {
            mS16 ? mS16->Restart(rate, level) : void(mS16.emplace(rate, level));
        } else if (mBuffers == SAMPLE_FMT_FLT) {
            mFloat ? mFloat->Restart(rate, level) : void(mFloat.emplace(rate, level));
        }
    }

    void Clear() {
        ASSERT_TRUE(mWrap.Clear());
        mBuffers = SAMPLE_FMT_NONE;
        mCreated = false;
        mS16.reset();
        mFloat.reset();
    }

    void Reset() {
        ASSERT_EQ(mWrap.Reset(), mFmt == SAMPLE_FMT_S16 || mFmt == SAMPLE_FMT_FLT);
        if (mS16 && (mFmt == SAMPLE_FMT_S16 || mFmt == SAMPLE_FMT_FLT)) {
            mS16->SilenceBands();
        }
        if (mFloat && (mFmt == SAMPLE_FMT_S16 || mFmt == SAMPLE_FMT_FLT)) {
            mFloat->SilenceBands();
        }
    }

    void SetLevel() {
        const int level = mScript.OneIn(3) ? mScript.AnyInt() : mScript.Within(0, 3);
        const bool taken = mCreated && level >= 0 && level <= 3;
        ASSERT_EQ(mWrap.setLevel(level), taken);
        if (taken && mS16) {
            mS16->SetLevel(level);
        }
        if (taken && mFloat) {
            mFloat->SetLevel(level);
        }
    }

    void Refuse() {
        Block samples(320 * sizeof(float));
        ASSERT_EQ(mWrap.Process(nullptr, samples.Data()), RESULT_FAILURE);
        ASSERT_EQ(mWrap.Process(samples.Data(), nullptr), RESULT_FAILURE);
    }

    void Process() {
        const bool runs = mBuffers != SAMPLE_FMT_NONE && mBuffers == mFmt;
        const std::size_t bytes = 320 * (mFmt == SAMPLE_FMT_FLT ? sizeof(float) : sizeof(short));
        const int blocks = mScript.OneIn(6) ? mScript.Within(1, 60) : 1;
        const bool inPlace = mScript.ConsumeBool();
        const std::size_t shift = mScript.Count(7);
        const std::vector<char> given = mScript.Bytes(bytes, mFmt);
        for (int i = 0; i < blocks; ++i) {
            Block in(given, shift);
            Block other(bytes, shift);
            Block& out = inPlace ? in : other;
            std::vector<char> expected = out.Bytes();
            ASSERT_EQ(mWrap.Process(in.Data(), out.Data()), runs ? RESULT_OK : RESULT_FAILURE);
            if (runs) {
                expected = Suppressed(given);
            }
            ASSERT_EQ(out.Bytes(), expected);
            ASSERT_TRUE(inPlace || in.Bytes() == given);
        }
    }

    std::vector<char> Suppressed(const std::vector<char>& given) {
        std::vector<char> bytes(given.size());
        if (mS16) {
            std::vector<short> out(320);
            mS16->Process(SamplesOf<short>(given).data(), out.data());
            PutSamples(out, bytes);
        } else {
            std::vector<float> out(320);
            mFloat->Process(SamplesOf<float>(given).data(), out.data());
            PutSamples(out, bytes);
        }
        return bytes;
    }

    Script& mScript;
    NSWrap mWrap;
    SampleFmt mFmt = SAMPLE_FMT_NONE;      ///< last stored format
    SampleFmt mBuffers = SAMPLE_FMT_NONE;  ///< of the last good Init since Clear
    bool mCreated = false;
    std::optional<BareSuppressor> mS16;
    std::optional<BareFloatSuppressor> mFloat;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    WrapScript run(script);
    while (script.GoesOn()) {
        run.Step();
    }
    return 0;
}
