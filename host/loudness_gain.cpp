#include "host/loudness_gain.h"

#include <cmath>
#include <cstdio>

namespace {

/// dBTP. The rounding of samples to 16 bits adds less than the distance to -1.
constexpr double kHighestTruePeak = -1.01;

}  // namespace

LoudnessGain ChooseGain(double loudness, double truePeak, double target) {
    if (!std::isfinite(loudness)) {
        return {0.0, "the loudness stays as it is: silence, or shorter than 0.4 s"};
    }
    const double wanted = target - loudness;
    const double highest = kHighestTruePeak - truePeak;
    if (wanted <= highest) {
        return {wanted, ""};
    }
    char note[128];
    std::snprintf(note, sizeof(note),
                  "the loudness is %.1f LUFS instead of %.1f: more would raise the true peak above "
                  "-1 dBTP",
                  loudness + highest, target);
    return {highest, note};
}
