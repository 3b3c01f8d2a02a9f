#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "units/analysis_window.h"

struct NsHandleT;

namespace audio_filter::internal {

/// One instance of the packaged noise suppressor, and its 16-bit band filters. Only this pair of files
/// uses the package. Bands hold kBandSamples samples, of which the suppressor reads and writes the
/// first 80 at 8000 Hz; the others are returned as zeros.
class Suppressor {
public:
    /// Null when the package's instance cannot be allocated; throws std::bad_alloc when memory runs
    /// out otherwise.
    static std::unique_ptr<Suppressor> Create();
    ~Suppressor();

    /// Restarts the suppressor at level 0.
    /// @param sampleRate 8000, 16000 or 32000 Hz
    /// @return false for any other rate, or if the package rejects it; the earlier state then remains
    bool Init(int sampleRate);

    /// @param level 0 mild .. 3 most aggressive
    /// @return false for any other level
    bool SetLevel(int level);

    /// Suppresses the noise in one block of 16-bit bands. The result is rounded to nearest, halves
    /// away from zero, and saturated. Requires a successful Init.
    void Process(const short* low, const short* high, short* lowOut, short* highOut);

    /// The same for float bands, scaled by 32768 on input and back on output. The high band is silent,
    /// except on an early exit, where it is the delayed input. A block that overflows the suppressor
    /// gives zeros and restarts it, because its state would remain NaN.
    void Process(const float* low, const float* high, float* lowOut, float* highOut);

private:
    struct Release {
        void operator()(NsHandleT* handle) const;
    };

    using Handle = std::unique_ptr<NsHandleT, Release>;

    static constexpr std::size_t kInstanceBytes = 32768;  ///< more than the size of an instance

    explicit Suppressor(Handle handle);
    void Run(const float* low, const float* high, float* lowOut, float* highOut);

    Handle mHandle;
    int mSampleRate = 0;
    int mLevel = 0;
    AnalysisWindow mWindow;
};

/// Splits kBlockSamples samples into two bands; each memory holds six values.
void SplitBands(const short* samples, short* low, short* high, std::int32_t* memory1,
                std::int32_t* memory2);

/// Merges two bands into kBlockSamples samples; each memory holds six values.
void MergeBands(const short* low, const short* high, short* samples, std::int32_t* memory1,
                std::int32_t* memory2);

}  // namespace audio_filter::internal
