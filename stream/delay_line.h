#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

namespace audio_filter::internal {

/// Delays a signal by a constant number of samples, block by block.
class DelayLine {
public:
    /// [setup]
    DelayLine(std::size_t delay, std::size_t maxBlock) : mDelay(delay), mPast(delay + maxBlock) {}

    /// [audio] @param out as long as `in`, at most the longest block; must not overlap it
    void Process(std::span<const float> in, std::span<float> out) {
        const auto past = mPast.begin();
        const auto count = static_cast<std::ptrdiff_t>(in.size());
        std::copy(in.begin(), in.end(), past + static_cast<std::ptrdiff_t>(mDelay));
        std::copy(past, past + count, out.begin());
        std::copy(past + count, past + count + static_cast<std::ptrdiff_t>(mDelay), past);
    }

    /// [audio] Forgets the past samples.
    void Reset() { std::fill(mPast.begin(), mPast.end(), 0.0F); }

private:
    std::size_t mDelay;
    std::vector<float> mPast;  ///< the delayed samples, oldest first, and room for a block
};

}  // namespace audio_filter::internal
