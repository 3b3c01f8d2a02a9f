#pragma once

#include <glib-object.h>

namespace audio_filter {

/// The GType of the element "audiofilter", a GstAudioFilter.
GType ElementType();

}  // namespace audio_filter
