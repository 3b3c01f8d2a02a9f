#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "units/analysis_window.h"

struct NsHandleT;

namespace audio_filter::internal {

/// One instance of the packaged noise suppressor, and its 16-bit band filters. This pair of files
/// is the only place that knows the package. All bands hold kBandSamples samples, of which the
/// suppressor reads and writes the first 80 at 8000 Hz; the others come out as zeros.
class Suppressor {
public:
    /// Null when there is no memory for an instance of the package; throws std::bad_alloc when
    /// there is none for the rest.
    static std::unique_ptr<Suppressor> Create();
    ~Suppressor();

    /// Restarts the suppressor, with policy 0.
    /// @param sampleRate 8000, 16000 or 32000 Hz
    /// @return false for any other rate, or when the package refuses; what ran before still runs
    bool Init(int sampleRate);

    /// @param level 0 mild .. 3 most aggressive
    /// @return false for any other level
    bool SetPolicy(int level);

    /// Suppresses the noise of one frame of 16-bit bands. What the suppressor returns is rounded to
    /// nearest, halves away from zero, and saturated. Needs a good Init.
    void Process(const short* low, const short* high, short* lowOut, short* highOut);

    /// The same for float bands, scaled by 32768 on the way in and back on the way out. The high
    /// band is silent, except in a frame that the suppressor leaves early: there it is the delayed
    /// input. A frame that overflows the suppressor comes out as zeros and restarts it: what it had
    /// gathered would stay undefined for good.
    void Process(const float* low, const float* high, float* lowOut, float* highOut);

private:
    struct Release {
        void operator()(NsHandleT* handle) const;
    };

    using Handle = std::unique_ptr<NsHandleT, Release>;

    static constexpr std::size_t kInstanceBytes = 32768;  ///< more than an instance takes

    explicit Suppressor(Handle handle);
    void Run(const float* low, const float* high, float* lowOut, float* highOut);

    Handle mHandle;
    int mSampleRate = 0;
    int mPolicy = 0;
    AnalysisWindow mWindow;
};

/// To the nearest 16-bit value, halves away from zero; beyond them, the last one.
short RoundToS16(float sample);

/// Splits a frame of kBlockSamples into two bands; each memory holds six values.
void SplitBands(const short* frame, short* low, short* high, std::int32_t* memory1,
                std::int32_t* memory2);

/// Merges two bands into a frame; each memory holds six values.
void MergeBands(const short* low, const short* high, short* frame, std::int32_t* memory1,
                std::int32_t* memory2);

}  // namespace audio_filter::internal
