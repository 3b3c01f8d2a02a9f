#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/media/libav.h"
#include "host/media/media_container.h"
#include "host/media/packet_spool.h"
#include "host/rate_converter.h"

/// A track to encode.
struct TrackPlan {
    int sampleRate;  ///< Hz
    AVChannelLayout layout;
    std::int64_t start;  ///< when its first frame plays, in frames
    bool globalHeader;   ///< the container keeps the codec's header apart from the packets
    bool statesPadding;  ///< the container tells players how much of the start to skip
};

/// Encodes a track into a spool. Throws Failure.
///
/// Encoders begin with padding: frames that a decoder returns before those of the track. Where the container does not
/// state their number, the packets that hold them are left out, so that the track stays in place.
class TrackEncoder {
public:
    /// @param path of the output, in messages
    TrackEncoder(const std::string& path, const EncoderChoice& choice, const TrackPlan& plan);

    const AVCodecContext& Codec() const { return *mCodec; }
    PacketSpool& Packets() { return mSpool; }

    /// Interleaved, full scale at 1.
    void Push(const float* samples, std::size_t frames);

    /// Encodes the rest.
    void Finish();

private:
    void PlanPadding(const TrackPlan& plan);
    void Take(const std::vector<float>& samples);
    void Encode(const float* samples, std::size_t frames);
    void Send(const AVFrame* frame);
    [[noreturn]] void Fail(int error) const;

    std::string mPath;
    PacketSpool mSpool;
    CodecPtr mCodec;
    PacketPtr mPacket;
    std::optional<RateConverter> mConverter;
    std::vector<float> mAhead;  ///< not yet a whole frame of the encoder
    std::size_t mChannels;
    std::int64_t mNext = 0;  ///< when the next frame plays, in frames of the encoder
    int mLeftOut = 0;        ///< packets still to be left out
};
