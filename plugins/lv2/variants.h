#pragma once

#include <array>

namespace audio_filter {

/// A plug-in for a number of channels.
struct Variant {
    int channels;
    const char* uri;
    const char* name;
    const char* label;       ///< of LADSPA
    unsigned long uniqueId;  ///< of LADSPA
};

inline constexpr std::array<Variant, 2> kVariants = {{
    {1, "urn:audio-filter:mono", "Audio Filter Mono", "audio_filter_mono", 11468801},
    {2, "urn:audio-filter:stereo", "Audio Filter Stereo", "audio_filter_stereo", 11468802},
}};

}  // namespace audio_filter
