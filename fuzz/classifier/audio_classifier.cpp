/// AudioClassifier compared with its reference model, and its routines on any arguments.

#include "classifier/audio_classifier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

#include "classifier/plain_model.h"
#include "common/result_code.h"
#include "fuzz/support/script.h"
#include "support/block.h"

namespace {

class ClassifierScript {
public:
    explicit ClassifierScript(Script& script) : mScript(script) {}

    void Step() {
        switch (mScript.Within(0, 15)) {
            case 0: Init(); break;
            case 1: InitAnything(); break;
            case 2: Analyse(); break;
            case 3: Spectrum(); break;
            case 4: Emphasis(); break;
            case 5: Segments(); break;
            case 6: Vote(); break;
            case 7: SplitChannels(); break;
            case 8: Numbers(); break;
            case 9: CheckSpectrum(); break;
            default: Check(); break;
        }
    }

private:
    using Floats = std::vector<float>;

    /// A new object with a format that the reference model covers.
    void Init() {
        const int rate = mScript.OneIn(4) ? mScript.Within(1, 50'000)
                                          : mScript.PickValueInArray({32000, 44100, 48000, 8000});
        const auto channels = static_cast<unsigned short>(mScript.Within(1, 3));
        const SampleFmt fmt = mScript.ConsumeBool() ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT;
        mUnit = std::make_unique<AudioClassifier>();
        ASSERT_EQ(mUnit->Init(channels, rate, fmt), RESULT_OK);
        mPlain.emplace(channels, rate, fmt);
        mFmt = fmt;
    }

    /// Any arguments, on the object as it is.
    void InitAnything() {
        const int rate = mScript.OneIn(4) ? mScript.AnyInt() : mScript.Within(-10, 200'000);
        const auto channels = static_cast<unsigned short>(mScript.AnyInt());
        const SampleFmt fmt = mScript.Format();
        const bool known = fmt == 1 || fmt == 3 || fmt == 6 || fmt == 8;
        const int width = fmt == 1 || fmt == 6 ? 2 : 4;
        const double bytes = 4.0 * rate * width * std::clamp<int>(channels, 1, 2);
        if (known && bytes > kMostBytes && bytes <= 2147483647.0) {
            return;  // allocates too much for fuzzing; the tests cover it
        }
        mPlain.reset();
        try {
            ASSERT_EQ(mUnit->Init(channels, rate, fmt), known ? RESULT_OK : RESULT_INVALID);
            ASSERT_EQ(mUnit->IsInited(), known);
            mFmt = known ? fmt : mFmt;
        } catch (const std::bad_alloc&) {
            ASSERT_TRUE(known && bytes > 2147483647.0);
            ASSERT_FALSE(mUnit->IsInited());
        }
    }

    void Check() {
        const std::size_t bytes = mScript.OneIn(3) ? mScript.Count(60'000) : mScript.Count(3000);
        const std::vector<char> given = mScript.Bytes(bytes, mFmt);
        const int times = mScript.OneIn(3) ? mScript.Within(1, 6) : 1;
        for (int time = 0; time < times; ++time) {
            Block block(given, mScript.Count(7));
            auto* data = reinterpret_cast<unsigned char*>(block.Data());
            const bool music = mUnit->MusicCheck(data, static_cast<unsigned>(bytes));
            ASSERT_EQ(block.Bytes(), given);
            if (mPlain) {
                ASSERT_EQ(music, mPlain->Check(data, bytes));
                ASSERT_EQ(mUnit->GetRealTimeCheckRet(), mPlain->raw);
                ASSERT_EQ(mUnit->mGathered, mPlain->gathered);
            }
        }
        if (mPlain) {
            ASSERT_EQ(mUnit->mHistory, mPlain->history);
        }
        mUnit->MusicCheck(nullptr, 7);
    }

    /// A history from the script, without passing the suppressor.
    void Analyse() {
        if (!mPlain || mPlain->history.size() / mPlain->Width() < 31744) {
            return;
        }
        const std::size_t full = 60 * mPlain->Hop() + mPlain->frameLength;
        const std::size_t room = mPlain->history.size() / mPlain->Width();
        mPlain->gathered = std::min(room, full + mScript.Count(70'000));
        const std::vector<char> bytes = mScript.Bytes(mPlain->history.size(), mFmt);
        mPlain->history.assign(bytes.begin(), bytes.end());
        mUnit->mHistory = mPlain->history;
        mUnit->mGathered = static_cast<unsigned>(mPlain->gathered);
        unsigned char byte = 0;  // triggers the analysis without adding a sample
        if (!mPlain->Full()) {
            return;
        }
        ASSERT_EQ(mUnit->MusicCheck(&byte, 1), mPlain->Check(&byte, 1));
        ASSERT_EQ(mUnit->GetRealTimeCheckRet(), mPlain->raw);
    }

    void Spectrum() {
        Floats signal = SomeFloats(mScript.Count(mScript.OneIn(10) ? 5000 : 300));
        const std::size_t size = mScript.Count(mScript.OneIn(10) ? 5000 : 300);
        const std::unique_ptr<float[]> magnitudes(mUnit->fft(
            signal.data(), static_cast<unsigned>(signal.size()), static_cast<unsigned>(size)));
        const Floats expected = PlainSpectrum(signal, size);
        ExpectSameNumbers(magnitudes.get(), expected);
    }

    /// The spectrum test of an analysis, for any transform size.
    void CheckSpectrum() {
        Floats signal = SomeFloats(mScript.Count(300));
        const auto size = static_cast<unsigned>(mScript.OneIn(4) ? mScript.Within(0, 63'998)
                                                                 : mScript.Within(0, 300));
        algoParam param = mUnit->getAlgoParam(static_cast<unsigned short>(mUnit->mSampleRate));
        float* centres[] = {param.subBandCentres[0], param.subBandCentres[1],
                            param.subBandCentres[2], param.subBandCentres[3]};
        const auto count = static_cast<unsigned>(signal.size());
        const bool music = mUnit->musicCheckByFft(signal.data(), count, size, centres);
        ASSERT_EQ(mUnit->musicCheckByFft(signal.data(), count, size, centres), music);
    }

    void Emphasis() {
        const std::size_t count = mScript.Count(500);
        const std::size_t width = mUnit->mBytesPerSample;
        std::vector<char> bytes = mScript.Bytes(count * std::max<std::size_t>(width, 1), mFmt);
        Block in(bytes, mScript.Count(7));
        const float coefficient = mScript.AnyFloat();
        const std::unique_ptr<float[]> out(
            mUnit->emphasis(reinterpret_cast<unsigned char*>(in.Data()),
                            static_cast<unsigned short>(count), coefficient));
        const SampleFmt fmt = mUnit->mFormat;
        Floats x = fmt == 1 || fmt == 6   ? AsFloats(SamplesOf<short>(bytes))
                   : fmt == 3 || fmt == 8 ? SamplesOf<float>(bytes)
                                          : Floats();
        Floats expected(count, 0.0F);
        for (std::size_t n = 0; n < x.size(); ++n) {
            expected[n] = x[n] - coefficient * (n == 0 ? 0.0F : x[n - 1]);
        }
        ExpectSameNumbers(out.get(), expected);
    }

    /// Segments and their energies.
    void Segments() {
        Floats signal = SomeFloats(mScript.Count(400));
        const auto length = static_cast<unsigned short>(mScript.Within(0, 300));
        const auto hop = static_cast<unsigned short>(mScript.Within(0, 100));
        float** segments =
            mUnit->frameSeg(signal.data(), static_cast<unsigned short>(signal.size()), length, hop);
        const unsigned count = mUnit->mFrameCount;
        const int spare = static_cast<int>(signal.size()) - length;
        ASSERT_EQ(static_cast<int>(count), hop == 0 ? 0 : std::max(spare / hop + 1, 0));
        const std::unique_ptr<float[]> window(mUnit->hammingWindow(length, 1.0F));
        for (unsigned j = 0; j < count; ++j) {
            Floats expected(length, 0.0F);
            for (std::size_t i = 0; i < length && j * hop + i < signal.size(); ++i) {
                expected[i] = signal[j * hop + i] * window[i];
            }
            ExpectSameNumbers(segments[j], expected);
        }
        const float share = mUnit->lowEnergyFrameRate(segments, length, count, mScript.AnyFloat());
        ASSERT_TRUE(count == 0 ? std::isnan(share) : share >= 0.0F && share <= 1.0F);
        float thresholds[4] = {mScript.AnyFloat(), 0.25F, 0.125F, mScript.AnyFloat()};
        algoParam param = mUnit->getAlgoParam(static_cast<unsigned short>(mScript.AnyInt()));
        mUnit->musicCheckByLowEnergyFrameRate(segments, length, count, thresholds,
                                              param.lowEnergyCentres);
        mUnit->array2dDelete(reinterpret_cast<void**>(segments), count);
    }

    void Vote() {
        AudioClassifier voter;
        const auto length = static_cast<unsigned short>(mScript.Within(0, 40));
        const int votes = mScript.Within(1, 120);
        std::uint64_t bits = mScript.ConsumeIntegral<std::uint64_t>();
        std::vector<bool> past;
        for (int i = 0; i < votes; ++i) {
            const bool current = (bits & 1) != 0;
            bits = bits >> 1 | bits << 63;
            ASSERT_EQ(voter.preRetRefer(current, length), PlainVote(past, current, length));
            past.push_back(current);
        }
    }

    void SplitChannels() {
        const SampleFmt fmt = mScript.Format();
        const std::size_t width = fmt == 1 || fmt == 6 ? 2 : 4;
        const std::size_t frames = mScript.Count(200);
        Block both(mScript.Bytes(2 * frames * width, fmt), mScript.Count(7));
        Block left(frames * width, mScript.Count(7));
        Block right(frames * width);
        const bool known = fmt == 1 || fmt == 3 || fmt == 6 || fmt == 8;
        const int count = known ? static_cast<int>(frames) : mScript.AnyInt();
        mUnit->splitLR(both.Data(), reinterpret_cast<unsigned char*>(left.Data()),
                       reinterpret_cast<unsigned char*>(right.Data()), count, fmt);
        for (std::size_t i = 0; known && i < frames * width; ++i) {
            const std::size_t frame = i / width * 2 * width + i % width;
            ASSERT_EQ(left.Data()[i], both.Data()[frame]);
            ASSERT_EQ(right.Data()[i], both.Data()[frame + width]);
        }
    }

    /// The rest on small numbers.
    void Numbers() {
        const std::size_t dimension = mScript.Count(8);
        Floats point = SomeFloats(dimension);
        std::vector<Floats> centres;
        std::vector<float*> rows;
        for (int i = mScript.Within(1, 5); i > 0; --i) {
            centres.push_back(SomeFloats(dimension));
        }
        for (Floats& centre : centres) {
            rows.push_back(centre.data());
        }
        const float* nearest = mUnit->nearestCenter(point.data(), rows.data(),
                                                    static_cast<unsigned short>(rows.size()),
                                                    static_cast<unsigned short>(dimension));
        ASSERT_NE(std::find(rows.begin(), rows.end(), nearest), rows.end());
        const float far =
            mUnit->distance(point.data(), centres[0].data(), static_cast<unsigned>(dimension));
        ASSERT_TRUE(std::isnan(far) || far >= 0.0F);
        mUnit->hadmanMulti(point.data(), centres[0].data(), static_cast<unsigned>(dimension));
        const unsigned short bytes = mUnit->getSampleByte(mScript.Format());
        ASSERT_TRUE(bytes == 1 || bytes == 2 || bytes == 4 || bytes == 8);
        const auto count = static_cast<unsigned>(mScript.Within(0, 20));
        void** array = mUnit->array2dCreate(count, static_cast<unsigned>(mScript.Within(0, 100)),
                                            static_cast<unsigned>(mScript.Within(0, 16)));
        mUnit->array2dDelete(array, count);
        const algoParam param =
            mUnit->getAlgoParam(static_cast<unsigned short>(mUnit->mSampleRate));
        if (mScript.OneIn(4)) {
            Floats magnitudes = SomeFloats(param.sampleRate);
            const std::unique_ptr<float[]> rates(mUnit->subBandEnergyRate(magnitudes.data()));
        }
    }

    Floats SomeFloats(std::size_t count) {
        return SamplesOf<float>(mScript.Bytes(count * sizeof(float), SAMPLE_FMT_FLT));
    }

    static Floats AsFloats(const std::vector<short>& samples) {
        return {samples.begin(), samples.end()};
    }

    /// Equal, or both NaN.
    static void ExpectSameNumbers(const float* values, const Floats& expected) {
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_TRUE(values[i] == expected[i] ||
                        (std::isnan(values[i]) && std::isnan(expected[i])))
                << values[i] << " instead of " << expected[i] << " at " << i;
        }
    }

    static constexpr double kMostBytes = 1 << 22;

    Script& mScript;
    std::unique_ptr<AudioClassifier> mUnit = std::make_unique<AudioClassifier>();
    std::optional<PlainClassifier> mPlain;
    SampleFmt mFmt = SAMPLE_FMT_S16;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    ClassifierScript run(script);
    while (script.GoesOn(16)) {
        run.Step();
    }
    return 0;
}
