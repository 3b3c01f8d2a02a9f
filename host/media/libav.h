#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avutil.h>
#include <libavutil/opt.h>
}

#include <memory>
#include <string>

/// Frees what libav allocates.
struct LibavDelete {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
    void operator()(AVCodecParameters* parameters) const { avcodec_parameters_free(&parameters); }
    void operator()(AVIOContext* io) const {
        av_freep(&io->buffer);
        avio_context_free(&io);
    }
};

using PacketPtr = std::unique_ptr<AVPacket, LibavDelete>;
using FramePtr = std::unique_ptr<AVFrame, LibavDelete>;
using CodecPtr = std::unique_ptr<AVCodecContext, LibavDelete>;
using CodecParametersPtr = std::unique_ptr<AVCodecParameters, LibavDelete>;
using IoPtr = std::unique_ptr<AVIOContext, LibavDelete>;

/// Throws std::bad_alloc for null.
template <typename T>
T* Allocated(T* object) {
    if (object == nullptr) {
        throw std::bad_alloc();
    }
    return object;
}

/// Sends libav's messages nowhere, except that the last error of each thread is kept, and limits each of its
/// allocations. Idempotent.
void PrepareLibav();

/// What went wrong in libav: the meaning of its error code, and the last message on this thread since the previous call.
std::string LibavError(int error);

/// The time base of a file's own times.
constexpr AVRational kMicroseconds = {1, AV_TIME_BASE};

/// The stream's time base to another one, rounded to nearest.
inline std::int64_t Rescaled(std::int64_t time, AVRational from, AVRational to) {
    return av_rescale_q_rnd(time, from, to,
                            static_cast<AVRounding>(AV_ROUND_NEAR_INF | AV_ROUND_PASS_MINMAX));
}
