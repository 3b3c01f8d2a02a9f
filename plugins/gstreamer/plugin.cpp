#include <gst/gst.h>

#include "plugins/gstreamer/element.h"

#define PACKAGE "audio_filter"

namespace {

gboolean Register(GstPlugin* plugin) {
    return gst_element_register(plugin, "audiofilter", GST_RANK_NONE, audio_filter::ElementType());
}

}  // namespace

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, audiofilter,
                  "Noise suppression, music detection, phase check and gain for captured audio",
                  Register, AUDIO_FILTER_VERSION, "MIT/X11", "audio_filter", "audio_filter")
