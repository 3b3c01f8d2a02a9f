/* Cleans raw 32-bit float stereo PCM at 48000 Hz from standard input to standard output: as many frames out as in,
 * without the latency at the start. Build: cc clean.c $(pkg-config --cflags --libs audiofilter) */
#include <audio_filter/c.h>
#include <stdio.h>
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

enum { CHANNELS = 2, FRAMES = 1000 };

static int skipped = 0;

static void write_after_latency(const audio_filter_stream *stream, const float *block, int frames) {
    int skip = audio_filter_latency(stream) - skipped;
    if (skip > frames) skip = frames;
    skipped += skip;
    fwrite(block + CHANNELS * skip, CHANNELS * sizeof *block, (size_t)(frames - skip), stdout);
}

int main(void) {
    static float block[CHANNELS * FRAMES];
    void *out[] = {block};
    audio_filter_format format;
    audio_filter_stream *stream = NULL;
    int error, frames = 0;

#ifdef _WIN32
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
#endif
    error = audio_filter_default_format(&format, sizeof format);
    format.channels = CHANNELS;
    if (error == AUDIO_FILTER_OK) error = audio_filter_create(&stream, &format, NULL);
    while (error == AUDIO_FILTER_OK && (frames = (int)fread(block, CHANNELS * sizeof *block, FRAMES, stdin)) > 0) {
        error = audio_filter_process_float(stream, block, block, frames);
        write_after_latency(stream, block, frames);
    }
    while (error == AUDIO_FILTER_OK && (frames = audio_filter_drain(stream, out, FRAMES)) > 0) {
        write_after_latency(stream, block, frames);
    }
    if (frames < 0) error = frames;
    audio_filter_destroy(stream);
    if (error != AUDIO_FILTER_OK) {
        fprintf(stderr, "clean: %s\n", audio_filter_strerror(error));
    } else if (ferror(stdin) || fflush(stdout) != 0 || ferror(stdout)) {
        perror("clean");
        error = 1;
    }
    return error != AUDIO_FILTER_OK;
}
