#pragma once

#include <cstdint>
#include <vector>

#include "classifier/audio_classifier.h"
#include "host/audio_format.h"

/// Music detection beside the filter, which does not expose its verdict and has none at most rates.
template <typename Sample>
class MusicJudge {
public:
    explicit MusicJudge(const AudioFormat& format);

    /// @param block one source, or the mix of all
    void Add(std::vector<Sample> block);

    /// Frames of the blocks during which music was detected.
    std::int64_t MusicFrames() const { return mMusicFrames; }

private:
    AudioFormat mFormat;
    AudioClassifier mClassifier;
    std::int64_t mMusicFrames = 0;
};
