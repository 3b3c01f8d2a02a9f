#pragma once

#include <cstddef>
#include <vector>

#include "host/audio_format.h"
#include "stream/stream.h"

/// A stream without its latency: returns exactly the frames that it receives, later and in other blocks.
template <typename Sample>
class AlignedStream {
public:
    using Block = std::vector<Sample>;

    /// @param format of every source. Throws Failure if the stream does not support it.
    AlignedStream(const AudioFormat& format, std::size_t sources,
                  const audio_filter::StreamSettings& settings);

    /// The settings, the events and the reports. Their frames count what Prime has passed.
    audio_filter::Stream& Controls() { return mStream; }

    /// Processes blocks and drops the output. Only before the first Push.
    /// @param blocks a block of each source, one after another, of equal length
    void Prime(const Block& blocks);

    /// @return the next frames of the output, fewer at the start
    Block Push(const Block& blocks);

    /// Ends the stream. @return the rest of the output
    Block Drain();

    /// Frames that Prime has passed.
    std::size_t Primed() const { return mPrimed; }

private:
    Block Process(const Block& blocks);
    Block Drop(Block block);

    audio_filter::Stream mStream;
    std::size_t mSources;
    std::size_t mChannels;
    std::size_t mToDrop = 0;  ///< frames
    std::size_t mPrimed = 0;
};
