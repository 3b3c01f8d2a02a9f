/// A listener may set parameters from OnEvent, on its own thread or on another.

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "common/result_code.h"
#include "filter_fixture.h"

namespace {

class Handing : public FilterListener {
public:
    explicit Handing(std::function<void()> work) : mWork(std::move(work)) {}
    ~Handing() { Join(); }
    Handing(const Handing&) = delete;
    Handing& operator=(const Handing&) = delete;

    /// Passes the work to another thread without waiting.
    void OnEvent(int, std::string) override { mThreads.emplace_back(mWork); }

    void Join() {
        for (std::thread& thread : mThreads) {
            thread.join();
        }
        mThreads.clear();
    }

private:
    std::function<void()> mWork;
    std::vector<std::thread> mThreads;
};

class Listening : public FilterTest {
protected:
    /// A ramp at gain 0.25, by a filter without a listener.
    std::vector<short> Quarter() {
        AudioFilter plain;
        ProcessSwitchMap switches = {{AP_GAIN, true}};
        plain.Init(32000, 2, SAMPLE_FMT_S16, &switches);
        plain.SetParameter(&quarter, AP_GAIN);
        std::vector<short> samples = ramp;
        int bytes = ByteCount(samples);
        plain.Process(BytesOf(samples), BytesOf(samples), bytes, {AV_SOURCE_1}, param, 0);
        return samples;
    }
    std::vector<short> Processed() {
        std::vector<short> samples = ramp;
        EXPECT_EQ(Process(samples, {AV_SOURCE_1}), RESULT_OK);
        return Out<short>();
    }

    ProcessParam quarter = {0.25F, 1};
    std::vector<short> ramp = [] {
        std::vector<short> samples(640);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i] = static_cast<short>(50 * i);
        }
        return samples;
    }();
};

TEST_F(Listening, AParameterSetByAnotherThreadOnAnEventAppliesToTheNextBlock) {
    Handing listener([this] {
        EXPECT_TRUE(filter->SetParameter(&quarter, AP_GAIN));
        EXPECT_TRUE(filter->SetParameter(&quarter, AP_DENOISE));
    });
    Start(32000, 2, SAMPLE_FMT_S16);
    filter->SetListener(&listener);
    ProcessSwitchMap switches = {{AP_GAIN, true}, {AP_MIXING, true}};
    EXPECT_TRUE(filter->SetMethod(&switches));
    listener.Join();
    EXPECT_EQ(filter->mDenoiseLevel, 1);
    EXPECT_EQ(Processed(), Quarter());
}

TEST_F(Listening, AParameterSetByAnotherThreadOnAnEventOfInitAppliesToTheFirstBlock) {
    Handing listener([this] { EXPECT_TRUE(filter->SetParameter(&quarter, AP_GAIN)); });
    filter->SetListener(&listener);
    EXPECT_EQ(Start(32000, 2, SAMPLE_FMT_S16, {AP_GAIN}), RESULT_OK);
    listener.Join();
    EXPECT_EQ(Processed(), Quarter());
}

TEST_F(Listening, AParameterSetByOnEventItselfAppliesToTheNextBlock) {
    struct Setting : FilterListener {
        void OnEvent(int, std::string) override {
            EXPECT_TRUE(filter->SetParameter(param, AP_GAIN));
        }
        AudioFilter* filter = nullptr;
        ProcessParam* param = nullptr;
    } listener;
    listener.filter = filter.get();
    listener.param = &quarter;
    filter->SetListener(&listener);
    EXPECT_EQ(Start(32000, 2, SAMPLE_FMT_S16, {AP_GAIN}), RESULT_OK);
    EXPECT_EQ(Processed(), Quarter());
    bool entered = false;
    std::thread([&] { entered = filter->SetParameter(&quarter, AP_GAIN); }).join();
    EXPECT_TRUE(entered) << "the lock is free again";
}

TEST_F(Listening, ThreeHundredSwitchesDuringProcessingEachSetAParameterOnAnotherThread) {
    std::atomic<int> set = 0;
    Handing listener([&] { set += filter->SetParameter(&quarter, AP_GAIN) ? 1 : 0; });
    Start(32000, 2, SAMPLE_FMT_S16);
    filter->SetListener(&listener);
    std::atomic<bool> done = false;
    std::thread audio([&] {
        std::vector<short> samples(640);
        AVParam own;
        while (!done) {
            int bytes = 1280;
            filter->Process(BytesOf(samples), BytesOf(samples), bytes, {AV_SOURCE_1}, own, 0);
        }
    });
    for (int round = 0; round < 300; ++round) {
        ProcessSwitchMap switches = {{AP_GAIN, round % 2 == 0}};
        filter->SetMethod(&switches);
        if (round % 50 == 49) {
            listener.Join();
        }
    }
    listener.Join();
    done = true;
    audio.join();
    EXPECT_EQ(set, 300);
}

/// An exception thrown by a listener leaves the lock free.
TEST_F(Listening, AnExceptionFromOnEventLeavesSetMethodWithTheLockFree) {
    struct Throwing : FilterListener {
        void OnEvent(int, std::string) override { throw 7; }
    } listener;
    Start(32000, 2, SAMPLE_FMT_S16);
    filter->SetListener(&listener);
    ProcessSwitchMap switches = {{AP_GAIN, true}};
    EXPECT_THROW(filter->SetMethod(&switches), int);
    bool entered = false;
    std::thread([&] { entered = filter->SetParameter(&quarter, AP_GAIN); }).join();
    EXPECT_TRUE(entered);
    EXPECT_EQ(Processed(), Quarter()) << "the kind is switched";
}

/// Stands in for pr_log, so that a listener can be set in the middle of SetMethod.
struct SettingAListener : PRLog {
    void Info(std::string, const char*, ...) override { filter->SetListener(listener); }

    AudioFilter* filter = nullptr;
    FilterListener* listener = nullptr;
};

TEST_F(Listening, AListenerSetFromALogCallGetsOnlyTheLaterEventsEachWithItsText) {
    struct Collecting : FilterListener {
        void OnEvent(int code, std::string text) override { events.emplace_back(code, text); }
        std::vector<std::pair<int, std::string>> events;
    } listener;
    Start(32000, 2, SAMPLE_FMT_S16);
    SettingAListener setting;
    setting.filter = filter.get();
    setting.listener = &listener;
    PRLog* const before = std::exchange(pr_log, &setting);
    PR_LOG_ENABLE(true);
    ProcessSwitchMap switches = {{AP_GAIN, true}, {AP_MIXING, true}};
    EXPECT_TRUE(filter->SetMethod(&switches));
    PR_LOG_ENABLE(false);
    pr_log = before;
    const std::vector<std::pair<int, std::string>> later = {{150009, "AP_MIXING turn on"}};
    EXPECT_EQ(listener.events, later);
}

}  // namespace
