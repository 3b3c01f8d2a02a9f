#include "stream/packed_settings.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace audio_filter::internal {

namespace {

constexpr int kPhaseCheckBit = 3;
constexpr int kMixBit = 4;
constexpr int kMusicBit = 5;
constexpr int kGainBit = 6;
constexpr int kHighBandBit = 7;
constexpr int kReversedShift = 16;
constexpr int kGainShift = 32;

std::uint64_t Bit(bool on, int bit) {
    return (on ? std::uint64_t{1} : 0) << bit;
}

}  // namespace

std::uint64_t Pack(const StreamSettings& settings) {
    const int level = settings.suppression ? std::clamp(*settings.suppression, 0, 3) : -1;
    const float wanted = settings.gain.value_or(0.0F);
    const float gain = std::isnan(wanted) ? 0.0F : std::clamp(wanted, 0.0F, 1.0F);
    return static_cast<std::uint64_t>(level + 1) | Bit(settings.phaseCheck, kPhaseCheckBit) |
           Bit(settings.mix, kMixBit) | Bit(settings.music == MusicMode::kKeep, kMusicBit) |
           Bit(settings.gain.has_value(), kGainBit) | Bit(settings.highBand, kHighBandBit) |
           std::uint64_t{settings.reversed} << kReversedShift |
           std::uint64_t{std::bit_cast<std::uint32_t>(gain)} << kGainShift;
}

StreamSettings Unpack(std::uint64_t packed) {
    const auto isSet = [packed](int bit) { return (packed >> bit & 1) != 0; };
    StreamSettings settings;
    settings.suppression.reset();
    if (const int level = static_cast<int>(packed & 7) - 1; level >= 0) {
        settings.suppression = level;
    }
    settings.phaseCheck = isSet(kPhaseCheckBit);
    settings.mix = isSet(kMixBit);
    settings.music = isSet(kMusicBit) ? MusicMode::kKeep : MusicMode::kIgnore;
    settings.highBand = isSet(kHighBandBit);
    if (isSet(kGainBit)) {
        settings.gain = std::bit_cast<float>(static_cast<std::uint32_t>(packed >> kGainShift));
    }
    settings.reversed = static_cast<std::uint16_t>(packed >> kReversedShift);
    return settings;
}

}  // namespace audio_filter::internal
