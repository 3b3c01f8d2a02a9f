#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "common/media_process.h"

/// Reads the fuzzer's input as a script of calls and arguments. After its end it returns zeros.
class Script : public FuzzedDataProvider {
public:
    using FuzzedDataProvider::FuzzedDataProvider;

    /// Until the bytes or the steps run out. Longer runs cost time and find nothing more.
    bool GoesOn(int steps = 64) { return remaining_bytes() > 0 && mSteps++ < steps; }

    int Within(int lowest, int highest) { return ConsumeIntegralInRange(lowest, highest); }

    std::size_t Count(std::size_t highest) {
        return ConsumeIntegralInRange<std::size_t>(0, highest);
    }

    bool OneIn(int chances) { return Within(1, chances) == chances; }

    /// Any int: a small one, an edge case, or a random one.
    int AnyInt() {
        switch (Within(0, 3)) {
            case 0: return Within(-5, 20);
            case 1:
                return PickValueInArray({std::numeric_limits<int>::min(), -32768, 255, 32767, 32768,
                                         65535, 65536, std::numeric_limits<int>::max()});
            case 2: return Within(0, 200'000);
            default: return ConsumeIntegral<int>();
        }
    }

    /// A common rate, or any int.
    int Rate() {
        return OneIn(4) ? AnyInt()
                        : PickValueInArray({8000, 16000, 32000, 44100, 48000, 22050, 36000, 96000});
    }

    /// One of the formats that the units take, or any int.
    SampleFmt Format() {
        return static_cast<SampleFmt>(OneIn(4) ? AnyInt() : PickValueInArray({1, 3, 6, 8}));
    }

    /// Any bits.
    float AnyFloat() { return std::bit_cast<float>(ConsumeIntegral<std::uint32_t>()); }

    /// `count` bytes: a repeated pattern from the script, or noise at one of 16 levels.
    std::vector<char> Bytes(std::size_t count, SampleFmt format) {
        std::vector<char> bytes(count);
        if (ConsumeBool()) {
            const std::vector<char> pattern = ConsumeBytes<char>(1 + Count(47));
            for (std::size_t i = 0; i < count && !pattern.empty(); ++i) {
                bytes[i] = pattern[i % pattern.size()];
            }
        } else if (format == SAMPLE_FMT_FLT || format == SAMPLE_FMT_FLTP) {
            Noise<float>(bytes);
        } else {
            Noise<short>(bytes);
        }
        return bytes;
    }

private:
    template <typename Sample>
    void Noise(std::vector<char>& bytes) {
        std::minstd_rand random(ConsumeIntegral<std::uint8_t>());
        const double full = std::is_same_v<Sample, short> ? 32768.0 : 1.0;
        const double level = full / (1 << Within(0, 15));
        std::uniform_real_distribution<double> noise(-level, level);
        for (std::size_t i = 0; i + sizeof(Sample) <= bytes.size(); i += sizeof(Sample)) {
            const auto sample = static_cast<Sample>(noise(random));
            std::memcpy(&bytes[i], &sample, sizeof(sample));
        }
    }

    int mSteps = 0;
};
