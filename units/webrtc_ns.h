#pragma once

#include <cstddef>
#include <cstdint>

/// The C functions of the packaged WebRTC audio processing library (version 0.3) that suppressor.cpp
/// calls. The package exports them but installs no header for them.
extern "C" {

struct NsHandleT;

/// The noise suppressor. Bands are 160 floats (80 at 8000 Hz) in the 16-bit scale. Call Analyze with
/// the low band of each block before Process. Init resets the policy, which is the suppression level, to 0.
NsHandleT* WebRtcNs_Create();
void WebRtcNs_Free(NsHandleT* self);
int WebRtcNs_Init(NsHandleT* self, std::uint32_t sampleRate);
int WebRtcNs_set_policy(NsHandleT* self, int policy);
void WebRtcNs_Analyze(NsHandleT* self, const float* lowBand);
void WebRtcNs_Process(NsHandleT* self, const float* const* bands, std::size_t bandCount,
                      float* const* outBands);

/// The 16-bit band filters: a quadrature mirror pair. Each memory holds six values.
void WebRtcSpl_AnalysisQMF(const std::int16_t* samples, std::size_t sampleCount,
                           std::int16_t* lowBand, std::int16_t* highBand, std::int32_t* memory1,
                           std::int32_t* memory2);
void WebRtcSpl_SynthesisQMF(const std::int16_t* lowBand, const std::int16_t* highBand,
                            std::size_t bandLength, std::int16_t* samples, std::int32_t* memory1,
                            std::int32_t* memory2);
}
