#include "stream/resampler.h"

#include <speex/speex_resampler.h>

#include <cstdint>
#include <new>

namespace audio_filter::internal {

namespace {

/// 128 taps at the lower rate: flat to 0.85 of the band, aliases below -100 dB.
constexpr int kQuality = 7;

}  // namespace

void Resampler::Destroy::operator()(SpeexResamplerState_* state) const {
    speex_resampler_destroy(state);
}

Resampler::Resampler(int from, int to)
    : mState(speex_resampler_init(1, static_cast<spx_uint32_t>(from), static_cast<spx_uint32_t>(to),
                                  kQuality, nullptr)) {
    if (!mState) {
        throw std::bad_alloc();
    }
}

std::size_t Resampler::Process(std::span<const float> in, std::span<float> out) {
    auto taken = static_cast<spx_uint32_t>(in.size());
    auto written = static_cast<spx_uint32_t>(out.size());
    speex_resampler_process_float(mState.get(), 0, in.data(), &taken, out.data(), &written);
    return written;
}

void Resampler::Reset() {
    speex_resampler_reset_mem(mState.get());
}

int Resampler::Delay() const {
    return speex_resampler_get_input_latency(mState.get());
}

}  // namespace audio_filter::internal
