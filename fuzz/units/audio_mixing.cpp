/// AudioMixing compared with its reference model, at every level of the kernels.

#include <gtest/gtest.h>

#include "common/result_code.h"
#include "fuzz/support/script.h"
#include "support/block.h"
#include "units/audio_mixing.h"
#include "units/kernels.h"
#include "units/plain_kernels.h"

using namespace audio_filter::internal;

namespace {

void Enter(const Kernels& kernels, PcmView<const short> samples, short* row) {
    kernels.toMixerS16(samples, row);
}
void Enter(const Kernels& kernels, PcmView<const float> samples, short* row) {
    kernels.toMixerFloat(samples, row);
}
void Leave(const Kernels& kernels, const short* rows, std::size_t stride, std::size_t count,
           PcmView<short> out) {
    kernels.mixS16(rows, stride, count, out);
}
void Leave(const Kernels& kernels, const short* rows, std::size_t stride, std::size_t count,
           PcmView<float> out) {
    kernels.mixFloat(rows, stride, count, out);
}

/// The mix of `count` consecutive source blocks. All levels of the kernels must agree.
template <typename Sample>
std::vector<char> Mixed(const std::vector<char>& in, std::size_t count) {
    const std::vector<Sample> samples = SamplesOf<Sample>(in);
    std::vector<short> rows;
    for (const Sample sample : samples) {
        rows.push_back(plain::ToMixer(sample));
    }
    const std::size_t length = samples.size() / count;
    std::vector<char> out(length * sizeof(Sample));
    plain::Mix(rows.data(), length, count, PcmView<Sample>(out.data(), length));
    for (const Kernels& kernels : KernelLevels()) {
        Block given(in, 1);
        std::vector<short> entered(samples.size());
        Enter(kernels, PcmView<const Sample>(given.Data(), samples.size()), entered.data());
        EXPECT_EQ(entered, rows) << kernels.level;
        Block left(out.size(), 1);
        Leave(kernels, rows.data(), length, count, PcmView<Sample>(left.Data(), length));
        EXPECT_EQ(left.Bytes(), out) << kernels.level;
    }
    return out;
}

class MixScript {
public:
    explicit MixScript(Script& script) : mScript(script) {}

    void Step() {
        switch (mScript.Within(0, 9)) {
            case 0: Init(); break;
            case 1: Clear(); break;
            case 2: Refuse(); break;
            default: Process(); break;
        }
        ASSERT_EQ(mUnit.IsInited(), mInited);
    }

private:
    void Init() {
        const SampleFmt fmt = mScript.Format();
        mInited = fmt == 1 || fmt == 3 || fmt == 6 || fmt == 8;
        ASSERT_EQ(mUnit.Init(fmt), mInited ? RESULT_OK : RESULT_FAILURE);
        mFmt = mInited ? fmt : mFmt;
    }

    void Clear() {
        ASSERT_TRUE(mUnit.Clear());
        mInited = false;
    }

    /// Calls that are refused for any buffers.
    void Refuse() {
        char byte = 0x5A;
        int size = mScript.AnyInt();
        int sources = mScript.AnyInt();
        const bool null = mScript.ConsumeBool();
        if (!null && size > 0) {
            sources = sources > 0 && sources < 17 ? sources + 16 : sources;
        }
        const int given = size;
        ASSERT_EQ(mUnit.Process(null ? nullptr : &byte, &byte, size, sources), mInited ? 2 : 4);
        ASSERT_EQ(size, given);
        ASSERT_EQ(byte, 0x5A);
    }

    void Process() {
        const std::size_t count = static_cast<std::size_t>(mScript.Within(1, 16));
        const std::size_t longest = mScript.OneIn(8) ? 9000 : 300;
        const std::size_t width = mFmt == 1 || mFmt == 6 ? 2 : 4;
        std::size_t bytes = 1 + mScript.Count(longest);
        bytes = mScript.OneIn(4) ? bytes : bytes * count * width;
        const std::vector<char> in = mScript.Bytes(bytes, mFmt);
        const std::size_t samples = bytes / width;
        const bool copies = count == 1;
        const bool fits = copies || samples % count == 0;
        const std::vector<char> mixed = !mInited || !fits ? std::vector<char>()
                                        : copies          ? in
                                        : width == 2      ? Mixed<short>(in, count)
                                                          : Mixed<float>(in, count);
        const int code = !mInited ? RESULT_NOT_INITIALISED : fits ? RESULT_OK : RESULT_INVALID;
        const std::size_t after = code == RESULT_OK        ? mixed.size()
                                  : code == RESULT_INVALID ? samples * width
                                                           : bytes;

        Block given(in, mScript.Count(7));
        Block out(mixed.size(), mScript.Count(7));
        int size = static_cast<int>(bytes);
        ASSERT_EQ(mUnit.Process(given.Data(), out.Data(), size, static_cast<int>(count)), code);
        ASSERT_EQ(size, static_cast<int>(after));
        ASSERT_EQ(given.Bytes(), in);
        ASSERT_EQ(out.Bytes(), mixed);

        size = static_cast<int>(bytes);
        ASSERT_EQ(mUnit.Process(given.Data(), given.Data(), size, static_cast<int>(count)), code);
        std::vector<char> inPlace = in;
        std::copy(mixed.begin(), mixed.end(), inPlace.begin());
        ASSERT_EQ(given.Bytes(), inPlace);
    }

    Script& mScript;
    AudioMixing mUnit;
    bool mInited = false;
    SampleFmt mFmt = SAMPLE_FMT_S16;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    MixScript run(script);
    while (script.GoesOn()) {
        run.Step();
    }
    return 0;
}
