#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "units/float_bands.h"
#include "units/webrtc_ns.h"

using namespace audio_filter::internal;

/// The float path on blocks of 320 samples: float band split, the packaged suppressor on 32768 times
/// the bands, float band merge. A second suppressor with the same low band and a constant high band
/// detects early exits, which alone return that band unchanged. A block that overflows the suppressor
/// becomes zeros and restarts it.
class BareFloatSuppressor {
public:
    BareFloatSuppressor(int rate, int level) : mNs(WebRtcNs_Create()), mShadow(WebRtcNs_Create()) {
        mConstant.fill(1000.0F);
        Restart(rate, level);
    }
    ~BareFloatSuppressor() {
        WebRtcNs_Free(mNs);
        WebRtcNs_Free(mShadow);
    }
    BareFloatSuppressor(const BareFloatSuppressor&) = delete;
    BareFloatSuppressor& operator=(const BareFloatSuppressor&) = delete;

    /// The suppressor, but not the band filters.
    void Restart(int rate, int level) {
        mRate = rate;
        mFresh = rate == 8000 ? 80 : 160;
        mFirst = true;
        for (NsHandleT* ns : {mNs, mShadow}) {
            WebRtcNs_Init(ns, static_cast<std::uint32_t>(rate));
        }
        SetLevel(level);
    }

    /// The band filters, but not the suppressor.
    void SilenceBands() { mMemory = {}; }

    void SetLevel(int level) {
        mLevel = level;
        WebRtcNs_set_policy(mNs, level);
        WebRtcNs_set_policy(mShadow, level);
    }

    void Process(const float* block, float* out) {
        Band low;
        Band high;
        SplitBands(block, low.data(), high.data(), mMemory[0].data(), mMemory[1].data());
        for (std::size_t i = 0; i < low.size(); ++i) {
            low[i] *= 32768.0F;
            high[i] *= 32768.0F;
        }
        Band lowOut = {};
        Band highOut = {};
        Band ignored = {};
        Band shadowOut = {};
        Run(mNs, low, high, lowOut, highOut);
        Run(mShadow, low, mConstant, ignored, shadowOut);
        // The delay line of the first block still holds silence.
        const std::size_t settled = mFirst ? mFresh * 3 / 5 : 0;
        leftEarly = std::all_of(shadowOut.begin() + static_cast<std::ptrdiff_t>(settled),
                                shadowOut.begin() + static_cast<std::ptrdiff_t>(mFresh),
                                [](float sample) { return sample == 1000.0F; });
        mFirst = false;
        if (!std::all_of(lowOut.begin(), lowOut.end(), [](float x) { return std::isfinite(x); })) {
            Restart(mRate, mLevel);
            lowOut.fill(0.0F);
        }
        for (std::size_t i = 0; i < low.size(); ++i) {
            lowOut[i] /= 32768.0F;
            highOut[i] = leftEarly ? highOut[i] / 32768.0F : 0.0F;
        }
        MergeBands(lowOut.data(), highOut.data(), out, mMemory[2].data(), mMemory[3].data());
    }

    bool leftEarly = false;  ///< whether the last block took the early exit

private:
    using Band = std::array<float, 160>;

    static void Run(NsHandleT* ns, const Band& low, const Band& high, Band& lowOut, Band& highOut) {
        const float* const in[2] = {low.data(), high.data()};
        float* const out[2] = {lowOut.data(), highOut.data()};
        WebRtcNs_Analyze(ns, low.data());
        WebRtcNs_Process(ns, in, 2, out);
    }

    int mRate = 0;
    int mLevel = 0;
    std::size_t mFresh = 0;
    NsHandleT* mNs;
    NsHandleT* mShadow;
    Band mConstant = {};
    bool mFirst = true;
    std::array<std::array<double, 6>, 4> mMemory = {};
};
