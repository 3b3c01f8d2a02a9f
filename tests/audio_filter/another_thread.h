#pragma once

#include <thread>

#include "audio_filter/audio_filter.h"

/// Whether the lock of a filter is free for another thread. In a header, because a source file that starts threads runs
/// under ThreadSanitizer, too, which has nothing to find here.
inline bool AnotherThreadGetsIn(AudioFilter& filter) {
    bool result = true;
    std::thread([&] { result = filter.SetParameter(nullptr, AP_GAIN); }).join();
    return !result;
}
