/// Counts the allocations and locks of the functions that may run on the audio thread. It replaces functions of the C
/// library and is therefore a separate executable.

#include <gtest/gtest.h>

#include <vector>

#include "audio_filter/c.h"
#include "support/allocations.h"
#include "support/posix/lock_calls.h"

namespace {

void CountEvent(void* user, const audio_filter_event*) {
    ++*static_cast<int*>(user);
}

TEST(CProcessingPath, AllocatesNothingAndTakesNoLockWhileSettingsChangeAndEventsAreCalledBack) {
    audio_filter_format format;
    audio_filter_default_format(&format, sizeof(format));
    format.channels = 2;
    audio_filter_stream* stream = nullptr;
    ASSERT_EQ(audio_filter_create(&stream, &format, nullptr), AUDIO_FILTER_OK);
    int events = 0;
    audio_filter_set_event_callback(stream, CountEvent, &events);
    std::vector<float> samples(960, 0.1F);
    void* out = samples.data();
    const LockCalls calls;
    Allocations allocations;
    for (int block = 0; block < 300; ++block) {
        audio_filter_set(stream, AUDIO_FILTER_SUPPRESSION, block % 5 - 1);
        audio_filter_set(stream, AUDIO_FILTER_MUSIC_DETECTION, block % 50 < 40);
        audio_filter_process_float(stream, samples.data(), samples.data(), 480);
    }
    audio_filter_drain(stream, &out, 480);
    audio_filter_settings settings;
    audio_filter_default_settings(&settings, sizeof(settings));
    audio_filter_set_settings(stream, &settings);
    audio_filter_get_settings(stream, &settings);
    EXPECT_EQ(allocations.Stop(), 0U);
    EXPECT_EQ(calls.Locks(), 0);
    EXPECT_EQ(calls.Waits(), 0);
    EXPECT_GT(events, 50);
    audio_filter_destroy(stream);
}

TEST(CProcessingPath, MemoryThatRunsOutIsAnErrorAndAResetThatFailsChangesNothing) {
    audio_filter_stream* stream = nullptr;
    {
        Allocations allocations;
        allocations.Fail(1, true);
        EXPECT_EQ(audio_filter_create(&stream, nullptr, nullptr), AUDIO_FILTER_ERROR_MEMORY);
    }
    EXPECT_EQ(stream, nullptr);
    ASSERT_EQ(audio_filter_create(&stream, nullptr, nullptr), AUDIO_FILTER_OK);
    audio_filter_set(stream, AUDIO_FILTER_SUPPRESSION, AUDIO_FILTER_OFF);
    std::vector<float> samples(1000, 0.25F);
    audio_filter_process_float(stream, samples.data(), samples.data(), 1000);
    for (std::size_t failing = 1; failing < 10; ++failing) {
        Allocations allocations;
        allocations.Fail(failing, true);
        EXPECT_EQ(audio_filter_reset(stream), AUDIO_FILTER_ERROR_MEMORY) << failing;
    }
    float sample = 0.5F;
    EXPECT_EQ(audio_filter_process_float(stream, &sample, &sample, 1), AUDIO_FILTER_OK);
    EXPECT_EQ(sample, 0.25F);  // what was pending before
    EXPECT_EQ(audio_filter_reset(stream), AUDIO_FILTER_OK);
    EXPECT_EQ(audio_filter_process_float(stream, &sample, &sample, 1), AUDIO_FILTER_OK);
    EXPECT_EQ(sample, 0.0F);
    double level = 0.0;
    audio_filter_get(stream, AUDIO_FILTER_SUPPRESSION, &level);
    EXPECT_EQ(level, AUDIO_FILTER_OFF);
    audio_filter_destroy(stream);
}

}  // namespace
