#include "host/channels.h"

#include <array>
#include <cstddef>
#include <numbers>
#include <string_view>

namespace {

/// What each channel is, by the number of channels: L, R left or right, C centre (to both sides), l, r left
/// or right surround, c back centre, E low frequencies.
constexpr std::array<std::string_view, kMostChannels + 1> kPositions = {
    "", "C", "LR", "LRC", "LRlr", "LRClr", "LRCElr", "LRCEclr", "LRCElrlr"};

float WeightOf(char position, bool left) {
    constexpr float kHalfPower = 0.5F * std::numbers::sqrt2_v<float>;
    switch (position) {
        case 'L': return left ? 1.0F : 0.0F;
        case 'R': return left ? 0.0F : 1.0F;
        case 'l': return left ? kHalfPower : 0.0F;
        case 'r': return left ? 0.0F : kHalfPower;
        case 'E': return 0.0F;
        default: return kHalfPower;
    }
}

float Side(const float* frame, std::string_view positions, bool left) {
    float sum = 0.0F;
    float weights = 0.0F;
    for (std::size_t i = 0; i < positions.size(); ++i) {
        const float weight = WeightOf(positions[i], left);
        sum += weight * frame[i];
        weights += weight;
    }
    return sum / weights;
}

void AppendFrame(const float* frame, std::size_t from, std::size_t to, std::vector<float>& out) {
    if (to == 1) {
        float sum = 0.0F;
        for (std::size_t i = 0; i < from; ++i) {
            sum += frame[i];
        }
        out.push_back(sum / static_cast<float>(from));
    } else if (to == 2 && from > 2) {
        out.push_back(Side(frame, kPositions[from], true));
        out.push_back(Side(frame, kPositions[from], false));
    } else {
        for (std::size_t i = 0; i < to; ++i) {
            const bool frontOfMono = from == 1 && i < 2;
            out.push_back(frontOfMono ? frame[0] : i < from ? frame[i] : 0.0F);
        }
    }
}

}  // namespace

std::string ChannelsName(int channels) {
    return channels == 1   ? "mono"
           : channels == 2 ? "stereo"
                           : std::to_string(channels) + " channels";
}

std::string TooManyChannels(int channels) {
    return "has " + std::to_string(channels) + " channels; at most " +
           std::to_string(kMostChannels) + " are supported";
}

std::vector<float> ConvertChannels(std::vector<float> samples, int from, int to) {
    if (from == to) {
        return samples;
    }
    std::vector<float> out;
    const auto step = static_cast<std::size_t>(from);
    for (std::size_t at = 0; at + step <= samples.size(); at += step) {
        AppendFrame(samples.data() + at, step, static_cast<std::size_t>(to), out);
    }
    return out;
}
