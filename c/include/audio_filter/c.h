#ifndef AUDIO_FILTER_C_H
#define AUDIO_FILTER_C_H

#include <stddef.h>
#include <stdint.h>

#include "audio_filter/version.h"

/** @file
 * The stream in C: suppresses the noise of captured audio in real time, at any rate, in blocks of any length.
 *
 *     audio_filter_format format;
 *     audio_filter_stream *stream;
 *     audio_filter_default_format(&format, sizeof format);
 *     format.channels = 2;                                     // float, interleaved, 48000 Hz
 *     if (audio_filter_create(&stream, &format, NULL) < 0) ...
 *     audio_filter_process_float(stream, captured, cleaned, frames);
 *     audio_filter_destroy(stream);
 *
 * cleaned[0] is captured[0] of audio_filter_latency() frames ago. A frame is one sample per channel.
 *
 * Results. Functions that return int or int32_t return a negative audio_filter_error when they fail, and have then
 * changed nothing. No function throws, aborts or writes to the standard streams. A null stream is an argument like others:
 * AUDIO_FILTER_ERROR_ARGUMENT, or 0 where the result cannot be negative.
 *
 * Structures. The member `size` comes first: sizeof the structure, as the functions that fill in defaults set it. Later
 * versions only append members, so that a host compiled with an older header keeps working. A structure that is
 * larger than the library's is refused with AUDIO_FILTER_ERROR_SIZE.
 *
 * Processing blocks. The stream works on blocks of its own, of 7 to 13 ms; its output does not depend on the length of the
 * host's blocks.
 *
 * Threads. [audio] may be called on the audio thread, by one thread at a time per stream: never allocates, locks or enters the
 * kernel. [setup] may allocate; not while another function runs on the same stream. [any] from any thread at any
 * time, but for [setup] functions of the same stream: never allocates or locks. Callbacks must return: no exception, no longjmp.
 */

/** Marks the functions of the library. */
#if !defined(_WIN32)
#define AUDIO_FILTER_C_API __attribute__((visibility("default")))
#elif defined(AUDIO_FILTER_C_BUILD)
#define AUDIO_FILTER_C_API __declspec(dllexport)
#else
#define AUDIO_FILTER_C_API __declspec(dllimport)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** A stream. Opaque. */
typedef struct audio_filter_stream audio_filter_stream;

/** What a call returns when it fails; each has a sentence, audio_filter_strerror(). */
typedef enum audio_filter_error {
    /** Done */
    AUDIO_FILTER_OK = 0,
    /** A null pointer, or an unknown setting */
    AUDIO_FILTER_ERROR_ARGUMENT = -1,
    /** The size of a structure */
    AUDIO_FILTER_ERROR_SIZE = -2,
    /** A format out of range, or a call for another sample format */
    AUDIO_FILTER_ERROR_FORMAT = -3,
    /** A setting out of range */
    AUDIO_FILTER_ERROR_VALUE = -4,
    /** A negative number of frames, or more than max_frames */
    AUDIO_FILTER_ERROR_FRAMES = -5,
    /** No memory */
    AUDIO_FILTER_ERROR_MEMORY = -6,
    /** A defect of the library */
    AUDIO_FILTER_ERROR_INTERNAL = -7,
    /** Called from the stream's own event callback */
    AUDIO_FILTER_ERROR_NESTED = -8
} audio_filter_error;

/** [any] A sentence in English for a result; never null. */
AUDIO_FILTER_C_API const char* audio_filter_strerror(int error);

/** [any] The version of the library that runs; AUDIO_FILTER_VERSION is the one of this header. */
AUDIO_FILTER_C_API uint32_t audio_filter_version(void);

/** [any] The version of the library that runs, as text: "1.2.3". */
AUDIO_FILTER_C_API const char* audio_filter_version_string(void);

/** Samples: 16-bit, or 32-bit float with full scale at -1..1. Interleaved: one buffer for all channels. */
enum {
    AUDIO_FILTER_S16 = 1,         /**< 16-bit, interleaved */
    AUDIO_FILTER_FLOAT = 3,       /**< float, interleaved */
    AUDIO_FILTER_S16_PLANAR = 6,  /**< 16-bit, a buffer for each channel */
    AUDIO_FILTER_FLOAT_PLANAR = 8 /**< float, a buffer for each channel */
};

/** All sources and the output share it. */
typedef struct audio_filter_format {
    /** sizeof the structure */
    uint32_t size;
    /** Hz, 8000..192000; default 48000 */
    int32_t sample_rate;
    /** 1..8; default 1 */
    int32_t channels;
    /** AUDIO_FILTER_S16, AUDIO_FILTER_FLOAT or their planar forms; default AUDIO_FILTER_FLOAT */
    int32_t samples;
    /** 1..16; default 1 */
    int32_t sources;
    /** Longest block, in frames, 1..192000; default 192000 */
    int32_t max_frames;
    /** 1: floats that are not finite count as 0, with every stage off as well; 0: they pass then. Default 1 */
    int32_t finite;
} audio_filter_format;

/** Switches off noise suppression or the gain curve, as the value of its setting. */
#define AUDIO_FILTER_OFF (-1)

/** What a stream does. */
typedef struct audio_filter_settings {
    /** sizeof the structure */
    uint32_t size;
    /** Noise suppression: level, 0 mild .. 3 most aggressive, or AUDIO_FILTER_OFF; default 2 */
    int32_t suppression;
    /** Gain curve after suppression: 0..1, or AUDIO_FILTER_OFF; default AUDIO_FILTER_OFF */
    float gain;
    /** 1: detect a reversed channel of stereo sources and correct it; default 0 */
    int32_t phase_check;
    /** 1: suppress at level 0 while music is detected; default 0 */
    int32_t music_detection;
    /** 0: above 48000 Hz, remove what lies above the suppressor's band; default 1 */
    int32_t high_band;
    /** 1: mix all sources, through a limiter; 0: the first one alone; default 1 */
    int32_t mix;
    /** Stereo only: bit n negates the left channel of source n, 0..0xFFFF; default 0 */
    uint32_t reversed;
} audio_filter_settings;

/** The members of audio_filter_settings, for audio_filter_set. */
enum {
    AUDIO_FILTER_SUPPRESSION = 1, /**< audio_filter_settings::suppression */
    AUDIO_FILTER_GAIN,            /**< audio_filter_settings::gain */
    AUDIO_FILTER_PHASE_CHECK,     /**< audio_filter_settings::phase_check */
    AUDIO_FILTER_MUSIC_DETECTION, /**< audio_filter_settings::music_detection */
    AUDIO_FILTER_HIGH_BAND,       /**< audio_filter_settings::high_band */
    AUDIO_FILTER_MIX,             /**< audio_filter_settings::mix */
    AUDIO_FILTER_REVERSED         /**< audio_filter_settings::reversed */
};

/** [any] Fills in the defaults above. `size` is sizeof the structure as the host was compiled. */
AUDIO_FILTER_C_API int audio_filter_default_format(audio_filter_format* format, size_t size);

/** [any] The same for the settings. */
AUDIO_FILTER_C_API int audio_filter_default_settings(audio_filter_settings* settings, size_t size);

/** [setup] Starts a stream. Null for `format` or `settings` means the defaults. On failure *stream is null. */
AUDIO_FILTER_C_API int audio_filter_create(audio_filter_stream** stream,
                                           const audio_filter_format* format,
                                           const audio_filter_settings* settings);

/** [setup] Frees a stream; null is ignored. Not from its event callback. */
AUDIO_FILTER_C_API void audio_filter_destroy(audio_filter_stream* stream);

/** [setup] Starts again with the same format, settings and callback: no history, no pending output, no events. */
AUDIO_FILTER_C_API int audio_filter_reset(audio_filter_stream* stream);

/** [audio] Processes a block and returns as many frames as it receives.
 *
 * @param stream the stream
 * @param in interleaved: a buffer of frames * channels samples for each source; planar: a buffer of `frames` samples for each
 *        channel of each source, all channels of source 0 first. Samples need the alignment of their type.
 * @param out one buffer, or one for each channel, of the same layout. A buffer may be one of `in` if it holds the same
 *        channel; any other overlap makes the output undefined.
 * @param frames 0..max_frames. With 0, nothing is read or written.
 * @return AUDIO_FILTER_OK, or a negative error */
AUDIO_FILTER_C_API int audio_filter_process(audio_filter_stream* stream, const void* const* in,
                                            void* const* out, int32_t frames);

/** [audio] The same for streams of one source with interleaved 16-bit samples. */
AUDIO_FILTER_C_API int audio_filter_process_s16(audio_filter_stream* stream, const int16_t* in,
                                                int16_t* out, int32_t frames);

/** [audio] The same for 32-bit float. */
AUDIO_FILTER_C_API int audio_filter_process_float(audio_filter_stream* stream, const float* in,
                                                  float* out, int32_t frames);

/** [audio] Ends the input and returns what is pending, audio_filter_latency() frames, over as many calls as it takes.
 * A later call of audio_filter_process continues after this silence.
 * @param stream the stream
 * @param out as for audio_filter_process()
 * @param frames room in `out`, 1..max_frames
 * @return the frames written, 0 when nothing is pending, or a negative error */
AUDIO_FILTER_C_API int32_t audio_filter_drain(audio_filter_stream* stream, void* const* out,
                                              int32_t frames);

/** [any] All settings at once, from the next processing block on. Changes crossfade over 10 ms; those of the
 * suppression level and the high band are smoothed by the suppressor's own windows and over a block. */
AUDIO_FILTER_C_API int audio_filter_set_settings(audio_filter_stream* stream,
                                                 const audio_filter_settings* settings);

/** [any] The latest settings. `settings->size` has to be set. */
AUDIO_FILTER_C_API int audio_filter_get_settings(const audio_filter_stream* stream,
                                                 audio_filter_settings* settings);

/** [any] One setting. Threads that set different settings at a time do not undo each other's. */
AUDIO_FILTER_C_API int audio_filter_set(audio_filter_stream* stream, int setting, double value);

/** [any] The latest value of one setting. */
AUDIO_FILTER_C_API int audio_filter_get(const audio_filter_stream* stream, int setting,
                                        double* value);

/** [any] The delay of the output, in frames. It depends on the rate alone. */
AUDIO_FILTER_C_API int32_t audio_filter_latency(const audio_filter_stream* stream);

/** [any] 1 while music is detected, else 0. */
AUDIO_FILTER_C_API int audio_filter_is_music(const audio_filter_stream* stream);

/** [any] 1 while the left channel of a source, 0..15, is negated, else 0. */
AUDIO_FILTER_C_API int audio_filter_is_reversed(const audio_filter_stream* stream, int32_t source);

/** [any] The attenuation by noise suppression in the last processing block, in dB, 0 or above; 0 while it is off. */
AUDIO_FILTER_C_API float audio_filter_reduction(const audio_filter_stream* stream);

/** The changes that are reported. */
typedef enum audio_filter_event_type {
    AUDIO_FILTER_EVENT_SUPPRESSION = 0, /**< `on`: noise suppression was switched */
    AUDIO_FILTER_EVENT_GAIN = 1,        /**< `on`: the gain curve was switched */
    AUDIO_FILTER_EVENT_PHASE_CHECK = 2, /**< `on`: the phase check was switched */
    AUDIO_FILTER_EVENT_MIX = 3,         /**< `on`: mixing was switched */
    AUDIO_FILTER_EVENT_MUSIC = 4,       /**< `on`: music is detected */
    AUDIO_FILTER_EVENT_REVERSED = 5     /**< `on`: the left channel of `source` is negated */
} audio_filter_event_type;

/** A change in a stream. */
typedef struct audio_filter_event {
    /** sizeof the structure: set by the library for the callback, by the host for audio_filter_next_event */
    uint32_t size;
    int32_t type;   /**< audio_filter_event_type */
    int32_t on;     /**< 0 or 1 */
    int32_t source; /**< 0..15, for AUDIO_FILTER_EVENT_REVERSED */
    int64_t frame;  /**< frames received and drained before the processing block */
} audio_filter_event;

/** Called on the thread that calls audio_filter_process or audio_filter_drain, before that returns: it must do nothing that
 * the audio thread may not. On its own stream it may call every [any] function; process, drain, reset and set_event_callback
 * return AUDIO_FILTER_ERROR_NESTED. */
typedef void (*audio_filter_event_callback)(void* user, const audio_filter_event* event);

/** [setup] Null ends the calls. Without a callback, the stream keeps the oldest 64 events for audio_filter_next_event. A single
 * call of audio_filter_process reports 64 at most. */
AUDIO_FILTER_C_API int audio_filter_set_event_callback(audio_filter_stream* stream,
                                                       audio_filter_event_callback callback,
                                                       void* user);

/** [any] Takes the oldest event, from one thread at a time. `event->size` has to be set. Returns 1, or 0 if there is none.
 * With a callback, there is none. */
AUDIO_FILTER_C_API int audio_filter_next_event(audio_filter_stream* stream,
                                               audio_filter_event* event);

/** How severe a message is. */
typedef enum audio_filter_log_level {
    AUDIO_FILTER_LOG_ERROR = 0, /**< why no stream was created */
    AUDIO_FILTER_LOG_INFO = 1   /**< the format and latency of a new stream */
} audio_filter_log_level;

/** Called by audio_filter_create, on its thread. `level` is an audio_filter_log_level; `message` is one line without its
 * end, valid during the call. It must not call audio_filter_create or audio_filter_set_log. */
typedef void (*audio_filter_log_callback)(void* user, int level, const char* message);

/** [setup] For all streams of the process; null, the default, for no log. After it returns, the earlier callback is no longer
 * called. Waits for a message that is being logged. */
AUDIO_FILTER_C_API void audio_filter_set_log(audio_filter_log_callback callback, void* user);

#ifdef __cplusplus
}
#endif

#endif
