#pragma once

#include <cstddef>
#include <vector>

#include "host/audio_format.h"
#include "host/loudness_meter.h"

/// Measures loudness, peak, and the power of each 50 ms window of a stream.
class LevelMeter {
public:
    explicit LevelMeter(const AudioFormat& format);

    void Add(const std::vector<float>& block);
    void Add(const std::vector<short>& block);

    /// Integrated loudness (EBU R 128) in LUFS; minus infinity below its gate.
    double Loudness() const;

    /// The sample peak in dBFS; minus infinity for silence.
    double Peak() const;

    /// Mean square of each window over all channels, full scale 1; the last may be shorter.
    std::vector<double> Powers() const;

private:
    void AddPower(double square);

    LoudnessMeter mLoudness;
    std::size_t mChannels;
    std::size_t mWindowSamples;
    std::vector<double> mPowers;
    double mSum = 0.0;  ///< of squares in the current window
    std::size_t mSummed = 0;
    float mPeak = 0.0F;
};

/// Mean power of the noise floor and of speech before and after cleaning, in dBFS; minus infinity
/// for silence. The input selects the windows of both: its quietest tenth is the noise floor, and
/// windows at least 15 dB above that are speech.
struct WindowLevels {
    double noiseFloorBefore;
    double noiseFloorAfter;
    double speechBefore;
    double speechAfter;
};

WindowLevels CompareWindows(const std::vector<double>& before, const std::vector<double>& after);
