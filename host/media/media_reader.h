#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/audio_stream.h"
#include "host/media/media_input.h"
#include "host/read_options.h"

/// Reads one audio track of a media file through libavcodec. Gaps between its timestamps are filled with silence and
/// overlaps dropped, so that it stays in step with other tracks. Throws Failure for a track that cannot be decoded; what
/// ends early or is damaged is read as far as possible, with a warning.
class MediaReader : public AudioSource {
public:
    /// @param track counts audio tracks from 1; 0 for the default one
    /// @param name in messages
    MediaReader(const std::string& path, int track, ReadOptions options, const std::string& name);

    /// 16-bit for lossless codecs of up to 16 bits and for lossy codecs, else float.
    const AudioFormat& Format() const override { return mFormat; }

    /// Length, if the file states it; corrected once its end is reached.
    std::optional<std::int64_t> Frames() const override { return mFrames; }

    std::size_t Read(short* samples, std::size_t frames) override;
    std::size_t Read(float* samples, std::size_t frames) override;

    /// When the first frame plays, in frames.
    std::int64_t Start() const { return mStart; }

private:
    void OpenDecoder();
    void TakeFormat();
    std::int64_t StartOf(std::int64_t first) const;
    void TakeLength();
    bool Decode();
    bool SendPacket();
    void NoteDamage();
    void TakeFrame();
    void TrimPadding();
    void Align(std::int64_t at);
    void End();
    std::int64_t FrameTime() const;
    std::string Seconds(std::int64_t frames) const;
    void Warn(const std::string& remark) const;

    std::string mName;
    ReadOptions mOptions;
    MediaInput mInput;
    int mIndex;
    CodecPtr mDecoder;
    PacketPtr mPacket;
    FramePtr mFrame;
    AudioFormat mFormat = {};
    std::optional<std::int64_t> mFrames;
    std::vector<float> mAhead;  ///< decoded and not yet read, after mTaken samples that have been
    std::size_t mTaken = 0;
    std::int64_t mSilence = 0;   ///< frames to be read before them
    std::int64_t mSilences = 0;  ///< all frames of silence
    std::int64_t mStart = 0;
    std::int64_t mNext = 0;     ///< when the next decoded frame is expected
    std::int64_t mDecoded = 0;  ///< frames, silence included
    std::int64_t mDamaged = 0;  ///< packets
    int mEnd = 0;               ///< why no more packets are read; 0 before
    bool mEnded = false;
};
