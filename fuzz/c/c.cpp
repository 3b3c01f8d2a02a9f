/// The C interface compared with the stream below it: any structure sizes, members, settings and frames.

#include "audio_filter/c.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "common/result_code.h"
#include "fuzz/support/script.h"
#include "stream/stream.h"
#include "support/block.h"

using namespace audio_filter;

namespace {

class CScript {
public:
    explicit CScript(Script& script) : mScript(script) { Create(); }
    ~CScript() { audio_filter_destroy(mC); }
    CScript(const CScript&) = delete;
    CScript& operator=(const CScript&) = delete;

    void Step() {
        switch (mScript.Within(0, 9)) {
            case 0: Create(); break;
            case 1: Reset(); break;
            case 2: SetAll(); break;
            case 3:
            case 4: SetOne(); break;
            case 5: Drain(); break;
            case 6: NextEvent(); break;
            default: Process(); break;
        }
        ASSERT_EQ(audio_filter_latency(mC), mC != nullptr ? mStream->Latency() : kArgument);
        for (int setting = AUDIO_FILTER_SUPPRESSION;
             mC != nullptr && setting <= AUDIO_FILTER_REVERSED; ++setting) {
            double value = 0.0;
            ASSERT_EQ(audio_filter_get(mC, setting, &value), AUDIO_FILTER_OK);
            ASSERT_EQ(audio_filter_set(mC, setting, value), AUDIO_FILTER_OK);
        }
    }

private:
    static constexpr int kArgument = AUDIO_FILTER_ERROR_ARGUMENT;
    static constexpr int kLongest = 1000;  ///< frames

    static bool IsSwitch(int value) { return value == 0 || value == 1; }

    /// A structure of a host: the defaults, or any values, on exactly as many bytes as its size says.
    template <typename Structure>
    Block Given(const Structure& structure, std::uint32_t size) {
        Block block(std::max<std::size_t>(size, sizeof(size)));
        std::memcpy(block.Data(), &structure, std::min(block.Size(), sizeof(structure)));
        std::memcpy(block.Data(), &size, sizeof(size));
        return block;
    }

    std::uint32_t SizeNear(std::size_t size) {
        return static_cast<std::uint32_t>(mScript.OneIn(4) ? mScript.Count(2 * size) : size);
    }

    audio_filter_settings AnySettings() {
        audio_filter_settings settings;
        audio_filter_default_settings(&settings, sizeof(settings));
        settings.suppression = mScript.OneIn(8) ? mScript.AnyInt() : mScript.Within(-1, 3);
        settings.gain =
            mScript.OneIn(8) ? mScript.AnyFloat() : static_cast<float>(mScript.Within(-1, 1));
        for (std::int32_t* member : {&settings.phase_check, &settings.music_detection,
                                     &settings.high_band, &settings.mix}) {
            *member = mScript.OneIn(16) ? mScript.AnyInt() : mScript.Within(0, 1);
        }
        settings.reversed = mScript.OneIn(8) ? static_cast<std::uint32_t>(mScript.AnyInt()) : 0;
        return settings;
    }

    static bool IsValid(const audio_filter_settings& settings) {
        return settings.suppression >= -1 && settings.suppression <= 3 &&
               (settings.gain == -1.0F || (settings.gain >= 0.0F && settings.gain <= 1.0F)) &&
               IsSwitch(settings.phase_check) && IsSwitch(settings.music_detection) &&
               IsSwitch(settings.high_band) && IsSwitch(settings.mix) && settings.reversed <= 65535;
    }

    static StreamSettings Converted(const audio_filter_settings& settings) {
        StreamSettings converted;
        converted.suppression.reset();
        if (settings.suppression >= 0) {
            converted.suppression = settings.suppression;
        }
        if (settings.gain >= 0.0F) {
            converted.gain = settings.gain;
        }
        converted.phaseCheck = settings.phase_check == 1;
        converted.mix = settings.mix == 1;
        converted.music = settings.music_detection == 1 ? MusicMode::kKeep : MusicMode::kIgnore;
        converted.highBand = settings.high_band == 1;
        converted.reversed = static_cast<std::uint16_t>(settings.reversed);
        return converted;
    }

    void Create() {
        audio_filter_destroy(mC);
        audio_filter_format format;
        audio_filter_default_format(&format, sizeof(format));
        format.sample_rate = mScript.Rate();
        format.channels = mScript.OneIn(16) ? mScript.AnyInt() : mScript.Within(1, 3);
        format.samples = mScript.Format();
        format.sources = mScript.OneIn(16) ? mScript.AnyInt() : mScript.Within(1, 3);
        format.max_frames = mScript.OneIn(8) ? mScript.AnyInt() : kLongest;
        format.finite = mScript.OneIn(16) ? mScript.AnyInt() : mScript.Within(0, 1);
        const audio_filter_settings settings = AnySettings();
        const std::uint32_t formatSize = SizeNear(sizeof(format));
        const std::uint32_t settingsSize = SizeNear(sizeof(settings));
        Block givenFormat = Given(format, formatSize);
        Block givenSettings = Given(settings, settingsSize);
        const int error = audio_filter_create(
            &mC, reinterpret_cast<const audio_filter_format*>(givenFormat.Data()),
            reinterpret_cast<const audio_filter_settings*>(givenSettings.Data()));

        mFormat = {.sampleRate = format.sample_rate,
                   .channels = format.channels,
                   .samples = static_cast<SampleFmt>(format.samples),
                   .sources = format.sources,
                   .maxFrames = format.max_frames,
                   .finite = format.finite == 1};
        mStream = std::make_unique<Stream>();
        const bool sized = formatSize == sizeof(format) && settingsSize == sizeof(settings);
        const bool valid = sized && IsSwitch(format.finite) && IsValid(settings) &&
                           mStream->Init(mFormat, Converted(settings)) == RESULT_OK;
        ASSERT_EQ(error == AUDIO_FILTER_OK, valid) << audio_filter_strerror(error);
        ASSERT_EQ(mC != nullptr, valid);
        ASSERT_TRUE(error != AUDIO_FILTER_ERROR_SIZE || !sized);
    }

    void Reset() {
        ASSERT_EQ(audio_filter_reset(mC), mC != nullptr ? int{AUDIO_FILTER_OK} : kArgument);
        if (mC != nullptr) {
            mStream->Reset();
        }
    }

    void SetAll() {
        const audio_filter_settings settings = AnySettings();
        const std::uint32_t size = SizeNear(sizeof(settings));
        Block given = Given(settings, size);
        const bool valid = mC != nullptr && size == sizeof(settings) && IsValid(settings);
        const int error = audio_filter_set_settings(
            mC, reinterpret_cast<const audio_filter_settings*>(given.Data()));
        ASSERT_EQ(error == AUDIO_FILTER_OK, valid) << audio_filter_strerror(error);
        if (valid) {
            mStream->SetSettings(Converted(settings));
        }
    }

    /// An error changes nothing, so the settings that are read afterwards are those of the stream in any case.
    void SetOne() {
        const int setting = mScript.OneIn(16) ? mScript.AnyInt() : mScript.Within(1, 7);
        const double value = mScript.OneIn(4) ? static_cast<double>(mScript.AnyFloat())
                                              : static_cast<double>(mScript.Within(-2, 4));
        audio_filter_set(mC, setting, value);
        if (mC != nullptr) {
            audio_filter_settings settings;
            audio_filter_default_settings(&settings, sizeof(settings));
            ASSERT_EQ(audio_filter_get_settings(mC, &settings), AUDIO_FILTER_OK);
            ASSERT_TRUE(IsValid(settings)) << setting << " " << value;
            mStream->SetSettings(Converted(settings));
        }
    }

    std::size_t Channels() const { return static_cast<std::size_t>(mFormat.channels); }
    bool IsPlanar() const { return mFormat.samples > 5; }
    std::size_t Bytes(std::size_t frames) const {
        const bool wide = mFormat.samples == SAMPLE_FMT_FLT || mFormat.samples == SAMPLE_FMT_FLTP;
        return frames * (wide ? 4 : 2) * (IsPlanar() ? 1 : Channels());
    }
    std::size_t Buffers() const { return IsPlanar() ? Channels() : 1; }

    void Process() {
        if (mC == nullptr) {
            return;
        }
        const int frames = mScript.OneIn(8) ? mScript.AnyInt() : mScript.Within(0, kLongest);
        const bool valid = frames >= 0 && frames <= mFormat.maxFrames && frames <= kLongest;
        if (!valid && frames >= 0 && frames <= mFormat.maxFrames) {
            return;  // valid, but longer than the buffers here
        }
        const std::size_t bytes = Bytes(static_cast<std::size_t>(valid ? frames : 0));
        std::vector<Block> in;
        std::vector<const void*> from;
        for (std::size_t i = 0; i < Buffers() * static_cast<std::size_t>(mFormat.sources); ++i) {
            in.emplace_back(mScript.Bytes(bytes, mFormat.samples));
            from.push_back(in.back().Data());
        }
        std::vector<Block> out;
        std::vector<Block> expected;
        std::vector<void*> to;
        std::vector<void*> toExpected;
        for (std::size_t i = 0; i < Buffers(); ++i) {
            to.push_back(out.emplace_back(bytes).Data());
            toExpected.push_back(expected.emplace_back(bytes).Data());
        }
        ASSERT_EQ(audio_filter_process(mC, from.data(), to.data(), frames),
                  valid ? int{AUDIO_FILTER_OK} : int{AUDIO_FILTER_ERROR_FRAMES});
        mStream->Process(from.data(), toExpected.data(), frames);
        for (std::size_t i = 0; i < Buffers(); ++i) {
            ASSERT_EQ(out[i].Bytes(), expected[i].Bytes());
        }
    }

    void Drain() {
        const int room = mScript.OneIn(8) ? mScript.AnyInt() : mScript.Within(1, kLongest);
        if (mC == nullptr || room > kLongest) {
            return;
        }
        std::vector<Block> out;
        std::vector<void*> to;
        for (std::size_t i = 0; i < Buffers(); ++i) {
            to.push_back(out.emplace_back(Bytes(kLongest)).Data());
        }
        const int frames = audio_filter_drain(mC, to.data(), room);
        const bool valid = room >= 1 && room <= mFormat.maxFrames;
        ASSERT_EQ(frames, valid ? mStream->Drain(to.data(), room) : int{AUDIO_FILTER_ERROR_FRAMES});
    }

    void NextEvent() {
        const std::uint32_t size = SizeNear(sizeof(audio_filter_event));
        Block given = Given(audio_filter_event(), size);
        auto* event = reinterpret_cast<audio_filter_event*>(given.Data());
        const int result = audio_filter_next_event(mC, event);
        if (mC == nullptr || size != sizeof(audio_filter_event)) {
            ASSERT_LT(result, 0);
            return;
        }
        StreamEvent expected;
        ASSERT_EQ(result, mStream->NextEvent(expected) ? 1 : 0);
        if (result == 1) {
            ASSERT_EQ(event->type, static_cast<int>(expected.type));
            ASSERT_EQ(event->frame, expected.frame);
        }
    }

    Script& mScript;
    audio_filter_stream* mC = nullptr;
    StreamFormat mFormat;
    std::unique_ptr<Stream> mStream;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    CScript run(script);
    while (script.GoesOn(32)) {
        run.Step();
    }
    return 0;
}
