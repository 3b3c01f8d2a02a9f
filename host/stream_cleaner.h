#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "host/audio_format.h"
#include "host/rate_converter.h"
#include "host/unit_chain.h"

/// Cleans a stream of any rate: brings it to the rate of the chain and back where they differ,
/// takes the delay of the chain away, and gives out exactly as many frames as came in.
template <typename Sample>
class StreamCleaner {
public:
    using Sink = std::function<void(const std::vector<Sample>&)>;

    /// @param format the stream's own
    /// @param sink takes the cleaned blocks in order
    StreamCleaner(const ChainSettings& settings, const AudioFormat& format, Sink sink);

    /// @param block whole frames
    void Push(const std::vector<Sample>& block);

    /// Ends the stream: what has been held back comes out.
    void Finish();

    UnitChain& Chain() { return mChain; }
    int ProcessingRate() const { return mChainFormat.sampleRate; }

private:
    void ToChain(const std::vector<Sample>& block);
    void Run(const std::vector<Sample>& block);
    void Emit(std::vector<Sample> block);

    AudioFormat mFormat;
    AudioFormat mChainFormat;
    UnitChain mChain;
    Sink mSink;
    std::optional<RateConverter> mToChain;  ///< where the rates differ, as mFromChain
    std::optional<RateConverter> mFromChain;
    std::int64_t mDelay;        ///< frames still to drop from what the chain gives out
    std::int64_t mChainIn = 0;  ///< frames of the stream, at the rate of the chain
    std::int64_t mChainOut = 0;
    std::int64_t mFramesIn = 0;
    std::int64_t mFramesOut = 0;
};
