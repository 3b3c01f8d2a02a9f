#include "audio_filter/c.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>
#include <utility>

#include "c/c_log.h"
#include "c/structures.h"
#include "common/result_code.h"
#include "stream/stream.h"

using namespace audio_filter;
using namespace audio_filter::internal;

struct audio_filter_stream {
    StreamFormat format;
    std::unique_ptr<Stream> stream;
    audio_filter_event_callback callback = nullptr;
    void* user = nullptr;
    bool isCallingBack = false;
};

namespace {

constexpr const char* kErrors[] = {
    "success",
    "invalid argument",
    "a structure has the wrong size",
    "unsupported format",
    "a setting is out of range",
    "the number of frames is out of range",
    "out of memory",
    "internal error",
    "called from the event callback of the same stream",
};

/// Runs what may throw.
template <typename Operation>
int Guarded(Operation operation) {
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return AUDIO_FILTER_ERROR_MEMORY;
    } catch (...) {
        return AUDIO_FILTER_ERROR_INTERNAL;
    }
}

/// Whether the stream may process.
int Check(const audio_filter_stream* stream) {
    if (stream == nullptr) {
        return AUDIO_FILTER_ERROR_ARGUMENT;
    }
    return stream->isCallingBack ? AUDIO_FILTER_ERROR_NESTED : AUDIO_FILTER_OK;
}

/// @return null for a format out of range
std::unique_ptr<Stream> Started(const StreamFormat& format, const StreamSettings& settings) {
    auto stream = std::make_unique<Stream>();
    return stream->Init(format, settings) == RESULT_OK ? std::move(stream) : nullptr;
}

bool HasBuffers(const audio_filter_stream& stream, void* const* out) {
    const bool isPlanar =
        stream.format.samples == SAMPLE_FMT_S16P || stream.format.samples == SAMPLE_FMT_FLTP;
    const int buffers = isPlanar ? stream.format.channels : 1;
    return out != nullptr &&
           std::all_of(out, out + buffers, [](void* buffer) { return buffer != nullptr; });
}

void CallBack(audio_filter_stream* stream) {
    if (stream->callback == nullptr) {
        return;
    }
    stream->isCallingBack = true;
    StreamEvent event;
    while (stream->stream->NextEvent(event)) {
        audio_filter_event converted = {};
        converted.size = sizeof(converted);
        ToC(event, &converted);
        stream->callback(stream->user, &converted);
    }
    stream->isCallingBack = false;
}

int Create(audio_filter_stream*& stream, const audio_filter_format* format,
           const audio_filter_settings* settings) {
    StreamFormat converted;
    StreamSettings initial;
    if (const int error = FromC(format, converted); error != AUDIO_FILTER_OK) {
        return error;
    }
    if (const int error = FromC(settings, initial); error != AUDIO_FILTER_OK) {
        return error;
    }
    auto created = std::make_unique<audio_filter_stream>();
    created->format = converted;
    created->stream = Started(converted, initial);
    if (created->stream == nullptr) {
        return AUDIO_FILTER_ERROR_FORMAT;
    }
    stream = created.release();
    return AUDIO_FILTER_OK;
}

int ProcessInterleaved(audio_filter_stream* stream, SampleFmt samples, const void* in, void* out,
                       std::int32_t frames) {
    if (stream != nullptr && (stream->format.samples != samples || stream->format.sources != 1)) {
        return AUDIO_FILTER_ERROR_FORMAT;
    }
    return audio_filter_process(stream, &in, &out, frames);
}

}  // namespace

const char* audio_filter_strerror(int error) {
    const bool isKnown = error <= 0 && error > -static_cast<int>(std::size(kErrors));
    return isKnown ? kErrors[-error] : "unknown error";
}

uint32_t audio_filter_version() {
    return AUDIO_FILTER_VERSION;
}

const char* audio_filter_version_string() {
    return AUDIO_FILTER_VERSION_STRING;
}

int audio_filter_default_format(audio_filter_format* format, size_t size) {
    return FillDefaults(format, size);
}

int audio_filter_default_settings(audio_filter_settings* settings, size_t size) {
    return FillDefaults(settings, size);
}

int audio_filter_create(audio_filter_stream** stream, const audio_filter_format* format,
                        const audio_filter_settings* settings) {
    if (stream == nullptr) {
        return AUDIO_FILTER_ERROR_ARGUMENT;
    }
    *stream = nullptr;
    const int error = Guarded([&] { return Create(*stream, format, settings); });
    if (error != AUDIO_FILTER_OK) {
        CLog(AUDIO_FILTER_LOG_ERROR, "no stream: %s", audio_filter_strerror(error));
        return error;
    }
    const StreamFormat& created = (*stream)->format;
    CLog(AUDIO_FILTER_LOG_INFO, "stream: %d Hz, channels %d, sources %d, latency %d frames",
         created.sampleRate, created.channels, created.sources, audio_filter_latency(*stream));
    return AUDIO_FILTER_OK;
}

void audio_filter_destroy(audio_filter_stream* stream) {
    delete stream;
}

int audio_filter_reset(audio_filter_stream* stream) {
    if (const int error = Check(stream); error != AUDIO_FILTER_OK) {
        return error;
    }
    return Guarded([stream] {
        stream->stream = Started(stream->format, stream->stream->Settings());
        return AUDIO_FILTER_OK;
    });
}

int audio_filter_process(audio_filter_stream* stream, const void* const* in, void* const* out,
                         int32_t frames) {
    if (const int error = Check(stream); error != AUDIO_FILTER_OK) {
        return error;
    }
    if (frames < 0 || frames > stream->format.maxFrames) {
        return AUDIO_FILTER_ERROR_FRAMES;
    }
    if (frames == 0) {
        return AUDIO_FILTER_OK;
    }
    if (stream->stream->Process(in, out, frames) != RESULT_OK) {
        return AUDIO_FILTER_ERROR_ARGUMENT;
    }
    CallBack(stream);
    return AUDIO_FILTER_OK;
}

int audio_filter_process_s16(audio_filter_stream* stream, const int16_t* in, int16_t* out,
                             int32_t frames) {
    return ProcessInterleaved(stream, SAMPLE_FMT_S16, in, out, frames);
}

int audio_filter_process_float(audio_filter_stream* stream, const float* in, float* out,
                               int32_t frames) {
    return ProcessInterleaved(stream, SAMPLE_FMT_FLT, in, out, frames);
}

int32_t audio_filter_drain(audio_filter_stream* stream, void* const* out, int32_t frames) {
    if (const int error = Check(stream); error != AUDIO_FILTER_OK) {
        return error;
    }
    if (frames < 1 || frames > stream->format.maxFrames) {
        return AUDIO_FILTER_ERROR_FRAMES;
    }
    if (!HasBuffers(*stream, out)) {
        return AUDIO_FILTER_ERROR_ARGUMENT;
    }
    const int written = stream->stream->Drain(out, frames);
    CallBack(stream);
    return written;
}

int audio_filter_set_settings(audio_filter_stream* stream, const audio_filter_settings* settings) {
    if (stream == nullptr || settings == nullptr) {
        return AUDIO_FILTER_ERROR_ARGUMENT;
    }
    StreamSettings converted;
    const int error = FromC(settings, converted);
    if (error == AUDIO_FILTER_OK) {
        stream->stream->SetSettings(converted);
    }
    return error;
}

int audio_filter_get_settings(const audio_filter_stream* stream, audio_filter_settings* settings) {
    if (stream == nullptr) {
        return AUDIO_FILTER_ERROR_ARGUMENT;
    }
    return ToC(stream->stream->Settings(), settings);
}

int audio_filter_set(audio_filter_stream* stream, int setting, double value) {
    if (stream == nullptr) {
        return AUDIO_FILTER_ERROR_ARGUMENT;
    }
    StreamSettings latest;
    StreamSettings changed;
    do {
        latest = stream->stream->Settings();
        changed = latest;
        if (const int error = SetOne(setting, value, changed); error != AUDIO_FILTER_OK) {
            return error;
        }
    } while (!stream->stream->ReplaceSettings(latest, changed));
    return AUDIO_FILTER_OK;
}

int audio_filter_get(const audio_filter_stream* stream, int setting, double* value) {
    if (stream == nullptr || value == nullptr) {
        return AUDIO_FILTER_ERROR_ARGUMENT;
    }
    return GetOne(stream->stream->Settings(), setting, *value);
}

int32_t audio_filter_latency(const audio_filter_stream* stream) {
    return stream == nullptr ? int{AUDIO_FILTER_ERROR_ARGUMENT} : stream->stream->Latency();
}

int audio_filter_is_music(const audio_filter_stream* stream) {
    return stream == nullptr ? int{AUDIO_FILTER_ERROR_ARGUMENT}
                             : static_cast<int>(stream->stream->IsMusic());
}

int audio_filter_is_reversed(const audio_filter_stream* stream, int32_t source) {
    if (stream == nullptr || source < 0 || source > 15) {
        return AUDIO_FILTER_ERROR_ARGUMENT;
    }
    return static_cast<int>(stream->stream->IsReversed(source));
}

float audio_filter_reduction(const audio_filter_stream* stream) {
    return stream == nullptr ? 0.0F : stream->stream->Reduction();
}

int audio_filter_set_event_callback(audio_filter_stream* stream,
                                    audio_filter_event_callback callback, void* user) {
    if (stream == nullptr) {
        return AUDIO_FILTER_ERROR_ARGUMENT;
    }
    if (stream->isCallingBack) {
        return AUDIO_FILTER_ERROR_NESTED;
    }
    stream->callback = callback;
    stream->user = user;
    return AUDIO_FILTER_OK;
}

int audio_filter_next_event(audio_filter_stream* stream, audio_filter_event* event) {
    if (stream == nullptr || event == nullptr) {
        return AUDIO_FILTER_ERROR_ARGUMENT;
    }
    if (const int error = ToC(StreamEvent(), event); error != AUDIO_FILTER_OK) {
        return error;
    }
    StreamEvent next;
    // The callback takes the events on another thread.
    if (stream->callback != nullptr || !stream->stream->NextEvent(next)) {
        return 0;
    }
    ToC(next, event);
    return 1;
}

void audio_filter_set_log(audio_filter_log_callback callback, void* user) {
    SetCLog(callback, user);
}
