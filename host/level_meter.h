#pragma once

#include <ebur128.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "host/audio_format.h"

/// Measures a stream as it passes: loudness, peak, and the power of every window of 50 ms.
class LevelMeter {
public:
    explicit LevelMeter(const AudioFormat& format);
    ~LevelMeter();

    void Add(const std::vector<float>& block);
    void Add(const std::vector<short>& block);

    /// Integrated loudness by EBU R 128, in LUFS; minus infinity below its gate.
    double Loudness() const;

    /// The largest sample, in dB of full scale; minus infinity for silence.
    double Peak() const;

    /// Mean square of each window over all channels, full scale 1; the last one may be shorter.
    std::vector<double> Powers() const;

private:
    struct Release {
        void operator()(ebur128_state* state) const;
    };

    void AddPower(double square);

    std::unique_ptr<ebur128_state, Release> mLoudness;
    std::size_t mChannels;
    std::size_t mWindowSamples;
    std::vector<double> mPowers;
    double mSum = 0.0;  ///< of squares in the window that is not full yet
    std::size_t mSummed = 0;
    float mPeak = 0.0F;
};

/// Mean power of a recording in two sorts of its windows, before and after it is cleaned. The sorts
/// are told apart by what came in: the quietest tenth is its noise floor, and all that lies at
/// least 15 dB above that is speech. In dB of full scale; minus infinity for silence.
struct WindowLevels {
    double noiseFloorBefore;
    double noiseFloorAfter;
    double speechBefore;
    double speechAfter;
};

WindowLevels CompareWindows(const std::vector<double>& before, const std::vector<double>& after);
