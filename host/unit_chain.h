#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "host/audio_format.h"
#include "units/audio_denoise.h"
#include "units/audio_gain.h"
#include "units/phase_check.h"

/// What is done to a recording.
struct ChainSettings {
    std::optional<int> denoiseLevel = 3;  ///< 0 mild .. 3 most aggressive; none: off
    std::optional<float> gain;            ///< 0..1; none: off
    bool phaseCheck = true;               ///< of a stereo stream
};

/// The library's units in their order: phase check, noise suppression, gain. Throws Failure when a
/// unit refuses a stream or a block.
class UnitChain {
public:
    /// @param format of one of the rates that ProcessingRate answers
    UnitChain(const ChainSettings& settings, const AudioFormat& format);

    /// The rate at which a stream is processed: its own if the suppressor is off or takes it, else
    /// 32000.
    static int ProcessingRate(const ChainSettings& settings, int sampleRate);

    /// @param block whole frames of the format
    /// @return as many frames, give or take one frame of the suppressor
    template <typename Sample>
    std::vector<Sample> Process(std::vector<Sample> block);

    /// Frames by which the output lags the input.
    std::int64_t DelayFrames() const;

    /// Whether a phase check runs, and the frames whose left sample it has negated so far.
    bool ChecksPhase() { return mPhaseCheck.IsInited(); }
    std::int64_t CorrectedFrames() const { return mCorrectedFrames; }

private:
    template <typename Sample>
    void CheckPhase(std::vector<Sample>& block);
    template <typename Sample>
    std::vector<Sample> Denoise(const std::vector<Sample>& block);
    template <typename Sample>
    void ApplyGain(std::vector<Sample>& block);

    ChainSettings mSettings;
    AudioFormat mFormat;
    PhaseCheck mPhaseCheck;
    AudioDenoise mDenoise;
    AudioGain mGain;
    std::int64_t mCorrectedFrames = 0;
};
