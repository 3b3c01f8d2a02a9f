#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "another_thread.h"
#include "audio_filter/audio_filter.h"
#include "common/result_code.h"
#include "log_capture.h"
#include "support/bytes.h"
#include "support/fail_each.h"
#include "support/signals.h"

namespace {

using Filter = std::unique_ptr<AudioFilter>;

struct Stream {
    int rate;
    int channels;
    SampleFmt fmt;
};

const std::vector<Stream> kStreams = {
    {8000, 1, SAMPLE_FMT_S16},   {16000, 2, SAMPLE_FMT_FLT}, {32000, 1, SAMPLE_FMT_S16},
    {32000, 2, SAMPLE_FMT_FLT},  {32000, 3, SAMPLE_FMT_S16}, {44100, 2, SAMPLE_FMT_S16},
    {48000, 2, SAMPLE_FMT_FLT},  {96000, 1, SAMPLE_FMT_S16}, {32000, 2, SAMPLE_FMT_S16P},
    {32000, 1, SAMPLE_FMT_FLTP}, {32000, 1, SAMPLE_FMT_DBL},
};

ProcessSwitchMap AllOn() {
    return {{AP_DENOISE, true}, {AP_PHASE_CHECK, true}, {AP_GAIN, true}, {AP_MIXING, true}};
}

int Init(AudioFilter& filter, const Stream& stream, ProcessSwitchMap switches) {
    return filter.Init(stream.rate, stream.channels, stream.fmt, &switches);
}

/// The output bytes and codes of blocks of 10 ms of two sources.
class Session {
public:
    explicit Session(const Stream& stream)
        : mBlock(static_cast<std::size_t>(stream.rate / 100 * stream.channels) * 2 *
                 (stream.fmt == SAMPLE_FMT_FLT ? 4 : 2)),
          mBytes(kBlocks * mBlock) {
        std::mt19937 random(1);
        const std::vector<float> floats = NoisySpeech(random, mBytes.size() / 2, stream.rate);
        const std::vector<short> shorts = As<short>(floats);
        const void* from = stream.fmt == SAMPLE_FMT_FLT ? static_cast<const void*>(floats.data())
                                                        : static_cast<const void*>(shorts.data());
        std::memcpy(mBytes.data(), from, mBytes.size());
    }

    std::vector<char> Run(AudioFilter& filter, std::size_t blocks = kBlocks) const {
        std::vector<char> all;
        std::vector<char> in(mBlock);
        std::vector<char> out(2 * mBlock + std::size_t{320} * 8 * 3);
        AVParam param;
        for (std::size_t k = 0; k < blocks; ++k) {
            std::copy_n(mBytes.data() + k * mBlock, mBlock, in.data());
            int size = static_cast<int>(mBlock);
            const int code = filter.Process(in.data(), out.data(), size,
                                            {AV_SOURCE_MICROPHONE, AV_SOURCE_1}, param, 0);
            all.push_back(static_cast<char>(code));
            all.insert(all.end(), out.begin(), out.begin() + size);
        }
        return all;
    }

private:
    static constexpr std::size_t kBlocks = 10;

    std::size_t mBlock;
    std::vector<char> mBytes;
};

TEST(AllocationFaults, AFilterWithoutMemoryThrows) {
    const int failures =
        FailEach([] { return std::make_unique<Filter>(); },
                 [](Filter& filter) {
                     filter = std::make_unique<AudioFilter>();
                     return 0;
                 },
                 [](Filter& filter, int code) { EXPECT_EQ(code == 0, filter != nullptr); });
    Report("AudioFilter", failures);
}

/// A filter and a map without two of the kinds, which Init inserts.
struct Started {
    AudioFilter filter;
    ProcessSwitchMap switches = {{AP_DENOISE, true}, {AP_GAIN, true}};
};

/// @param before an earlier stream of the filter; null for none
int FailInit(const Stream& stream, const Stream* before) {
    const Session session(stream);
    const auto make = [before] {
        auto started = std::make_unique<Started>();
        if (before != nullptr) {
            Init(started->filter, *before, AllOn());
        }
        return started;
    };
    const auto init = [&stream](Started& started) {
        return started.filter.Init(stream.rate, stream.channels, stream.fmt, &started.switches);
    };
    const std::unique_ptr<Started> undisturbed = make();
    init(*undisturbed);
    Init(undisturbed->filter, stream, AllOn());
    const std::vector<char> expected = session.Run(undisturbed->filter);
    return FailEach(make, init, [&](Started& started, int code) {
        EXPECT_TRUE(code == RESULT_OK || code == kThrew);
        const std::vector<char> result = session.Run(started.filter, 1);
        EXPECT_EQ(result.front(),
                  code == RESULT_OK ? expected.front() : static_cast<char>(RESULT_NOT_INITIALISED));
        EXPECT_EQ(Init(started.filter, stream, AllOn()), RESULT_OK);
        EXPECT_TRUE(session.Run(started.filter) == expected);
    });
}

TEST(AllocationFaults, AFilterWhoseInitThrewReturns4AndAfterTheNextInitGivesTheSameBytes) {
    int failures = 0;
    for (const Stream& stream : kStreams) {
        failures += FailInit(stream, nullptr);
    }
    failures += FailInit(kStreams[3], &kStreams[0]);
    failures += FailInit(kStreams[2], &kStreams[6]);
    failures += FailInit(kStreams[5], &kStreams[5]);
    Report("AudioFilter::Init", failures);
}

TEST(AllocationFaults, AnInitThatLogsThrowsNoMoreThanASilentOne) {
    LogCapture log;
    Report("AudioFilter::Init, logging", FailInit(kStreams[3], &kStreams[0]));
    Report("AudioFilter::Init, logging refusals", FailInit(kStreams[10], nullptr));
}

/// Repeating the call with the same map completes it.
TEST(AllocationFaults, ASetMethodThatThrewHasNotifiedEverySwitchAndCanBeRepeatedWithTheSameMap) {
    struct Subject final : FilterListener {
        Subject() {
            filter.SetListener(this);
            Init(filter, {32000, 2, SAMPLE_FMT_FLT}, {{AP_GAIN, true}});
            events.clear();
            events.reserve(10);
        }
        void OnEvent(int code, std::string) override { events.push_back(code); }

        AudioFilter filter;
        ProcessSwitchMap switches = {{AP_PHASE_CHECK, true}, {AP_MIXING, true}};
        std::vector<int> events;
    };
    const int failures = FailEach(
        [] { return std::make_unique<Subject>(); },
        [](Subject& subject) { return subject.filter.SetMethod(&subject.switches) ? 0 : -1; },
        [](Subject& subject, int code) {
            EXPECT_TRUE(AnotherThreadGetsIn(subject.filter));
            EXPECT_TRUE(code == kThrew || subject.events.size() == 3);
            const auto notified = [&](int event) {
                return std::count(subject.events.begin(), subject.events.end(), event) == 1;
            };
            EXPECT_EQ(subject.filter.mSwitchState[AP_PHASE_CHECK], notified(150003));
            EXPECT_EQ(subject.filter.mSwitchState[AP_GAIN], !notified(150008));
            EXPECT_EQ(subject.filter.mSwitchState[AP_MIXING], notified(150009));
            EXPECT_TRUE(subject.filter.SetMethod(&subject.switches));
            EXPECT_EQ(subject.events, (std::vector<int>{150003, 150008, 150009}));
            EXPECT_EQ(subject.switches.size(), 4U);
            EXPECT_TRUE(subject.switches[AP_MIXING]);
        });
    Report("AudioFilter::SetMethod", failures);
}

TEST(AllocationFaults, LinesWithoutMemoryAreLostAndTheCallsSucceed) {
    const Stream stream = {32000, 2, SAMPLE_FMT_S16};
    const Session session(stream);
    LogCapture log;
    const auto make = [&] {
        auto filter = std::make_unique<AudioFilter>();
        Init(*filter, stream, AllOn());
        return filter;
    };
    const std::vector<char> expected = session.Run(*make(), 2);
    int failures = FailEach(
        make,
        [&](AudioFilter& filter) {
            filter.SetMethod(nullptr);
            ProcessParam param = {0.8F, 3};
            filter.SetParameter(&param, AP_GAIN);
            filter.Clear();
            return filter.Init(0, 1, SAMPLE_FMT_S16, nullptr);
        },
        [&](AudioFilter& filter, int code) {
            EXPECT_EQ(code, RESULT_INVALID);
            Init(filter, stream, AllOn());
            EXPECT_TRUE(session.Run(filter, 2) == expected);
        });
    Report("AudioFilter::SetMethod(null), SetParameter, Clear and a refused Init, logging",
           failures);
    failures = FailEach([] { return std::make_unique<Filter>(std::make_unique<AudioFilter>()); },
                        [](Filter& filter) {
                            filter.reset();
                            return 0;
                        },
                        [](Filter&, int code) { EXPECT_EQ(code, RESULT_OK); });
    Report("~AudioFilter, logging", failures);
}

/// A filter that has gathered enough for an analysis, and the arguments of the call that triggers it.
struct AnalysingCall {
    AnalysingCall() {
        Init(filter, {32000, 1, SAMPLE_FMT_S16}, AllOn());
        while (filter.mClassifier.mGathered < 60 * 512 + 1024) {
            Run();
            sources = {AV_SOURCE_MICROPHONE};
        }
        out.assign(out.size(), 0);
    }

    int Run() {
        int size = 640;
        return filter.Process(in.data(), out.data(), size, std::move(sources), param, 0);
    }

    AudioFilter filter;
    std::vector<AVSourceType> sources = {AV_SOURCE_MICROPHONE};
    AVParam param;
    std::vector<char> in = std::vector<char>(640, 1);
    std::vector<char> out = std::vector<char>(1280);
};

TEST(AllocationFaults, AnAnalysisAllocatesNothingButItsLogLines) {
    AnalysingCall undisturbed;
    Allocations allocations;
    EXPECT_EQ(undisturbed.Run(), 0);
    EXPECT_EQ(allocations.Stop(), 0U);
    EXPECT_EQ(undisturbed.filter.mClassifier.mVoteCount, 1);
    const int failures = FailEach([] { return std::make_unique<AnalysingCall>(); },
                                  [](AnalysingCall& call) {
                                      PR_LOG_ENABLE(true);  // with no writers
                                      const int code = call.Run();
                                      PR_LOG_ENABLE(false);
                                      return code;
                                  },
                                  [&](AnalysingCall& call, int code) {
                                      EXPECT_EQ(code, RESULT_OK);
                                      EXPECT_TRUE(call.out == undisturbed.out);
                                      EXPECT_EQ(call.filter.mClassifier.mVoteCount, 1);
                                      EXPECT_TRUE(AnotherThreadGetsIn(call.filter));
                                  });
    Report("AudioFilter::Process with an analysis, logging", failures);
}

}  // namespace
