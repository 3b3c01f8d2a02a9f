#include "plugins/gstreamer/change_message.h"

#include <array>

namespace audio_filter {

namespace {

/// In the order of StreamEvent::Type.
constexpr std::array<const char*, 6> kChanges = {"suppression", "gain",  "phase-check",
                                                 "mixing",      "music", "reversed"};

}  // namespace

GstMessage* ChangeMessage(GstObject* element, const StreamEvent& event, const GstSegment& segment,
                          GstClockTime timestamp) {
    const bool timed = segment.format == GST_FORMAT_TIME;
    const guint64 streamTime =
        timed ? gst_segment_to_stream_time(&segment, GST_FORMAT_TIME, timestamp)
              : GST_CLOCK_TIME_NONE;
    const guint64 runningTime =
        timed ? gst_segment_to_running_time(&segment, GST_FORMAT_TIME, timestamp)
              : GST_CLOCK_TIME_NONE;
    return gst_message_new_element(
        element,
        gst_structure_new("audiofilter", "change", G_TYPE_STRING,
                          kChanges[static_cast<std::size_t>(event.type)], "on", G_TYPE_BOOLEAN,
                          static_cast<gboolean>(event.on), "timestamp", G_TYPE_UINT64, timestamp,
                          "stream-time", G_TYPE_UINT64, streamTime, "running-time", G_TYPE_UINT64,
                          runningTime, nullptr));
}

}  // namespace audio_filter
