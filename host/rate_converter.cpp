#include "host/rate_converter.h"

#include <speex/speex_resampler.h>

#include <cstdint>
#include <string>

#include "host/failure.h"

namespace {

constexpr std::int64_t kMaxRatio = 256;

}  // namespace

void RateConverter::Release::operator()(SpeexResamplerState_* state) const {
    speex_resampler_destroy(state);
}

RateConverter::RateConverter(int fromRate, int toRate, int channels)
    : mState(speex_resampler_init(
          static_cast<spx_uint32_t>(channels), static_cast<spx_uint32_t>(fromRate),
          static_cast<spx_uint32_t>(toRate), SPEEX_RESAMPLER_QUALITY_MAX, nullptr)),
      mChannels(static_cast<std::size_t>(channels)) {
    if (!mState || fromRate > toRate * kMaxRatio || toRate > fromRate * kMaxRatio) {
        throw Failure("cannot convert from " + std::to_string(fromRate) + " Hz to " +
                      std::to_string(toRate) + " Hz");
    }
    speex_resampler_skip_zeros(mState.get());
}

RateConverter::~RateConverter() = default;

std::vector<float> RateConverter::Convert(const std::vector<float>& block, bool isLast) {
    std::vector<float> converted;
    Append(block, converted);
    if (isLast) {
        const int latency = speex_resampler_get_input_latency(mState.get());
        Append(std::vector<float>(static_cast<std::size_t>(latency) * mChannels), converted);
    }
    return converted;
}

void RateConverter::Append(const std::vector<float>& block, std::vector<float>& converted) {
    const float* in = block.data();
    std::size_t left = block.size() / mChannels;
    while (left > 0) {
        constexpr spx_uint32_t kRoomFrames = 4096;
        const std::size_t filled = converted.size();
        converted.resize(filled + kRoomFrames * mChannels);
        auto taken = static_cast<spx_uint32_t>(left);
        spx_uint32_t written = kRoomFrames;
        speex_resampler_process_interleaved_float(mState.get(), in, &taken,
                                                  converted.data() + filled, &written);
        converted.resize(filled + written * mChannels);
        in += taken * mChannels;
        left -= taken;
    }
}
