#pragma once

#include <algorithm>
#include <vector>

#include "common/media_process.h"

namespace audio_filter::internal {

/// Properties of the list of source types that describes a buffer.

inline bool HasMicrophone(const std::vector<AVSourceType>& sources) {
    return std::find(sources.begin(), sources.end(), AV_SOURCE_MICROPHONE) != sources.end();
}

inline bool HasSeveralMicrophones(const std::vector<AVSourceType>& sources) {
    return std::count(sources.begin(), sources.end(), AV_SOURCE_MICROPHONE) >= 2;
}

}  // namespace audio_filter::internal
