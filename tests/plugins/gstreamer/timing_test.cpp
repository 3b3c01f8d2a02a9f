#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "plugins/gstreamer/element_harness.h"

namespace {

constexpr int kOff = -1;

GstClockTime Distance(GstClockTime a, GstClockTime b) {
    return a > b ? a - b : b - a;
}

/// Expects the output to start and end at these times and to be contiguous between.
void ExpectContiguous(const Output& output, GstClockTime start, GstClockTime end) {
    ASSERT_FALSE(output.buffers.empty());
    EXPECT_LE(Distance(output.buffers.front().timestamp, start), 1U);
    GstClockTime next = output.buffers.front().timestamp;
    for (const Output::Buffer& buffer : output.buffers) {
        EXPECT_LE(Distance(buffer.timestamp, next), 16U);
        next = buffer.timestamp + buffer.duration;
    }
    EXPECT_LE(Distance(next, end), 16U);
}

std::vector<float> Part(const std::vector<float>& all, std::size_t from, std::size_t count) {
    const auto start = all.begin() + static_cast<std::ptrdiff_t>(from);
    return {start, start + static_cast<std::ptrdiff_t>(count)};
}

TEST(GStreamerTiming, TheLatencyIs517FramesAt48000HzAndIsAddedToThatOfTheSource) {
    for (const auto& [rate, frames] :
         {std::tuple(8000, 257U), {44100, 517U}, {48000, 517U}, {192000, 2580U}}) {
        ElementHarness harness({.rate = rate});
        const GstClockTime latency =
            gst_util_uint64_scale_round(frames, GST_SECOND, static_cast<guint64>(rate));
        EXPECT_EQ(harness.Get<guint64>("latency"), latency);
        gst_harness_set_upstream_latency(harness.Raw(), 5 * GST_MSECOND);
        EXPECT_EQ(gst_harness_query_latency(harness.Raw()), 5 * GST_MSECOND + latency);
    }
}

TEST(GStreamerTiming, WithEverythingOffTheOutputIsTheInputAtItsTimestampsInEveryFormat) {
    for (const int channels : {1, 2, 8}) {
        for (const int form : {0, 1, 2, 3}) {
            const Format format = {
                .rate = 48000, .channels = channels, .s16 = form % 2 == 1, .planar = form / 2 == 1};
            ElementHarness harness(format);
            harness.Set("suppression", kOff);
            const std::vector<float> input =
                Rounded(Noise(9600 * static_cast<std::size_t>(channels)));
            harness.PushInBlocks(input, {1, 0, 64, 480, 1023, 137});
            harness.Send(gst_event_new_eos());
            const Output output = harness.Pull();
            EXPECT_EQ(output.samples, input);
            ExpectContiguous(output, 0, 200 * GST_MSECOND);
        }
    }
}

TEST(GStreamerTiming, ABufferOf100000FramesAndOneOfNoneKeepTheOutputWhole) {
    ElementHarness harness;
    harness.Set("suppression", kOff);
    const std::vector<float> input = Noise(100000);
    harness.Push({});
    harness.Push(input);
    harness.Push({});
    harness.Send(gst_event_new_eos());
    const Output output = harness.Pull();
    EXPECT_EQ(output.samples, input);
}

TEST(GStreamerTiming, ASourceShorterThanTheLatencyComesOutAtItsEnd) {
    ElementHarness harness;
    harness.Set("suppression", kOff);
    const std::vector<float> input = Noise(100);
    harness.Push(input, GST_SECOND);
    EXPECT_TRUE(harness.Pull().buffers.empty());
    harness.Send(gst_event_new_eos());
    const Output output = harness.Pull();
    EXPECT_EQ(output.samples, input);
    EXPECT_EQ(output.buffers.at(0).timestamp, GST_SECOND);
}

TEST(GStreamerTiming, AfterAHoleOfOneSecondEachPartHasItsOwnTimestamps) {
    ElementHarness harness;
    harness.Set("suppression", kOff);
    const std::vector<float> input = Noise(9600);
    harness.PushInBlocks(Part(input, 0, 4800), {480});
    harness.Push(Part(input, 4800, 4800), GST_SECOND);
    const Output first = harness.Pull();
    harness.Send(gst_event_new_eos());
    const Output last = harness.Pull();

    std::vector<float> samples = first.samples;
    samples.insert(samples.end(), last.samples.begin(), last.samples.end());
    EXPECT_EQ(samples, input);
    const Output::Buffer& resumed = first.buffers.back();
    EXPECT_EQ(resumed.timestamp, GST_SECOND);
    EXPECT_TRUE(resumed.isDiscontinuity);
    ExpectContiguous({{}, {first.buffers.begin(), first.buffers.end() - 1}}, 0, 100 * GST_MSECOND);
    ExpectContiguous(last, first.buffers.back().timestamp + first.buffers.back().duration,
                     GST_SECOND + 100 * GST_MSECOND);
}

TEST(GStreamerTiming, ALostPacketOf5MsIsAHoleOnlyIfItsSuccessorIsMarked) {
    for (const bool marked : {false, true}) {
        ElementHarness harness;
        harness.Push(Noise(4800));
        harness.Pull();
        harness.Push(Noise(4800), 105 * GST_MSECOND,
                     marked ? GST_BUFFER_FLAG_DISCONT : GstBufferFlags{});
        EXPECT_EQ(harness.Pull().buffers.size(), marked ? 2U : 1U);
    }
}

TEST(GStreamerTiming, AGapEventComesAfterWhatWasPendingBeforeIt) {
    ElementHarness harness;
    harness.Set("suppression", kOff);
    const std::vector<float> input = Noise(9600);
    harness.Push(Part(input, 0, 4800));
    harness.Send(gst_event_new_gap(100 * GST_MSECOND, GST_SECOND));
    const Output before = harness.Pull();
    EXPECT_EQ(before.samples, Part(input, 0, 4800));
    ExpectContiguous(before, 0, 100 * GST_MSECOND);

    harness.Push(Part(input, 4800, 4800), 1100 * GST_MSECOND);
    harness.Send(gst_event_new_eos());
    const Output after = harness.Pull();
    EXPECT_EQ(after.samples, Part(input, 4800, 4800));
    ExpectContiguous(after, 1100 * GST_MSECOND, 1200 * GST_MSECOND);
}

TEST(GStreamerTiming, GapBuffersAreSilenceWhateverTheyHoldAndStayMarkedOnceTheOutputIsSilent) {
    ElementHarness harness;
    harness.PushInBlocks(Noise(4800), {480});
    for (int block = 0; block < 10; ++block) {
        harness.Push(std::vector<float>(480, 0.9F), ElementHarness::kNext, GST_BUFFER_FLAG_GAP);
    }
    const Output output = harness.Pull();
    ASSERT_GT(output.buffers.size(), 16U);
    EXPECT_TRUE(output.buffers.back().isGap);
    EXPECT_LT(*std::max_element(output.samples.begin(), output.samples.end()), 0.1F);
    std::size_t at = 0;
    for (const Output::Buffer& buffer : output.buffers) {
        const std::vector<float> samples = Part(output.samples, at, buffer.frames);
        at += buffer.frames;
        if (buffer.isGap) {
            EXPECT_EQ(samples, std::vector<float>(buffer.frames, 0.0F));
        }
    }
    EXPECT_FALSE(output.buffers.at(11).isGap);
}

TEST(GStreamerTiming, AFlushDiscardsWhatIsPendingAndStartsAnew) {
    ElementHarness harness;
    harness.Set("suppression", kOff);
    harness.Push(std::vector<float>(4800, 0.5F));
    harness.Pull();
    harness.Send(gst_event_new_flush_start());
    harness.Send(gst_event_new_flush_stop(TRUE));
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    harness.Send(gst_event_new_segment(&segment));
    const std::vector<float> input = Noise(4800);
    harness.Push(input, 7 * GST_SECOND);
    harness.Send(gst_event_new_eos());
    const Output output = harness.Pull();
    EXPECT_EQ(output.samples, input);
    ExpectContiguous(output, 7 * GST_SECOND, 7100 * GST_MSECOND);
}

TEST(GStreamerTiming, NewCapsComeAfterAllFramesOfTheOldOnes) {
    ElementHarness harness({.rate = 48000, .channels = 2});
    harness.Set("suppression", kOff);
    const std::vector<float> input = Noise(9600);
    harness.Push(input);
    const Format other = {.rate = 96000, .channels = 2};
    GstAudioInfo info = InfoOf(other);
    GstCaps* caps = gst_audio_info_to_caps(&info);
    harness.Send(gst_event_new_caps(caps));
    gst_caps_unref(caps);
    EXPECT_EQ(harness.Pull().samples, input);
    EXPECT_EQ(harness.Get<guint64>("latency"),
              gst_util_uint64_scale_round(1290, GST_SECOND, 96000));
}

TEST(GStreamerTiming, NewCapsOfTheSameFormatChangeNothing) {
    ElementHarness harness;
    harness.Set("suppression", kOff);
    const std::vector<float> input = Noise(9600);
    harness.Push(Part(input, 0, 4800));
    const GstAudioInfo info = InfoOf({});
    GstCaps* caps = gst_audio_info_to_caps(&info);
    gst_caps_set_simple(caps, "title", G_TYPE_STRING, "another", nullptr);
    harness.Send(gst_event_new_caps(caps));
    gst_caps_unref(caps);
    harness.Push(Part(input, 4800, 4800));
    const Output output = harness.Pull();
    EXPECT_EQ(output.samples, Part(input, 0, 9600 - 517));
    EXPECT_EQ(output.buffers.size(), 2U);
}

TEST(GStreamerTiming, ANewSegmentComesAfterWhatWasPendingAndALongerOneChangesNothing) {
    for (const bool moved : {false, true}) {
        ElementHarness harness;
        harness.Set("suppression", kOff);
        const std::vector<float> input = Noise(4800);
        harness.Push(input);
        GstSegment segment;
        gst_segment_init(&segment, GST_FORMAT_TIME);
        segment.stop = 100 * GST_SECOND;
        segment.base = moved ? 3 * GST_SECOND : 0;
        harness.Send(gst_event_new_segment(&segment));
        EXPECT_EQ(harness.Pull().samples, Part(input, 0, moved ? 4800 : 4800 - 517));
    }
}

TEST(GStreamerTiming, BackwardsEachBufferKeepsItsTimestampAndContent) {
    ElementHarness harness;
    harness.Set("suppression", kOff);
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    segment.rate = -1.0;
    segment.stop = GST_SECOND;
    harness.Send(gst_event_new_segment(&segment));
    const std::vector<float> input = Noise(240);
    for (const GstClockTime timestamp : {15U, 10U, 5U, 0U}) {
        harness.Push(input, timestamp * GST_MSECOND);
    }
    harness.Send(gst_event_new_eos());
    const Output output = harness.Pull();
    ASSERT_EQ(output.buffers.size(), 4U);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(output.buffers[i].timestamp, (15 - 5 * i) * GST_MSECOND);
        EXPECT_EQ(Part(output.samples, 240 * i, 240), input);
    }
}

TEST(GStreamerTiming, BuffersWithoutTimestampsStayWithout) {
    ElementHarness harness;
    harness.Set("suppression", kOff);
    const std::vector<float> input = Noise(4800);
    gst_harness_push(harness.Raw(), harness.ToBuffer(input));
    harness.Send(gst_event_new_eos());
    const Output output = harness.Pull();
    EXPECT_EQ(output.samples, input);
    for (const Output::Buffer& buffer : output.buffers) {
        EXPECT_EQ(buffer.timestamp, GST_CLOCK_TIME_NONE);
    }
}

}  // namespace
