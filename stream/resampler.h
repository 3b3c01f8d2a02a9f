#pragma once

#include <cstddef>
#include <memory>
#include <span>

struct SpeexResamplerState_;

namespace audio_filter::internal {

/// Resamples one channel by a constant ratio, with linear phase.
class Resampler {
public:
    /// [setup] Throws std::bad_alloc when memory runs out.
    /// @param from, to rates in Hz, or any numbers of the same ratio
    Resampler(int from, int to);

    /// [audio] Consumes all of `in`.
    /// @param out room for every sample that comes of it: in.size() * to / from, rounded up
    /// @return samples written
    std::size_t Process(std::span<const float> in, std::span<float> out);

    /// [audio] Forgets the past samples.
    void Reset();

    /// [any] The delay in samples of the input.
    int Delay() const;

private:
    struct Destroy {
        void operator()(SpeexResamplerState_* state) const;
    };
    std::unique_ptr<SpeexResamplerState_, Destroy> mState;
};

}  // namespace audio_filter::internal
