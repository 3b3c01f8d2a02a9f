#pragma once

#include <cstdint>

#include "common/export.h"

/// Detects a stereo stream whose left channel has reversed polarity against the right one (a
/// microphone wired out of phase) and corrects it by negating every left sample in place. The right
/// channel is never changed. Two independent detectors share an object:
///   Check   decides by the share of opposed frames since its statistics last restarted,
///   Check2  decides by a score with hysteresis.
///
///     PhaseCheck check;
///     check.Init(48000, false);
///     check.Check(samples, 2 * frames);
///
/// A frame is silent if both samples are within -491..491 (float: strictly within -0.016..0.016), in
/// phase if both have the same sign, and opposed otherwise. Frames are classified by their input
/// values, before any correction.
///
/// Result codes: RESULT_OK; RESULT_FAILURE if not initialised or for a bad argument. Supports one
/// thread at a time.
class AUDIO_FILTER_API PhaseCheck {
public:
    /// [setup] Not initialised.
    PhaseCheck() = default;

    /// [setup] Starts a stream with cleared statistics.
    /// @param sampleRate 8000..48000 Hz
    /// @param planar false for L R L R..., true for all left samples before all right ones
    /// @return RESULT_OK; RESULT_FAILURE for a rate out of range: the unit is then not initialised
    int Init(int sampleRate, bool planar);

    /// [audio]
    bool IsInited();

    /// [setup] Back to not initialised. Keeps the rates and the score of the last Check.
    /// @return true
    bool Clear();

    /// @{
    /// [audio] Corrects the block if more than 0.7 of the audible frames before this call were opposed
    /// and there were more than half a second of them; then counts the frames of this block. The
    /// statistics restart once twenty seconds more of opposed frames than of in-phase frames have
    /// left the unit. The restart clears the counts, not the decision: the first call after it still
    /// follows the share from before the restart, then takes a new one from its own frames.
    /// @param samples `count` samples at any address: count / 2 frames
    /// @param count samples of both channels, even; a negative even count does nothing
    /// @return RESULT_OK; RESULT_FAILURE if not initialised, for an odd count, or for a null buffer
    ///         with a positive count: the block is then unchanged
    int Check(short* samples, int count);
    int Check(float* samples, int count);
    /// @}

    /// @{
    /// [audio] Corrects the block while the score is high: on above six seconds of net opposed frames,
    /// off at three seconds or below. A frame with a zero sample scores nothing. Arguments and result
    /// as for Check, whose statistics it does not touch.
    int Check2(short* samples, int count);
    int Check2(float* samples, int count);
    /// @}

    /// @{
    /// [audio] Shares, 0..1, of the frames that Check has counted since its statistics last restarted;
    /// 0 without any.
    float GetInPhaseRatio();
    float GetOpposedPhaseRatio();
    float GetSilenceRatio();
    /// @}

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
    std::int32_t mScore = 0;     ///< of Check: net frames that left the unit opposed
    float mInPhaseRate = 0.0F;   ///< share of all frames at the last 16-bit Check
    float mOpposedRate = 0.0F;   ///< the same for opposed frames
    float mOpposedShare = 0.0F;  ///< share of the audible frames; above 0.7 the next Check corrects
    float mSilenceRate = 0.0F;   ///< share of all frames at the last 16-bit Check
    std::uint64_t mTotal = 0;    ///< frames that Check has counted
    std::uint64_t mInPhase = 0;
    std::uint64_t mOpposed = 0;
    std::uint64_t mSilence = 0;
};
