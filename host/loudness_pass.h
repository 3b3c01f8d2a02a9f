#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/audio_format.h"
#include "host/loudness_gain.h"
#include "host/loudness_meter.h"
#include "host/spool.h"

/// Brings a stream to a loudness (EBU R 128) by a constant gain: stores it until its end, then returns it. Throws
/// Failure when it cannot be stored.
template <typename Sample>
class LoudnessPass {
public:
    /// @param target LUFS
    /// @param output see Spool
    LoudnessPass(const AudioFormat& format, double target, const std::string& output);

    void Add(const std::vector<Sample>& block);

    /// Ends the stream and chooses the gain.
    void Finish();

    const LoudnessGain& Gain() const { return mGain; }

    /// @return the next frames with the gain applied: 16-bit samples are rounded; none at the end
    std::vector<Sample> Next();

private:
    double TruePeak() const;

    LoudnessMeter mMeter;
    std::size_t mChannels;
    double mTarget;
    Spool mSpool;
    LoudnessGain mGain = {};
    float mFactor = 1.0F;
};
