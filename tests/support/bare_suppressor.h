#pragma once

#include <array>
#include <cstdint>

#include "units/webrtc_ns.h"

/// The packaged band split, suppressor and band merge on 16-bit blocks of 320 samples, and nothing
/// else: the reference for results and speed of the library's path.
class BareSuppressor {
public:
    explicit BareSuppressor(int rate, int level) : mHandle(WebRtcNs_Create()) {
        Restart(rate, level);
    }
    ~BareSuppressor() { WebRtcNs_Free(mHandle); }
    BareSuppressor(const BareSuppressor&) = delete;
    BareSuppressor& operator=(const BareSuppressor&) = delete;

    /// The suppressor, but not the band filters.
    void Restart(int rate, int level) {
        WebRtcNs_Init(mHandle, static_cast<std::uint32_t>(rate));
        WebRtcNs_set_policy(mHandle, level);
    }

    /// The band filters, but not the suppressor.
    void SilenceBands() { mMemory = {}; }

    void SetLevel(int level) { WebRtcNs_set_policy(mHandle, level); }

    void Process(const std::int16_t* block, std::int16_t* out) {
        std::int16_t bands[2][160];
        WebRtcSpl_AnalysisQMF(block, 320, bands[0], bands[1], mMemory[0].data(), mMemory[1].data());
        float in[2][160];
        float result[2][160] = {};
        for (int band = 0; band < 2; ++band) {
            for (int i = 0; i < 160; ++i) {
                in[band][i] = bands[band][i];
            }
        }
        const float* const inBands[2] = {in[0], in[1]};
        float* const outBands[2] = {result[0], result[1]};
        WebRtcNs_Analyze(mHandle, in[0]);
        WebRtcNs_Process(mHandle, inBands, 2, outBands);
        for (int band = 0; band < 2; ++band) {
            for (int i = 0; i < 160; ++i) {
                bands[band][i] = Rounded(result[band][i]);
            }
        }
        WebRtcSpl_SynthesisQMF(bands[0], bands[1], 160, out, mMemory[2].data(), mMemory[3].data());
    }

private:
    /// To nearest, halves away from zero, saturated: what std::lround gives, at a few instructions.
    static std::int16_t Rounded(float sample) {
        const float atMost = sample < 32767.0F ? sample : 32767.0F;
        const float bounded = atMost > -32768.0F ? atMost : -32768.0F;
        const auto whole = static_cast<std::int32_t>(bounded);
        const float rest = bounded - static_cast<float>(whole);
        return static_cast<std::int16_t>(whole + (rest >= 0.5F) - (rest <= -0.5F));
    }

    NsHandleT* mHandle;
    std::array<std::array<std::int32_t, 6>, 4> mMemory = {};
};
