#pragma once

#include <cstddef>
#include <span>

namespace audio_filter::internal {

/// The weighted vote of the past verdicts and the current one. A past verdict counts with the length
/// of the run of equal verdicts that it ends, the current one with 1.
/// @param history 0 or 1, oldest first
/// @return whether 1 wins; false for a tie
inline bool Vote(std::span<const unsigned char> history, bool current) {
    const auto weight = static_cast<float>(1.0 / (static_cast<double>(history.size()) + 1.0));
    float music = 0.0F;
    float speech = 0.0F;
    int run = 0;
    for (std::size_t i = 0; i < history.size(); ++i) {
        run = i > 0 && history[i] == history[i - 1] ? run + 1 : 1;
        (history[i] == 1 ? music : speech) += static_cast<float>(run) * weight;
    }
    (current ? music : speech) += weight;
    return music > speech;
}

}  // namespace audio_filter::internal
