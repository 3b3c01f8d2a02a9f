#include "host/page/axis.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace {

constexpr std::array kTimeSteps = {0.05,  0.1,    0.2,    0.5,    1.0,    2.0,   5.0,
                                   10.0,  15.0,   30.0,   60.0,   120.0,  300.0, 600.0,
                                   900.0, 1800.0, 3600.0, 7200.0, 14400.0};
constexpr double kMostTimeTicks = 8.0;

/// The least of 1, 2 and 5 times a power of ten that is not below `least`.
double RoundStep(double least) {
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= least * (1.0 - 1e-9)) {
            return factor * power;
        }
    }
    return 10.0 * power;
}

std::vector<Tick> TicksBetween(double lowest, double highest, double step,
                               std::string (*label)(double)) {
    std::vector<Tick> ticks;
    const double range = highest - lowest;
    for (double i = std::ceil(lowest / step - 1e-9); i * step <= highest + 1e-9 * range; ++i) {
        ticks.push_back({(i * step - lowest) / range, label(i * step + 0.0)});
    }
    return ticks;
}

std::string NumberText(double value) {
    char text[32];
    std::snprintf(text, sizeof(text), "%g", value);
    return text;
}

}  // namespace

std::vector<Tick> TimeTicks(double seconds) {
    if (!(seconds > 0.0)) {
        return {};
    }
    const auto* const fitting =
        std::find_if(kTimeSteps.begin(), kTimeSteps.end(),
                     [seconds](double each) { return seconds / each < kMostTimeTicks; });
    double step = fitting == kTimeSteps.end() ? kTimeSteps.back() : *fitting;
    while (seconds / step >= kMostTimeTicks) {
        step *= 2.0;
    }
    return TicksBetween(0.0, seconds, step, [](double at) { return TimeText(at); });
}

std::vector<Tick> LinearTicks(double lowest, double highest, std::size_t most) {
    const double step = RoundStep((highest - lowest) / static_cast<double>(most - 1));
    return TicksBetween(lowest, highest, step, NumberText);
}

std::string TimeText(double seconds) {
    char text[64];
    const double hundredths = std::round(seconds * 100.0);
    if (hundredths < 6000.0) {
        std::snprintf(text, sizeof(text), "%g s", hundredths / 100.0);
        return text;
    }
    const auto whole = static_cast<long long>(std::round(seconds));
    if (whole < 3600) {
        std::snprintf(text, sizeof(text), "%lld:%02lld", whole / 60, whole % 60);
    } else {
        std::snprintf(text, sizeof(text), "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60,
                      whole % 60);
    }
    return text;
}
