/// AudioFilter compared with its reference model: any calls in any order with any arguments.

#include <algorithm>

#include "audio_filter/compared_filters.h"
#include "fuzz/support/script.h"

namespace {

class FilterScript {
public:
    explicit FilterScript(Script& script) : mScript(script) {}

    void Step() {
        switch (mScript.Within(0, 15)) {
            case 0: mFilters.Renew(); break;
            case 1: mFilters.Clear(); break;
            case 2: mFilters.SetListener(mScript.ConsumeBool()); break;
            case 3: SetParameter(); break;
            case 4: SetMethod(); break;
            case 5:
            case 6: Init(); break;
            case 7: Run(ComparedFilters::Entry::kSyncProcessDelay); break;
            case 8:
            case 9: Run(ComparedFilters::Entry::kProcessResample); break;
            default: Run(ComparedFilters::Entry::kProcess); break;
        }
    }

private:
    /// The largest input in bytes. A larger size is reduced unless the filter refuses it.
    static constexpr int kLargest = 1 << 17;

    void Init() {
        const int rate = mScript.Rate();
        const int channels = mScript.OneIn(8) ? mScript.AnyInt() : mScript.Within(1, 3);
        const SampleFmt fmt = mScript.Format();
        const ProcessSwitchMap switches = Switches();
        mFilters.Init(rate, channels, fmt, mScript.OneIn(6) ? nullptr : &switches);
    }

    void SetMethod() {
        const ProcessSwitchMap switches = Switches();
        mFilters.SetMethod(mScript.OneIn(20) ? nullptr : &switches);
    }

    ProcessSwitchMap Switches() {
        const int on = mScript.Within(0, 255);
        const int given = mScript.OneIn(4) ? mScript.Within(0, 255) : 255;
        ProcessSwitchMap switches;
        for (int kind = -1; kind < 7; ++kind) {
            if ((given >> (kind + 1) & 1) != 0) {
                switches[static_cast<ProcessType>(kind)] = (on >> (kind + 1) & 1) != 0;
            }
        }
        return switches;
    }

    void SetParameter() {
        ProcessParam param;
        param.gain = mScript.AnyFloat();
        param.level = mScript.AnyInt();
        const auto type = static_cast<ProcessType>(
            mScript.OneIn(4) ? mScript.AnyInt() : mScript.PickValueInArray({0, 3}));
        mFilters.SetParameter(mScript.OneIn(20) ? nullptr : &param, type);
    }

    void Run(ComparedFilters::Entry entry) {
        PlainFilter::Call call;
        call.sources = Sources();
        call.size = Size(static_cast<int>(call.sources.size()));
        const std::size_t backed = static_cast<std::size_t>(std::clamp(call.size, 0, kLargest));
        call.in = mScript.Bytes(backed, mFilters.Filter().mSampleFmt);
        call.nullIn = mScript.OneIn(50);
        call.nullOut = mScript.OneIn(50);
        call.inPlace = entry != ComparedFilters::Entry::kProcessResample && mScript.OneIn(4);
        call.param.audioSampleRate = Mostly(mFilters.Filter().mProcessRate);
        call.param.audioChannels = Mostly(mFilters.Filter().mChannels);
        call.param.audioSampleFmt = Mostly(mFilters.Filter().mSampleFmt);
        const std::size_t shift = mScript.Count(7);
        const int times = mScript.OneIn(8) ? mScript.Within(1, 20) : 1;
        for (int time = 0; time < times; ++time) {
            mFilters.Run(entry, call, shift);
        }
    }

    int Mostly(int value) { return mScript.OneIn(10) ? mScript.AnyInt() : value; }

    std::vector<AVSourceType> Sources() {
        const std::size_t count = mScript.OneIn(50)  ? mScript.Count(70'000)
                                  : mScript.OneIn(4) ? mScript.Count(20)
                                                     : 1 + mScript.Count(2);
        std::vector<AVSourceType> sources(count);
        for (std::size_t i = 0; i < count && i < 20; ++i) {
            sources[i] = static_cast<AVSourceType>(mScript.OneIn(10) ? mScript.AnyInt()
                                                                     : mScript.Within(0, 3));
        }
        return sources;
    }

    /// 10 ms of every source, some frames or bytes of each, or any size. Only a size that the filter
    /// refuses may exceed the input.
    int Size(int sources) {
        const AudioFilter& filter = mFilters.Filter();
        const int frame = std::max(
            1, PlainFilter::SampleBytesOf(filter.mSampleFmt) * std::min(filter.mChannels, 8));
        const std::int64_t unit = std::int64_t{frame} * std::max(sources, 1);
        const int choice = mScript.Within(0, 5);
        const std::int64_t size = choice < 2    ? unit * (std::min(filter.mSampleRate, 48000) / 100)
                                  : choice == 2 ? unit * mScript.Within(0, 2000)
                                  : choice == 3 ? std::int64_t{sources} * mScript.Within(0, 2000)
                                                : mScript.AnyInt();
        const bool refused = choice > 3 && mFilters.Refuses(static_cast<int>(size), sources);
        return static_cast<int>(size <= kLargest || refused ? size : size % kLargest);
    }

    Script& mScript;
    ComparedFilters mFilters;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    FilterScript run(script);
    while (script.GoesOn()) {
        run.Step();
    }
    return 0;
}
