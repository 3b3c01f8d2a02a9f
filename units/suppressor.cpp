#include "units/suppressor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "units/kernels.h"
#include "units/suppressor_block.h"
#include "units/webrtc_ns.h"

namespace audio_filter::internal {

namespace {

using Band = std::array<float, kBandSamples>;

constexpr float kToS16Scale = 32768.0F;
constexpr float kFromS16Scale = 3.0517578e-05F;  // 1 / 32768

Band Scaled(const float* band, float factor) {
    Band scaled;
    std::transform(band, band + kBandSamples, scaled.begin(),
                   [factor](float sample) { return sample * factor; });
    return scaled;
}

bool IsFinite(const Band& band) {
    return std::all_of(band.begin(), band.end(),
                       [](float sample) { return std::isfinite(sample); });
}

}  // namespace

void Suppressor::Release::operator()(NsHandleT* handle) const {
    WebRtcNs_Free(handle);
}

/// The package writes to its instance without checking the result of malloc, so a trial allocation
/// comes first.
std::unique_ptr<Suppressor> Suppressor::Create() {
    void* volatile room = std::malloc(kInstanceBytes);  // volatile: not to be optimised away
    if (room == nullptr) {
        return nullptr;
    }
    std::free(room);
    Handle handle(WebRtcNs_Create());
    return handle ? std::unique_ptr<Suppressor>(new Suppressor(std::move(handle))) : nullptr;
}

Suppressor::Suppressor(Handle handle) : mHandle(std::move(handle)) {}

Suppressor::~Suppressor() = default;

bool Suppressor::Init(int sampleRate) {
    // The package also accepts 48000 Hz, in three bands.
    if (sampleRate != 8000 && sampleRate != 16000 && sampleRate != 32000) {
        return false;
    }
    if (WebRtcNs_Init(mHandle.get(), static_cast<std::uint32_t>(sampleRate)) != 0) {
        return false;
    }
    mSampleRate = sampleRate;
    mLevel = 0;
    mWindow.Reset(sampleRate);
    return true;
}

bool Suppressor::SetLevel(int level) {
    if (WebRtcNs_set_policy(mHandle.get(), level) != 0) {
        return false;
    }
    mLevel = level;
    return true;
}

void Suppressor::Process(const short* low, const short* high, short* lowOut, short* highOut) {
    Band lowIn;
    Band highIn;
    std::copy_n(low, kBandSamples, lowIn.begin());
    std::copy_n(high, kBandSamples, highIn.begin());
    Band lowResult = {};
    Band highResult = {};
    Run(lowIn.data(), highIn.data(), lowResult.data(), highResult.data());
    BestKernels().roundToS16(lowResult, lowOut);
    BestKernels().roundToS16(highResult, highOut);
}

void Suppressor::Process(const float* low, const float* high, float* lowOut, float* highOut) {
    const Band lowIn = Scaled(low, kToS16Scale);
    const Band highIn = Scaled(high, kToS16Scale);
    const bool exitsEarly = mWindow.IsSilentAfter(lowIn.data());
    Band lowResult = {};
    Band highResult = {};
    Run(lowIn.data(), highIn.data(), lowResult.data(), highResult.data());
    if (!IsFinite(lowResult)) {
        const int level = mLevel;
        Init(mSampleRate);
        SetLevel(level);
        lowResult.fill(0.0F);
    }
    // Unless the suppressor exits early, the interface divides the high band by 32768 in 16-bit
    // integers, which gives zeros.
    if (!exitsEarly) {
        highResult.fill(0.0F);
    }
    const Band lowScaled = Scaled(lowResult.data(), kFromS16Scale);
    const Band highScaled = Scaled(highResult.data(), kFromS16Scale);
    std::copy_n(lowScaled.begin(), kBandSamples, lowOut);
    std::copy_n(highScaled.begin(), kBandSamples, highOut);
}

void Suppressor::Run(const float* low, const float* high, float* lowOut, float* highOut) {
    const float* const in[2] = {low, high};
    float* const out[2] = {lowOut, highOut};
    WebRtcNs_Analyze(mHandle.get(), low);
    WebRtcNs_Process(mHandle.get(), in, 2, out);
}

void SplitBands(const short* samples, short* low, short* high, std::int32_t* memory1,
                std::int32_t* memory2) {
    WebRtcSpl_AnalysisQMF(samples, kBlockSamples, low, high, memory1, memory2);
}

void MergeBands(const short* low, const short* high, short* samples, std::int32_t* memory1,
                std::int32_t* memory2) {
    WebRtcSpl_SynthesisQMF(low, high, kBandSamples, samples, memory1, memory2);
}

}  // namespace audio_filter::internal
