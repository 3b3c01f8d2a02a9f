#pragma once

#include <cstdint>
#include <vector>

#include "classifier/audio_classifier.h"
#include "host/audio_format.h"

/// Measures the music in a stream with a separate detector: the filter does not expose its verdict, and
/// detects music only at some rates.
template <typename Sample>
class MusicMeter {
public:
    explicit MusicMeter(const AudioFormat& format);

    /// @param block one source, or the mix of all
    void Add(std::vector<Sample> block);

    /// Frames of the blocks during which music was detected.
    std::int64_t MusicFrames() const { return mMusicFrames; }

private:
    AudioFormat mFormat;
    AudioClassifier mClassifier;
    std::int64_t mMusicFrames = 0;
};
