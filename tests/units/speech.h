#pragma once

#include <cstddef>
#include <random>
#include <type_traits>
#include <vector>

#include "common/sample_format.h"
#include "support/seed.h"
#include "support/signals.h"

template <typename Sample>
constexpr SampleFmt kFormat = std::is_same_v<Sample, short> ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT;

/// Noisy speech at 32000 Hz.
template <typename Sample>
std::vector<Sample> Speech(int samples) {
    std::mt19937 random = SeededRandom();
    return As<Sample>(NoisySpeech(random, static_cast<std::size_t>(samples), 32000.0));
}
