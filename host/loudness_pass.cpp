#include "host/loudness_pass.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

template <typename Sample>
LoudnessPass<Sample>::LoudnessPass(const AudioFormat& format, double target,
                                   const std::string& output)
    : mMeter(MakeLoudnessMeter(format, EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK)),
      mChannels(static_cast<std::size_t>(format.channels)),
      mTarget(target),
      mSpool(output) {}

template <typename Sample>
void LoudnessPass<Sample>::Add(const std::vector<Sample>& block) {
    std::vector<float> floats;
    floats.reserve(block.size());
    std::transform(block.begin(), block.end(), std::back_inserter(floats),
                   [](Sample sample) { return ToFloat(sample); });
    ebur128_add_frames_float(mMeter.get(), floats.data(), floats.size() / mChannels);
    mSpool.Write(block.data(), block.size() * sizeof(Sample));
}

template <typename Sample>
void LoudnessPass<Sample>::Finish() {
    double loudness = -std::numeric_limits<double>::infinity();
    ebur128_loudness_global(mMeter.get(), &loudness);
    mGain = ChooseGain(loudness, TruePeak(), mTarget);
    mFactor = static_cast<float>(std::pow(10.0, mGain.db / 20.0));
    mSpool.Rewind();
}

template <typename Sample>
std::vector<Sample> LoudnessPass<Sample>::Next() {
    constexpr std::size_t kFrames = 4096;
    std::vector<Sample> block(kFrames * mChannels);
    block.resize(mSpool.Read(block.data(), block.size() * sizeof(Sample)) / sizeof(Sample));
    std::transform(block.begin(), block.end(), block.begin(),
                   [this](Sample sample) { return FromFloat<Sample>(ToFloat(sample) * mFactor); });
    return block;
}

/// dBTP
template <typename Sample>
double LoudnessPass<Sample>::TruePeak() const {
    double highest = 0.0;
    for (unsigned channel = 0; channel < mChannels; ++channel) {
        double peak = 0.0;
        ebur128_true_peak(mMeter.get(), channel, &peak);
        highest = std::max(highest, peak);
    }
    return 20.0 * std::log10(highest);
}

template class LoudnessPass<short>;
template class LoudnessPass<float>;
