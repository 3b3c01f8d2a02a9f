#pragma once

#include <cstdint>

#include "common/export.h"

/// Watches a two-channel stream for a left channel whose polarity is reversed against the right (a
/// microphone wired out of phase) and, once it is sure, negates every left sample in place. The
/// right channel stays as it is. Two detectors share the object and nothing but its layout:
///   Check   decides by the share of opposed frames since the last restart of its statistics,
///   Check2  decides by a score with hysteresis.
///
///     PhaseCheck check;
///     check.Init(48000, false);
///     check.Check(samples, 2 * frames);
///
/// A frame is a left and a right sample. It is silent when both are within -491..491 (float:
/// strictly within -0.016..0.016), in phase when both have the same sign, else opposed. Frames are
/// judged as they come in, before any correction.
///
/// Result codes: 0 done, -1 not initialised or bad argument. One object serves one thread at a
/// time.
class AUDIO_FILTER_API PhaseCheck {
public:
    /// [setup] Not initialised.
    PhaseCheck() = default;

    /// [setup] Starts anew.
    /// @param sampleRate 8000..48000 Hz
    /// @param planar false for L R L R..., true for all left samples before all right ones
    /// @return 0, or -1 for a rate out of range: the unit is then not initialised
    int Init(int sampleRate, bool planar);

    /// [audio]
    bool IsInited();

    /// [setup] Back to not initialised. Keeps the rates of the last Check and its score.
    /// @return true
    bool Clear();

    /// [audio] Corrects the block if more than 0.7 of the frames that were not silent up to this
    /// call were opposed, and there were more than half a second of them; then counts this block's
    /// frames. The statistics restart once twenty seconds' worth more frames have left opposed than
    /// in phase.
    /// @param samples count samples at any address: count / 2 frames
    /// @param count samples of both channels, even; a negative even count does nothing
    /// @return 0; -1 when not initialised, for an odd count, or for a null buffer that should hold
    ///        samples: the block is then untouched
    int Check(short* samples, int count);
    int Check(float* samples, int count);

    /// [audio] Corrects the block while the score is high: on above six seconds' worth of net
    /// opposed frames, off at three or below. A frame with a zero channel scores nothing. Arguments
    /// and result as for Check, whose statistics it leaves alone.
    int Check2(short* samples, int count);
    int Check2(float* samples, int count);

    /// [audio] Shares, 0..1, of the frames that Check has counted since its last restart; 0 before
    /// any frame.
    float GetInPhaseRatio();
    float GetOpposedPhaseRatio();
    float GetSilenceRatio();

private:
    template <typename Sample>
    int RunRatioDetector(Sample* samples, int count);
    template <typename Sample>
    int RunScoreDetector(Sample* samples, int count);
    template <typename Sample>
    void RenewRates();
    bool Refuses(const void* samples, int count) const;
    void ResetCounters();
    float RatioOfTotal(std::uint64_t frames) const;

    bool mInited = false;
    bool mPlanar = false;
    bool mInvert = false;  ///< decision of Check2
    std::int32_t mSampleRate = 0;
    std::int32_t mMaxScore = 0;  ///< ceiling of mScore2
    std::int32_t mScore2 = 0;    ///< of Check2
    std::int32_t mScore = 0;     ///< of Check: frames that left opposed, net
    float mInPhaseRate = 0.0F;   ///< share of all frames, as of the last 16-bit Check
    float mOpposedRate = 0.0F;   ///< the same of opposed ones
    float mOpposedShare =
        0.0F;  ///< share of the frames not silent; above 0.7 the next Check corrects
    float mSilenceRate = 0.0F;  ///< share of all frames, as of the last 16-bit Check
    std::uint64_t mTotal = 0;   ///< frames that Check has counted
    std::uint64_t mInPhase = 0;
    std::uint64_t mOpposed = 0;
    std::uint64_t mSilence = 0;
};
