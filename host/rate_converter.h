#pragma once

#include <samplerate.h>

#include <memory>
#include <vector>

/// Converts the sample rate of an interleaved float stream, block by block and without delay.
class RateConverter {
public:
    /// Throws Failure for rates too far apart.
    RateConverter(int fromRate, int toRate, int channels);
    ~RateConverter();

    /// @param last whether the stream ends with this block, which may be empty
    /// @return what can be said so far, any number of frames
    std::vector<float> Convert(const std::vector<float>& block, bool last);

private:
    struct Release {
        void operator()(SRC_STATE* state) const;
    };

    std::unique_ptr<SRC_STATE, Release> mState;
    double mRatio;
    std::size_t mChannels;
};
