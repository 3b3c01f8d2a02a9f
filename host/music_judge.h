#pragma once

#include <cstdint>
#include <vector>

#include "classifier/audio_classifier.h"
#include "host/audio_format.h"

/// Listens in on a stream beside the filter, with a detector like the filter's own. The filter's
/// verdict is its own secret, and it has none at most rates; this one is there at any.
template <typename Sample>
class MusicJudge {
public:
    explicit MusicJudge(const AudioFormat& format);

    /// @param block one source, or the mix of all
    void Hear(std::vector<Sample> block);

    /// Frames of blocks with which music was judged to play.
    std::int64_t MusicFrames() const { return mMusicFrames; }

private:
    AudioFormat mFormat;
    AudioClassifier mClassifier;
    std::int64_t mMusicFrames = 0;
};
