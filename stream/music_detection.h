#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>

#include "classifier/audio_classifier.h"
#include "stream/rate_plan.h"
#include "stream/resampler.h"
#include "stream/to_s16.h"

namespace audio_filter::internal {

/// Runs the music detector on the first channel of a stream: in blocks of 10 ms, 16 bits, 32000 Hz.
class MusicDetection {
public:
    /// [setup] Throws std::bad_alloc when memory runs out.
    explicit MusicDetection(int sampleRate);

    /// [audio] About once a second a call analyses and takes longer.
    /// @param samples a processing block
    /// @return the verdict
    bool Process(std::span<const float> samples);

private:
    static constexpr int kRate = 32000;
    static constexpr std::size_t kBlock = 320;
    /// A block of 320 samples at 24001 Hz is 427 at kRate; one more for the fraction.
    static constexpr std::size_t kMaxResampled = 428;

    void Gather(std::span<const float> samples);

    std::optional<Resampler> mResampler;
    ToS16 mToS16{1};
    AudioClassifier mClassifier;
    std::array<float, kBlock> mBlock = {};
    std::size_t mGathered = 0;
    bool mIsMusic = false;
};

}  // namespace audio_filter::internal
