/// Operations that may run on several threads, also run under ThreadSanitizer.

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "common/result_code.h"
#include "log/pr_file_log_writer.h"
#include "log_capture.h"
#include "support/temp_dir.h"

namespace {

constexpr int kRounds = 300;

class Counter : public FilterListener {
public:
    void OnEvent(int, std::string) override { ++count; }
    std::atomic<int> count = 0;
};

/// Repeats calls of the processing entries until stopped.
void ProcessUntil(AudioFilter& filter, const std::atomic<bool>& done) {
    std::vector<char> in(2 * 1280);
    std::vector<char> out(4 * 1280);
    AVParam param;
    param.audioSampleRate = 32000;
    param.audioChannels = 2;
    param.audioSampleFmt = SAMPLE_FMT_S16;
    const std::vector<AVSourceType> both = {AV_SOURCE_MICROPHONE, AV_SOURCE_1};
    while (!done) {
        int size = 1280;
        filter.Process(in.data(), out.data(), size, {AV_SOURCE_MICROPHONE}, param, 0);
        size = 2560;
        filter.Process(in.data(), out.data(), size, both, param, 0);
        size = 1280;
        filter.ProcessResample(in.data(), out.data(), size, {AV_SOURCE_MICROPHONE}, param, 0);
        size = 2560;
        filter.SyncProcessDelay(in.data(), out.data(), size, both);
    }
}

TEST(Threads, SwitchesAndParametersChangeDuringProcessingAndEachNotifiesOnce) {
    const auto filter = std::make_unique<AudioFilter>();
    Counter listener;
    filter->SetListener(&listener);
    ProcessSwitchMap none;
    filter->Init(32000, 2, SAMPLE_FMT_S16, &none);
    std::atomic<bool> done = false;
    std::thread audio([&] { ProcessUntil(*filter, done); });
    for (int round = 0; round < kRounds; ++round) {
        const bool on = round % 2 == 0;
        ProcessSwitchMap switches = {
            {AP_DENOISE, on}, {AP_PHASE_CHECK, on}, {AP_GAIN, on}, {AP_MIXING, on}};
        EXPECT_TRUE(filter->SetMethod(&switches));
        ProcessParam param = {static_cast<float>(round % 10) / 10.0F, round % 4};
        EXPECT_TRUE(filter->SetParameter(&param, AP_GAIN));
        EXPECT_TRUE(filter->SetParameter(&param, AP_DENOISE));
    }
    done = true;
    audio.join();
    EXPECT_EQ(listener.count, 4 * kRounds);
}

TEST(Threads, AfterClearDuringProcessingCallsReturn4) {
    for (int round = 0; round < 20; ++round) {
        const auto filter = std::make_unique<AudioFilter>();
        ProcessSwitchMap all = {
            {AP_DENOISE, true}, {AP_PHASE_CHECK, true}, {AP_GAIN, true}, {AP_MIXING, true}};
        filter->Init(32000, 2, SAMPLE_FMT_S16, &all);
        std::atomic<bool> done = false;
        std::thread audio([&] { ProcessUntil(*filter, done); });
        EXPECT_TRUE(filter->Clear());
        std::vector<char> in(1280);
        int size = 1280;
        AVParam param;
        EXPECT_EQ(filter->Process(in.data(), in.data(), size, {AV_SOURCE_MICROPHONE}, param, 0),
                  RESULT_NOT_INITIALISED);
        done = true;
        audio.join();
    }
}

TEST(Threads, TwoFiltersLogOnTwoThreads) {
    LogCapture log;
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([] {
            const auto filter = std::make_unique<AudioFilter>();
            ProcessSwitchMap switches = {{AP_GAIN, true}};
            filter->Init(48000, 1, SAMPLE_FMT_S16, &switches);
            std::vector<char> in(960);
            AVParam param;
            for (int round = 0; round < kRounds; ++round) {
                int size = 960;
                filter->Process(in.data(), in.data(), size, {AV_SOURCE_1}, param, 0);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    // Per filter: the switch, "switch state is set", three lines a call, "cleared".
    EXPECT_EQ(log.Lines().size(), 2U * (2 + 3 * kRounds + 1));
}

TEST(Threads, AFilterLogsWhileWritersAreAddedAndRemoved) {
    TempDir dir;
    PRFileLogParam file = {dir.File("log"), 1, 0};
    PR_LOG_ENABLE(true);
    const auto filter = std::make_unique<AudioFilter>();
    ProcessSwitchMap none;
    filter->Init(32000, 2, SAMPLE_FMT_S16, &none);
    std::atomic<bool> done = false;
    std::thread audio([&] { ProcessUntil(*filter, done); });
    for (int round = 0; round < kRounds; ++round) {
        const int writer = pr_log->AddLog(PROCESS_LOG_FILE, &file, PROCESS_LOG_DEBUG);
        EXPECT_EQ(pr_log->SetLogLevel(writer, PROCESS_LOG_ERROR), RESULT_OK);
        EXPECT_EQ(round % 2 == 0 ? pr_log->RemoveLog(writer) : pr_log->RemoveAllLog(), RESULT_OK);
    }
    done = true;
    audio.join();
    PR_LOG_ENABLE(false);
}

}  // namespace
