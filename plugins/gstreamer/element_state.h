#pragma once

#include <gst/gst.h>

#include <atomic>
#include <optional>

#include "plugins/gstreamer/timed_stream.h"
#include "plugins/settings/plugin_settings.h"

namespace audio_filter {

/// What an instance of the element holds.
struct ElementState {
    PluginSettings wanted;              ///< as set, perhaps out of range; under the object's lock
    std::optional<TimedStream> stream;  ///< for the streaming thread, once there are caps
    bool reversed = false;              ///< the left channel is negated; for the streaming thread

    std::atomic<GstClockTime> latency = 0;
    std::atomic<bool> music = false;
    std::atomic<float> reduction = 0.0F;  ///< dB
};

}  // namespace audio_filter
