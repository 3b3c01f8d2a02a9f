#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "host/audio_format.h"
#include "host/audio_stream.h"
#include "host/rate_converter.h"

/// A source converted to the common format: its channels (see ConvertChannels) and its rate.
template <typename Sample>
class SourceFeed {
public:
    /// @param format the common one, with samples of type Sample
    SourceFeed(std::unique_ptr<AudioSource> source, const AudioFormat& format);

    /// Length in the common format, if known.
    std::optional<std::int64_t> Frames() const;

    /// Reads ahead. @return frames available, up to `frames`; fewer at the end
    std::size_t Fill(std::size_t frames);

    /// Appends the next `frames` frames to a block, which stay available; only those that are.
    void Peek(std::size_t frames, std::vector<Sample>& block) const;

    /// Appends `frames` frames to a block; silence after the end of the source.
    void Take(std::size_t frames, std::vector<Sample>& block);

private:
    std::size_t Held() const { return mAhead.size() - mTaken; }
    void ReadMore(std::size_t frames);

    std::unique_ptr<AudioSource> mSource;
    AudioFormat mFormat;
    std::optional<RateConverter> mConverter;
    std::vector<Sample> mAhead;  ///< read and not yet taken, after mTaken samples that have been
    std::size_t mTaken = 0;
    bool mEnded = false;
};
