#include "host/level_meter.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double kSilence = -std::numeric_limits<double>::infinity();

double PowerToDb(double power) {
    return power > 0.0 ? 10.0 * std::log10(power) : kSilence;
}

/// Mean level of the windows that `wanted` selects by index.
template <typename Wanted>
double MeanLevel(const std::vector<double>& powers, Wanted wanted) {
    double sum = 0.0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < powers.size(); ++i) {
        if (wanted(i)) {
            sum += powers[i];
            ++count;
        }
    }
    return count == 0 ? kSilence : PowerToDb(sum / static_cast<double>(count));
}

}  // namespace

LevelMeter::LevelMeter(const AudioFormat& format)
    : mLoudness(MakeLoudnessMeter(format, EBUR128_MODE_I)),
      mChannels(static_cast<std::size_t>(format.channels)),
      mWindowSamples(std::max<std::size_t>(1, static_cast<std::size_t>(format.sampleRate) / 20) *
                     mChannels) {}

void LevelMeter::Add(const std::vector<float>& block) {
    ebur128_add_frames_float(mLoudness.get(), block.data(), block.size() / mChannels);
    for (const float sample : block) {
        mPeak = std::max(mPeak, std::abs(sample));
        AddPower(static_cast<double>(sample) * static_cast<double>(sample));
    }
}

void LevelMeter::Add(const std::vector<short>& block) {
    std::vector<float> floats(block.size());
    std::transform(block.begin(), block.end(), floats.begin(), [](short s) { return ToFloat(s); });
    Add(floats);
}

void LevelMeter::AddPower(double square) {
    mSum += square;
    if (++mSummed == mWindowSamples) {
        mPowers.push_back(mSum / static_cast<double>(mSummed));
        mSum = 0.0;
        mSummed = 0;
    }
}

double LevelMeter::Loudness() const {
    double loudness = kSilence;
    ebur128_loudness_global(mLoudness.get(), &loudness);
    return loudness;
}

double LevelMeter::Peak() const {
    return PowerToDb(static_cast<double>(mPeak) * static_cast<double>(mPeak));
}

std::vector<double> LevelMeter::Powers() const {
    std::vector<double> powers = mPowers;
    if (mSummed > 0) {
        powers.push_back(mSum / static_cast<double>(mSummed));
    }
    return powers;
}

WindowLevels CompareWindows(const std::vector<double>& before, const std::vector<double>& after) {
    std::vector<std::size_t> byPower(before.size());
    for (std::size_t i = 0; i < byPower.size(); ++i) {
        byPower[i] = i;
    }
    std::stable_sort(byPower.begin(), byPower.end(),
                     [&before](std::size_t a, std::size_t b) { return before[a] < before[b]; });
    std::vector<bool> quiet(before.size());
    for (std::size_t rank = 0; rank < (byPower.size() + 9) / 10; ++rank) {
        quiet[byPower[rank]] = true;
    }
    const auto isQuiet = [&quiet](std::size_t i) { return quiet[i]; };
    const double floor = MeanLevel(before, isQuiet);
    const auto isSpeech = [&before, floor](std::size_t i) {
        return PowerToDb(before[i]) >= floor + 15.0;
    };
    return {floor, MeanLevel(after, isQuiet), MeanLevel(before, isSpeech),
            MeanLevel(after, isSpeech)};
}
