#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "stream/delay_line.h"
#include "stream/rate_plan.h"
#include "stream/resampler.h"
#include "stream/to_s16.h"
#include "units/ns_wrap.h"
#include "units/suppressor_block.h"

namespace audio_filter::internal {

/// Suppresses the noise of one channel, one processing block at a time, at the rate of the stream.
class SuppressionChannel {
public:
    /// [setup] Throws std::bad_alloc when memory runs out.
    SuppressionChannel(RatePlan plan, int level, std::uint32_t seed);

    /// [audio]
    /// @param in RatePlan::BlockFrames() samples
    /// @param delayed the same signal, delayed by Delay()
    /// @param out as long
    void Process(std::span<const float> in, std::span<const float> delayed, std::span<float> out);

    /// [audio] @param level 0..3
    void SetLevel(int level);

    /// [audio] Whether to keep the band above the suppressor's; a change fades over a block.
    void KeepBandAbove(bool keep) { mKeepsBandAbove = keep; }

    /// [audio] Forgets the past samples; the noise estimate remains.
    void Reset();

    /// [any] The delay of the output, in frames.
    std::size_t Delay() const;

private:
    using Block = std::array<float, kBlockSamples>;

    void Suppress(const Block& in, Block& out);
    void SubtractScaled(const Block& in, Block& suppressed);
    void AddBandAbove(std::span<const float> delayed, std::span<float> out) const;

    RatePlan mPlan;
    std::optional<Resampler> mToSuppressor;
    std::optional<Resampler> mFromSuppressor;
    ToS16 mToS16;
    NSWrap mSuppressor;

    // The band above the suppressor's, of streams that are resampled to a lower rate.
    bool mKeepsBandAbove = true;
    static constexpr std::size_t kGainDelay = 64;  ///< samples, of the resampler back
    DelayLine mAligned;  ///< the input, delayed as the suppressor delays it
    std::array<float, kGainDelay + kBlockSamples> mGains = {};  ///< one per sample, latest last
};

}  // namespace audio_filter::internal
