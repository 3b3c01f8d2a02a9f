#pragma once

#include <array>
#include <cstddef>

namespace audio_filter::internal {

/// The suppressor's windowed analysis buffer, followed from outside. The suppressor joins each
/// frame's low band to some older samples, weights both ends of the buffer with quarter-sine ramps
/// and sums the squares; where that sum is zero in single precision it leaves the frame early.
/// Nothing it returns says so, hence this twin.
class AnalysisWindow {
public:
    /// Empties the buffer and sets its size: 128 samples, 80 of them new in each frame, at 8000 Hz;
    /// 256 and 160 at any other rate.
    void Reset(int sampleRate);

    /// Takes a frame's low band, as the suppressor gets it.
    /// @return whether the windowed energy of the buffer is now zero
    bool IsSilentAfter(const float* lowBand);

private:
    static constexpr std::size_t kMaxLength = 256;

    std::array<float, kMaxLength> mBuffer = {};
    std::array<float, kMaxLength> mWeights = {};
    std::size_t mOld = 0;  ///< samples kept from frame to frame, and the length of a ramp
    std::size_t mNew = 0;  ///< samples that enter with each frame
};

}  // namespace audio_filter::internal
