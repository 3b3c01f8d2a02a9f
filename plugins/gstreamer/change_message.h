#pragma once

#include <gst/gst.h>

#include "stream/stream_types.h"

namespace audio_filter {

/// An element message named "audiofilter" about a change in the stream. Fields: change (a string: suppression, gain,
/// phase-check, mixing, music, reversed), on (a boolean), and timestamp, stream-time and running-time in ns.
/// @param timestamp of the first input frame that the change applies to
GstMessage* ChangeMessage(GstObject* element, const StreamEvent& event, const GstSegment& segment,
                          GstClockTime timestamp);

}  // namespace audio_filter
