#pragma once

#include <array>
#include <cstddef>

namespace audio_filter::internal {

/// A replica of the suppressor's windowed analysis buffer. The suppressor appends the low band of each
/// block to older samples, weights both ends of the buffer with quarter-sine ramps and sums the
/// squares; if the sum is zero in single precision, it exits early. Its interface does not report
/// the exit, so it is derived here.
class AnalysisWindow {
public:
    /// Clears the buffer and sets its size: 128 samples, 80 of them new per block, at 8000 Hz; 256 and
    /// 160 at any other rate.
    void Reset(int sampleRate);

    /// Appends the low band of a block, in the suppressor's scale.
    /// @return whether the windowed energy of the buffer is zero
    bool IsSilentAfter(const float* lowBand);

private:
    static constexpr std::size_t kMaxLength = 256;

    std::array<float, kMaxLength> mBuffer = {};
    std::array<float, kMaxLength> mWeights = {};
    std::size_t mOld = 0;  ///< samples kept from block to block; the length of a ramp
    std::size_t mNew = 0;  ///< samples appended per block
};

}  // namespace audio_filter::internal
