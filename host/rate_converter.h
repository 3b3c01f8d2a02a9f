#pragma once

#include <samplerate.h>

#include <memory>
#include <vector>

/// Converts the sample rate of an interleaved float stream block by block, with its latency removed.
class RateConverter {
public:
    /// Throws Failure if the ratio of the rates is not supported.
    RateConverter(int fromRate, int toRate, int channels);
    ~RateConverter();

    /// @param last whether this block, which may be empty, ends the stream
    /// @return the frames available so far, any number
    std::vector<float> Convert(const std::vector<float>& block, bool last);

private:
    struct Release {
        void operator()(SRC_STATE* state) const;
    };

    std::unique_ptr<SRC_STATE, Release> mState;
    double mRatio;
    std::size_t mChannels;
};
