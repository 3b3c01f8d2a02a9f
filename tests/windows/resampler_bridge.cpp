// Adapts the resampler's ELF object, which uses the Linux calling convention, to a Windows program. The C functions
// that it imports come from suppressor_bridge.cpp, but for those at the end.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

struct SpeexResamplerState_;

#define ELF extern "C" __attribute__((sysv_abi))

ELF SpeexResamplerState_* elf_speex_resampler_init(std::uint32_t, std::uint32_t, std::uint32_t, int,
                                                   int*);
ELF void elf_speex_resampler_destroy(SpeexResamplerState_*);
ELF int elf_speex_resampler_process_float(SpeexResamplerState_*, std::uint32_t, const float*,
                                          std::uint32_t*, float*, std::uint32_t*);
ELF int elf_speex_resampler_reset_mem(SpeexResamplerState_*);
ELF int elf_speex_resampler_get_input_latency(SpeexResamplerState_*);

extern "C" {

SpeexResamplerState_* speex_resampler_init(std::uint32_t channels, std::uint32_t from,
                                           std::uint32_t to, int quality, int* error) {
    return elf_speex_resampler_init(channels, from, to, quality, error);
}
void speex_resampler_destroy(SpeexResamplerState_* self) {
    elf_speex_resampler_destroy(self);
}
int speex_resampler_process_float(SpeexResamplerState_* self, std::uint32_t channel,
                                  const float* in, std::uint32_t* taken, float* out,
                                  std::uint32_t* written) {
    return elf_speex_resampler_process_float(self, channel, in, taken, out, written);
}
int speex_resampler_reset_mem(SpeexResamplerState_* self) {
    return elf_speex_resampler_reset_mem(self);
}
int speex_resampler_get_input_latency(SpeexResamplerState_* self) {
    return elf_speex_resampler_get_input_latency(self);
}
}

ELF double elf_sin(double x) {
    return std::sin(x);
}
ELF void* elf_calloc(std::size_t count, std::size_t size) {
    return std::calloc(count, size);
}
ELF void* elf_realloc(void* block, std::size_t size) {
    return std::realloc(block, size);
}
