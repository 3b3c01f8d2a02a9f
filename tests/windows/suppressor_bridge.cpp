// Adapts the suppressor's ELF objects, which use the Linux calling convention, to a Windows program.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

struct NsHandleT;

// Functions that the objects export.
#define ELF extern "C" __attribute__((sysv_abi))

ELF NsHandleT* elf_WebRtcNs_Create();
ELF void elf_WebRtcNs_Free(NsHandleT*);
ELF int elf_WebRtcNs_Init(NsHandleT*, std::uint32_t);
ELF int elf_WebRtcNs_set_policy(NsHandleT*, int);
ELF void elf_WebRtcNs_Analyze(NsHandleT*, const float*);
ELF void elf_WebRtcNs_Process(NsHandleT*, const float* const*, std::size_t, float* const*);
ELF void elf_WebRtcSpl_AnalysisQMF(const std::int16_t*, std::size_t, std::int16_t*, std::int16_t*,
                                   std::int32_t*, std::int32_t*);
ELF void elf_WebRtcSpl_SynthesisQMF(const std::int16_t*, const std::int16_t*, std::size_t,
                                    std::int16_t*, std::int32_t*, std::int32_t*);

extern "C" {

NsHandleT* WebRtcNs_Create() {
    return elf_WebRtcNs_Create();
}
void WebRtcNs_Free(NsHandleT* self) {
    elf_WebRtcNs_Free(self);
}
int WebRtcNs_Init(NsHandleT* self, std::uint32_t sampleRate) {
    return elf_WebRtcNs_Init(self, sampleRate);
}
int WebRtcNs_set_policy(NsHandleT* self, int policy) {
    return elf_WebRtcNs_set_policy(self, policy);
}
void WebRtcNs_Analyze(NsHandleT* self, const float* lowBand) {
    elf_WebRtcNs_Analyze(self, lowBand);
}
void WebRtcNs_Process(NsHandleT* self, const float* const* bands, std::size_t bandCount,
                      float* const* outBands) {
    elf_WebRtcNs_Process(self, bands, bandCount, outBands);
}
void WebRtcSpl_AnalysisQMF(const std::int16_t* frame, std::size_t frameLength,
                           std::int16_t* lowBand, std::int16_t* highBand, std::int32_t* memory1,
                           std::int32_t* memory2) {
    elf_WebRtcSpl_AnalysisQMF(frame, frameLength, lowBand, highBand, memory1, memory2);
}
void WebRtcSpl_SynthesisQMF(const std::int16_t* lowBand, const std::int16_t* highBand,
                            std::size_t bandLength, std::int16_t* frame, std::int32_t* memory1,
                            std::int32_t* memory2) {
    elf_WebRtcSpl_SynthesisQMF(lowBand, highBand, bandLength, frame, memory1, memory2);
}
}

// Functions that the objects import.

ELF double elf_cos(double x) {
    return std::cos(x);
}
ELF void elf_sincos(double x, double* sine, double* cosine) {
    *sine = std::sin(x);
    *cosine = std::cos(x);
}
ELF double elf_exp(double x) {
    return std::exp(x);
}
ELF double elf_log(double x) {
    return std::log(x);
}
ELF double elf_tanh(double x) {
    return std::tanh(x);
}
ELF float elf_expf(float x) {
    return std::exp(x);
}
ELF float elf_logf(float x) {
    return std::log(x);
}
ELF float elf_powf(float x, float y) {
    return std::pow(x, y);
}
ELF float elf_sqrtf(float x) {
    return std::sqrt(x);
}
ELF void* elf_malloc(std::size_t size) {
    return std::malloc(size);
}
ELF void elf_free(void* block) {
    std::free(block);
}
ELF void* elf_memcpy(void* to, const void* from, std::size_t size) {
    return std::memcpy(to, from, size);
}
ELF void* elf_memset(void* block, int value, std::size_t size) {
    return std::memset(block, value, size);
}
ELF void elf___stack_chk_fail() {
    std::abort();
}
