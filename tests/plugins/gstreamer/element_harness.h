#pragma once

#include <gst/audio/audio.h>
#include <gst/check/gstharness.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

/// A format of raw audio.
struct Format {
    int rate = 48000;
    int channels = 1;
    bool s16 = false;
    bool planar = false;
};

GstAudioInfo InfoOf(const Format& format);

/// What the element has sent: frames, interleaved, full scale at 1, and the timestamp of each buffer.
struct Output {
    struct Buffer {
        GstClockTime timestamp;
        GstClockTime duration;
        std::size_t frames;
        bool isGap;
        bool isDiscontinuity;
    };
    std::vector<float> samples;
    std::vector<Buffer> buffers;
};

/// A message about a change.
struct Change {
    std::string change;
    bool on = false;
    guint64 timestamp = 0;

    bool operator==(const Change&) const = default;
};

/// The element between two pads, with a bus.
class ElementHarness {
public:
    explicit ElementHarness(const Format& format = {});
    ~ElementHarness();
    ElementHarness(const ElementHarness&) = delete;
    ElementHarness& operator=(const ElementHarness&) = delete;

    template <typename Value>
    void Set(const char* property, Value value) {
        g_object_set(mHarness->element, property, value, nullptr);
    }

    template <typename Value>
    Value Get(const char* property) const {
        Value value = {};
        g_object_get(mHarness->element, property, &value, nullptr);
        return value;
    }

    void SetFormat(const Format& format);

    /// Sends frames as one buffer. Without a timestamp, it follows the previous buffer.
    GstFlowReturn Push(const std::vector<float>& samples, GstClockTime timestamp = kNext,
                       GstBufferFlags flags = GstBufferFlags{});

    /// Sends frames in buffers of these lengths, in turn.
    void PushInBlocks(const std::vector<float>& samples, const std::vector<std::size_t>& lengths);

    void Send(GstEvent* event);

    /// All that has come out since the last call.
    Output Pull();

    /// Posted since the last call, oldest first. Other messages are lost.
    std::vector<Change> Changes();

    /// The text of the first error posted, empty if there is none. Other messages are lost.
    std::string Error();

    GstHarness* Raw() { return mHarness; }
    GstElement* Element() { return mHarness->element; }
    GstBuffer* ToBuffer(const std::vector<float>& samples) const;

    static constexpr GstClockTime kNext = GST_CLOCK_TIME_NONE;

private:
    void Append(Output& output, GstBuffer* buffer) const;

    GstHarness* mHarness;
    GstBus* mBus;
    GstAudioInfo mInfo = {};
    GstClockTime mEnd = 0;  ///< of the input
};

/// Uniform noise of the given peak.
std::vector<float> Noise(std::size_t samples, float peak = 0.05F);

/// As 16 bits hold it.
std::vector<float> Rounded(std::vector<float> samples);
