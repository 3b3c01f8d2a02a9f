#pragma once

#include <cstddef>
#include <memory>
#include <vector>

struct SpeexResamplerState_;

/// Converts the sample rate of an interleaved float stream block by block, with its latency removed.
class RateConverter {
public:
    /// Throws Failure if the rates are not supported.
    RateConverter(int fromRate, int toRate, int channels);
    ~RateConverter();

    /// @param isLast whether this block, which may be empty, ends the stream
    /// @return the frames available so far, any number
    std::vector<float> Convert(const std::vector<float>& block, bool isLast);

private:
    struct Release {
        void operator()(SpeexResamplerState_* state) const;
    };

    void Append(const std::vector<float>& block, std::vector<float>& converted);

    std::unique_ptr<SpeexResamplerState_, Release> mState;
    std::size_t mChannels;
};
