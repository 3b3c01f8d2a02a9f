/* Compiled as C99 and, with every_function_cxx11.cpp, as C++11: the header has to suit both. */

#include <stddef.h>

#include <audio_filter/c.h>

static void OnEvent(void *user, const audio_filter_event *event) {
    *(int32_t *)user = event->type;
}

static void OnMessage(void *user, int level, const char *message) {
    *(int *)user += message[0] != '\0' && level == AUDIO_FILTER_LOG_INFO;
}

int UseEveryFunctionOfTheInterface(void);

/* Returns 0, or the number of the step that failed. */
int UseEveryFunctionOfTheInterface(void) {
    enum { FRAMES = 480 };
    audio_filter_format format;
    audio_filter_settings settings;
    audio_filter_stream *stream = NULL;
    audio_filter_event event;
    int16_t samples[FRAMES] = {0};
    float wrong[FRAMES] = {0};
    const void *in[1];
    void *out[1];
    double value = 0.0;
    int32_t type = -1;
    int messages = 0;
    int i;
    in[0] = samples;
    out[0] = samples;
    if (audio_filter_version() != AUDIO_FILTER_VERSION) return 1;
    if (audio_filter_version_string()[0] == '\0') return 2;
    if (audio_filter_strerror(AUDIO_FILTER_ERROR_MEMORY)[0] == '\0') return 3;
    if (audio_filter_default_format(&format, sizeof format) < 0) return 4;
    if (audio_filter_default_settings(&settings, sizeof settings) < 0) return 5;
    audio_filter_set_log(OnMessage, &messages);
    format.samples = AUDIO_FILTER_S16;
    if (audio_filter_create(&stream, &format, &settings) < 0) return 6;
    audio_filter_set_log(NULL, NULL);
    if (messages != 1) return 7;
    if (audio_filter_set_event_callback(stream, OnEvent, &type) < 0) return 8;
    if (audio_filter_latency(stream) < 1) return 9;
    for (i = 0; i < 10; ++i) {
        if (audio_filter_process_s16(stream, samples, samples, FRAMES) < 0) return 10;
        if (audio_filter_process(stream, in, out, FRAMES) < 0) return 11;
        if (audio_filter_set(stream, AUDIO_FILTER_SUPPRESSION, AUDIO_FILTER_OFF) < 0) return 12;
    }
    if (audio_filter_process_float(stream, wrong, wrong, FRAMES) != AUDIO_FILTER_ERROR_FORMAT) return 13;
    if (type != AUDIO_FILTER_EVENT_SUPPRESSION) return 14;
    if (audio_filter_get(stream, AUDIO_FILTER_SUPPRESSION, &value) < 0 || value != AUDIO_FILTER_OFF) return 15;
    if (audio_filter_get_settings(stream, &settings) < 0) return 16;
    if (audio_filter_set_settings(stream, &settings) < 0) return 17;
    if (audio_filter_is_music(stream) != 0 || audio_filter_is_reversed(stream, 0) != 0) return 18;
    if (audio_filter_reduction(stream) != 0.0f) return 19;
    if (audio_filter_drain(stream, out, FRAMES) != FRAMES) return 20;
    event.size = sizeof event;
    if (audio_filter_next_event(stream, &event) != 0) return 21;
    if (audio_filter_reset(stream) < 0) return 22;
    audio_filter_destroy(stream);
    return 0;
}
