#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "plugins/gstreamer/element_harness.h"

namespace {

bool Accepts(const char* caps) {
    GstElement* element = gst_element_factory_make("audiofilter", nullptr);
    GstPad* pad = gst_element_get_static_pad(element, "sink");
    GstCaps* wanted = gst_caps_from_string(caps);
    const gboolean accepted = gst_pad_query_accept_caps(pad, wanted);
    gst_caps_unref(wanted);
    gst_object_unref(pad);
    gst_object_unref(element);
    return accepted != FALSE;
}

std::string Caps(const char* format, int rate, int channels) {
    std::string caps = "audio/x-raw,layout=interleaved,format=" + std::string(format) +
                       ",rate=" + std::to_string(rate) + ",channels=" + std::to_string(channels);
    return channels > 2 ? caps + ",channel-mask=(bitmask)0" : caps;
}

TEST(GStreamerBadInput, RatesOutside8000To192000AndChannelsOutside1To8AreRefused) {
    EXPECT_TRUE(Accepts(Caps("S16LE", 8000, 1).c_str()));
    EXPECT_TRUE(Accepts(Caps("F32LE", 192000, 8).c_str()));
    EXPECT_FALSE(Accepts(Caps("S16LE", 7999, 1).c_str()));
    EXPECT_FALSE(Accepts(Caps("S16LE", 192001, 1).c_str()));
    EXPECT_FALSE(Accepts(Caps("S16LE", 48000, 9).c_str()));
    EXPECT_FALSE(Accepts(Caps("S32LE", 48000, 1).c_str()));
    EXPECT_FALSE(Accepts(Caps("F32BE", 48000, 1).c_str()));
}

TEST(GStreamerBadInput, NaNAndInfinityComeOutFiniteWithSuppressionOnAndOff) {
    for (const int suppression : {-1, 2}) {
        ElementHarness harness({.rate = 48000, .channels = 2});
        harness.Set("suppression", suppression);
        std::vector<float> input = Noise(9600);
        input[100] = std::numeric_limits<float>::quiet_NaN();
        input[2000] = std::numeric_limits<float>::infinity();
        input[3001] = -std::numeric_limits<float>::infinity();
        harness.Push(input);
        harness.Send(gst_event_new_eos());
        const Output output = harness.Pull();
        EXPECT_EQ(output.samples.size(), input.size());
        EXPECT_TRUE(std::all_of(output.samples.begin(), output.samples.end(),
                                [](float sample) { return std::abs(sample) <= 1.0F; }));
    }
}

TEST(GStreamerBadInput, ABufferOfHalfAFrameIsAnErrorOnTheBus) {
    ElementHarness harness({.rate = 48000, .channels = 2});
    EXPECT_EQ(gst_harness_push(harness.Raw(), gst_buffer_new_allocate(nullptr, 12, nullptr)),
              GST_FLOW_ERROR);
    EXPECT_EQ(harness.Error(), "A buffer does not hold whole frames of the negotiated format.");
}

TEST(GStreamerBadInput, PlanarBuffersWithoutTheirOffsetsAreAnErrorOnTheBus) {
    ElementHarness harness({.rate = 48000, .channels = 2, .planar = true});
    EXPECT_EQ(gst_harness_push(harness.Raw(), gst_buffer_new_allocate(nullptr, 16, nullptr)),
              GST_FLOW_ERROR);
    EXPECT_NE(harness.Error(), "");
}

TEST(GStreamerBadInput, SamplesThatAreNotAlignedAreProcessed) {
    ElementHarness harness({.rate = 48000, .channels = 2});
    harness.Set("suppression", -1);
    const std::vector<float> input = Noise(9600);
    GstBuffer* whole = gst_buffer_new_allocate(nullptr, input.size() * sizeof(float) + 1, nullptr);
    gst_buffer_fill(whole, 1, input.data(), input.size() * sizeof(float));
    gst_buffer_resize(whole, 1, -1);
    GST_BUFFER_PTS(whole) = 0;
    gst_harness_push(harness.Raw(), whole);
    harness.Send(gst_event_new_eos());
    EXPECT_EQ(harness.Pull().samples, input);
}

/// The warnings of GLib while it lives.
class Warnings {
public:
    Warnings() : mPrevious(g_log_set_default_handler(Take, &mText)) {}
    ~Warnings() { g_log_set_default_handler(mPrevious, nullptr); }
    Warnings(const Warnings&) = delete;
    Warnings& operator=(const Warnings&) = delete;

    const std::string& Text() const { return mText; }

private:
    static void Take(const gchar* /*domain*/, GLogLevelFlags /*level*/, const gchar* text,
                     gpointer to) {
        *static_cast<std::string*>(to) += text + std::string("\n");
    }

    std::string mText;
    GLogFunc mPrevious;
};

TEST(GStreamerBadInput, PropertiesOutOfRangeAreClampedWithAWarning) {
    ElementHarness harness;
    gst_object_set_name(GST_OBJECT(harness.Element()), "cleaner");
    const Warnings warnings;
    harness.Set("suppression", 7);
    EXPECT_EQ(harness.Get<int>("suppression"), 3);
    harness.Set("suppression", -5);
    EXPECT_EQ(harness.Get<int>("suppression"), -1);
    harness.Set("gain", 1.5);
    EXPECT_EQ(harness.Get<float>("gain"), 1.0F);
    harness.Set("gain", std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(harness.Get<float>("gain"), 0.0F);
    harness.Set("gain", 0.25);
    EXPECT_EQ(harness.Get<float>("gain"), 0.25F);
    EXPECT_EQ(warnings.Text(),
              "cleaner: suppression 7 is out of range, 3 is used\n"
              "cleaner: suppression -5 is out of range, -1 is used\n"
              "cleaner: gain 1.5 is out of range, 1 is used\n"
              "cleaner: gain nan is out of range, 0 is used\n");
}

}  // namespace
