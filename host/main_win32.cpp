// The command line on Windows, without the libraries for audio files and resampling: raw samples in
// and out, at the rates that the filter processes directly.

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "common/result_code.h"
#include "host/failure.h"
#include "host/filter_settings.h"
#include "host/raw_stream.h"
#include "host/stdio_stream.h"

namespace {

constexpr const char* kUsage =
    "audio-filter clean - --raw s16|f32:RATE:CHANNELS -o - [--denoise LEVEL|off] [--gain G|off] "
    "[--phase-check on|off]";

struct Job {
    std::optional<AudioFormat> format;
    FilterSettings settings;
};

/// @return none for a usage error
std::optional<Job> Parse(const std::vector<std::string>& words) {
    Job job;
    std::vector<std::string> rest;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word.rfind("--", 0) != 0) {
            rest.push_back(word);
            continue;
        }
        if (++i == words.size()) {
            return std::nullopt;
        }
        if (word == "--raw") {
            job.format = ParseRawFormat(words[i]);
        } else if (!ApplySetting(job.settings, word.substr(2), words[i])) {
            return std::nullopt;
        }
    }
    const std::vector<std::string> piped = {"clean", "-", "-o", "-"};
    const bool suits = job.format && job.format->channels <= 2;  // as many as the filter cleans
    return suits && rest == piped ? std::optional(job) : std::nullopt;
}

template <typename Sample>
void Run(const Job& job) {
    const AudioFormat& format = *job.format;
    static AudioFilter filter;
    ProcessSwitchMap switches = {{AP_DENOISE, job.settings.denoiseLevel.has_value()},
                                 {AP_PHASE_CHECK, job.settings.phaseCheck != PhaseMode::kOff},
                                 {AP_GAIN, job.settings.gain.has_value()}};
    filter.Init(format.sampleRate, format.channels,
                sizeof(Sample) == 2 ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT, &switches);
    ProcessParam param = {job.settings.gain.value_or(0.0F), job.settings.denoiseLevel.value_or(0)};
    filter.SetParameter(&param, AP_GAIN);
    filter.SetParameter(&param, AP_DENOISE);

    RawReader reader(std::make_unique<StdioInput>(stdin), format);
    RawWriter writer(std::make_unique<StdioOutput>(stdout), format);
    const auto channels = static_cast<std::size_t>(format.channels);
    const auto frames = static_cast<std::size_t>(format.sampleRate + 99) / 100;
    std::vector<Sample> block(frames * channels);
    std::vector<Sample> out((frames + 320) * channels);
    AVParam wanted;
    while (const std::size_t read = reader.Read(block.data(), frames)) {
        int size = static_cast<int>(read * channels * sizeof(Sample));
        const int code = filter.Process(reinterpret_cast<const char*>(block.data()),
                                        reinterpret_cast<char*>(out.data()), size,
                                        {AV_SOURCE_MICROPHONE}, wanted, 0);
        if (code != RESULT_OK) {
            throw Failure("the filter returned " + std::to_string(code) +
                          (code == RESULT_NEEDS_RESAMPLING ? ": resample this rate first" : ""));
        }
        writer.Write(out.data(), static_cast<std::size_t>(size) / sizeof(Sample) / channels);
    }
    writer.Commit();
}

}  // namespace

int main(int argc, char** argv) {
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
    const std::optional<Job> job = Parse({argv + 1, argv + argc});
    if (!job) {
        std::cerr << "audio-filter: " << kUsage << "\n";
        return 2;
    }
    try {
        job->format->samples == SampleFormat::kS16 ? Run<short>(*job) : Run<float>(*job);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "audio-filter: " << error.what() << "\n";
        return 1;
    }
}
