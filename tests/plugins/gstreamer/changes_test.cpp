#include <gst/controller/controller.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <numeric>
#include <thread>

#include "plugins/gstreamer/element_harness.h"

namespace {

double RootMeanSquare(std::vector<float>::const_iterator from,
                      std::vector<float>::const_iterator to) {
    const double energy = std::inner_product(from, to, from, 0.0);
    return std::sqrt(energy / static_cast<double>(to - from));
}

TEST(GStreamerChanges, EveryPropertyMayChangeWhileAudioRuns) {
    ElementHarness harness({.rate = 96000, .channels = 2});
    constexpr int kTurns = 60;
    std::atomic<bool> done = false;
    std::thread changes([&] {
        for (int turn = 0; turn < kTurns; ++turn) {
            harness.Set("suppression", turn % 5 - 1);
            harness.Set("gain-on", turn % 2);
            harness.Set("gain", static_cast<double>(turn % 11) / 10.0);
            harness.Set("phase-check", turn / 2 % 2);
            harness.Set("music-detection", turn / 3 % 2);
            harness.Set("high-band", turn / 4 % 2);
            EXPECT_GT(harness.Get<guint64>("latency"), 0U);
            EXPECT_GE(harness.Get<float>("reduction"), 0.0F);
            harness.Get<gboolean>("music");
            std::this_thread::yield();
        }
        done = true;
    });
    const std::vector<float> input = Noise(std::size_t{2} * 9600);
    std::size_t sent = 0;
    while (!done) {
        harness.PushInBlocks(input, {960, 441});
        sent += input.size();
    }
    changes.join();
    harness.Send(gst_event_new_eos());
    const Output output = harness.Pull();
    EXPECT_EQ(output.samples.size(), sent);
    EXPECT_TRUE(std::all_of(output.samples.begin(), output.samples.end(),
                            [](float sample) { return std::abs(sample) <= 1.0F; }));
}

TEST(GStreamerChanges, SuppressionLowersNoiseBy10DbReportsItAndStopsWhenSwitchedOff) {
    ElementHarness harness;
    harness.Set("suppression", 3);
    harness.PushInBlocks(Noise(96000), {480});
    EXPECT_GT(harness.Get<float>("reduction"), 10.0F);
    harness.Set("suppression", -1);
    harness.PushInBlocks(Noise(48000), {480});
    EXPECT_EQ(harness.Get<float>("reduction"), 0.0F);
    const Output output = harness.Pull();
    const auto second = [&](int number) { return output.samples.begin() + number * 48000; };
    EXPECT_LT(RootMeanSquare(second(1), second(2) - 4800),
              RootMeanSquare(second(2) + 4800, output.samples.end()) / std::sqrt(10.0));
}

TEST(GStreamerChanges, AChangeIsPostedOnTheBusWithItsTime) {
    ElementHarness harness;
    harness.Push(Noise(48000));
    harness.Set("gain-on", TRUE);
    harness.Push(Noise(48000));
    harness.Set("suppression", -1);
    harness.Push(Noise(48000));
    const std::vector<Change> changes = harness.Changes();
    ASSERT_EQ(changes.size(), 2U);
    EXPECT_EQ(changes[0].change, "gain");
    EXPECT_TRUE(changes[0].on);
    EXPECT_NEAR(static_cast<double>(changes[0].timestamp), 1e9, 10e6);
    EXPECT_EQ(changes[1].change, "suppression");
    EXPECT_FALSE(changes[1].on);
    EXPECT_NEAR(static_cast<double>(changes[1].timestamp), 2e9, 10e6);
}

TEST(GStreamerChanges, AReversedChannelIsPostedAndForgottenWithAFlush) {
    ElementHarness harness({.rate = 48000, .channels = 2});
    harness.Set("phase-check", TRUE);
    std::vector<float> reversed = Noise(std::size_t{2} * 96000, 0.5F);
    for (std::size_t i = 0; i < reversed.size(); i += 2) {
        reversed[i] = -reversed[i + 1];
    }
    harness.PushInBlocks(reversed, {480});
    const std::vector<Change> found = harness.Changes();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].change, "reversed");
    EXPECT_TRUE(found[0].on);

    harness.Send(gst_event_new_flush_start());
    harness.Send(gst_event_new_flush_stop(TRUE));
    const std::vector<Change> ended = harness.Changes();
    ASSERT_EQ(ended.size(), 1U);
    EXPECT_EQ(ended[0].change, "reversed");
    EXPECT_FALSE(ended[0].on);
}

TEST(GStreamerChanges, AControlledSettingAppliesAtItsTimeWithinALongBuffer) {
    ElementHarness harness;
    GstControlSource* source = gst_interpolation_control_source_new();
    g_object_set(source, "mode", GST_INTERPOLATION_MODE_NONE, nullptr);
    auto* values = GST_TIMED_VALUE_CONTROL_SOURCE(source);
    gst_timed_value_control_source_set(values, 0, 2.0);
    gst_timed_value_control_source_set(values, 700 * GST_MSECOND, -1.0);
    gst_object_add_control_binding(GST_OBJECT(harness.Element()),
                                   gst_direct_control_binding_new_absolute(
                                       GST_OBJECT(harness.Element()), "suppression", source));
    gst_object_unref(source);
    harness.Push(Noise(48000));
    const std::vector<Change> changes = harness.Changes();
    ASSERT_EQ(changes.size(), 1U);
    EXPECT_EQ(changes[0].change, "suppression");
    EXPECT_NEAR(static_cast<double>(changes[0].timestamp), 700e6, 17e6);
}

}  // namespace
